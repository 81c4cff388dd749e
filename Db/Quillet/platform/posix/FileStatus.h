// What the system says of a file. Private to this port.
#pragma once

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <utility>

#include "Quillet/platform/File.h"
#include "Quillet/platform/posix/Descriptor.h"

namespace quillet::platform {

inline FileIdentity IdentityOf(const struct stat& status) {
    return {static_cast<std::uint64_t>(status.st_dev), {static_cast<std::uint64_t>(status.st_ino), 0}};
}

// nullopt if the system can't tell.
inline std::optional<FileStamp> StampOf(const Descriptor& file) {
    constexpr std::int64_t NanosecondsInASecond = 1'000'000'000;
    struct stat status {};
    if (::fstat(file.Get(), &status) == -1) {
        return std::nullopt;
    }
    return FileStamp{IdentityOf(status), static_cast<std::uint64_t>(status.st_size),
                     status.st_mtim.tv_sec * NanosecondsInASecond + status.st_mtim.tv_nsec};
}

// The major and minor number of the device.
inline std::pair<unsigned, unsigned> DeviceOf(const struct stat& status) {
    return {major(status.st_dev), minor(status.st_dev)};
}

}  // namespace quillet::platform
