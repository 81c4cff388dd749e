// A file that is kept open, with any sharing mode.
#pragma once

#include <gtest/gtest.h>

#include "support/LongPaths.h"

namespace quillet::test {

class WindowsHandle {
public:
    WindowsHandle(const std::filesystem::path& path, DWORD access, DWORD sharing)
        : m_value(CreateFileW(WithoutLimit(path).c_str(), access, sharing, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr)) {
        EXPECT_NE(m_value, INVALID_HANDLE_VALUE) << path;
    }
    WindowsHandle(const WindowsHandle&) = delete;
    WindowsHandle& operator=(const WindowsHandle&) = delete;
    ~WindowsHandle() { CloseHandle(m_value); }

private:
    HANDLE m_value;
};

}  // namespace quillet::test
