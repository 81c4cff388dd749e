// Random texts, to check collation keys against the comparison.
#pragma once

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "Quillet/platform/Collation.h"
#include "support/Seed.h"
#include "support/VariantValues.h"

namespace quillet::test {

using platform::CollationKey;
using platform::WideString;
using platform::WideView;

struct Key {
    CollationKey m_kind;
    std::string m_bytes;
};

inline Key KeyOf(WideView text) {
    Key key{};
    key.m_kind = platform::AppendCollationKey(text, key.m_bytes);
    return key;
}

// A text of any units as a variant.
class TextVariant : public ScopedVariant {
public:
    explicit TextVariant(const WideString& text) {
        (*this)->vt = VT_BSTR;
        (*this)->bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    }
};

inline HRESULT Compared(const WideString& left, const WideString& right) {
    TextVariant leftValue(left);
    TextVariant rightValue(right);
    return VarCmp(&leftValue, &rightValue, LOCALE_USER_DEFAULT, 0);
}

inline HRESULT Compared(const std::string& left, const std::string& right) {
    const int order = left.compare(right);
    if (order == 0) {
        return VARCMP_EQ;
    }
    return order < 0 ? VARCMP_LT : VARCMP_GT;
}

struct Range {
    unsigned m_first;
    unsigned m_last;
};

inline WideString UnitsOf(const std::vector<Range>& ranges) {
    WideString units;
    for (const Range& range : ranges) {
        for (unsigned unit = range.m_first; unit <= range.m_last; ++unit) {
            units.push_back(static_cast<WCHAR>(unit));
        }
    }
    return units;
}

// Characters of texts whose keys sort like the comparison.
inline std::vector<WideString> PlainAlphabets() {
    constexpr Range Ascii = {0x20, 0x7E};
    return {
        UnitsOf({Ascii}),
        OLESTR("aAbB1 "),
        OLESTR("aAb-'. _"),
        OLESTR("aeE\u00E9\u00C9\u00E8\u00E4o\u00DFs\u00E6chldz\u017E"),
        UnitsOf({Ascii, {0xA0, 0xAC}, {0xAE, 0x17F}}),
        UnitsOf({{0x386, 0x386}, {0x388, 0x38A}, {0x38C, 0x38C}, {0x38E, 0x3A1}, {0x3A3, 0x3CE}}),
        UnitsOf({{0x38E, 0x3A1}, {0x3A3, 0x3CE}, {0x400, 0x45F}}),
        UnitsOf({Ascii, {0x218, 0x21B}, {0x1EA0, 0x1EF9}}),
        UnitsOf({Ascii, {0x2013, 0x2014}, {0x2018, 0x2019}, {0x201C, 0x201E}, {0x2026, 0x2026}}),
        UnitsOf({{0x30, 0x39}, {0x2030, 0x2030}, {0x2032, 0x2033}, {0x20AC, 0x20AC}, {0x2264, 0x2265}}),
        UnitsOf({{0x3041, 0x3096}, {0x30A1, 0x30FA}}),
        UnitsOf({{0x4E00, 0x9FA5}}),
        UnitsOf({{0xAC00, 0xD7A3}}),
    };
}

// Characters of texts that may equal texts of other characters, or whose keys may sort differently.
inline std::vector<WideString> OtherAlphabets() {
    return {
        UnitsOf({{0, 0x24F}}),
        UnitsOf({{0x300, 0x36F}, {'a', 'e'}}),
        UnitsOf({{0, 1}, {'a', 'b'}, {0xAD, 0xAD}, {0x200B, 0x200D}, {0xFFFD, 0xFFFF}}),
        UnitsOf({{'a', 'a'},
                 {'e', 'e'},
                 {0xC9, 0xC9},
                 {0xE9, 0xE9},
                 {0x301, 0x301},
                 {0x308, 0x308},
                 {0x34F, 0x34F}}),
        UnitsOf({{0x590, 0x6FF}}),
        UnitsOf({{0x900, 0xEFF}}),
        UnitsOf({{0x1100, 0x11FF}, {0xAC00, 0xAC20}}),
        UnitsOf({{0xD800, 0xDFFF}}),
        UnitsOf({{0xFB50, 0xFDFF}, {0xFE70, 0xFEFF}}),
        UnitsOf({{1, 0xFFFF}}),
    };
}

// Pairs of texts with small differences: one character inserted, removed or changed, or two swapped.
class TextPairs {
public:
    explicit TextPairs(unsigned seed) : m_numbers(Seed(seed)) {}

    void Draw(const WideString& units) {
        constexpr std::size_t Longest = 10;
        constexpr std::size_t MostChanges = 3;
        m_left.clear();
        for (std::size_t left = Below(Longest) + 1; left > 0; --left) {
            m_left.push_back(units[Below(units.size())]);
        }
        m_right = m_left;
        for (std::size_t left = Below(MostChanges) + 1; left > 0; --left) {
            Change(units);
        }
    }

    const WideString& Left() const { return m_left; }
    const WideString& Right() const { return m_right; }

private:
    std::size_t Below(std::size_t limit) { return m_numbers() % limit; }

    void Change(const WideString& units) {
        const WCHAR unit = units[Below(units.size())];
        const std::size_t at = Below(m_right.size() + 1);
        switch (Below(4)) {
            case 0:
                m_right.insert(m_right.begin() + static_cast<std::ptrdiff_t>(at), unit);
                break;
            case 1:
                m_right.erase(std::min(at, m_right.size()), 1);
                break;
            case 2:
                if (at < m_right.size()) {
                    m_right[at] = unit;
                }
                break;
            default:
                if (at + 1 < m_right.size()) {
                    std::swap(m_right[at], m_right[at + 1]);
                }
                break;
        }
    }

    std::mt19937 m_numbers;
    WideString m_left;
    WideString m_right;
};

inline bool IsKept(const WideString& left, const WideString& right) {
    const Key leftKey = KeyOf(left);
    const Key rightKey = KeyOf(right);
    if (leftKey.m_kind == CollationKey::None || rightKey.m_kind == CollationKey::None) {
        return true;
    }
    const HRESULT compared = Compared(left, right);
    if (leftKey.m_kind == CollationKey::Order && rightKey.m_kind == CollationKey::Order) {
        return Compared(leftKey.m_bytes, rightKey.m_bytes) == compared;
    }
    return compared != HRESULT{VARCMP_EQ} || leftKey.m_bytes == rightKey.m_bytes;
}

// Descriptions of pairs of texts whose keys are wrong; empty if all are right.
inline std::string WrongKeys(const std::vector<WideString>& alphabets, int rounds, unsigned seed) {
    std::string wrong;
    TextPairs pairs(seed);
    for (const WideString& units : alphabets) {
        for (int round = 0; round < rounds; ++round) {
            pairs.Draw(units);
            if (!IsKept(pairs.Left(), pairs.Right())) {
                const TextVariant left(pairs.Left());
                const TextVariant right(pairs.Right());
                wrong += Describe(*left) + " against " + Describe(*right) + "\n";
            }
        }
    }
    return wrong;
}

}  // namespace quillet::test
