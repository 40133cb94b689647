// SPDX-License-Identifier: MIT
#include "win32/windows/effects_window.h"

#include "audio/effect_choice.h"
#include "audio/effect_controls.h"
#include "panel/display_scale.h"
#include "pattern/instruments.h"
#include "redraw.h"
#include "win32/windows/message_loop.h"
#include "win32/windows/tool_window.h"

#include <commctrl.h>

#include <optional>
#include <string>
#include <string_view>

namespace percussomatic {

namespace {

constexpr wchar_t kClass[] = L"PercussomaticEffectsWindow";
constexpr WindowDesign kDesign{{720, 735}, {680, 688}};
constexpr int kRightOfOwner = 40, kBelowOwner = 45;

constexpr int kEnableId = 2100;
constexpr wchar_t kEnableText[] = L"ENABLE EFFECT";
constexpr int kEnableWidth = 145,
              kCheckWidth = 22; // kCheckWidth: of the check mark, at the display's DPI
constexpr int kPresetId = 2120; // the first of four
constexpr int kPresets = 4;
constexpr int kShownParameters = 5;

// The font, or a narrower copy of it if the text is wider than maxWidth pixels, as it may be in a
// fallback font.
GdiFont fontToFit(GdiFont font, std::wstring_view text, int maxWidth) {
    HDC screen = GetDC(nullptr);
    HGDIOBJ oldFont = SelectObject(screen, font.get());
    SIZE size{};
    GetTextExtentPoint32W(screen, text.data(), static_cast<int>(text.size()), &size);
    TEXTMETRICW metrics{};
    GetTextMetricsW(screen, &metrics);
    SelectObject(screen, oldFont);
    ReleaseDC(nullptr, screen);
    if (size.cx <= maxWidth) {
        return font;
    }
    LOGFONTW narrow{};
    GetObjectW(font.get(), sizeof narrow, &narrow);
    narrow.lfWidth = metrics.tmAveCharWidth * maxWidth / size.cx;
    return GdiFont(CreateFontIndirectW(&narrow));
}

// Created and destroyed with the window.
struct EffectsWindow {
    HWND window;
    int dpi;
    GdiFont titleFont = segoeFont(24, FW_BOLD, dpi);
    GdiFont headingFont = segoeFont(16, FW_SEMIBOLD, dpi);
    GdiFont enableFont = fontToFit(segoeFont(16, FW_SEMIBOLD, dpi), kEnableText,
                                   scaledForDpi(kEnableWidth, dpi) - scaledForDpi(kCheckWidth));
    GdiFont labelFont = segoeFont(14, FW_NORMAL, dpi);
    GdiBrush fill{CreateSolidBrush(colour(kToolWindowFill))};
    GdiBrush fieldFill{CreateSolidBrush(colour(0x2A2824))}; // reserved for edit fields
    HWND parameterLabels[kShownParameters] = {};
    HWND description = nullptr;
};

std::optional<EffectsWindow> theWindow; // GUI thread only

constexpr std::array<const wchar_t*, kPresets> kPresetNames{L"DRUM ROOM", L"WARM ROOM",
                                                            L"CONCERT HALL", L"STADIUM"};

constexpr int kColumnWidth = 335; // sends and parameters stand in two columns

HWND add(const EffectsWindow& effects, const ControlDefinition& place, const GdiFont& font) {
    return addControl(effects.window, place, font.get(), effects.dpi);
}

void addHeadings(const EffectsWindow& effects) {
    const GdiFont& font = effects.headingFont;
    add(effects, {L"STATIC", L"PERCUSOMATIC  /  EFFECTS", 22, 14, 430, 30}, effects.titleFont);
    add(effects, {L"BUTTON", kEnableText, 535, 15, kEnableWidth, 26, kEnableId, BS_AUTOCHECKBOX},
        effects.enableFont);
    for (int preset = 0; const wchar_t* name : kPresetNames) {
        add(effects,
            {L"BUTTON", name, preset * 166 + 22, 56, 152, 38, kPresetId + preset, BS_OWNERDRAW},
            font);
        ++preset;
    }
    add(effects, {L"STATIC", L"INSTRUMENT SENDS", 22, 112, 260, 22}, font);
    add(effects, {L"STATIC", L"REVERB PARAMETERS", 22, 458, 260, 22}, font);
}

HWND addBar(const EffectsWindow& effects, int id, int x, int y, int width) {
    constexpr int kHeightOfBar = 30;
    HWND bar = add(
        effects, {TRACKBAR_CLASSW, L"", x, y, width, kHeightOfBar, id, TBS_HORZ | TBS_NOTICKS}, {});
    SendMessageW(bar, TBM_SETRANGE, FALSE, MAKELPARAM(0, kMaxBarPosition));
    return bar;
}

void addSends(const EffectsWindow& effects) {
    for (int row = 0; const Instrument& instrument : kInstruments) {
        const int x = row / 6 * kColumnWidth, y = row % 6 * 50;
        const std::wstring name(instrument.name.begin(), instrument.name.end());
        add(effects, {L"STATIC", name.c_str(), x + 22, y + 146, 125, 20}, effects.labelFont);
        addBar(effects, kSendBarId + row, x + 148, y + 141, 180);
        ++row;
    }
}

// The bars of the extra values have no audible effect, so they are hidden.
void addParameters(EffectsWindow& effects) {
    for (int row = 0; row < kParameterBars; ++row) {
        const int x = row / 4 * kColumnWidth, y = row % 4 * 40;
        HWND label = add(effects, {L"STATIC", L"", x + 22, y + 492, 115, 20}, effects.labelFont);
        HWND bar = addBar(effects, kParameterBarId + row, x + 138, y + 487, 190);
        if (row < kShownParameters) {
            effects.parameterLabels[row] = label;
        } else {
            ShowWindow(label, SW_HIDE);
            ShowWindow(bar, SW_HIDE);
        }
    }
}

void showCaptions(const EffectsWindow& effects) {
    const EffectCaptions& captions = effectCaptions();
    for (std::size_t index = 0; HWND label : effects.parameterLabels) {
        SetWindowTextW(label, captions.parameters[index++]);
    }
    SetWindowTextW(effects.description, captions.description);
    for (int preset = 0; preset < kPresets; ++preset) {
        InvalidateRect(GetDlgItem(effects.window, kPresetId + preset), nullptr, FALSE);
    }
}

// The only window of the class sets the brush with which the class erases the background.
void setBackground(HWND window, HBRUSH brush) {
    SetClassLongPtrW(window, GCLP_HBRBACKGROUND, reinterpret_cast<LONG_PTR>(brush));
}

void create(HWND window) {
    EffectsWindow& effects =
        theWindow.emplace(EffectsWindow{.window = window, .dpi = fitToWorkArea(window, kDesign)});
    setBackground(window, effects.fill.get());
    handlePendingSteps();
    addHeadings(effects);
    addSends(effects);
    addParameters(effects);
    effects.description = add(effects, {L"STATIC", L"", 22, 654, 655, 34}, effects.labelFont);
    showCaptions(effects);
}

void command(HWND window, int id) {
    if (id == kEnableId) {
        soundEngine().setEffectEnabled(IsDlgButtonChecked(window, kEnableId) == BST_CHECKED);
        redrawEffectsBox();
        flushPainting();
    } else if (id >= kPresetId && id < kPresetId + kPresets) {
        selectPreset(id - kPresetId);
        refreshEffectsWindow();
        InvalidateRect(window, nullptr, FALSE);
    }
}

void scroll(HWND bar) {
    moveBar(soundEngine(), GetDlgCtrlID(bar),
            static_cast<int>(SendMessageW(bar, TBM_GETPOS, 0, 0)));
}

void drawPreset(const DRAWITEMSTRUCT& item) {
    constexpr ButtonColours kSelected{0xD6912D, 0xF5BD5C, 0x221E18};
    constexpr ButtonColours kIdle{0x413D36, 0x676052, kToolWindowText};
    constexpr ButtonColours kPressed{0x524C41, 0x676052, kToolWindowText};
    const int preset = static_cast<int>(item.CtlID) - kPresetId;
    if (preset < 0 || preset >= kPresets) {
        return;
    }
    if (preset == effectChoice().selectedPreset) {
        drawButton(item, kSelected);
    } else {
        drawButton(item, (item.itemState & ODS_SELECTED) != 0 ? kPressed : kIdle);
    }
}

LRESULT CALLBACK effectsWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CREATE) {
        create(window);
        return 0;
    }
    if (!theWindow) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    switch (message) {
    case WM_COMMAND:
        command(window, LOWORD(wParam));
        return 0;
    case WM_HSCROLL:
        scroll(reinterpret_cast<HWND>(lParam));
        return 0;
    case WM_DRAWITEM:
        drawPreset(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
        return TRUE;
    case WM_CTLCOLORSTATIC:
    case WM_CTLCOLORBTN:
        return colourStatic(wParam, theWindow->fill.get());
    case WM_CLOSE:
        hideToolWindow(window);
        return 0;
    case WM_NCDESTROY: // the controls that use the fonts have been destroyed
        setBackground(window, nullptr);
        theWindow.reset();
        return DefWindowProcW(window, message, wParam, lParam);
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

bool createWindow(HWND owner) {
    const INITCOMMONCONTROLSEX trackbars{sizeof trackbars, ICC_BAR_CLASSES};
    InitCommonControlsEx(&trackbars);
    if (!registerToolWindowClass(kClass, effectsWindowProc, nullptr)) {
        return false;
    }
    handlePendingSteps();
    RECT ownerRect{};
    GetWindowRect(owner, &ownerRect);
    return CreateWindowExW(WS_EX_TOOLWINDOW, kClass, L"PERCUSOMATIC - EFFECTS",
                           WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX,
                           ownerRect.left + scaledForDpi(kRightOfOwner),
                           ownerRect.top + scaledForDpi(kBelowOwner),
                           scaledForDpi(kDesign.outer.width), scaledForDpi(kDesign.outer.height),
                           owner, nullptr, GetModuleHandleW(nullptr), nullptr) != nullptr;
}

} // namespace

void showEffectsWindow(HWND owner) {
    if (!theWindow && !createWindow(owner)) {
        return;
    }
    refreshEffectsWindow();
    showToolWindow(theWindow->window);
}

void refreshEffectsWindow() {
    if (!theWindow) {
        return;
    }
    const SoundEngine& engine = soundEngine();
    HWND window = theWindow->window;
    const auto showBars = [&engine, window](int first, int count) {
        for (int id = first; id < first + count; ++id) {
            SendDlgItemMessageW(window, id, TBM_SETPOS, TRUE, barPosition(engine, id));
        }
    };
    CheckDlgButton(window, kEnableId, engine.isEffectEnabled() ? BST_CHECKED : BST_UNCHECKED);
    showBars(kSendBarId, kSendBars);
    showBars(kParameterBarId, kParameterBars);
    showCaptions(*theWindow);
}

} // namespace percussomatic
