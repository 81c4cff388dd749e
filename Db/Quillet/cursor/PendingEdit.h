// A new row, or a change of a row, that a cursor has begun and not stored yet.
#pragma once

#include <cstdint>
#include <map>
#include <utility>

#include "Quillet/cursor/FieldBindings.h"

namespace quillet {

class PendingEdit {
public:
    enum class Kind : std::uint8_t { None, NewRow, Change };

    // Drops what was pending.
    void Begin(Kind kind) {
        Drop();
        m_kind = kind;
    }
    void Drop() {
        m_kind = Kind::None;
        m_values.clear();
    }
    bool IsPending() const { return m_kind != Kind::None; }
    bool IsNewRow() const { return m_kind == Kind::NewRow; }

    // Keeps a value for the field at a position (from 0); the latest one counts.
    void Set(uint64 field, CComVariant value) { m_values[field] = std::move(value); }

    // Stores first the variables that are bound, then the values that were set; a field that the row lacks is
    // passed over. row() gives the row; it is asked again after every function of the host. Where one of
    // these throws, the row is what it was. False where there is no row.
    template <typename Row>
    bool Store(const FieldBindings& bindings, Row row) const {
        if (row() == nullptr) {
            return false;
        }
        FieldBindings::Values values;
        bindings.Collect(row, values);
        values.insert(values.end(), m_values.begin(), m_values.end());
        if (DbTableRow* const at = row()) {
            FieldBindings::Store(*at, values);
        }
        return true;
    }

private:
    Kind m_kind = Kind::None;
    // By the positions of their fields.
    std::map<uint64, CComVariant> m_values;
};

}  // namespace quillet
