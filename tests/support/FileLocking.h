// The fixture of tests of file locks.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

#include "Quillet/platform/FileLock.h"
#include "support/TemporaryFolder.h"

namespace quillet::test {

// A folder of the test's own with a file "text" in it.
class FileLocking : public testing::Test {
protected:
    void SetUp() override { WriteBytes(m_folder / "text", "contents"); }

    std::string At(const std::filesystem::path& name) const { return Utf8(m_folder / name); }

    std::unique_ptr<platform::FileLock> Take(const std::string& path,
                                             std::chrono::milliseconds wait = std::chrono::milliseconds(0)) {
        return platform::FileLock::Take(path, wait, m_refusal);
    }

    TemporaryFolder m_folder;
    platform::FileLock::Refusal m_refusal;
};

}  // namespace quillet::test
