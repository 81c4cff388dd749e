// The names of temporary files beside a target. They are short however long the target's name is, and they
// tell which target they belong to. Private to the ports.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace quillet::platform {

// The digest of a name, the same in every process.
constexpr std::uint64_t Digest(std::string_view name) {
    constexpr std::uint64_t Prime = 0x100000001b3;
    std::uint64_t digest = 0xcbf29ce484222325;
    for (const char byte : name) {
        digest = (digest ^ static_cast<unsigned char>(byte)) * Prime;
    }
    return digest;
}

constexpr const char* NamesBesideBegin = ".quillet-";

// The prefix of all names beside a target, which is given by its name without a folder.
inline std::string PrefixBeside(std::string_view target) {
    std::array<char, 32> name;
    std::snprintf(name.data(), name.size(), "%s%016llx", NamesBesideBegin,
                  static_cast<unsigned long long>(Digest(target)));
    return name.data();
}

// A unique name, as long as now comes from a clock that is never set back.
inline std::string NewNameBeside(std::string_view target, unsigned long process, long long now,
                                 const char* ending) {
    static std::atomic<unsigned> s_counter{0};
    std::array<char, 64> rest;
    std::snprintf(rest.data(), rest.size(), "-%lx-%x-%llx%s", process, s_counter++,
                  static_cast<unsigned long long>(now), ending);
    return PrefixBeside(target) + rest.data();
}

constexpr const char* TemporaryEnding = ".tmp";
// The ending of an old file moved aside for the new one.
constexpr const char* AsideEnding = ".old";

// Whether a file of this name is a new version of the target, still being written.
inline bool IsTemporaryBeside(std::string_view name, std::string_view target) {
    return name.starts_with(PrefixBeside(target) + "-") && name.ends_with(TemporaryEnding);
}

// Whether a file of this name is an old one moved aside for a new one.
inline bool IsAside(std::string_view name) {
    return name.starts_with(NamesBesideBegin) && name.ends_with(AsideEnding);
}

}  // namespace quillet::platform
