#include "Quillet/platform/posix/FileAttributes.h"

#if defined(__linux__)
#include <sys/xattr.h>

#include <cerrno>
#include <string>
#include <string_view>
#endif

namespace quillet::platform {

#if defined(__linux__)

namespace {

constexpr const char* AccessList = "system.posix_acl_access";

bool IsKept(std::string_view name) {
    return name.starts_with("user.") || name.starts_with("system.") || name == "security.selinux";
}

// Gets bytes from a call that tells their number when it is given no room. Returns the error, or 0.
template <typename Call>
int BytesOf(Call call, std::string& bytes) {
    for (;;) {
        const ssize_t needed = call(nullptr, 0);
        if (needed < 0) {
            return errno;
        }
        bytes.resize(static_cast<std::size_t>(needed));
        const ssize_t length = needed == 0 ? 0 : call(bytes.data(), bytes.size());
        if (length >= 0) {
            bytes.resize(static_cast<std::size_t>(length));
            return 0;
        }
        // They may have grown meanwhile.
        if (errno != ERANGE) {
            return errno;
        }
    }
}

int CopyAttribute(int from, int to, const char* name) {
    std::string value;
    const int error =
        BytesOf([&](char* room, std::size_t size) { return ::fgetxattr(from, name, room, size); }, value);
    if (error != 0) {
        return error;
    }
    return ::fsetxattr(to, name, value.data(), value.size(), 0) == -1 ? errno : 0;
}

// Copies the old file's list. If it has none, removes the one that the new file may have got from its folder.
int CopyAccessList(int from, int to) {
    const int error = CopyAttribute(from, to, AccessList);
    if (error != ENODATA && error != ENOTSUP) {
        return error;
    }
    return ::fremovexattr(to, AccessList) == -1 && errno != ENODATA && errno != ENOTSUP ? errno : 0;
}

}  // namespace

int CopyAttributes(int from, int to) {
    std::string names;
    BytesOf([&](char* room, std::size_t size) { return ::flistxattr(from, room, size); }, names);
    for (std::size_t start = 0; start < names.size(); start += std::string_view(&names[start]).size() + 1) {
        const std::string_view name = &names[start];
        if (IsKept(name) && name != AccessList) {
            static_cast<void>(CopyAttribute(from, to, &names[start]));
        }
    }
    return CopyAccessList(from, to);
}

#else

int CopyAttributes(int, int) {
    return 0;
}

#endif

}  // namespace quillet::platform
