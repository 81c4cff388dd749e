// A digest of the bytes of a file. It tells versions of a file apart; it does not resist attacks.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace quillet::platform {

// The digest of bytes that arrive in pieces, however they are divided. Four sums run side by side, because
// the processor can multiply for one of them while another waits.
class ContentDigest {
public:
    void Add(std::string_view bytes) {
        m_length += bytes.size();
        if (m_pending > 0) {
            const std::size_t taken = std::min(bytes.size(), StripeBytes - m_pending);
            bytes.copy(m_rest.data() + m_pending, taken);
            m_pending += taken;
            bytes.remove_prefix(taken);
            if (m_pending < StripeBytes) {
                return;
            }
            AddStripe(m_rest.data());
            m_pending = 0;
        }
        for (; bytes.size() >= StripeBytes; bytes.remove_prefix(StripeBytes)) {
            AddStripe(bytes.data());
        }
        m_pending = bytes.copy(m_rest.data(), bytes.size());
    }

    std::uint64_t Value() const {
        std::uint64_t value = m_length;
        for (const std::uint64_t sum : m_sums) {
            value = Round(value, sum);
        }
        for (std::size_t i = 0; i < m_pending; ++i) {
            value = Round(value, static_cast<unsigned char>(m_rest[i]));
        }
        return value;
    }

private:
    using Sums = std::array<std::uint64_t, 4>;
    static constexpr std::size_t StripeBytes = sizeof(Sums);

    // Odd factors lose no bit; the rotation brings the upper bits, which a product does not spread, down.
    static std::uint64_t Round(std::uint64_t sum, std::uint64_t word) {
        constexpr std::uint64_t First = 0x9e3779b97f4a7c15;
        constexpr std::uint64_t Second = 0xd1342543de82ef95;
        constexpr int HalfWord = 32;
        return std::rotl(sum + word * First, HalfWord) * Second;
    }

    void AddStripe(const char* bytes) {
        Sums words;
        std::memcpy(words.data(), bytes, StripeBytes);
        for (std::size_t i = 0; i < words.size(); ++i) {
            m_sums[i] = Round(m_sums[i], words[i]);
        }
    }

    // Different, so that bytes that move from one to another make a difference.
    Sums m_sums = {1, 2, 3, 4};
    std::uint64_t m_length = 0;
    // The bytes of a stripe that is not complete yet.
    std::array<char, StripeBytes> m_rest{};
    std::size_t m_pending = 0;
};

}  // namespace quillet::platform
