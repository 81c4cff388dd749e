// Query texts of random bytes. libFuzzer calls this with its inputs; a fault ends the run.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz/QueryFaults.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string faults = quillet::test::FaultsOf(std::string(data, data + size));
    if (!faults.empty()) {
        std::fputs(faults.c_str(), stderr);
        std::abort();
    }
    return 0;
}
