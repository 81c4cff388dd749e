// The lock is on the file itself, so nothing is left beside it. A save replaces the file, so after a wait it
// is checked whether the path still leads to the locked one.
#include "Quillet/platform/FileLock.h"

#include <cstdio>
#include <sstream>

#include "Quillet/platform/posix/Descriptor.h"
#include "Quillet/platform/posix/FileStatus.h"

namespace quillet::platform {
namespace {

class PosixFileLock final : public FileLock {
public:
    explicit PosixFileLock(Descriptor file) : m_file(std::move(file)) {}

private:
    Descriptor m_file;
};

// The process that a line of the system's list of locks names as holder of the file, or 0. The line of a
// waiting process has an arrow, and that of a process that is invisible from here has no number.
std::uint64_t HolderIn(const std::string& line, const struct stat& status) {
    long long process = 0;
    unsigned major = 0;
    unsigned minor = 0;
    unsigned long long number = 0;
    const int found =
        std::sscanf(line.c_str(), "%*u: FLOCK %*s %*s %lld %x:%x:%llu", &process, &major, &minor, &number);
    const bool isOfFile =
        found == 4 && DeviceOf(status) == std::pair(major, minor) && number == status.st_ino;
    return isOfFile && process > 0 ? static_cast<std::uint64_t>(process) : 0;
}

// nullopt if the system has no such list, or does not tell.
std::optional<std::uint64_t> HolderOf(const struct stat& status) {
    std::istringstream list(ReadWholeFile("/proc/locks").value_or(std::string()));
    for (std::string line; std::getline(list, line);) {
        if (const std::uint64_t process = HolderIn(line, status)) {
            return process;
        }
    }
    return std::nullopt;
}

}  // namespace

std::unique_ptr<FileLock> FileLock::Try(const std::string& path, Refusal& refusal) {
    for (;;) {
        // Some file systems lock only files open for writing.
        Descriptor file = OpenAt(AT_FDCWD, path, O_RDWR | O_NOCTTY | O_NONBLOCK);
        struct stat status {};
        int error = file.IsOpen() && ::fstat(file.Get(), &status) == 0 ? 0 : errno;
        if (error == 0) {
            error = S_ISREG(status.st_mode) ? Hold(file) : ENOTSUP;
        }
        if (error == EWOULDBLOCK) {
            refusal = {true, HolderOf(status), {}};
            return nullptr;
        }
        if (error != 0) {
            Fail(error, &refusal.m_why);
            return nullptr;
        }
        if (FileIdentity::Of(path) == IdentityOf(status)) {
            return std::make_unique<PosixFileLock>(std::move(file));
        }
    }
}

}  // namespace quillet::platform
