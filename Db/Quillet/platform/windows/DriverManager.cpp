#include "Quillet/platform/DriverManager.h"

#include <cstddef>

namespace quillet::platform {
namespace {

// Wine's own function that names a file as the host system does. Under Wine the drivers are the host's.
using UnixFileName = char*(CDECL*)(LPCWSTR);

UnixFileName FindUnixFileName() {
    const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    const FARPROC address = kernel == nullptr ? nullptr : GetProcAddress(kernel, "wine_get_unix_file_name");
    return reinterpret_cast<UnixFileName>(reinterpret_cast<void*>(address));
}

std::wstring Wide(const std::string& text) {
    std::wstring wide(text.size(), L'\0');
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                           wide.data(), static_cast<int>(wide.size()));
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}

}  // namespace

std::string DriverPath(const std::string& path) {
    const UnixFileName unixFileName = FindUnixFileName();
    if (unixFileName == nullptr) {
        return path;
    }
    char* name = unixFileName(Wide(path).c_str());
    if (name == nullptr) {
        return path;
    }
    std::string result(name);
    HeapFree(GetProcessHeap(), 0, name);
    return result;
}

void WithConnectionLocale(const std::function<void()>& make) {
    make();
}

SQLRETURN ConnectDriver(SQLHDBC connection, const std::string& connectString, SQLUSMALLINT completion) {
    std::wstring text = Wide(connectString);
    return SQLDriverConnectW(connection, nullptr, text.data(), static_cast<SQLSMALLINT>(text.size()), nullptr,
                             0, nullptr, completion);
}

}  // namespace quillet::platform
