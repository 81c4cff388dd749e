#include "Quillet/rows/OrderColumn.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "Quillet/platform/Collation.h"
#include "Quillet/rows/Numbering.h"
#include "Quillet/rows/TextNumbers.h"

namespace quillet {

namespace {

using platform::CollationKey;

// How many cells there are of each type.
class TypeCounts {
public:
    void Add(VARTYPE type, std::size_t cells) {
        if (type < m_counts.size()) {
            m_counts[type] += cells;
        }
    }

    // The type of most cells, of those types whose cells can be ranked.
    VARTYPE Commonest() const {
        constexpr std::array<VARTYPE, 7> Types = {VT_I2, VT_I4, VT_R4, VT_R8, VT_DATE, VT_BOOL, VT_BSTR};
        return *std::max_element(Types.begin(), Types.end(), [this](VARTYPE left, VARTYPE right) {
            return m_counts[left] < m_counts[right];
        });
    }

private:
    std::array<std::size_t, VT_BOOL + 1> m_counts = {};
};

// The value of a number of the type, and 0 for an empty cell, which compares as 0.
std::optional<double> NumberOf(const CellView& cell, VARTYPE type) {
    const CellView value = cell.Plain();
    double number = 0;
    switch (value.GetKind()) {
        case CellView::Kind::Empty:
            return 0;
        case CellView::Kind::Short:
        case CellView::Kind::Boolean:
            number = value.AsShort();
            break;
        case CellView::Kind::Long:
            number = value.AsLong();
            break;
        case CellView::Kind::Float:
            number = double{value.AsFloat()};
            break;
        case CellView::Kind::Double:
            number = value.AsDouble();
            break;
        case CellView::Kind::Variant:
            number = value.AsVariant().dblVal;
            break;
        default:
            return std::nullopt;
    }
    return value.Type() != type || std::isnan(number) ? std::nullopt : std::optional(number);
}

// The number of a row, and a key of its own that sorts as the number of its cell.
struct NumberKey {
    std::uint64_t m_key;
    std::uint32_t m_row;
};

std::uint64_t KeyOf(double number) {
    constexpr std::uint64_t Sign = std::uint64_t{1} << 63U;
    // Both zeros are one number.
    const auto bits = std::bit_cast<std::uint64_t>(number == 0 ? 0.0 : number);
    return (bits & Sign) != 0 ? ~bits : bits | Sign;
}

// Sorts keys digit by digit, from the lowest; rows of one key keep their order. Three times as fast as
// comparing where keys are many.
class DigitSort {
public:
    static void Sort(std::vector<NumberKey>& keys) {
        constexpr std::size_t Few = 1024;
        if (keys.size() < Few) {
            std::stable_sort(keys.begin(), keys.end(), [](const NumberKey& left, const NumberKey& right) {
                return left.m_key < right.m_key;
            });
            return;
        }
        const std::vector<Places> counts = CountDigits(keys);
        std::vector<NumberKey> sorted(keys.size());
        for (unsigned digit = 0; digit < Digits; ++digit) {
            if (counts[digit][DigitOf(keys.front(), digit)] == keys.size()) {
                continue;
            }
            Places places{};
            std::partial_sum(counts[digit].begin(), counts[digit].end() - 1, places.begin() + 1);
            for (const NumberKey& key : keys) {
                sorted[places[DigitOf(key, digit)]++] = key;
            }
            keys.swap(sorted);
        }
    }

private:
    static constexpr unsigned DigitBits = 11;
    static constexpr unsigned Digits = 6;
    static constexpr std::size_t Values = std::size_t{1} << DigitBits;
    using Places = std::array<std::uint32_t, Values>;

    static std::size_t DigitOf(const NumberKey& key, unsigned digit) {
        return key.m_key >> (digit * DigitBits) & (Values - 1);
    }

    // How often each digit has each value.
    static std::vector<Places> CountDigits(const std::vector<NumberKey>& keys) {
        std::vector<Places> counts(Digits);
        for (const NumberKey& key : keys) {
            for (unsigned digit = 0; digit < Digits; ++digit) {
                ++counts[digit][DigitOf(key, digit)];
            }
        }
        return counts;
    }
};

// Sorts keys, each once: by their first bytes, those that are alike in them by their next, and so on. Each
// byte of a key is looked at once, and its memory only where that is needed.
class KeySort {
public:
    // Key i ends in bytes at ends[i], where the next begins.
    KeySort(std::string_view bytes, const std::vector<std::size_t>& ends)
        : m_bytes(bytes), m_ends(ends), m_entries(ends.size()), m_repeats(ends.size()) {
        for (std::size_t i = 0; i < m_entries.size(); ++i) {
            m_entries[i].m_number = static_cast<std::uint32_t>(i);
        }
        m_open.push_back({0, m_entries.size(), 0});
        while (!m_open.empty()) {
            const Run run = m_open.back();
            m_open.pop_back();
            Sort(run);
        }
    }

    std::size_t Size() const { return m_entries.size(); }
    // The number of the key at a place of the order.
    std::uint32_t At(std::size_t place) const { return m_entries[place].m_number; }
    // Whether the key at a place is the same as the one before.
    bool Repeats(std::size_t place) const { return m_repeats[place]; }

private:
    struct Entry {
        // The bytes at hand as a number, and how many they are.
        std::uint64_t m_bytes;
        std::uint32_t m_size;
        std::uint32_t m_number;
    };

    static constexpr std::size_t BytesAtHand = sizeof(Entry::m_bytes);

    // Entries that are alike in all bytes before a depth.
    struct Run {
        std::size_t m_first;
        std::size_t m_end;
        std::size_t m_depth;
    };

    void Read(Entry& entry, std::size_t depth) const {
        constexpr unsigned BitsPerByte = 8;
        const std::size_t start = entry.m_number == 0 ? 0 : m_ends[entry.m_number - 1];
        const std::string_view left = m_bytes.substr(start + depth, m_ends[entry.m_number] - start - depth);
        entry.m_size = static_cast<std::uint32_t>(std::min(left.size(), BytesAtHand));
        entry.m_bytes = 0;
        for (std::size_t i = 0; i < BytesAtHand; ++i) {
            const unsigned char byte = i < entry.m_size ? static_cast<unsigned char>(left[i]) : 0;
            entry.m_bytes = entry.m_bytes << BitsPerByte | byte;
        }
    }

    void Sort(const Run& run) {
        const auto first = m_entries.begin() + static_cast<std::ptrdiff_t>(run.m_first);
        const auto end = m_entries.begin() + static_cast<std::ptrdiff_t>(run.m_end);
        std::for_each(first, end, [&](Entry& entry) { Read(entry, run.m_depth); });
        std::sort(first, end, [](const Entry& left, const Entry& right) {
            return std::tie(left.m_bytes, left.m_size) < std::tie(right.m_bytes, right.m_size);
        });
        for (std::size_t place = run.m_first; place < run.m_end;) {
            const Entry& alike = m_entries[place];
            std::size_t next = place + 1;
            while (next < run.m_end && m_entries[next].m_bytes == alike.m_bytes &&
                   m_entries[next].m_size == alike.m_size) {
                ++next;
            }
            if (alike.m_size < BytesAtHand) {
                std::fill(m_repeats.begin() + static_cast<std::ptrdiff_t>(place + 1),
                          m_repeats.begin() + static_cast<std::ptrdiff_t>(next), true);
            } else if (next - place > 1) {
                m_open.push_back({place, next, run.m_depth + BytesAtHand});
            }
            place = next;
        }
    }

    std::string_view m_bytes;
    const std::vector<std::size_t>& m_ends;
    std::vector<Entry> m_entries;
    std::vector<bool> m_repeats;
    // What is not sorted yet.
    std::vector<Run> m_open;
};

// The different texts of a field, numbered as they come.
class Texts {
public:
    std::uint32_t NumberOf(const CellView& text) { return m_numbers.NumberOf(text); }

    // Once all texts came: gives each a rank, its place in the collation, which equal texts share; and a
    // value that texts share which are equal without case. Where that is a consistent order, all texts of one
    // value share a rank. A text without a key for its order has the rank that is given.
    void SetRanks(std::uint32_t withoutKey) {
        std::string keys;
        std::vector<std::size_t> ends;
        std::vector<std::uint32_t> texts;
        WideString wide;
        for (std::uint32_t text = 0; text < m_numbers.Count(); ++text) {
            const std::size_t end = keys.size();
            if (platform::AppendCollationKey(m_numbers.Wide(text, wide), keys) == CollationKey::Order) {
                ends.push_back(keys.size());
                texts.push_back(text);
            } else {
                keys.resize(end);
            }
        }
        const KeySort sorted(keys, ends);
        SetValues();
        m_isConsistent = IsConsistent(sorted, texts);
        m_ranks.assign(m_numbers.Count(), withoutKey);
        for (std::size_t i = 0; i < sorted.Size(); ++i) {
            const std::uint32_t text = texts[sorted.At(i)];
            const bool isAlike = m_isConsistent ? i > 0 && m_values[text] == m_values[texts[sorted.At(i - 1)]]
                                                : sorted.Repeats(i);
            if (!isAlike) {
                ++m_rankCount;
            }
            m_ranks[text] = m_rankCount - 1;
        }
    }

    bool IsConsistent() const { return m_isConsistent; }
    std::uint32_t Rank(std::uint32_t text) const { return m_ranks[text]; }
    std::uint32_t Value(std::uint32_t text) const { return m_values[text]; }
    std::uint32_t RankCount() const { return m_rankCount; }

private:
    // Folds all texts at once; between them is a zero, which does not combine with anything.
    void SetValues() {
        WideString folded;
        WideString wide;
        std::vector<std::size_t> ends;
        ends.reserve(m_numbers.Count());
        for (std::uint32_t text = 0; text < m_numbers.Count(); ++text) {
            folded.append(m_numbers.Wide(text, wide));
            ends.push_back(folded.size());
            folded.push_back(0);
        }
        platform::FoldCase(folded);
        const WideView all = folded;
        Numbering<WideView> values;
        m_values.reserve(ends.size());
        std::size_t start = 0;
        for (const std::size_t end : ends) {
            m_values.push_back(values.NumberOf(all.substr(start, end - start)));
            start = end + 1;
        }
    }

    // Whether all texts have keys, equal ones have one value, and each value stands in one stretch.
    bool IsConsistent(const KeySort& sorted, const std::vector<std::uint32_t>& texts) const {
        std::vector<bool> seen(m_values.size());
        for (std::size_t i = 0; i < sorted.Size(); ++i) {
            const std::uint32_t value = m_values[texts[sorted.At(i)]];
            if (i > 0 && m_values[texts[sorted.At(i - 1)]] == value) {
                continue;
            }
            if (seen[value] || sorted.Repeats(i)) {
                return false;
            }
            seen[value] = true;
        }
        return texts.size() == m_values.size();
    }

    TextNumbers m_numbers;
    std::vector<std::uint32_t> m_ranks;
    std::vector<std::uint32_t> m_values;
    std::uint32_t m_rankCount = 0;
    bool m_isConsistent = false;
};

}  // namespace

OrderColumn::OrderColumn(const RowSelection& rows, uint64 field)
    : m_rows(&rows), m_field(field), m_ranks(rows.Size(), Other) {
    WithColumnCells(rows, field,
                    [this](const auto& cells, CellView::Kind kind) { Rank(cells, CellView::TypeOf(kind)); });
}

template <typename Value>
void OrderColumn::Rank(const ColumnCells<Value>& cells, VARTYPE typeInPlace) {
    OtherCells others;
    TypeCounts counts;
    for (std::uint32_t row = 0; row < m_ranks.size(); ++row) {
        if (!cells.At(row)) {
            others.push_back({row, m_rows->Cell(row, m_field)});
            counts.Add(others.back().m_cell.Type(), 1);
        }
    }
    counts.Add(typeInPlace, m_ranks.size() - others.size());
    const VARTYPE type = counts.Commonest();
    if (type == VT_BSTR) {
        if constexpr (std::is_same_v<Value, std::string_view>) {
            RankTexts(cells, others);
        } else {
            RankTexts({}, All(others));
        }
    } else if (type == typeInPlace) {
        if constexpr (!std::is_same_v<Value, std::string_view>) {
            RankNumbers(cells, others, type);
        }
    } else {
        RankNumbers(ColumnCells<double>(), All(others), type);
    }
}

OrderColumn::OtherCells OrderColumn::All(const OtherCells& read) const {
    OtherCells all(m_ranks.size());
    auto next = read.begin();
    for (std::uint32_t row = 0; row < all.size(); ++row) {
        const bool isRead = next != read.end() && next->m_row == row;
        all[row] = isRead ? *next++ : OtherCell{row, m_rows->Cell(row, m_field)};
    }
    return all;
}

template <typename Number>
void OrderColumn::RankNumbers(const ColumnCells<Number>& cells, const OtherCells& others, VARTYPE type) {
    std::vector<NumberKey> sorted;
    sorted.reserve(m_ranks.size());
    bool hasZero = false;
    bool hasEmpty = false;
    auto other = others.begin();
    for (std::uint32_t row = 0; row < m_ranks.size(); ++row) {
        std::optional<double> number = cells.At(row);
        if (number) {
            hasZero = hasZero || *number == 0;
        } else {
            const CellView& cell = (other++)->m_cell;
            number = NumberOf(cell, type);
            hasEmpty = hasEmpty || cell.Type() == VT_EMPTY;
            hasZero = hasZero || (cell.Type() == type && number == 0.0);
            m_ranks[row] = cell.Type() == VT_NULL ? Null : Other;
        }
        if (number && *number == *number) {
            sorted.push_back({KeyOf(*number), row});
        }
    }
    DigitSort::Sort(sorted);
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        if (i == 0 || sorted[i].m_key != sorted[i - 1].m_key) {
            ++m_rankCount;
        }
        m_ranks[sorted[i].m_row] = m_rankCount - 1;
    }
    m_isConsistent = sorted.size() == m_ranks.size() && !(hasEmpty && hasZero);
    if (m_isConsistent) {
        m_sorted.resize(sorted.size());
        std::transform(sorted.begin(), sorted.end(), m_sorted.begin(),
                       [](const NumberKey& key) { return key.m_row; });
        return;
    }
    m_values = m_ranks;
    for (const auto& [row, cell] : others) {
        if (hasEmpty && hasZero && cell.Type() == VT_EMPTY) {
            m_values[row] = EmptyValue;
        }
    }
}

void OrderColumn::RankTexts(const ColumnCells<std::string_view>& cells, const OtherCells& others) {
    Texts texts;
    m_values.assign(m_ranks.size(), Null);
    bool areTexts = true;
    for (std::uint32_t row = 0; row < m_ranks.size(); ++row) {
        if (const std::optional<std::string_view> text = cells.At(row)) {
            m_values[row] = texts.NumberOf(CellView::Text(*text));
        }
    }
    for (const auto& [row, cell] : others) {
        if (cell.Type() == VT_BSTR) {
            m_values[row] = texts.NumberOf(cell);
        } else {
            areTexts = false;
            m_ranks[row] = cell.Type() == VT_NULL ? Null : Other;
        }
    }
    texts.SetRanks(Other);
    m_isConsistent = texts.IsConsistent() && areTexts;
    m_rankCount = texts.RankCount();
    for (std::size_t row = 0; row < m_ranks.size(); ++row) {
        if (m_values[row] != Null) {
            m_ranks[row] = texts.Rank(m_values[row]);
            m_values[row] = texts.Value(m_values[row]);
        }
    }
    if (m_isConsistent) {
        m_values.clear();
    }
}

}  // namespace quillet
