#include "Quillet/platform/ContentDigest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>

namespace quillet::platform {
namespace {

std::uint64_t DigestOf(std::string_view bytes) {
    ContentDigest digest;
    digest.Add(bytes);
    return digest.Value();
}

// Several stripes and a rest.
std::string SampleBytes() {
    std::string bytes;
    for (int i = 0; i < 203; ++i) {
        bytes += static_cast<char>(i * 7);
    }
    return bytes;
}

TEST(ContentDigest, Value_IsTheSameHoweverTheBytesAreDivided) {
    const std::string bytes = SampleBytes();
    for (std::size_t piece = 1; piece <= bytes.size(); ++piece) {
        ContentDigest digest;
        for (std::string_view left = bytes; !left.empty(); left.remove_prefix(std::min(piece, left.size()))) {
            digest.Add(left.substr(0, piece));
            digest.Add({});
        }
        EXPECT_EQ(digest.Value(), DigestOf(bytes)) << "pieces of " << piece;
    }
}

TEST(ContentDigest, Value_IsAnotherForEveryBitThatIsTurned) {
    std::string bytes = SampleBytes();
    std::set<std::uint64_t> seen = {DigestOf(bytes)};
    for (char& byte : bytes) {
        for (int bit = 0; bit < 8; ++bit) {
            const char old = byte;
            byte = static_cast<char>(byte ^ (1 << bit));
            EXPECT_TRUE(seen.insert(DigestOf(bytes)).second);
            byte = old;
        }
    }
}

// Changes that a sum or a product alone would not notice.
TEST(ContentDigest, Value_IsAnotherForBytesThatMove) {
    std::set<std::uint64_t> seen;
    const std::string zeros(128, '\0');
    for (std::size_t first = 0; first < zeros.size(); ++first) {
        for (std::size_t second = first; second < zeros.size(); ++second) {
            std::string bytes = zeros;
            bytes[first] = '\x80';
            bytes[second] = '\x80';
            EXPECT_TRUE(seen.insert(DigestOf(bytes)).second) << first << ", " << second;
        }
    }
}

TEST(ContentDigest, Value_IsAnotherForEveryLength) {
    std::set<std::uint64_t> seen;
    for (std::size_t length = 0; length < 200; ++length) {
        EXPECT_TRUE(seen.insert(DigestOf(std::string(length, '\0'))).second) << length;
    }
}

}  // namespace
}  // namespace quillet::platform
