#include "Run.h"

#include <exception>
#include <new>

#include "Arguments.h"
#include "Failure.h"
#include "Quillet/base/CException.h"
#include "System.h"
#include "input/Catalog.h"

namespace quillet::tool {

namespace {

constexpr int Failed = 1;
constexpr int BadUsage = 2;

// Passes on that memory ran out, even while an error message was built.
int RunOrComplain(const std::vector<std::string>& arguments) {
    try {
        return ParseArguments(arguments)();
    } catch (const UsageError& error) {
        Complain(error.what());
        return BadUsage;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        Complain(error.what());
    } catch (CException* exception) {
        exception->Delete();
        Complain("the database failed");
    }
    return Failed;
}

}  // namespace

int RunCommandLine(const std::vector<std::string>& arguments) {
    try {
        return RunOrComplain(arguments);
    } catch (const std::bad_alloc&) {
        return EndOutOfMemory();
    }
}

int EndOutOfMemory() noexcept {
    WriteToStandardError("quillet: out of memory\n");
    return Failed;
}

}  // namespace quillet::tool
