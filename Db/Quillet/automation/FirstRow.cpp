#include "Quillet/automation/FirstRow.h"

#include "Quillet/Db_TableDescr.h"

namespace quillet::automation {

void FirstRow::Show(const DbTableData* data) {
    m_data = data == nullptr ? Watch<DbTableData>() : Watch<DbTableData>(data->LifeToken());
}

DbTableRow* FirstRow::RowWith(uint64 field) const {
    DbTableRow* const row = m_data->GetRow(0);
    return row != nullptr && field < row->size() ? row : nullptr;
}

CString FirstRow::Text(uint64 field) const {
    CString text;
    if (const DbTableRow* const row = RowWith(field)) {
        row->GetField(field).ValueToString(text);
    }
    return text;
}

void FirstRow::SetText(uint64 field, const CString& text) const {
    DbTableRow* const row = RowWith(field);
    const DbTableDescr* const descr = row == nullptr ? nullptr : row->GetDescr();
    if (descr != nullptr && descr->IsField(field)) {
        row->GetField(field).ValueFromString(*descr->at(field), text);
        row->SetChanged();
    }
}

}  // namespace quillet::automation
