// Keeps other writers out of a file from reading it to saving it.
#pragma once

#include <memory>
#include <string>

#include "Quillet/platform/FileLock.h"
#include "Settings.h"

namespace quillet::tool {

// The lock of a file that will be changed; null where there is no such file. Waits a while for somebody else
// to let it go, unless the settings forbid that, and throws Failure, which says who has it, when that was too
// short. Where no lock can be made, says so on standard error and gives none: what others change meanwhile is
// then found out when the file is saved.
std::unique_ptr<platform::FileLock> LockForWriting(const std::string& path, const Settings& settings);

}  // namespace quillet::tool
