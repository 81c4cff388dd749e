// Lets a file be replaced only as long as it is unchanged.
#pragma once

#include <optional>
#include <string>

#include "Quillet/platform/FileVersion.h"

namespace quillet {

class SaveGuard {
public:
    // Remembers what is at the path now, a file or none.
    explicit SaveGuard(const std::string& path);

    // What must be there when the path is saved to; the save keeps it up to date. Null if the path leads
    // neither to that place nor to the file there.
    platform::FileVersion* For(const std::string& path);

private:
    std::string m_path;
    std::optional<platform::FilePlace> m_place;
    platform::FileVersion m_seen;
};

}  // namespace quillet
