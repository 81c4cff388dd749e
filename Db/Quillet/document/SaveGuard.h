// A file that is saved over only as long as it is what it was.
#pragma once

#include <optional>
#include <string>

#include "Quillet/platform/FileVersion.h"

namespace quillet {

class SaveGuard {
public:
    // Takes what stands at the path now, a file or none.
    explicit SaveGuard(const std::string& path);

    // What has to stand there when the path is saved to; the save keeps it up to date. Null where the path
    // leads neither to that place nor to the file that stands there.
    platform::FileVersion* For(const std::string& path);

private:
    std::string m_path;
    std::optional<platform::FilePlace> m_place;
    platform::FileVersion m_seen;
};

}  // namespace quillet
