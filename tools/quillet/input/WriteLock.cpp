#include "input/WriteLock.h"

#include "Failure.h"
#include "Quillet/platform/File.h"
#include "input/Catalog.h"
#include "output/Progress.h"

namespace quillet::tool {

std::unique_ptr<platform::FileLock> LockForWriting(const std::string& path, const Settings& settings) {
    if (!platform::FileIdentity::Of(path)) {
        return nullptr;
    }
    constexpr std::chrono::seconds LongestWait{5};
    platform::FileLock::Refusal refusal;
    std::unique_ptr<platform::FileLock> lock;
    {
        const RunningProgress progress(ScreenBesideFiles(), "Waiting for " + FileName(path));
        lock = platform::FileLock::Take(path, settings.m_waits ? LongestWait : LongestWait.zero(), refusal);
    }
    if (!lock && refusal.m_isHeld) {
        throw Failure(
            path + ": locked by " +
            (refusal.m_holder ? "process " + std::to_string(*refusal.m_holder) : "another program") +
            (settings.m_waits ? ", still after five seconds" : ""));
    }
    if (!lock) {
        Complain("warning: " + path + ": can't be locked: " + refusal.m_why +
                 "; what others change in it meanwhile makes the save fail");
    }
    return lock;
}

}  // namespace quillet::tool
