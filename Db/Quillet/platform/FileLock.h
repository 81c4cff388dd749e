// The right to change a file, one holder at a time.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace quillet::platform {

// Held from before a file is read until it is saved, so that no change in between is lost. It stops only
// those who ask for it. It belongs to the file, whatever links lead there, and ends with its holder, even one
// that is killed. Once the file is replaced, the lock has done its work: release it.
class FileLock {
public:
    // Why there is no lock.
    struct Refusal {
        // True if another holder has the lock; false if no lock can be made.
        bool m_isHeld = false;
        // The process of that holder, if the system tells it.
        std::optional<std::uint64_t> m_holder;
        // Why no lock can be made.
        std::string m_why;
    };

    // Tries to lock an existing file, at least once, and again as long as another holder has the lock and
    // wait has not passed. Null on failure, with the reason in refusal.
    static std::unique_ptr<FileLock> Take(const std::string& path, std::chrono::milliseconds wait,
                                          Refusal& refusal);

    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    // Releases the lock.
    virtual ~FileLock();

protected:
    FileLock();

private:
    // Tries once. Each port has its own.
    static std::unique_ptr<FileLock> Try(const std::string& path, Refusal& refusal);
};

}  // namespace quillet::platform
