// Descriptors of files, and what the system says when it refuses one. Private to this port.
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

// Reports the error, if asked; always false.
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

    // The error that closing reported, or 0. It is closed in every case.
    int Close() {
        const int value = std::exchange(m_value, -1);
        return value != -1 && ::close(value) == -1 && errno != EINTR ? errno : 0;
    }

private:
    int m_value = -1;
};

// Refuses names that the system would cut at a zero byte.
inline Descriptor OpenAt(int folder, const std::string& path, int flags, mode_t mode = 0) {
    if (path.find('\0') != std::string::npos) {
        errno = EINVAL;
        return Descriptor();
    }
    return Descriptor(Retried([&] { return ::openat(folder, path.c_str(), flags | O_CLOEXEC, mode); }));
}

// Holds an open file as long as the descriptor is open, unless somebody else does: EWOULDBLOCK then. The
// error, or 0.
inline int Hold(const Descriptor& file) {
    return Retried([&] { return ::flock(file.Get(), LOCK_EX | LOCK_NB); }) == -1 ? errno : 0;
}

}  // namespace quillet::platform
