// A file that is saved over only as long as it is what it was.
#pragma once

#include <string>

#include "Quillet/platform/FileVersion.h"

namespace quillet {

class SaveGuard {
public:
    // Takes what stands at the path now, a file or none.
    explicit SaveGuard(const std::string& path);

    // What has to stand there when the path is saved to; the save keeps it up to date. Null where the path is
    // that of another file.
    platform::FileVersion* For(const std::string& path);

private:
    std::string m_path;
    platform::FileVersion m_seen;
};

}  // namespace quillet
