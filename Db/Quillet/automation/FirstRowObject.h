// What the objects for the header and the properties of a catalog share.
#pragma once

#include "Quillet/Db_TableData.h"
#include "Quillet/automation/Dispatch.h"
#include "Quillet/automation/FirstRow.h"

namespace quillet::automation {

// Each property of the interface is one field of the table's first row, as text. Fields are named by their
// positions. Shows nothing until Show is called.
template <typename Interface>
class FirstRowObject : public Dispatch<Interface> {
public:
    // Null shows nothing.
    void Show(const DbTableData* data) { m_row.Show(data); }

protected:
    using Dispatch<Interface>::Dispatch;

    HRESULT GiveText(uint64 field, BSTR* text) const {
        return this->Give(text, [&] { return m_row.Text(field); });
    }
    HRESULT TakeText(uint64 field, BSTR text) const {
        return this->Do([&] { m_row.SetText(field, TextOf(text)); });
    }

private:
    FirstRow m_row;
};

}  // namespace quillet::automation
