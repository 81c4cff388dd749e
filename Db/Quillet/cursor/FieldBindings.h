// Which variables of a program follow which fields of a cursor's row.
#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "Quillet/Db_TableRow.h"

namespace quillet {

class FieldBindings {
public:
    // Sets the variable from a cell's value.
    using ReadFunction = void (*)(const CComVariant& value, void* variable);
    // Sets a cell's value from the variable.
    using WriteFunction = void (*)(CComVariant& value, const void* variable);

    // Has the variable follow the field at a position (from 0), whatever it followed before.
    void Bind(void* variable, uint64 field, ReadFunction read, WriteFunction write);
    void Clear() { m_bindings.reset(); }
    // The position of the field that the variable follows; -1 for none.
    int FieldOf(const void* variable) const;

    // Sets every variable from its cell, which is a null variant where the cell's flag says null, in the
    // order of the variables' addresses; a field that the row lacks is passed over. row() gives the row; it
    // is asked for every variable, since the functions may change the table. False where there is no row.
    template <typename Row>
    bool Read(Row row) const {
        // The functions may bind more variables: these go into another list (Bind).
        const Held bindings = m_bindings;
        for (const auto& [variable, binding] : ListOf(bindings)) {
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
    // The values to store, by the positions of their fields, appended in the order in which they will be
    // stored. The row is unchanged.
    using Values = std::vector<std::pair<uint64, CComVariant>>;
    template <typename Row>
    void Collect(Row row, Values& values) const {
        const Held bindings = m_bindings;
        for (const auto& [variable, binding] : ListOf(bindings)) {
            const DbFieldValue* const cell = CellOf(row(), binding);
            if (cell == nullptr || binding.m_write == nullptr) {
                continue;
            }
            // Of two variables of one field the second begins with what the first left.
            const uint64 field = binding.m_field;
            const auto before = std::find_if(values.rbegin(), values.rend(),
                                             [field](const auto& value) { return value.first == field; });
            CComVariant value = before == values.rend() ? cell->GetVariant() : before->second;
            binding.m_write(value, variable);
            values.emplace_back(field, std::move(value));
        }
    }

    // Gives the row's cells the values, which count as changed then and keep their flag; a field that the row
    // lacks is passed over. Can't fail.
    static void Store(DbTableRow& row, Values& values) {
        for (auto& [field, value] : values) {
            if (field < row.size()) {
                DbFieldValue& cell = row.GetField(field);
                cell.GetVariant() = std::move(value);
                cell.SetChanged();
            }
        }
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

    // Null for none.
    using Held = std::shared_ptr<const Bindings>;

    static const Bindings& ListOf(const Held& bindings);

    // Null where the row is, or lacks the field.
    static DbFieldValue* CellOf(DbTableRow* row, const Binding& binding) {
        return row != nullptr && binding.m_field < row->size() ? &row->GetField(binding.m_field) : nullptr;
    }

    std::shared_ptr<Bindings> m_bindings;
};

}  // namespace quillet
