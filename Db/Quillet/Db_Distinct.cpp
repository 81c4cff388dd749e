// Each field's values become classes, numbers that are the same for equal values. Rows are then told apart by
// the numbers alone, except where a class may hold different values, or a value may equal others outside of
// its class.
#include "Quillet/Db_Distinct.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <string>
#include <string_view>

#include "Quillet/Db_Numbering.h"
#include "platform/Collation.h"

namespace quillet {

namespace {

using platform::CollationKey;

struct NumberKey {
    std::uint64_t m_bits;
    VARTYPE m_type;

    friend bool operator==(const NumberKey&, const NumberKey&) = default;
};

struct HashNumberKey {
    std::size_t operator()(const NumberKey& key) const {
        return static_cast<std::size_t>(key.m_bits + key.m_type);
    }
};

// Numbers that compare equal have equal bits.
std::uint64_t BitsOf(double number) {
    return std::bit_cast<std::uint64_t>(number == 0 ? 0.0 : number);
}

std::uint64_t BitsOf(LONGLONG number) {
    return static_cast<std::uint64_t>(number);
}

// The key of a number that compares by its value; none for what is no number.
std::optional<NumberKey> KeyOfNumber(const CComVariant& value) {
    switch (value.vt) {
        case VT_I2:
            return NumberKey{BitsOf(LONGLONG{value.iVal}), value.vt};
        case VT_I4:
            return NumberKey{BitsOf(LONGLONG{value.lVal}), value.vt};
        case VT_I8:
            return NumberKey{BitsOf(LONGLONG{value.llVal}), value.vt};
        case VT_UI1:
            return NumberKey{BitsOf(LONGLONG{value.bVal}), value.vt};
        case VT_BOOL:
            return NumberKey{BitsOf(LONGLONG{value.boolVal}), value.vt};
        case VT_R4:
            return value.fltVal == value.fltVal
                       ? std::optional(NumberKey{BitsOf(double{value.fltVal}), value.vt})
                       : std::nullopt;
        case VT_R8:
        case VT_DATE:
            return value.dblVal == value.dblVal ? std::optional(NumberKey{BitsOf(value.dblVal), value.vt})
                                                : std::nullopt;
        default:
            return std::nullopt;
    }
}

// The classes of one field's values, handed out while the values come.
class Classes {
public:
    // In place of a class: the value may equal values of any class.
    static constexpr std::uint32_t Any = UINT32_MAX;

    std::uint32_t ClassOf(const CComVariant& value) {
        switch (value.vt) {
            case VT_EMPTY:
                return OneClass(m_empty);
            case VT_NULL:
                return OneClass(m_null);
            case VT_BSTR:
                return ClassOfText(value.Text());
            default:
                break;
        }
        if (const auto key = KeyOfNumber(value)) {
            return Mapped(m_ofNumber, m_numbers.NumberOf(*key), [this] { return NewClass(); });
        }
        // What does not equal itself equals nothing.
        const CComVariant& itself = value;
        return value == itself ? AnyClass() : NewClass();
    }

    std::size_t Count() const { return m_isLoose.size(); }
    // Whether equal values, and only they, share a class. This and the next are known once all values came.
    bool AreSure() const { return m_areSure; }
    // Whether the class may hold values that differ.
    bool IsLoose(std::uint32_t number) const { return m_isLoose[number]; }

private:
    std::uint32_t NewClass() {
        m_isLoose.push_back(false);
        return static_cast<std::uint32_t>(m_isLoose.size() - 1);
    }

    std::uint32_t AnyClass() {
        m_areSure = false;
        return Any;
    }

    std::uint32_t OneClass(std::optional<std::uint32_t>& number) {
        if (!number) {
            number = NewClass();
        }
        return *number;
    }

    // The entry at the index, which is made when it is the first beyond the end.
    template <typename Make>
    static std::uint32_t Mapped(std::vector<std::uint32_t>& classes, std::uint32_t index, Make make) {
        if (index == classes.size()) {
            const std::uint32_t made = make();
            classes.push_back(made);
        }
        return classes[index];
    }

    std::uint32_t ClassOfText(WideView text) {
        const std::string_view bytes(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(WCHAR));
        return Mapped(m_ofText, m_texts.NumberOf(bytes), [&] { return ClassOfNewText(text); });
    }

    std::uint32_t ClassOfNewText(WideView text) {
        m_key.clear();
        const CollationKey kind = platform::AppendCollationKey(text, m_key);
        if (kind == CollationKey::None) {
            return AnyClass();
        }
        const auto found = m_keys.NumberOf(m_key);
        const std::uint32_t number = Mapped(m_ofKey, found, [this] { return NewClass(); });
        if (kind == CollationKey::Equality) {
            m_isLoose[number] = true;
            m_areSure = false;
        }
        return number;
    }

    std::vector<bool> m_isLoose;
    bool m_areSure = true;
    std::optional<std::uint32_t> m_empty;
    std::optional<std::uint32_t> m_null;
    Numbering<NumberKey, HashNumberKey> m_numbers;
    std::vector<std::uint32_t> m_ofNumber;
    Numbering<std::string_view> m_texts;
    std::vector<std::uint32_t> m_ofText;
    Numbering<std::string> m_keys;
    std::vector<std::uint32_t> m_ofKey;
    std::string m_key;
};

// What is known of the rows: equal rows of whose classes we are sure are in one group, and such a group holds
// only equal rows.
struct Groups {
    // How far the group of a row can be relied on.
    enum class Trust : std::uint8_t {
        Sure,
        // Rows of the group may differ.
        NotInside,
        // Rows of other groups may be equal.
        Nowhere,
    };

    std::vector<std::uint32_t> m_ofRow;
    std::vector<Trust> m_trust;
    std::size_t m_count = 1;
};

void Distrust(Groups& groups, const Classes& classes, const std::vector<std::uint32_t>& ofRow) {
    for (std::size_t row = 0; row < ofRow.size(); ++row) {
        if (ofRow[row] == Classes::Any) {
            groups.m_trust[row] = Groups::Trust::Nowhere;
        } else if (classes.IsLoose(ofRow[row])) {
            groups.m_trust[row] = std::max(groups.m_trust[row], Groups::Trust::NotInside);
        }
    }
}

void Divide(Groups& groups, const std::vector<std::uint32_t>& ofRow) {
    constexpr unsigned HighHalf = 32;
    Numbering<std::uint64_t> pairs;
    for (std::size_t row = 0; row < ofRow.size(); ++row) {
        groups.m_ofRow[row] =
            pairs.NumberOf(std::uint64_t{groups.m_ofRow[row]} << HighHalf | std::uint64_t{ofRow[row]});
    }
    groups.m_count = pairs.Keys().size();
}

Groups GroupsOf(std::span<DbTableRow* const> rows, const std::vector<uint64>& fields) {
    Groups groups{std::vector<std::uint32_t>(rows.size()), std::vector<Groups::Trust>(rows.size())};
    std::vector<std::uint32_t> ofRow(rows.size());
    for (const uint64 field : fields) {
        Classes classes;
        std::transform(rows.begin(), rows.end(), ofRow.begin(), [&](const DbTableRow* row) {
            return classes.ClassOf(row->GetField(field).GetVariant());
        });
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
    Selection(std::span<DbTableRow* const> rows, const std::vector<uint64>& fields)
        : m_rows(rows), m_fields(fields), m_groups(GroupsOf(rows, fields)), m_last(m_groups.m_count, None) {}

    std::vector<uint64> Take() {
        for (std::size_t row = 0; row < m_rows.size(); ++row) {
            if (!IsRepetition(row)) {
                Keep(row);
            }
        }
        return std::move(m_kept);
    }

private:
    static constexpr std::uint32_t None = UINT32_MAX;

    bool AreEqual(std::size_t left, uint64 right) const {
        return std::all_of(m_fields.begin(), m_fields.end(), [&](uint64 field) {
            const DbTableRow& leftRow = *m_rows[left];
            const DbTableRow& rightRow = *m_rows[right];
            return leftRow.GetField(field).GetVariant() == rightRow.GetField(field).GetVariant();
        });
    }

    bool IsAmong(std::size_t row, const std::vector<uint64>& kept) const {
        return std::any_of(kept.begin(), kept.end(), [&](uint64 other) { return AreEqual(row, other); });
    }

    bool IsInGroup(std::size_t row) const {
        std::uint32_t kept = m_last[m_groups.m_ofRow[row]];
        if (m_groups.m_trust[row] == Groups::Trust::Sure) {
            return kept != None;
        }
        while (kept != None && !AreEqual(row, m_kept[kept])) {
            kept = m_before[kept];
        }
        return kept != None;
    }

    bool IsRepetition(std::size_t row) const {
        if (m_groups.m_trust[row] == Groups::Trust::Nowhere) {
            return IsAmong(row, m_kept);
        }
        return IsInGroup(row) || IsAmong(row, m_keptAnywhere);
    }

    void Keep(std::size_t row) {
        std::uint32_t& last = m_last[m_groups.m_ofRow[row]];
        m_before.push_back(last);
        last = static_cast<std::uint32_t>(m_kept.size());
        m_kept.push_back(row);
        if (m_groups.m_trust[row] == Groups::Trust::Nowhere) {
            m_keptAnywhere.push_back(row);
        }
    }

    std::span<DbTableRow* const> m_rows;
    const std::vector<uint64>& m_fields;
    Groups m_groups;
    std::vector<uint64> m_kept;
    // The kept rows whose groups say nothing.
    std::vector<uint64> m_keptAnywhere;
    // Indexes of kept rows: the last of each group, and for each kept row the one of its group before.
    std::vector<std::uint32_t> m_last;
    std::vector<std::uint32_t> m_before;
};

}  // namespace

std::vector<uint64> DistinctRows(std::span<DbTableRow* const> rows, const std::vector<uint64>& fields) {
    return Selection(rows, fields).Take();
}

}  // namespace quillet
