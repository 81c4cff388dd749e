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

// Identifies a file whatever path leads to it, by device and inode or by volume and file number. The system
// may give the identity of a deleted file to a new one, but not as long as a ReadableFile has the old one
// open.
class FileIdentity {
public:
    // The identity of the file that the path leads to, links followed; nullopt if there is no file. A folder
    // is not a file.
    static std::optional<FileIdentity> Of(const std::string& path);

    FileIdentity(std::uint64_t device, const std::array<std::uint64_t, 2>& number)
        : m_device(device), m_number(number) {}

    bool operator==(const FileIdentity&) const = default;

private:
    std::uint64_t m_device;
    std::array<std::uint64_t, 2> m_number;
};

// Where a path leads, links followed, whether or not a file exists there. Two places are equal if they have
// one name in one folder, as the system tells names apart.
class FilePlace {
public:
    // nullopt if there is no such folder.
    static std::optional<FilePlace> Of(const std::string& path);

    FilePlace(const FileIdentity& folder, std::string name) : m_folder(folder), m_name(std::move(name)) {}

    bool operator==(const FilePlace&) const = default;

private:
    FileIdentity m_folder;
    std::string m_name;
};

// What tells a file from the same file after a change, as far as the system keeps it.
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
    // Null if the path is not a file that can be read (a directory is not); why, if given, gets the reason.
    static std::unique_ptr<ReadableFile> Open(const std::string& path, std::string* why = nullptr);

    ReadableFile(const ReadableFile&) = delete;
    ReadableFile& operator=(const ReadableFile&) = delete;
    virtual ~ReadableFile();

    // Reads up to capacity bytes; 0 at the end of the file and on an error, after which every call gives 0.
    virtual std::size_t Read(char* buffer, std::size_t capacity) = 0;

    // Whether a Read failed, so that the bytes read are not the whole file; why, if given, then gets the
    // reason.
    virtual bool HasFailed(std::string* why = nullptr) const = 0;

    // The file's stamp as it is now; nullopt if the system can't tell.
    virtual std::optional<FileStamp> Stamp() const = 0;
    std::optional<FileIdentity> Identity() const;

protected:
    ReadableFile();
};

// Whether anything has that name: a file, a folder, or a link, wherever it leads.
bool PathExists(const std::string& path);

// Whether the path leads to a file whose bytes stay when they are read, which those of a pipe don't.
bool IsRegularFile(const std::string& path);

// Whether the path names an existing file that can be opened for writing. Nothing is created or changed.
bool CanWriteFile(const std::string& path);

// The whole file as bytes; nullopt if it can't be read, with the reason in why. After each block goesOn gets
// all bytes read so far; if it returns false, reading stops and the result is nullopt.
std::optional<std::string> ReadWholeFile(const std::string& path, std::string* why = nullptr,
                                         const std::function<bool(std::string_view)>& goesOn = nullptr);

// Writes a file beside its target and puts it in the target's place in one step, flushed to the disk. Until
// Commit succeeds, and forever if it does not, the target stays as it was. Links are followed and the mode of
// an existing target is kept; a target that may not be written fails as an open would.
class AtomicFile {
public:
    // Null, with the reason in why, if the target may not be written or the folder takes no new file.
    static std::unique_ptr<AtomicFile> Create(const std::string& target, std::string* why = nullptr);

    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    // Removes what was written beside the target, unless it was committed.
    virtual ~AtomicFile();

    // Appends bytes; false, with the reason in why, if they can't be written.
    virtual bool Write(std::string_view bytes, std::string* why = nullptr) = 0;

    // Flushes and replaces the target. Afterwards the object may only be destroyed.
    virtual bool Commit(std::string* why = nullptr) = 0;

    // As Commit, but only if the target still is the version in seen, which may be that of no file; seen then
    // becomes the version written. The target is checked after the flush, just before it is replaced. If seen
    // is the version of no file, no file is replaced.
    virtual bool CommitOver(FileVersion& seen, std::string* why = nullptr) = 0;

protected:
    AtomicFile();
};

}  // namespace quillet::platform
