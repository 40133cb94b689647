#include "fuzz/fuzzing.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// Runs every file of a folder once. The last name printed is the one that something is wrong with.
int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
    std::vector<std::filesystem::path> files(std::filesystem::directory_iterator(argv[1]), {});
    std::sort(files.begin(), files.end());
    for (const std::filesystem::path& path : files) {
        std::printf("%s\n", path.c_str());
        std::fflush(stdout);
        std::ifstream file(path, std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    return files.empty() ? 1 : 0;
}
