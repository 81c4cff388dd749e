// The contents of the registry, as far as programs and components write there.
#pragma once

#include <windows.h>

#include <map>
#include <string>
#include <vector>

#include "Quillet/base/CString.h"

namespace quillet::test {

// Every key and every value, by path: "key" or "key|value"; a value's type and data as text.
using RegistryContent = std::map<std::string, std::string>;

inline std::string DataText(DWORD type, const std::vector<BYTE>& data) {
    if (type == REG_SZ || type == REG_EXPAND_SZ) {
        // With its closing null or without.
        std::wstring text(reinterpret_cast<const wchar_t*>(data.data()), data.size() / sizeof(wchar_t));
        text.resize(text.find_last_not_of(L'\0') + 1);
        return CString(text.c_str()).ToUtf8();
    }
    std::string text = "type " + std::to_string(type) + ':';
    for (const BYTE byte : data) {
        text += ' ' + std::to_string(byte);
    }
    return text;
}

inline void ReadKey(HKEY key, const std::string& path, RegistryContent& content) {
    content[path] = "key";
    DWORD longestValue = 0;
    DWORD longestData = 0;
    RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &longestValue,
                     &longestData, nullptr, nullptr);
    std::vector<wchar_t> name(256 + longestValue);
    for (DWORD i = 0;; ++i) {
        auto length = static_cast<DWORD>(name.size());
        std::vector<BYTE> data(longestData);
        DWORD size = longestData;
        DWORD type = 0;
        if (RegEnumValueW(key, i, name.data(), &length, nullptr, &type, data.data(), &size) !=
            ERROR_SUCCESS) {
            break;
        }
        data.resize(size);
        content[path + '|' + CString(name.data()).ToUtf8()] = DataText(type, data);
    }
    for (DWORD i = 0;; ++i) {
        auto length = static_cast<DWORD>(name.size());
        if (RegEnumKeyExW(key, i, name.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS) {
            break;
        }
        HKEY child = nullptr;
        if (RegOpenKeyExW(key, name.data(), 0, KEY_READ, &child) == ERROR_SUCCESS) {
            ReadKey(child, path + '\\' + CString(name.data()).ToUtf8(), content);
            RegCloseKey(child);
        }
    }
}

// Everything below a key of a root; empty if there is no such key.
inline RegistryContent ContentOf(HKEY root, const wchar_t* path) {
    RegistryContent content;
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path, 0, KEY_READ, &key) == ERROR_SUCCESS) {
        ReadKey(key, "", content);
        RegCloseKey(key);
    }
    return content;
}

// What was added or changed since.
inline RegistryContent Added(const RegistryContent& before, const RegistryContent& after) {
    RegistryContent added;
    for (const auto& [path, data] : after) {
        const auto old = before.find(path);
        if (old == before.end() || old->second != data) {
            added.emplace(path, data);
        }
    }
    return added;
}

}  // namespace quillet::test
