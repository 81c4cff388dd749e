// Files written as a save writes them.
#pragma once

#include <string>

#include "Quillet/platform/File.h"

namespace quillet::test {

// Replaces the file in one step. Returns the reason of a failure; empty on success.
inline std::string WriteAtomically(const std::string& path, const std::string& text) {
    std::string why;
    const auto file = platform::AtomicFile::Create(path, &why);
    if (file == nullptr || !file->Write(text, &why) || !file->Commit(&why)) {
        return why.empty() ? "no reason" : why;
    }
    return {};
}

}  // namespace quillet::test
