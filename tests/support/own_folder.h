// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace percussomatic {

inline std::string contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void put(const std::filesystem::path& path, std::string_view text) {
    std::ofstream(path, std::ios::binary) << text;
}

inline std::ptrdiff_t filesIn(const std::filesystem::path& folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

// An empty directory, named after the test, that is the working directory during the object's
// lifetime and is then removed.
class OwnFolder {
public:
    OwnFolder() {
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directory(folder_);
        std::filesystem::current_path(folder_);
    }
    ~OwnFolder() {
        std::filesystem::current_path(former_);
        std::filesystem::remove_all(folder_);
    }

private:
    const std::filesystem::path former_ = std::filesystem::current_path();
    const std::filesystem::path folder_ =
        former_ / testing::UnitTest::GetInstance()->current_test_info()->name();
};

} // namespace percussomatic
