// Each field's values become classes, numbers that are the same for equal values. Rows are then told apart by
// the numbers alone, except where a class may hold different values, or a value may equal others outside of
// its class.
#include "Quillet/rows/DistinctRows.h"

#include <algorithm>

#include "Quillet/rows/EqualityClasses.h"

namespace quillet {

namespace {

// What is known of the rows: equal rows of whose classes we are sure are in one group, and such a group holds
// only equal rows.
struct RowGroups {
    // How far the group of a row can be relied on.
    enum class Trust : std::uint8_t {
        Sure,
        // Rows of the group may differ.
        NotInside,
        // Rows of other groups may be equal, and those of the group may differ.
        None,
    };

    // Numbered as they come.
    std::vector<std::uint32_t> m_ofRow;
    std::vector<Trust> m_trust;
    std::size_t m_count = 1;
    bool m_areSure = true;
};

void Distrust(RowGroups& groups, const EqualityClasses& classes, const std::vector<std::uint32_t>& ofRow) {
    for (std::size_t row = 0; row < ofRow.size(); ++row) {
        if (ofRow[row] == EqualityClasses::Any) {
            groups.m_trust[row] = RowGroups::Trust::None;
        } else if (classes.IsLoose(ofRow[row])) {
            groups.m_trust[row] = std::max(groups.m_trust[row], RowGroups::Trust::NotInside);
        }
    }
}

void Divide(RowGroups& groups, const std::vector<std::uint32_t>& ofRow) {
    constexpr unsigned HighHalf = 32;
    Numbering<std::uint64_t> pairs;
    for (std::size_t row = 0; row < ofRow.size(); ++row) {
        groups.m_ofRow[row] =
            pairs.NumberOf(std::uint64_t{groups.m_ofRow[row]} << HighHalf | std::uint64_t{ofRow[row]});
    }
    groups.m_count = pairs.Keys().size();
}

RowGroups GroupsOf(const RowSelection& rows, const std::vector<uint64>& fields) {
    RowGroups groups{std::vector<std::uint32_t>(rows.Size()), std::vector<RowGroups::Trust>(rows.Size()), 1,
                     true};
    for (const uint64 field : fields) {
        EqualityClasses classes;
        std::vector<std::uint32_t> ofRow = classes.ClassesOf(rows, field);
        groups.m_areSure = groups.m_areSure && classes.AreSure();
        if (!classes.AreSure()) {
            Distrust(groups, classes, ofRow);
            Divide(groups, ofRow);
        } else if (groups.m_count > 1) {
            Divide(groups, ofRow);
        } else {
            groups.m_ofRow.swap(ofRow);
            groups.m_count = classes.Count();
        }
    }
    return groups;
}

// Takes the rows in turn and keeps those that equal none kept before.
class Selection {
public:
    Selection(const RowSelection& rows, const std::vector<uint64>& fields)
        : m_rows(rows), m_fields(fields), m_groups(GroupsOf(rows, fields)), m_last(m_groups.m_count, None) {}

    std::vector<uint64> Take() {
        if (m_groups.m_areSure) {
            return FirstOfGroups();
        }
        for (std::size_t row = 0; row < m_rows.Size(); ++row) {
            if (!IsRepetition(row)) {
                Keep(row);
            }
        }
        return std::move(m_kept);
    }

private:
    static constexpr std::uint32_t None = UINT32_MAX;

    std::vector<uint64> FirstOfGroups() const {
        std::vector<uint64> kept;
        for (std::size_t row = 0; row < m_groups.m_ofRow.size(); ++row) {
            if (m_groups.m_ofRow[row] == kept.size()) {
                kept.push_back(row);
            }
        }
        return kept;
    }

    bool AreEqual(std::size_t left, uint64 right) const {
        return std::all_of(m_fields.begin(), m_fields.end(), [&](uint64 field) {
            CComVariant ofLeft;
            CComVariant ofRight;
            return m_rows.Cell(left, field).In(ofLeft) == m_rows.Cell(right, field).In(ofRight);
        });
    }

    bool IsAmong(std::size_t row, const std::vector<uint64>& kept) const {
        return std::any_of(kept.begin(), kept.end(), [&](uint64 other) { return AreEqual(row, other); });
    }

    bool IsInGroup(std::size_t row) const {
        std::uint32_t kept = m_last[m_groups.m_ofRow[row]];
        if (m_groups.m_trust[row] == RowGroups::Trust::Sure) {
            return kept != None;
        }
        while (kept != None && !AreEqual(row, m_kept[kept])) {
            kept = m_before[kept];
        }
        return kept != None;
    }

    bool IsRepetition(std::size_t row) const {
        if (m_groups.m_trust[row] == RowGroups::Trust::None) {
            return IsAmong(row, m_kept);
        }
        return IsInGroup(row) || IsAmong(row, m_keptAnywhere);
    }

    void Keep(std::size_t row) {
        std::uint32_t& last = m_last[m_groups.m_ofRow[row]];
        m_before.push_back(last);
        last = static_cast<std::uint32_t>(m_kept.size());
        m_kept.push_back(row);
        if (m_groups.m_trust[row] == RowGroups::Trust::None) {
            m_keptAnywhere.push_back(row);
        }
    }

    const RowSelection& m_rows;
    const std::vector<uint64>& m_fields;
    RowGroups m_groups;
    std::vector<uint64> m_kept;
    // The kept rows whose groups say nothing.
    std::vector<uint64> m_keptAnywhere;
    // Indexes of kept rows: the last of each group, and for each kept row the one of its group before.
    std::vector<std::uint32_t> m_last;
    std::vector<std::uint32_t> m_before;
};

}  // namespace

std::vector<uint64> DistinctRows(const RowSelection& rows, const std::vector<uint64>& fields) {
    return Selection(rows, fields).Take();
}

}  // namespace quillet
