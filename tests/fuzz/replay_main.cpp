// SPDX-License-Identifier: MIT
// Runs each file of a folder once. Prints each name first, so the last one is the culprit.
#include "fuzz/fuzzing.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
    const std::filesystem::directory_iterator folder(argv[1]);
    const std::set<std::filesystem::path> files(begin(folder), end(folder)); // sorted
    for (const std::filesystem::path& path : files) {
        std::printf("%s\n", path.c_str());
        std::fflush(stdout);
        std::ifstream file(path, std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    return files.empty() ? 1 : 0;
}
