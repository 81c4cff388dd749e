// A cell of a row, for automation clients.
#pragma once

#include <memory>

#include "Quillet/Db_FieldDescr.h"
#include "Quillet/Db_TableRow.h"
#include "Quillet/automation/Dispatch.h"
#include "Quillet/automation/Watch.h"

namespace quillet::automation {

// Shows nothing until Show is called. A cell is the place of a field in a row: it stays the same while other
// fields come and go, and is gone with its row or its field.
class CDbFieldValue final : public Dispatch<IDbFieldValue> {
public:
    explicit CDbFieldValue(IUnknown* outer) : Dispatch(outer) {}

    // From now on shows the row's cell at a position, or nothing if there is none.
    void Show(const Watch<DbTableRow>& row, std::int64_t position);

    HRESULT STDMETHODCALLTYPE get_Value(VARIANT* pVal) override;
    HRESULT STDMETHODCALLTYPE put_Value(VARIANT newVal) override;
    HRESULT STDMETHODCALLTYPE get_Index(long* pVal) override;

private:
    // Throws MethodFailure if there is none.
    DbFieldValue& Cell();

    Watch<DbTableRow> m_row;
    // Unset for a cell that no field describes.
    Watch<DbFieldDescr> m_field;
    uint64 m_position = 0;
};

}  // namespace quillet::automation
