#include "Quillet/cursor/CurrentIndex.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <utility>

#include "Quillet/platform/Collation.h"
#include "Quillet/rows/OrderOfRows.h"
#include "Quillet/rows/RowsView.h"

namespace quillet {

namespace {

using Index = DbTableDescr::DbIndex;
using Result = DbTableRow::eCmpResult;

std::vector<uint64> FieldsOf(const Index& index, const DbTableDescr& descr) {
    std::vector<uint64> fields;
    for (const CString& name : index.GetFieldNames()) {
        fields.push_back(static_cast<uint64>(descr.GetFieldIndex(name)));
    }
    return fields;
}

// A value with a place in the total order of its type. Texts are ordered by their foldings: only so are texts
// that are equal without case neighbours in every language.
class Sortable {
public:
    // False if the value has no place in the order: a null, a value that does not equal itself, a text
    // without a collation key.
    bool Set(const CellView& cell) {
        m_type = cell.Type();
        if (m_type != VT_BSTR) {
            cell.CopyTo(m_value);
            return m_type != VT_EMPTY && Order(m_value, m_value) == static_cast<HRESULT>(VARCMP_EQ);
        }
        m_folded = WideString(cell.Wide(m_folded));
        platform::FoldCase(m_folded);
        m_key.clear();
        return platform::AppendCollationKey(m_folded, m_key) == platform::CollationKey::Order;
    }

    VARTYPE Type() const { return m_type; }

    // For values of one type. Texts that the collation takes for equal, though more than case is different,
    // are greater than each other.
    Result CompareTo(const Sortable& other) const {
        if (Type() == VT_BSTR) {
            return m_folded == other.m_folded ? DbTableRow::CmpEqual
                   : m_key < other.m_key      ? DbTableRow::CmpLess
                                              : DbTableRow::CmpGreater;
        }
        const HRESULT order = Order(m_value, other.m_value);
        return order == static_cast<HRESULT>(VARCMP_EQ)   ? DbTableRow::CmpEqual
               : order == static_cast<HRESULT>(VARCMP_LT) ? DbTableRow::CmpLess
                                                          : DbTableRow::CmpGreater;
    }

private:
    VARTYPE m_type = VT_EMPTY;
    // Of any type but a text.
    CComVariant m_value;
    WideString m_folded;
    std::string m_key;
};

// How many leading fields of the row hold values with a place in the order; the values are set to these.
std::size_t Read(const RowsView& rows, uint64 position, const std::vector<uint64>& fields,
                 std::vector<Sortable>& values) {
    std::size_t count = 0;
    while (count < values.size() && values[count].Set(rows.Cell(position, fields[count]))) {
        ++count;
    }
    return count;
}

// How many leading fields the second row follows the first by, of those that are asked for.
std::size_t AscendingFields(const std::vector<Sortable>& first, const std::vector<Sortable>& second,
                            std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (first[i].Type() != second[i].Type()) {
            count = i;
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        const Result result = first[i].CompareTo(second[i]);
        if (result != DbTableRow::CmpEqual) {
            return result == DbTableRow::CmpLess ? count : i;
        }
    }
    return count;
}

// The types of the values in as many leading fields as the rows ascend by, taken in the order.
std::vector<VARTYPE> AscendingTypes(const std::vector<uint64>& order, const std::vector<uint64>& fields,
                                    const RowsView& rows) {
    std::size_t count = order.empty() ? 0 : fields.size();
    std::vector<Sortable> before(count);
    std::vector<Sortable> values(count);
    for (std::size_t place = 0; place < order.size() && count > 0; ++place) {
        count = rows.HasRow(order[place]) ? std::min(count, Read(rows, order[place], fields, values)) : 0;
        if (place > 0) {
            count = AscendingFields(before, values, count);
        }
        before.swap(values);
    }
    std::vector<VARTYPE> types(count);
    std::transform(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(count), types.begin(),
                   [](const Sortable& value) { return value.Type(); });
    return types;
}

// The key of a binary search: one value for each of the leading fields.
class Target {
public:
    // False where the keys have no place among values of the types.
    bool Set(const CComVariant* keys, std::size_t count, const std::vector<VARTYPE>& types) {
        m_keys.resize(count);
        m_values.resize(count);
        if (count > types.size()) {
            return false;
        }
        for (std::size_t i = 0; i < count; ++i) {
            if (keys[i].vt != types[i] || !m_keys[i].Set(CellView::Variant(keys[i]))) {
                return false;
            }
        }
        return true;
    }

    bool IsGreater(const RowsView& rows, uint64 position, const std::vector<uint64>& fields) {
        for (std::size_t i = 0; i < m_keys.size(); ++i) {
            const CellView value = rows.Cell(position, fields[i]);
            if (value.Type() != m_keys[i].Type() || !m_values[i].Set(value)) {
                return false;
            }
            const Result result = m_keys[i].CompareTo(m_values[i]);
            if (result != DbTableRow::CmpEqual) {
                return result == DbTableRow::CmpGreater;
            }
        }
        return false;
    }

private:
    std::vector<Sortable> m_keys;
    std::vector<Sortable> m_values;
};

}  // namespace

void CurrentIndex::Set(const Index* index) {
    m_index = index == nullptr ? nullptr : index->LifeToken();
}

uint64 CurrentIndex::PositionAt(uint64 place) const {
    const Index* const index = Get();
    if (index == nullptr) {
        return place;
    }
    const std::vector<uint64>& order = index->GetRowOrder();
    return place < order.size() ? order[place] : NoRow;
}

void CurrentIndex::Build(const DbTableDescr& descr, DbTableData& data) {
    const std::vector<uint64> fields = FieldsOf(*Get(), descr);
    std::vector<uint64> positions(data.size());
    std::iota(positions.begin(), positions.end(), uint64{0});
    if (positions.empty()) {
        Get()->GetRowOrder().clear();
        return;
    }
    Get()->GetRowOrder() = OrderOfRows({RowsView(*data.GetRows()), positions}, fields);
}

std::optional<uint64> CurrentIndex::Find(const DbTableDescr& descr, DbTableData& data,
                                         const CComVariant* keys, uint64 count) {
    if (data.size() == 0) {
        return std::nullopt;
    }
    Index& index = *Get();
    std::vector<uint64> fields = FieldsOf(index, descr);
    const std::vector<uint64>& order = std::as_const(index).GetRowOrder();
    const RowsView rows(*data.GetRows());
    if (!index.m_ascendingTypes) {
        index.m_ascendingTypes = AscendingTypes(order, fields, rows);
    }
    fields.resize(std::min<uint64>(fields.size(), count));

    CComVariant scratch;
    const auto isEqual = [&](uint64 position) {
        bool equal = rows.HasRow(position);
        for (std::size_t i = 0; equal && i < fields.size(); ++i) {
            equal = EqualIgnoringCase(keys[i], rows.Cell(position, fields[i]).In(scratch));
        }
        return equal;
    };
    auto found = order.begin();
    Target target;
    if (target.Set(keys, fields.size(), *index.m_ascendingTypes)) {
        found = std::partition_point(order.begin(), order.end(), [&](uint64 position) {
            return rows.HasRow(position) && target.IsGreater(rows, position, fields);
        });
        if (found != order.end() && !isEqual(*found)) {
            found = order.end();
        }
    } else {
        found = std::find_if(order.begin(), order.end(), isEqual);
    }
    return found == order.end() ? std::nullopt : std::optional(static_cast<uint64>(found - order.begin()));
}

void CurrentIndex::RowDeleted(uint64 place, uint64 position) {
    Index* const index = Get();
    if (index == nullptr) {
        return;
    }
    // Whether rows ascend is looked for again: a deletion from borrowed rows may change which of them are
    // seen.
    std::vector<uint64>& order = index->GetRowOrder();
    if (place < order.size()) {
        order.erase(order.begin() + static_cast<std::ptrdiff_t>(place));
    }
    for (uint64& entry : order) {
        if (entry > position) {
            --entry;
        }
    }
}

}  // namespace quillet
