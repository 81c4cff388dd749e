// Where the comparison is a consistent order of the rows, they are sorted, and the places of equal rows
// worked out from numbers alone. Elsewhere the insertions are made one by one, in a list that is quick at
// that.
#include "Quillet/rows/OrderOfRows.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <numeric>

#include "Quillet/rows/OrderColumn.h"

namespace quillet {

namespace {

using Result = DbTableRow::eCmpResult;

// Where the search of DbTableData::SpatialIndex looks next between two places.
std::uint32_t Middle(std::uint32_t low, std::uint32_t end) {
    return low + (end - 1 - low) / 2;
}

// That search: compare says how the row to be inserted stands to the one at a place.
template <typename Compare>
std::uint32_t Search(std::uint32_t count, Compare compare) {
    std::uint32_t low = 0;
    std::uint32_t end = count;
    while (low < end) {
        const std::uint32_t middle = Middle(low, end);
        const Result result = compare(middle);
        if (result == DbTableRow::CmpEqual) {
            return middle;
        }
        if (result == DbTableRow::CmpLess) {
            end = middle;
        } else {
            low = middle + 1;
        }
    }
    return low;
}

// Rows that are inserted where some stand that are equal to them, and others before those, which are less.
// Searches for their places go on side by side: which way one goes can't be guessed, so none has a branch,
// and one that has met an equal row stays there.
class EqualSearches {
public:
    // count rows stand before one is inserted, those from first to end are equal to it. The result is for a
    // place of those that are given.
    void Add(std::size_t result, std::uint32_t count, std::uint32_t first, std::uint32_t end) {
        m_results[m_size] = result;
        m_high[m_size] = static_cast<std::int32_t>(count);
        m_first[m_size] = static_cast<std::int32_t>(first);
        m_end[m_size] = static_cast<std::int32_t>(end);
        ++m_size;
    }
    bool IsFull() const { return m_size == Most; }

    // Gives the result of each row, its place among its equals, and begins anew.
    void Take(std::vector<std::uint32_t>& results) {
        const std::array<std::int32_t, Most> met = Search();
        for (std::size_t i = 0; i < m_size; ++i) {
            results[m_results[i]] = static_cast<std::uint32_t>(met[i] - m_first[i]);
        }
        *this = {};
    }

private:
    static constexpr std::size_t Most = 8;

    std::array<std::int32_t, Most> Search() {
        std::array<std::int32_t, Most> low{};
        std::array<std::int32_t, Most> middle{};
        std::int32_t moved = -1;
        while (moved != 0) {
            moved = 0;
            for (std::size_t i = 0; i < Most; ++i) {
                middle[i] = low[i] + ((m_high[i] - 1 - low[i]) >> 1);
                const std::int32_t isBefore = middle[i] < m_first[i] ? -1 : 0;
                const std::int32_t isAfter = middle[i] >= m_end[i] ? -1 : 0;
                low[i] += (middle[i] + 1 - low[i]) & isBefore;
                m_high[i] -= (m_high[i] - middle[i]) & isAfter;
                moved |= isBefore | isAfter;
            }
        }
        return middle;
    }

    std::size_t m_size = 0;
    std::array<std::size_t, Most> m_results{};
    // What is not used finds its place at once.
    std::array<std::int32_t, Most> m_high{1, 1, 1, 1, 1, 1, 1, 1};
    std::array<std::int32_t, Most> m_first{};
    std::array<std::int32_t, Most> m_end = m_high;
};

// Counts in places; sums and the place of a sum are found in logarithmic time.
class CountTree {
public:
    explicit CountTree(const std::vector<std::uint32_t>& counts) : m_sums(std::bit_ceil(counts.size() + 1)) {
        for (std::size_t at = 1; at < m_sums.size(); ++at) {
            m_sums[at] += at <= counts.size() ? counts[at - 1] : 0;
            const std::size_t above = at + LowestBit(at);
            if (above < m_sums.size()) {
                m_sums[above] += m_sums[at];
            }
        }
    }

    // Counts of one in each place, and nothing of before.
    void SetOnes(std::size_t places) {
        m_sums.assign(std::bit_ceil(places + 1), 0);
        for (std::size_t at = 1; at < m_sums.size(); ++at) {
            const std::size_t first = at - LowestBit(at);
            m_sums[at] = static_cast<std::uint32_t>(std::min(at, std::max(first, places)) - first);
        }
    }

    void Increment(std::size_t place) {
        for (std::size_t at = place + 1; at < m_sums.size(); at += LowestBit(at)) {
            ++m_sums[at];
        }
    }

    // The sum of the counts before a place.
    std::uint32_t Before(std::size_t place) const {
        std::uint32_t sum = 0;
        for (std::size_t at = place; at > 0; at -= LowestBit(at)) {
            sum += m_sums[at];
        }
        return sum;
    }

    // The last place with no more than the sum before it; the sum becomes what is left of it there. For the
    // sum of all, a place behind all counts.
    std::size_t PlaceOf(std::uint32_t& sum) const {
        std::size_t place = 0;
        for (std::size_t step = m_sums.size() / 2; step > 0; step /= 2) {
            if (m_sums[place + step] <= sum) {
                place += step;
                sum -= m_sums[place];
            }
        }
        return place;
    }

    // The same place, whose count is one less from now on. Which way it goes can't be guessed, so there is no
    // branch.
    std::size_t Take(std::uint32_t sum) {
        std::size_t place = 0;
        for (std::size_t step = m_sums.size() / 2; step > 0; step /= 2) {
            std::uint32_t& part = m_sums[place + step];
            const std::uint32_t isBehind = part <= sum ? 1 : 0;
            place += step * isBehind;
            sum -= part * isBehind;
            part -= 1 - isBehind;
        }
        return place;
    }

private:
    static std::size_t LowestBit(std::size_t at) { return at & (~at + 1); }

    // Element i is the sum of as many counts up to the i-th as the lowest bit of i says.
    std::vector<std::uint32_t> m_sums;
};

// A list of rows in blocks: an insertion moves no more than a block, and any place is found fast.
class InsertionList {
public:
    explicit InsertionList(std::size_t rows)
        : m_blockRows(
              std::max(SmallestBlock, static_cast<std::size_t>(std::sqrt(static_cast<double>(rows))))),
          m_blocks(1),
          m_counts({0}) {
        m_blocks.front().reserve(m_blockRows);
    }

    std::uint32_t At(std::uint32_t place) {
        // The last steps of a search stay within one block.
        if (place < m_start || place - m_start >= m_blocks[m_block].size()) {
            Seek(place);
        }
        return m_blocks[m_block][place - m_start];
    }

    void Insert(std::uint32_t place, std::uint32_t row) {
        if (place < m_start || place - m_start > m_blocks[m_block].size()) {
            Seek(place);
        }
        std::vector<std::uint32_t>& block = m_blocks[m_block];
        block.insert(block.begin() + static_cast<std::ptrdiff_t>(place - m_start), row);
        m_counts.Increment(m_block);
        if (block.size() == m_blockRows) {
            Split();
        }
    }

    std::vector<uint64> Rows() const {
        std::vector<uint64> rows;
        for (const std::vector<std::uint32_t>& block : m_blocks) {
            rows.insert(rows.end(), block.begin(), block.end());
        }
        return rows;
    }

private:
    static constexpr std::size_t SmallestBlock = 64;

    void Seek(std::uint32_t place) {
        std::uint32_t within = place;
        m_block = m_counts.PlaceOf(within);
        if (m_block >= m_blocks.size()) {
            // Behind the last row.
            m_block = m_blocks.size() - 1;
            within = static_cast<std::uint32_t>(m_blocks[m_block].size());
        }
        m_start = place - within;
    }

    void Split() {
        const auto position = m_blocks.begin() + static_cast<std::ptrdiff_t>(m_block);
        const auto middle = position->begin() + static_cast<std::ptrdiff_t>(m_blockRows / 2);
        std::vector<std::uint32_t> second;
        second.reserve(m_blockRows);
        second.assign(middle, position->end());
        position->erase(middle, position->end());
        m_blocks.insert(position + 1, std::move(second));
        std::vector<std::uint32_t> counts(m_blocks.size());
        std::transform(m_blocks.begin(), m_blocks.end(), counts.begin(),
                       [](const auto& block) { return static_cast<std::uint32_t>(block.size()); });
        m_counts = CountTree(counts);
    }

    std::size_t m_blockRows;
    std::vector<std::vector<std::uint32_t>> m_blocks;
    CountTree m_counts;
    // The block of the last place looked at, and the place of its first row.
    std::size_t m_block = 0;
    std::uint32_t m_start = 0;
};

// Makes the insertions: compare says how one row stands to another.
template <typename Compare>
std::vector<uint64> InsertOneByOne(std::size_t count, Compare compare) {
    InsertionList order(count);
    for (std::uint32_t row = 0; row < count; ++row) {
        const std::uint32_t place =
            Search(row, [&](std::uint32_t middle) { return compare(row, order.At(middle)); });
        order.Insert(place, row);
    }
    return order.Rows();
}

// The groups of equal rows, by row; they count from 0 in ascending order.
struct Groups {
    std::vector<std::uint32_t> m_ofRow;
    std::uint32_t m_count = 1;
    // The rows in ascending order of their groups, those of one group in their own order; empty where that is
    // not known yet.
    std::vector<std::uint32_t> m_sorted;
};

// The rows of the list in ascending order of their numbers, which are below count; rows of one number keep
// their order.
std::vector<std::uint32_t> SortedBy(const std::vector<std::uint32_t>& numbers, std::uint32_t count,
                                    const std::vector<std::uint32_t>& list) {
    std::vector<std::uint32_t> next(std::size_t{count} + 1);
    for (const std::uint32_t number : numbers) {
        ++next[number + 1];
    }
    std::partial_sum(next.begin(), next.end(), next.begin());
    std::vector<std::uint32_t> sorted(list.size());
    for (const std::uint32_t row : list) {
        sorted[next[numbers[row]]++] = row;
    }
    return sorted;
}

// Divides the groups by the ranks of a further field.
void Divide(Groups& groups, const OrderColumn& column) {
    const std::vector<std::uint32_t>& ranks = column.Ranks();
    if (groups.m_count == 1) {
        groups = {ranks, std::max(column.RankCount(), 1U), column.Sorted()};
        return;
    }
    groups.m_sorted.clear();
    std::vector<std::uint32_t> sorted(groups.m_ofRow.size());
    std::iota(sorted.begin(), sorted.end(), 0U);
    sorted = SortedBy(ranks, column.RankCount(), sorted);
    sorted = SortedBy(groups.m_ofRow, groups.m_count, sorted);
    std::vector<std::uint32_t> ofRow(sorted.size());
    groups.m_count = 0;
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        const std::uint32_t row = sorted[i];
        const std::uint32_t before = i == 0 ? row : sorted[i - 1];
        if (i == 0 || groups.m_ofRow[row] != groups.m_ofRow[before] || ranks[row] != ranks[before]) {
            ++groups.m_count;
        }
        ofRow[row] = groups.m_count - 1;
    }
    groups.m_ofRow = std::move(ofRow);
}

// The places of the groups' first rows when rows stand in the order of their groups, and one after the last.
std::vector<std::uint32_t> StartsOf(const Groups& groups) {
    std::vector<std::uint32_t> starts(std::size_t{groups.m_count} + 1);
    for (const std::uint32_t group : groups.m_ofRow) {
        ++starts[group + 1];
    }
    std::partial_sum(starts.begin(), starts.end(), starts.begin());
    return starts;
}

// Where each row is inserted among the rows of its group, in the order of the groups and then of the rows.
// Those of the group before it stand side by side, so the search needs only their places.
std::vector<std::uint32_t> PlacesInGroups(const Groups& groups, const std::vector<std::uint32_t>& starts) {
    std::vector<std::uint32_t> places(groups.m_ofRow.size());
    std::vector<std::uint32_t> members(groups.m_count);
    CountTree inserted(members);
    EqualSearches searches;
    for (std::uint32_t row = 0; row < places.size(); ++row) {
        const std::uint32_t group = groups.m_ofRow[row];
        if (members[group] > 0) {
            const std::uint32_t first = inserted.Before(group);
            searches.Add(starts[group] + members[group], row, first, first + members[group]);
            if (searches.IsFull()) {
                searches.Take(places);
            }
        }
        ++members[group];
        inserted.Increment(group);
    }
    searches.Take(places);
    return places;
}

std::vector<uint64> OrderOfGroups(const Groups& groups) {
    std::vector<std::uint32_t> sorted = groups.m_sorted;
    if (sorted.empty()) {
        sorted.resize(groups.m_ofRow.size());
        std::iota(sorted.begin(), sorted.end(), 0U);
        sorted = SortedBy(groups.m_ofRow, groups.m_count, sorted);
    }
    std::vector<uint64> order(sorted.begin(), sorted.end());
    if (groups.m_count == order.size()) {
        return order;
    }
    const std::vector<std::uint32_t> starts = StartsOf(groups);
    const std::vector<std::uint32_t> places = PlacesInGroups(groups, starts);
    CountTree free({});
    for (std::size_t group = 0; group < groups.m_count; ++group) {
        const std::size_t first = starts[group];
        const std::size_t end = starts[group + 1];
        if (end - first > 1) {
            // The row inserted last stands at its place. Each before it stands at its place among those that
            // are still free.
            free.SetOnes(end - first);
            for (std::size_t i = end; i-- > first;) {
                order[first + free.Take(places[i])] = sorted[i];
            }
        }
    }
    return order;
}

}  // namespace

std::vector<uint64> OrderOfRows(const RowSelection& rows, const std::vector<uint64>& fields) {
    Groups groups{std::vector<std::uint32_t>(rows.Size()), 1, {}};
    std::vector<OrderColumn> columns;
    bool areConsistent = true;
    for (const uint64 field : fields) {
        if (areConsistent && groups.m_count == rows.Size()) {
            // The fields so far tell all rows apart.
            break;
        }
        const OrderColumn& column = columns.emplace_back(rows, field);
        areConsistent = areConsistent && column.IsConsistent();
        if (areConsistent) {
            Divide(groups, column);
        }
    }
    if (areConsistent) {
        return OrderOfGroups(groups);
    }
    return InsertOneByOne(rows.Size(), [&](std::uint32_t left, std::uint32_t right) {
        Result result = DbTableRow::CmpEqual;
        for (std::size_t i = 0; i < columns.size() && result == DbTableRow::CmpEqual; ++i) {
            result = columns[i].Compare(left, right);
        }
        return result;
    });
}

}  // namespace quillet
