// Files read at any position, by pread.
#include "Quillet/platform/RandomAccessFile.h"

#include <sys/stat.h>

#include <utility>

#include "Quillet/platform/posix/Descriptor.h"

namespace quillet::platform {
namespace {

class PosixRandomAccessFile final : public RandomAccessFile {
public:
    explicit PosixRandomAccessFile(Descriptor file) : m_file(std::move(file)) {}

    std::optional<std::size_t> ReadAt(std::uint64_t position, std::span<std::uint8_t> buffer,
                                      std::string* why) override {
        std::size_t filled = 0;
        while (filled < buffer.size()) {
            const ssize_t count = Retried([&] {
                return ::pread(m_file.Get(), buffer.data() + filled, buffer.size() - filled,
                               static_cast<off_t>(position + filled));
            });
            if (count < 0) {
                Fail(errno, why);
                return std::nullopt;
            }
            if (count == 0) {
                break;
            }
            filled += static_cast<std::size_t>(count);
        }
        return filled;
    }

    std::optional<std::uint64_t> Size(std::string* why) const override {
        struct stat status {};
        if (::fstat(m_file.Get(), &status) == -1) {
            Fail(errno, why);
            return std::nullopt;
        }
        return static_cast<std::uint64_t>(status.st_size);
    }

private:
    Descriptor m_file;
};

// 0, or the error of what can't be read at any position.
int CheckRegular(const Descriptor& file) {
    struct stat status {};
    if (::fstat(file.Get(), &status) == -1) {
        return errno;
    }
    if (S_ISDIR(status.st_mode)) {
        return EISDIR;
    }
    return S_ISREG(status.st_mode) ? 0 : ESPIPE;
}

}  // namespace

RandomAccessFile::RandomAccessFile() = default;
RandomAccessFile::~RandomAccessFile() = default;

std::unique_ptr<RandomAccessFile> RandomAccessFile::Open(const std::string& path, std::string* why) {
    // A pipe that nobody writes to must not keep us waiting.
    Descriptor file = OpenAt(AT_FDCWD, path, O_RDONLY | O_NOCTTY | O_NONBLOCK);
    const int error = file.IsOpen() ? CheckRegular(file) : errno;
    if (error != 0) {
        Fail(error, why);
        return nullptr;
    }
    return std::make_unique<PosixRandomAccessFile>(std::move(file));
}

}  // namespace quillet::platform
