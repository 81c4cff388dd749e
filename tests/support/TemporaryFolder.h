// A temporary folder, removed with its contents.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "support/LongPaths.h"

namespace quillet::test {

class TemporaryFolder {
public:
    TemporaryFolder() {
        const std::filesystem::path base = testing::TempDir();
        std::random_device random;
        do {
            m_path = base / ("quillet-test-" + std::to_string(random()) + std::to_string(random()));
        } while (!std::filesystem::create_directory(m_path));
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        RemoveTree(m_path);
        EXPECT_FALSE(std::filesystem::exists(m_path)) << "something in " << m_path << " is still open";
    }

    const std::filesystem::path& Path() const { return m_path; }
    std::filesystem::path operator/(const std::filesystem::path& name) const { return m_path / name; }

    std::vector<std::filesystem::path> Names() const { return NamesIn(m_path); }

private:
    std::filesystem::path m_path;
};

inline std::string Utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

inline void WriteBytes(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(WithoutLimit(path), std::ios::binary) << bytes;
}

inline std::string ReadBytes(const std::filesystem::path& path) {
    std::ifstream file(WithoutLimit(path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace quillet::test
