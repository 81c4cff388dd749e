// File descriptors, and the system's words for an error. Private to this port.
#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace quillet::platform {

inline std::string Reason(int error) {
    return std::generic_category().message(error);
}

// Puts the reason into why, if given; always false.
inline bool Fail(int error, std::string* why) {
    if (why != nullptr) {
        *why = Reason(error);
    }
    return false;
}

template <typename Call>
auto Retried(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int value) : m_value(value) {}
    Descriptor(Descriptor&& other) noexcept : m_value(std::exchange(other.m_value, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_value, other.m_value);
        return *this;
    }
    ~Descriptor() { Close(); }

    bool IsOpen() const { return m_value != -1; }
    int Get() const { return m_value; }

    // Returns the error that closing reported, or 0. The descriptor is closed either way.
    int Close() {
        const int value = std::exchange(m_value, -1);
        return value != -1 && ::close(value) == -1 && errno != EINTR ? errno : 0;
    }

private:
    int m_value = -1;
};

// Refuses names with a zero byte, where the system would cut them.
inline Descriptor OpenAt(int folder, const std::string& path, int flags, mode_t mode = 0) {
    if (path.find('\0') != std::string::npos) {
        errno = EINVAL;
        return Descriptor();
    }
    return Descriptor(Retried([&] { return ::openat(folder, path.c_str(), flags | O_CLOEXEC, mode); }));
}

// Locks an open file for as long as the descriptor is open. Returns the error, or 0; EWOULDBLOCK if another
// holder has the lock.
inline int Hold(const Descriptor& file) {
    return Retried([&] { return ::flock(file.Get(), LOCK_EX | LOCK_NB); }) == -1 ? errno : 0;
}

}  // namespace quillet::platform
