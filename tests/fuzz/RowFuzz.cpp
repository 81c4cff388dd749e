// Rows of random bytes: what is read straight from them is what the document gives, in one piece and in
// several. libFuzzer calls this with its inputs; a fault ends the run.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/RowReading.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quillet::test;
    constexpr std::size_t Pieces = 3;
    const std::string rows(data, data + size);
    const std::optional<std::string> scanned = ReadByScanner(rows);
    const char* fault = nullptr;
    if (scanned && scanned != ReadByDocument(rows)) {
        fault = "not what the document gives";
    } else if (scanned && scanned != ReadByScanner(rows, Pieces)) {
        fault = "other rows in pieces";
    }
    if (fault != nullptr) {
        std::fprintf(stderr, "%s: %s\n", fault, rows.c_str());
        std::abort();
    }
    return 0;
}
