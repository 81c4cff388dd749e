// Locks a file against other writers, from reading it to saving it.
#pragma once

#include <memory>
#include <string>

#include "Quillet/platform/FileLock.h"
#include "Settings.h"

namespace quillet::tool {

// The lock of a file that will be changed; null if there is no such file. Waits a while for another holder to
// release it, unless the settings forbid that, and then throws Failure, which says who holds it. If the
// system can't lock the file, says so on standard error and returns null: changes by others are then detected
// when the file is saved.
std::unique_ptr<platform::FileLock> LockForWriting(const std::string& path, const Settings& settings);

}  // namespace quillet::tool
