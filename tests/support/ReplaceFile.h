// Files as a save replaces them.
#pragma once

#include <string>

#include "Quillet/platform/File.h"

namespace quillet::test {

// Replaces the file and says why that failed; empty where it did not.
inline std::string ReplaceFile(const std::string& path, const std::string& text) {
    std::string why;
    const auto file = platform::AtomicFile::Create(path, &why);
    if (file == nullptr || !file->Write(text, &why) || !file->Commit(&why)) {
        return why.empty() ? "no reason" : why;
    }
    return {};
}

}  // namespace quillet::test
