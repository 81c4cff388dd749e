// Decides for which texts a key is as good as a comparison. Neither system's keys agree with its comparison
// for every text: combining marks, characters without weight between them, and ligatures may come out
// differently.
#include "Quillet/platform/Collation.h"

#include <algorithm>
#include <iterator>

#include "Quillet/platform/SortKeys.h"

namespace quillet::platform {
namespace {

constexpr WCHAR FirstPrintable = 0x20;
constexpr WCHAR LastPrintable = 0x7E;

struct UnitRange {
    WCHAR m_first;
    WCHAR m_last;
};

// Beyond ASCII: characters that stand for themselves and don't combine with others. The soft hyphen, which
// has no weight, is not among them.
constexpr UnitRange PlainRanges[] = {
    {0x00A0, 0x00AC}, {0x00AE, 0x017F}, {0x0218, 0x021B},                    // Latin
    {0x0386, 0x0386}, {0x0388, 0x038A}, {0x038C, 0x038C},                    // Greek
    {0x038E, 0x03A1}, {0x03A3, 0x03CE}, {0x0400, 0x045F},                    // Greek, Cyrillic
    {0x1EA0, 0x1EF9},                                                        // Vietnamese
    {0x2013, 0x2014}, {0x2018, 0x2019}, {0x201C, 0x201E}, {0x2026, 0x2026},  // dashes, quotes, dots
    {0x2030, 0x2030}, {0x2032, 0x2033}, {0x20AC, 0x20AC}, {0x2264, 0x2265},  // units, comparison
    {0x3041, 0x3096}, {0x30A1, 0x30FA}, {0x4E00, 0x9FA5}, {0xAC00, 0xD7A3},  // kana, Chinese, Hangul
};

bool IsPlain(WCHAR unit) {
    if (unit <= LastPrintable) {
        return unit >= FirstPrintable;
    }
    const auto* const range =
        std::lower_bound(std::begin(PlainRanges), std::end(PlainRanges), unit,
                         [](const UnitRange& it, WCHAR wanted) { return it.m_last < wanted; });
    return range != std::end(PlainRanges) && unit >= range->m_first;
}

}  // namespace

CollationKey AppendCollationKey(WideView text, std::string& key) {
    const bool isPlain = std::all_of(text.begin(), text.end(), IsPlain);
    if (!isPlain && !EqualsOnlyByKey(text)) {
        return CollationKey::None;
    }
    if (!AppendSortKey(text, key)) {
        return CollationKey::None;
    }
    return isPlain ? CollationKey::Order : CollationKey::Equality;
}

}  // namespace quillet::platform
