// The command line for catalogs.
#include <cstdlib>
#include <exception>
#include <new>
#include <utility>

#include "Run.h"
#include "System.h"

namespace {

[[noreturn]] void EndHere() {
    std::_Exit(quillet::tool::EndOutOfMemory());
}

// The run-time can't throw without memory for the exception, and then ends the program.
[[noreturn]] void EndTerminated() {
    if (std::current_exception() == nullptr) {
        EndHere();
    }
    std::abort();
}

// Released when memory runs out, so that there is some for exceptions and their handlers.
constexpr std::size_t ReserveSize = std::size_t{64} * 1024;
void* s_reserve = nullptr;

[[noreturn]] void UseReserve() {
    std::free(std::exchange(s_reserve, nullptr));
    throw std::bad_alloc();
}

// Before main begins, nothing catches what a static object of the program throws.
struct MemoryGuard {
    MemoryGuard() {
        std::set_new_handler(EndHere);
        std::set_terminate(EndTerminated);
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
    s_reserve = std::malloc(ReserveSize);
    if (s_reserve == nullptr) {
        return quillet::tool::EndOutOfMemory();
    }
    std::set_new_handler(UseReserve);
    quillet::tool::PrepareStandardStreams();
    try {
        return quillet::tool::RunCommandLine(quillet::tool::ProgramArguments(argc, argv));
    } catch (const std::bad_alloc&) {
        return quillet::tool::EndOutOfMemory();
    }
}
