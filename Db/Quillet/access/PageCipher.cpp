#include "Quillet/access/PageCipher.h"

#include <numeric>
#include <utility>

namespace quillet::access {

void ApplyCipher(const CipherKey& key, std::span<std::uint8_t> bytes) {
    std::array<std::uint8_t, 256> state;
    std::iota(state.begin(), state.end(), std::uint8_t{0});
    std::uint8_t other = 0;
    for (std::size_t i = 0; i < state.size(); ++i) {
        other = static_cast<std::uint8_t>(other + state[i] + key[i % key.size()]);
        std::swap(state[i], state[other]);
    }
    std::uint8_t one = 0;
    other = 0;
    for (std::uint8_t& byte : bytes) {
        ++one;
        other = static_cast<std::uint8_t>(other + state[one]);
        std::swap(state[one], state[other]);
        byte ^= state[static_cast<std::uint8_t>(state[one] + state[other])];
    }
}

CipherKey KeyOfPage(std::uint32_t fileKey, PageNumber page) {
    const std::uint32_t key = fileKey ^ page;
    CipherKey bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::uint8_t>(key >> (8 * i));
    }
    return bytes;
}

}  // namespace quillet::access
