// Files read at any position, by overlapped positions on a synchronous handle.
#include "Quillet/platform/RandomAccessFile.h"

#include <algorithm>
#include <utility>

#include "Quillet/platform/windows/FileHandle.h"

namespace quillet::platform {
namespace {

class WindowsRandomAccessFile final : public RandomAccessFile {
public:
    explicit WindowsRandomAccessFile(FileHandle file) : m_file(std::move(file)) {}

    std::optional<std::size_t> ReadAt(std::uint64_t position, std::span<std::uint8_t> buffer,
                                      std::string* why) override {
        std::size_t filled = 0;
        while (filled < buffer.size()) {
            DWORD count = 0;
            const DWORD error = ReadSome(position + filled, buffer.subspan(filled), count);
            if (error != ERROR_SUCCESS) {
                Fail(error, why);
                return std::nullopt;
            }
            if (count == 0) {
                break;
            }
            filled += count;
        }
        return filled;
    }

    std::optional<std::uint64_t> Size(std::string* why) const override {
        LARGE_INTEGER size;
        if (GetFileSizeEx(m_file.Get(), &size) == 0) {
            Fail(GetLastError(), why);
            return std::nullopt;
        }
        return static_cast<std::uint64_t>(size.QuadPart);
    }

private:
    // The error, or ERROR_SUCCESS; count is 0 at the end.
    DWORD ReadSome(std::uint64_t position, std::span<std::uint8_t> buffer, DWORD& count) {
        constexpr std::size_t MostAtOnce = std::size_t{1} << 30;
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(position);
        place.OffsetHigh = static_cast<DWORD>(position >> 32);
        const auto most = static_cast<DWORD>(std::min(buffer.size(), MostAtOnce));
        if (ReadFile(m_file.Get(), buffer.data(), most, &count, &place) != 0) {
            return ERROR_SUCCESS;
        }
        const DWORD error = GetLastError();
        return error == ERROR_HANDLE_EOF ? ERROR_SUCCESS : error;
    }

    FileHandle m_file;
};

}  // namespace

RandomAccessFile::RandomAccessFile() = default;
RandomAccessFile::~RandomAccessFile() = default;

std::unique_ptr<RandomAccessFile> RandomAccessFile::Open(const std::string& path, std::string* why) {
    WideString wide;
    DWORD error = ToSystemPath(path, wide);
    FileHandle file;
    if (error == ERROR_SUCCESS) {
        file = OpenExisting(wide, GENERIC_READ, FILE_FLAG_RANDOM_ACCESS);
        error = file.IsOpen() ? ERROR_SUCCESS : GetLastError();
    }
    if (error == ERROR_SUCCESS && GetFileType(file.Get()) != FILE_TYPE_DISK) {
        error = ERROR_SEEK_ON_DEVICE;
    }
    if (error != ERROR_SUCCESS) {
        Fail(error, why);
        return nullptr;
    }
    return std::make_unique<WindowsRandomAccessFile>(std::move(file));
}

}  // namespace quillet::platform
