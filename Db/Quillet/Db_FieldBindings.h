// Which variables of a program follow which fields of a cursor's row.
#pragma once

#include <map>
#include <memory>
#include <utility>

#include "Quillet/Db_TableRow.h"

namespace quillet {

class QUILLET_API FieldBindings {
public:
    // Sets the variable from a cell's value.
    using ReadFunction = void (*)(const CComVariant& value, void* variable);
    // Sets a cell's value from the variable.
    using WriteFunction = void (*)(CComVariant& value, const void* variable);

    // Has the variable follow the field at a position (from 0), whatever it followed before.
    void Bind(void* variable, uint64 field, ReadFunction read, WriteFunction write);
    void Clear() { m_bindings = std::make_shared<Bindings>(); }
    // The position of the field that the variable follows; -1 for none.
    int FieldOf(const void* variable) const;

    // Sets every variable from its cell, which is a null variant where the cell's flag says null, or every
    // cell from its variable, in the order of the variables' addresses. Cells that are written count as
    // changed and keep their flag, and a field that the row lacks is passed over. row() gives the row; it is
    // asked for every variable, since the functions may change the table. False where there is no row.
    template <typename Row>
    bool Read(Row row) const {
        // What is bound meanwhile goes into another list (Bind).
        const std::shared_ptr<const Bindings> bindings = m_bindings;
        for (const auto& [variable, binding] : *bindings) {
            DbTableRow* const at = row();
            if (at == nullptr) {
                return false;
            }
            if (DbFieldValue* const cell = CellOf(at, binding);
                cell != nullptr && binding.m_read != nullptr) {
                binding.m_read(cell->IsNull() ? Null() : cell->GetVariant(), variable);
            }
        }
        return row() != nullptr;
    }
    template <typename Row>
    bool Write(Row row) const {
        const std::shared_ptr<const Bindings> bindings = m_bindings;
        for (const auto& [variable, binding] : *bindings) {
            DbFieldValue* cell = CellOf(row(), binding);
            if (cell == nullptr || binding.m_write == nullptr) {
                continue;
            }
            CComVariant value = cell->GetVariant();
            binding.m_write(value, variable);
            cell = CellOf(row(), binding);
            if (cell != nullptr) {
                cell->GetVariant() = std::move(value);
                cell->SetChanged();
            }
        }
        return row() != nullptr;
    }

    // The functions for a short, int, long, CString, float, double or bool: by the platform's conversion. The
    // variable, or the value, stays as it was where the conversion fails. Null and empty read as zero, false
    // or the empty text. A value that is written keeps its type, unless it was null or empty.
    template <typename Variable>
    static void ReadVariable(const CComVariant& value, void* variable);
    template <typename Variable>
    static void WriteVariable(CComVariant& value, const void* variable);

private:
    static const CComVariant& Null();

    struct Binding {
        uint64 m_field = 0;
        ReadFunction m_read = nullptr;
        WriteFunction m_write = nullptr;
    };
    using Bindings = std::map<void*, Binding>;

    // Null where the row is, or lacks the field.
    static DbFieldValue* CellOf(DbTableRow* row, const Binding& binding) {
        return row != nullptr && binding.m_field < row->size() ? &row->GetField(binding.m_field) : nullptr;
    }

    std::shared_ptr<Bindings> m_bindings = std::make_shared<Bindings>();
};

}  // namespace quillet
