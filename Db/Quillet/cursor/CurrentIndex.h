// The order in which a cursor goes through the rows of its table.
#pragma once

#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "Quillet/Db_TableData.h"
#include "Quillet/Db_TableDescr.h"

namespace quillet {

// The position of no row.
constexpr uint64 NoRow = std::numeric_limits<uint64>::max();

// An index whose row order maps places to the visible positions of rows; without an index, places are
// positions. The index keeps the order, so other cursors use it too; it does not follow later changes of the
// rows. An index that was deleted is no longer current.
class CurrentIndex {
public:
    // Null for none.
    DbTableDescr::DbIndex* Get() const { return m_index ? *m_index : nullptr; }
    // Makes an index current with the order that it has; null for none.
    void Set(const DbTableDescr::DbIndex* index);

    // The position of the row at a place; NoRow where the order has no such place.
    uint64 PositionAt(uint64 place) const;
    // Puts all rows in ascending order of the index's fields. There must be an index, and its fields must
    // exist.
    void Build(const DbTableDescr& descr, DbTableData& data);
    // The first place whose row has equal values in as many fields of the index as there are keys. Nothing
    // where there is none; there must be an index.
    //
    // Takes logarithmic time where the order ascends by these fields, which the first call finds out by
    // looking at every row, and linear time elsewhere.
    std::optional<uint64> Find(const DbTableDescr& descr, DbTableData& data, const CComVariant* keys,
                               uint64 count);
    // The row at the place was deleted; its position was this one.
    void RowDeleted(uint64 place, uint64 position);

private:
    std::shared_ptr<DbTableDescr::DbIndex*> m_index;
};

}  // namespace quillet
