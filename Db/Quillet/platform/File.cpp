// What reading a file has in common on all systems.
#include "Quillet/platform/File.h"

#include <algorithm>

namespace quillet::platform {

std::optional<std::string> ReadWholeFile(const std::string& path, std::string* why,
                                         const std::function<bool(std::string_view)>& goesOn) {
    constexpr std::size_t Block = std::size_t{1} << 20;
    const std::unique_ptr<ReadableFile> file = ReadableFile::Open(path, why);
    if (file == nullptr) {
        return std::nullopt;
    }
    const std::optional<FileStamp> stamp = file->Stamp();
    std::string bytes;
    if (stamp) {
        // One byte more than the size, to meet the end without asking for more memory.
        bytes.reserve(static_cast<std::size_t>(stamp->m_size) + 1);
    }
    for (;;) {
        const std::size_t length = bytes.size();
        const std::size_t room = bytes.capacity() - length;
        bytes.resize(length + (room == 0 ? std::max(length, Block) : std::min(room, Block)));
        const std::size_t count = file->Read(bytes.data() + length, bytes.size() - length);
        bytes.resize(length + count);
        if (file->HasFailed(why)) {
            return std::nullopt;
        }
        if (count == 0) {
            return bytes;
        }
        if (goesOn && !goesOn(bytes)) {
            return std::nullopt;
        }
    }
}

std::optional<FileIdentity> ReadableFile::Identity() const {
    const std::optional<FileStamp> stamp = Stamp();
    return stamp ? std::optional(stamp->m_identity) : std::nullopt;
}

}  // namespace quillet::platform
