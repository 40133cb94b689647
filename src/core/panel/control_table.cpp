// SPDX-License-Identifier: MIT
#include "panel/control_table.h"

#include "panel/control_names.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <iterator>
#include <system_error>

namespace percussomatic {

namespace {

constexpr std::string_view kImage = "Image", kToggle = "ImageToggleButton", kSlider = "Slider";

// The 139 rows in drawing order. The lines of step buttons begin at slightly different x, as in the
// artwork. sw_014 lies under sw_015 and has no function, but belongs to the table.
// clang-format off
#define PICTURE(layer, name, id, image, x, y, w, h) {layer, name, "", id, image, "", kImage, x, y, w, h, 1},
#define STEP(n, id, x, y) {"bottone_off_" n, "bottone_" n, "", id, "bottone_off.PNG", "bottone_on.PNG", kToggle, x, y, 178, 184, 1},
#define SWITCH(n, id, x, y) {"SW_off_" n, "sw_" n, "", id, "SW_off.PNG", "SW_on.PNG", kToggle, x, y, 142, 142, 1},
#define SLIDER(n, id, x, y) {"slider_" n, "slider_" n, "", id, "slider.PNG", "", kSlider, x, y, 61, 159, 1},

constexpr ControlRow kControlRows[] = {
    PICTURE("mobile_001", "mobile_001", "4ca350b1bf81452f8beac967ac41a665", "mobile.PNG", 24, -30, 7995, 5183)
    PICTURE("pannello_frontale_001", "pannello_frontale_001", "47eaa0992cb6916d86dc283cf0480ff9", "pannello_frontale.png", 366, 676, 5904, 3472)
    PICTURE("pannello_sotto_001", "pannello_sotto_001", "1509bb0a9bf13331ca118783593942a4", "pannello sotto.PNG", 369, 4212, 7325, 827)
    STEP("001", "f5ec52ed0108847512e1bc7656670b14", 2553, 1130)
    STEP("002", "59ba1b0d5c9061582909406c2e416788", 2731, 1130)
    STEP("003", "5d32fe61985fb4e72a095ee82bb29976", 2909, 1130)
    STEP("004", "9a1e40b458151a9959e2d15364c7a500", 3087, 1130)
    STEP("005", "68b4aef73eaabe171d8a4eace693ae2d", 3265, 1130)
    STEP("006", "142c83647806857713e783e7eb04b39b", 3443, 1130)
    STEP("007", "3b041641178854f2260df25453fe2e85", 3621, 1130)
    STEP("008", "00a154d85ed8abcc35c719c2add9ca88", 3799, 1130)
    STEP("009", "c0290103855dbf5559ec8712e8e3574f", 3977, 1130)
    STEP("010", "6e704245a4ff91e3e7949b80dcb0b82e", 4155, 1130)
    STEP("011", "de1b1471320a88ea37a788d106762832", 4333, 1130)
    STEP("012", "4350cc1721e52f212cd552a09ddbef12", 4511, 1130)
    STEP("013", "9ed89eddd6846325b600e6129ec04ece", 4689, 1130)
    STEP("014", "627bf3225fac9cb6e34acb115ee347dd", 4867, 1130)
    STEP("015", "a930d55d9545f0f3ee889fe46f2c7a8c", 5045, 1130)
    STEP("016", "43f2f1936e85df0875927b0fe339d309", 5223, 1130)
    STEP("017", "990d3cd8381df22f050c86bd84e0164b", 2550, 1599)
    STEP("018", "e07cb5793e7fb97bfcc1c0c8b0cdf20a", 2728, 1599)
    STEP("019", "78f6d82486ea0214b5c34e7e77ca4499", 2906, 1599)
    STEP("020", "1dcd327f761e07cb7b7e8913655c1d15", 3084, 1599)
    STEP("021", "9672be1a7fed0bb9a92fa271dbc52933", 3262, 1599)
    STEP("022", "c44a66f4cf25e3465cbe4f50bdbcda98", 3440, 1599)
    STEP("023", "1e2ed6cb6470ff1f134b8db4b18fbdb1", 3618, 1599)
    STEP("024", "4f859933fdf0a45f57e485b6761978dd", 3796, 1599)
    STEP("025", "2e460a9618949a23d9855162fd0b00ea", 3974, 1599)
    STEP("026", "310a853eec9a72f24ea9877af376bc25", 4152, 1599)
    STEP("027", "64e752cc93a9b8b601f72b0a43c20f56", 4330, 1599)
    STEP("028", "bbb3a32acf00377c7a674d0a5fd11a32", 4508, 1599)
    STEP("029", "79ded9f207d3b36c505bdd8f4ed3d99e", 4686, 1599)
    STEP("030", "8a9e1df7e771876ead783715ee6f7a8f", 4864, 1599)
    STEP("031", "9e180bf5c37ee1e269fa541c228a3129", 5042, 1599)
    STEP("032", "20b81d7f8e9e7bb8b4a37b2b926271f2", 5220, 1599)
    STEP("033", "aafaf84bafd838d3c7f336da84c6a400", 2547, 2070)
    STEP("034", "38bf8cc279b58a73838e4a118913c782", 2725, 2070)
    STEP("035", "d38cf73419a7bae47df3bae7d3f28783", 2903, 2070)
    STEP("036", "61796ac41055ab625804abbec2b8c1c5", 3081, 2070)
    STEP("037", "95655d03be61dea43f28bbfa4dee94f9", 3259, 2070)
    STEP("038", "e5600642060d5a21a64b88b0402db603", 3437, 2070)
    STEP("039", "3c0eea6699181b1dfee7a16b0a6bf830", 3615, 2070)
    STEP("040", "efdeed7f9f6f4756a0cda0172bac7c60", 3793, 2070)
    STEP("041", "fb474e95e2f04826ba9153bde3221553", 3971, 2070)
    STEP("042", "980f951ce3923fcd76d4d9b1cac733f4", 4149, 2070)
    STEP("043", "7acfa1b61d3183abbd3f3fbf902456cf", 4327, 2070)
    STEP("044", "e85a57fc9b3904c17e127b35baaa7b43", 4505, 2070)
    STEP("045", "4e64eff0ad52b3c3cc411c6db644c0fe", 4683, 2070)
    STEP("046", "bfbfc1d9fe279f1addb88d09aca93b03", 4861, 2070)
    STEP("047", "42eb80dca7c355990ff8330c4d719ec7", 5039, 2070)
    STEP("048", "c1a1dbfdf0494dc01392e4527ea2fb2b", 5217, 2070)
    STEP("049", "88aaeb7cb3140f254e6833eb0bd47e27", 2550, 2547)
    STEP("050", "33c6a5a5b2b130da0f6592a5a30abf65", 2728, 2547)
    STEP("051", "372c423587a2babd9c644f950d5e92c8", 2906, 2547)
    STEP("052", "6379e36933676dd4090da4fc0b39b779", 3084, 2547)
    STEP("053", "2a8684093797120b3a322062ce9001ef", 3262, 2547)
    STEP("054", "cb80142c81e8ea41e64f74fea5b5c578", 3440, 2547)
    STEP("055", "4c02aa642a33017dafc52a098b36cd0c", 3618, 2547)
    STEP("056", "2c75bf6145d1349a4ba170c9e6c39385", 3796, 2547)
    STEP("057", "14c7fc1c85f5547ab258c319f97bf1b8", 3974, 2547)
    STEP("058", "d26d4b5ac542876783f7fbb2c1465919", 4152, 2547)
    STEP("059", "92c3bfee8e9f0526f4ab769e1d4756cb", 4330, 2547)
    STEP("060", "f82b08ea79e15c25ed0375b49fbc5e01", 4508, 2547)
    STEP("061", "e0776f79450575f3f345ea49da86430a", 4686, 2547)
    STEP("062", "72defbc689b44b2d3586b1ff50295142", 4864, 2547)
    STEP("063", "305a34bad517d4d03bbdae4687b112e8", 5042, 2547)
    STEP("064", "42569925f61e86e9aa2264acc8daa038", 5220, 2547)
    STEP("065", "1afd72aee0004d36da40515e6c3b8027", 2545, 3020)
    STEP("066", "c682edf6fa4aaa5b9deeaa9ca5383ca5", 2723, 3020)
    STEP("067", "ef30ab829248712c03bc936d3b6ad9d4", 2901, 3020)
    STEP("068", "3ed40654fcd38147ceb057422d256b13", 3079, 3020)
    STEP("069", "f3d6415b395a3e274bc66fa8cc3b99ef", 3257, 3020)
    STEP("070", "9807821f3471439b46eb6a5d52d41822", 3435, 3020)
    STEP("071", "5fb069b9da73686f62141219c099fd1e", 3613, 3020)
    STEP("072", "23aef988077767449196fe490ebe57f3", 3791, 3020)
    STEP("073", "e482481ec3248ef23d3fbd5e83a56ae2", 3969, 3020)
    STEP("074", "d1ef57d683c4ae10f78786456e18006d", 4147, 3020)
    STEP("075", "a06ba99a961b2284a99aba5a5ee4b339", 4325, 3020)
    STEP("076", "127504d7ee356d69626725e947e675e7", 4503, 3020)
    STEP("077", "5ab6cd43c7cc4946cf26661d8de078d3", 4681, 3020)
    STEP("078", "8dff02e5e1c84096ad785afc395dc598", 4859, 3020)
    STEP("079", "0ca2f71c4bfc75484189781c5113473f", 5037, 3020)
    STEP("080", "e386b6af8aa5e54e14e26d4d9b9fa2a4", 5215, 3020)
    STEP("081", "082458d87762d294affa07286e8ccad2", 2550, 3492)
    STEP("082", "ed0b0782edb08d9976a8c96844f6200e", 2728, 3492)
    STEP("083", "be5f2ad06cbf51fb51a422ee98e02e34", 2906, 3492)
    STEP("084", "2ca5e5865f590f09131e93111f2f3b07", 3084, 3492)
    STEP("085", "a48a85479dac16d3878e58dd1fe70fdb", 3262, 3492)
    STEP("086", "d12c0c3e250ca91374ff6a0bcf545cd0", 3440, 3492)
    STEP("087", "7cce173a04211117e37cf3ccd269f468", 3618, 3492)
    STEP("088", "a28494423ce2d7b1d19bdc845ed62656", 3796, 3492)
    STEP("089", "f47f6c3b1a9d5b3785133ffd814afde8", 3974, 3492)
    STEP("090", "1a4f38c549da21bd6c056565b409bea7", 4152, 3492)
    STEP("091", "cd2b40361c3f169452a1abfadc1837d3", 4330, 3492)
    STEP("092", "c15fd02a4aafcf99647a41ebaa03ddeb", 4508, 3492)
    STEP("093", "5b2f62880d8e6b5ca73437fdff1e736a", 4686, 3492)
    STEP("094", "cf4e71c742ce3e72019e4c018bcf2b95", 4864, 3492)
    STEP("095", "8c54b97d3df830d27fa0f8104aefedd9", 5042, 3492)
    STEP("096", "5a492e229d7ef19e3192775f7a3d466e", 5220, 3492)
    SWITCH("001", "7fb22bb5c46a1a9e4a76104064bc5b41", 1745, 1154)
    SWITCH("002", "7b4f732cd51914b2e15b7253961986d8", 1745, 1627)
    SWITCH("003", "fefff4632fdc404b7069216b59eb53db", 1745, 2098)
    SWITCH("004", "f8f89f4a55b5d6f53a2a2201e543b3d5", 1745, 2570)
    SWITCH("005", "4c6e31024f4c8740ad88a6bdf5bcc03e", 1745, 3044)
    SWITCH("006", "d4acf3b8341db1973532c7d2c914da86", 1745, 3510)
    SWITCH("007", "55fe75c68885b80b72e642944a51523d", 3429, 4555)
    SWITCH("008", "265c7d633a34804bba976fed00da4609", 3842, 4555)
    SWITCH("009", "88dbbbdda1208e0904b723e21e24df7d", 4373, 4557)
    SWITCH("010", "838fa25f57f3b421cb7353e5754acbaa", 4538, 4557)
    SWITCH("011", "412b940de0837c3ccf7b36ea3211780f", 4715, 4557)
    SWITCH("012", "8a66604cc0e39458a33f742ab4a3d22f", 4897, 4557)
    SWITCH("013", "db9cebf3633d0c72cb9d1f5f499329cb", 5074, 4557)
    SWITCH("014", "34e9f05473b8998fda9ea88f10926150", 5260, 4563)
    SWITCH("015", "7578da0800d68bc6b71a34a6255faeb6", 5258, 4557)
    SWITCH("016", "0c4782db64f4837e19877618243c835d", 5437, 4557)
    SWITCH("017", "e6980cd1d9f6226c500866c0c0bd51d1", 2040, 3510)
    SWITCH("018", "2cf57f99cb17603db35d5d89dac09387", 5787, 845)
    SWITCH("019", "89b3ced9e119f762f9e34f517b7c6f20", 5787, 3517)
    SWITCH("020", "337c43bc3d56f8665bd44414564c2b8e", 2040, 3044)
    SWITCH("021", "6a3040c0bbc6c88610a3f228d73c07b9", 5787, 3045)
    SWITCH("022", "f52e696d4aa732e4418dfa0c47961b69", 2040, 2570)
    SWITCH("023", "01f7fc1162b421203cb0f416fd401869", 5787, 2571)
    SWITCH("024", "50b6352d250fc01ae8345840695e5739", 2040, 2098)
    SWITCH("025", "950d3d0682d29b4169fb2f7370190bac", 5787, 2092)
    SWITCH("026", "0e853b3d087822f17a82d5e02fc65f07", 2040, 1627)
    SWITCH("027", "9bbbd0deed8a424ce88d2078a050a8c6", 5787, 1628)
    SWITCH("028", "dd687ed5ea313e4fa34ac61c040ea79c", 2040, 1154)
    SWITCH("029", "4009ccc866ac0e838d7d2dd0cd598303", 5787, 1156)
    SLIDER("001", "ee508fb755390b15e6bba4022bcb7ae1", 727, 1148)
    SLIDER("002", "c6225bbbc40ecab9675eeb620a38164c", 727, 1621)
    SLIDER("003", "0d44b1cb422833241bbb45b98a789100", 727, 2094)
    SLIDER("004", "8a46b7a62c7a4359b49dc06a72e3eda1", 727, 2562)
    SLIDER("005", "c08cea7316ab1afd1e6df5809ad58604", 727, 3034)
    SLIDER("006", "7652dbcf95d70ee6afa344015561e2ba", 727, 3508)
    {"PW_off_001", "pw_001", "", "ca0171fab52f1854e704eeae690d5efa", "PW_off.PNG", "PW_on.PNG", kToggle, 1480, 4439, 158, 366, 1},
    PICTURE("BIN_off_001", "bin_001", "8325b4229da87b87f7d91f954cb1d4a4", "BIN_off.PNG", 3012, 4535, 166, 166)
    PICTURE("rotary_001", "rotary_001", "02b3b34822156870d7757ef52e4b7310", "rotary.PNG", 1944, 4484, 284, 284)
    PICTURE("rotary_002", "rotary_002", "4f25120752a7cb2b0c0d1ee48db4beb8", "rotary.PNG", 2475, 4484, 284, 284)
    PICTURE("c_scheda_001", "c_scheda_001", "531b622473e8231c34a8c1877a5c37dd", "c_scheda.PNG", 6346, 602, 1246, 1580)
};
// clang-format on
#undef PICTURE
#undef STEP
#undef SWITCH
#undef SLIDER
static_assert(std::size(kControlRows) == kControlCount);

char lowered(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

ControlKind kindOfToggle(std::string_view name) noexcept {
    constexpr std::pair<std::string_view, ControlKind> kNamed[] = {
        {control::kPower, ControlKind::power},
        {control::kStartStop, ControlKind::startStop},
        {control::kEdit, ControlKind::edit},
        {control::kClearAll, ControlKind::clearAll},
    };
    const auto* const found = std::ranges::find_if(
        kNamed, [name](const auto& entry) { return sameName(name, entry.first); });
    return found != std::end(kNamed) ? found->second : ControlKind::toggle;
}

ControlRole roleOf(const ControlRow& row) noexcept {
    if (isRotary(row)) {
        return {.kind = ControlKind::rotary};
    }
    if (isSlider(row)) {
        return {.kind = ControlKind::slider};
    }
    if (isBeatLamp(row)) {
        return {.kind = ControlKind::beatLamp};
    }
    if (!isToggle(row)) {
        return {};
    }
    if (const int number = stepButtonNumber(row); number > 0) {
        return {.kind = ControlKind::stepButton,
                .line = (number - 1) / kStepCount,
                .step = (number - 1) % kStepCount};
    }
    for (int line = 0; line < kLineCount; ++line) {
        if (sameName(row.name, control::line(line).clear)) {
            return {.kind = ControlKind::clearLine, .line = line};
        }
    }
    for (std::size_t i = 0; i < kSequenceLengths.size(); ++i) {
        if (sameName(row.name, control::kLengthSwitches[i])) {
            return {.kind = ControlKind::length, .length = kSequenceLengths[i]};
        }
    }
    return {.kind = kindOfToggle(row.name)};
}

} // namespace

std::span<const ControlRow, kControlCount> controlRows() noexcept {
    return kControlRows;
}

const ControlRow& controlRow(int index) noexcept {
    return kControlRows[static_cast<std::size_t>(index)];
}

const ControlRole& controlRole(int index) noexcept {
    static const auto roles = [] {
        std::array<ControlRole, kControlCount> all;
        std::ranges::transform(kControlRows, all.begin(), roleOf);
        return all;
    }();
    return roles[static_cast<std::size_t>(index)];
}

bool sameName(std::string_view a, std::string_view b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lowered(x) == lowered(y); });
}

int findControl(std::string_view name) noexcept {
    const auto* const found = std::ranges::find_if(kControlRows, [name](const ControlRow& row) {
        return row.visible != 0 && sameName(row.name, name);
    });
    return found == std::end(kControlRows) ? kNoControl
                                           : static_cast<int>(found - std::begin(kControlRows));
}

int stepButtonIndex(int line, int step) noexcept {
    // Cached, because repaints of whole columns look it up at every step.
    static const auto indices = [] {
        std::array<int, kLineCount * kStepCount> found{};
        found.fill(kNoControl);
        for (int index = kControlCount - 1; index >= 0; --index) {
            if (const int number = stepButtonNumber(controlRow(index)); number > 0) {
                found[static_cast<std::size_t>(number - 1)] = index;
            }
        }
        return found;
    }();
    return indices[static_cast<std::size_t>(line * kStepCount + step)];
}

bool isToggle(const ControlRow& row) noexcept {
    return row.type == kToggle;
}

bool isSlider(const ControlRow& row) noexcept {
    return sameName(row.type, kSlider) || sameName(row.image, "slider.PNG");
}

bool isRotary(const ControlRow& row) noexcept {
    return sameName(row.name, control::kMasterRotary) || sameName(row.name, control::kTempoRotary);
}

bool isBeatLamp(const ControlRow& row) noexcept {
    return sameName(row.name, control::kBeatLamp) || sameName(row.image, "BIN_off.PNG");
}

bool isInteractive(const ControlRow& row) noexcept {
    return row.visible != 0 && (isSlider(row) || isToggle(row) || isRotary(row) || isBeatLamp(row));
}

int stepButtonNumber(const ControlRow& row) noexcept {
    constexpr std::string_view kPrefix = control::kStepPrefix;
    if (row.visible == 0 || !sameName(row.name.substr(0, kPrefix.size()), kPrefix)) {
        return 0;
    }
    const std::string_view digits = row.name.substr(kPrefix.size());
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool wholeNumber = error == std::errc{} && end == digits.data() + digits.size();
    return wholeNumber && number >= 1 && number <= kLineCount * kStepCount ? number : 0;
}

} // namespace percussomatic
