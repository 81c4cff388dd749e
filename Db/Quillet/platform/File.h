// Files: reading in blocks, and replacing a file whole. Paths are UTF-8.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quillet::platform {

class FileVersion;

// Which file something is, whatever paths lead to it: equal for one file, by device and inode or by volume
// and file number. The identity of a file that exists no more may become that of a new one; as long as a
// ReadableFile is open, its identity is its own.
class FileIdentity {
public:
    // Of the file that the path leads to, links followed; nothing where no file is, as for a folder.
    static std::optional<FileIdentity> Of(const std::string& path);

    FileIdentity(std::uint64_t device, const std::array<std::uint64_t, 2>& number)
        : m_device(device), m_number(number) {}

    bool operator==(const FileIdentity&) const = default;

private:
    std::uint64_t m_device;
    std::array<std::uint64_t, 2> m_number;
};

// Where a path leads, links followed, whether or not a file stands there by now: equal for one name in one
// folder, as the system tells names apart.
class FilePlace {
public:
    // Nothing where the folder is none.
    static std::optional<FilePlace> Of(const std::string& path);

    FilePlace(const FileIdentity& folder, std::string name) : m_folder(folder), m_name(std::move(name)) {}

    bool operator==(const FilePlace&) const = default;

private:
    FileIdentity m_folder;
    std::string m_name;
};

// What tells a file from what it is after a change, as far as the system keeps it.
struct FileStamp {
    FileIdentity m_identity;
    std::uint64_t m_size;
    // When its bytes were last changed, in the system's own units.
    std::int64_t m_changed;

    bool operator==(const FileStamp&) const = default;
};

// A file open for reading, without sharing restrictions: others may read, write or replace it meanwhile.
class ReadableFile {
public:
    // Null where the path is no file that can be read (a directory is none); why, if asked, says the reason.
    static std::unique_ptr<ReadableFile> Open(const std::string& path, std::string* why = nullptr);

    ReadableFile(const ReadableFile&) = delete;
    ReadableFile& operator=(const ReadableFile&) = delete;
    virtual ~ReadableFile();

    // Reads up to capacity bytes; 0 at the end of the file and on an error, after which every call gives 0.
    virtual std::size_t Read(char* buffer, std::size_t capacity) = 0;

    // Whether a Read ended by an error, and so the bytes before it are not the whole file; why, if asked,
    // says the reason then.
    virtual bool HasFailed(std::string* why = nullptr) const = 0;

    // As the file is now; nothing where the system can't tell.
    virtual std::optional<FileStamp> Stamp() const = 0;
    std::optional<FileIdentity> Identity() const;

protected:
    ReadableFile();
};

// Whether anything has that name: a file, a folder, or a link, wherever it leads.
bool PathExists(const std::string& path);

// Whether the path names an existing file that can be opened for writing. Nothing is created or changed.
bool CanWriteFile(const std::string& path);

// The whole file as bytes; nothing where it can't be read, and why says the reason. After each block goesOn
// is given all bytes up to there; nothing where it returns false.
std::optional<std::string> ReadWholeFile(const std::string& path, std::string* why = nullptr,
                                         const std::function<bool(std::string_view)>& goesOn = nullptr);

// Writes a file beside its target and puts it in the target's place in one step, flushed to the disk. Until
// Commit succeeds, and for ever if it does not, the target is what it was. Links are followed and the mode of
// an existing target is kept; a target that may not be written fails as an open would.
class AtomicFile {
public:
    // Null, with the reason in why, where the target may not be written or the folder takes no new file.
    static std::unique_ptr<AtomicFile> Create(const std::string& target, std::string* why = nullptr);

    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    // Removes what was written beside the target, unless it was committed.
    virtual ~AtomicFile();

    // Appends bytes; false, with the reason in why, when the disk does not take them.
    virtual bool Write(std::string_view bytes, std::string* why = nullptr) = 0;

    // Flushes and replaces the target. No further call is allowed but destruction.
    virtual bool Commit(std::string* why = nullptr) = 0;

    // The same, if the target still is what seen tells, a file or none, and seen becomes what was written.
    // The target is looked at after the flush, just before it is replaced; where none was seen, none is
    // replaced.
    virtual bool CommitOver(FileVersion& seen, std::string* why = nullptr) = 0;

protected:
    AtomicFile();
};

}  // namespace quillet::platform
