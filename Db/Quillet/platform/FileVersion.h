// The version of a file at one moment, to find out later whether it has changed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Quillet/platform/File.h"

namespace quillet::platform {

// Which file it was, its length, the time of its last change, and a digest of its bytes, since times can be
// too coarse or be set back. There is also a version of no file.
class FileVersion {
public:
    // Reads the file that the path leads to, links followed. A file that can't be read, or that is changed
    // while it is read, has a version that matches nothing.
    static FileVersion Of(const std::string& path);
    // Reads the file from its current position to its end.
    static FileVersion Of(ReadableFile& file);

    // The version of no file.
    FileVersion() = default;
    // Without a stamp, a version that matches nothing.
    FileVersion(const std::optional<FileStamp>& stamp, std::uint64_t digest)
        : m_isKnown(stamp.has_value()), m_stamp(stamp), m_digest(digest) {}

    // Whether there was no file.
    bool IsOfNothing() const { return m_isKnown && !m_stamp; }

    // Whether now, taken later, is the same file unchanged, or still no file; if not, why, if given, gets the
    // difference.
    bool Matches(const FileVersion& now, std::string* why = nullptr) const;

private:
    bool m_isKnown = true;
    std::optional<FileStamp> m_stamp;
    std::uint64_t m_digest = 0;
};

}  // namespace quillet::platform
