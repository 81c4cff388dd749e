// Access files with random changes. An input is a list of changes to a small made file, so that the fuzzer
// need not find out how pages and rows are laid out. libFuzzer calls this; a crash, a sanitizer's report, a
// loop or too much memory ends the run.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "support/AccessImage.h"
#include "support/AccessSample.h"

namespace {

// The first byte of an input chooses the file and how much of it is there.
std::string ChosenSample(std::uint8_t choice) {
    static const std::array<std::string, 2> samples{quillet::test::AccessSample(quillet::access::Jet3Layout),
                                                    quillet::test::AccessSample(quillet::access::Jet4Layout)};
    std::string bytes = samples[choice % samples.size()];
    if (choice >= 0xF0) {
        bytes.resize(bytes.size() * (choice - 0xEFU) / 0x11);
    }
    return bytes;
}

// A change is its place in three bytes, its length in one, and its bytes.
std::string Changed(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t Head = 4;
    constexpr std::size_t Longest = 16;
    std::string bytes = ChosenSample(size > 0 ? data[0] : 0);
    for (std::size_t next = 1; next + Head <= size && !bytes.empty();) {
        const std::size_t place =
            quillet::access::LittleU24(quillet::access::ByteView(data, size), next) % bytes.size();
        const std::size_t length =
            std::min({data[next + 3] % Longest + 1, size - next - Head, bytes.size() - place});
        std::copy_n(data + next + Head, length, bytes.begin() + static_cast<std::ptrdiff_t>(place));
        next += Head + std::max<std::size_t>(length, 1);
    }
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quillet::test::ReadEverything(std::make_unique<quillet::test::MemoryFile>(Changed(data, size)));
    return 0;
}
