// Folders and files with paths of any length, even where the standard library limits them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#if defined(_WIN32)
#include "Quillet/platform/Automation.h"
#endif

namespace quillet::test {

#if defined(_WIN32)

// The form of a path that allows more than MAX_PATH characters.
inline std::filesystem::path WithoutLimit(const std::filesystem::path& path) {
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full.starts_with(L"\\\\") ? full : L"\\\\?\\" + full;
}

inline bool MakeFolder(const std::filesystem::path& path) {
    return CreateDirectoryW(WithoutLimit(path).c_str(), nullptr) != 0;
}

inline std::vector<std::filesystem::path> NamesIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> names;
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((WithoutLimit(folder).native() + L"\\*").c_str(), &found);
    for (bool more = search != INVALID_HANDLE_VALUE; more; more = FindNextFileW(search, &found) != 0) {
        const std::wstring name = found.cFileName;
        if (name != L"." && name != L"..") {
            names.emplace_back(name);
        }
    }
    FindClose(search);
    return names;
}

inline void RemoveTree(const std::filesystem::path& path) {
    const std::filesystem::path name = WithoutLimit(path);
    const DWORD attributes = GetFileAttributesW(name.c_str());
    // Read-only files can't be removed.
    SetFileAttributesW(name.c_str(), FILE_ATTRIBUTE_NORMAL);
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        DeleteFileW(name.c_str());
        return;
    }
    // The target of a link is not part of the tree.
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        for (const std::filesystem::path& child : NamesIn(path)) {
            RemoveTree(path / child);
        }
    }
    RemoveDirectoryW(name.c_str());
}

#else

inline std::filesystem::path WithoutLimit(const std::filesystem::path& path) {
    return path;
}

inline bool MakeFolder(const std::filesystem::path& path) {
    return std::filesystem::create_directory(path);
}

inline std::vector<std::filesystem::path> NamesIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    return names;
}

inline void RemoveTree(const std::filesystem::path& path) {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

#endif

// Creates nested folders until the path of the innermost has at least that many characters. Returns the path.
inline std::filesystem::path MakeDeepFolder(std::filesystem::path folder, std::size_t length) {
    while (folder.native().size() < length) {
        folder /= std::string(100, 'f');
        MakeFolder(folder);
    }
    return folder;
}

}  // namespace quillet::test
