// The command line of catalogs.
#include <cstdlib>
#include <new>

#include "Run.h"
#include "System.h"

namespace {

// Until main begins nothing catches what a static object of the program throws.
struct MemoryGuard {
    MemoryGuard() {
        std::set_new_handler([] { std::_Exit(quillet::tool::EndOutOfMemory()); });
    }
};

// Before all other static objects of the program.
#if defined(__GNUC__)
[[gnu::init_priority(101)]] const MemoryGuard s_untilMain;
#else
#pragma warning(disable : 4073)
#pragma init_seg(lib)
const MemoryGuard s_untilMain;
#endif

}  // namespace

int main(int argc, char** argv) {
    std::set_new_handler(nullptr);
    quillet::tool::PrepareStandardStreams();
    try {
        return quillet::tool::RunCommandLine(quillet::tool::ProgramArguments(argc, argv));
    } catch (const std::bad_alloc&) {
        return quillet::tool::EndOutOfMemory();
    }
}
