// The right to change a file, one holder at a time.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace quillet::platform {

// Held from before a file is read until it is saved, so that no change between is lost. Only those who ask
// for it are hindered. It belongs to the file, whatever links lead there, and goes with its holder, also when
// that is killed. Once the file is replaced, the lock has done its work: let it go.
class FileLock {
public:
    // Why there is no lock.
    struct Refusal {
        // Whether somebody else holds it; otherwise none can be made.
        bool m_isHeld = false;
        // The holder's process, where the system tells.
        std::optional<std::uint64_t> m_holder;
        // Why none can be made.
        std::string m_why;
    };

    // Asks for the lock of an existing file as long as wait and somebody else's hold last, at least once.
    // Null where there is none, and refusal says why.
    static std::unique_ptr<FileLock> Take(const std::string& path, std::chrono::milliseconds wait,
                                          Refusal& refusal);

    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    // Lets it go.
    virtual ~FileLock();

protected:
    FileLock();

private:
    // Asks once; the port's own.
    static std::unique_ptr<FileLock> Try(const std::string& path, Refusal& refusal);
};

}  // namespace quillet::platform
