#include "Quillet/platform/FileLock.h"

#include <thread>

namespace quillet::platform {

FileLock::FileLock() = default;
FileLock::~FileLock() = default;

std::unique_ptr<FileLock> FileLock::Take(const std::string& path, std::chrono::milliseconds wait,
                                         Refusal& refusal) {
    constexpr std::chrono::milliseconds BetweenTries{20};
    const auto end = std::chrono::steady_clock::now() + wait;
    for (;;) {
        refusal = {};
        std::unique_ptr<FileLock> lock = Try(path, refusal);
        if (lock || !refusal.m_isHeld || std::chrono::steady_clock::now() >= end) {
            return lock;
        }
        std::this_thread::sleep_for(BetweenTries);
    }
}

}  // namespace quillet::platform
