// Files read at any position. Paths are UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace quillet::platform {

// A regular file open for reading, without sharing restrictions: others may read, write or replace it
// meanwhile.
class RandomAccessFile {
public:
    // Null, with the reason in why, if the path is not a file that can be read at any position (a directory
    // and a pipe are not).
    static std::unique_ptr<RandomAccessFile> Open(const std::string& path, std::string* why = nullptr);

    RandomAccessFile(const RandomAccessFile&) = delete;
    RandomAccessFile& operator=(const RandomAccessFile&) = delete;
    virtual ~RandomAccessFile();

    // Fills buffer from the position, counted in bytes from the file's beginning. Returns how many bytes it
    // got, fewer than asked for only at the end of the file; nullopt, with the reason in why, on an error.
    virtual std::optional<std::size_t> ReadAt(std::uint64_t position, std::span<std::uint8_t> buffer,
                                              std::string* why = nullptr) = 0;

    // The file's length now, in bytes; nullopt, with the reason in why, if the system can't tell.
    virtual std::optional<std::uint64_t> Size(std::string* why = nullptr) const = 0;

protected:
    RandomAccessFile();
};

}  // namespace quillet::platform
