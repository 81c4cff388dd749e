#include "Quillet/platform/FileVersion.h"

#include "Quillet/platform/ContentDigest.h"

namespace quillet::platform {

FileVersion FileVersion::Of(const std::string& path) {
    const std::unique_ptr<ReadableFile> file = ReadableFile::Open(path);
    if (file) {
        return Of(*file);
    }
    return FileIdentity::Of(path) ? FileVersion(std::nullopt, 0) : FileVersion();
}

FileVersion FileVersion::Of(ReadableFile& file) {
    constexpr std::size_t Block = std::size_t{64} * 1024;
    const std::optional<FileStamp> before = file.Stamp();
    ContentDigest digest;
    std::string block(Block, '\0');
    while (const std::size_t count = file.Read(block.data(), block.size())) {
        digest.Add(std::string_view(block).substr(0, count));
    }
    const bool isWhole = !file.HasFailed() && file.Stamp() == before;
    return {isWhole ? before : std::nullopt, digest.Value()};
}

bool FileVersion::Matches(const FileVersion& now, std::string* why) const {
    if (m_isKnown && now.m_isKnown && m_stamp == now.m_stamp && m_digest == now.m_digest) {
        return true;
    }
    if (why != nullptr) {
        *why = !m_isKnown          ? "it could not be read before, so nobody can tell whether it was changed"
               : IsOfNothing()     ? "somebody else made it meanwhile"
               : now.IsOfNothing() ? "somebody else removed it meanwhile"
                                   : "somebody else changed it meanwhile";
    }
    return false;
}

}  // namespace quillet::platform
