#include "Quillet/automation/CDbTableRow.h"

#include "Quillet/Db_TableDescr.h"

namespace quillet::automation {

CDbFieldValue* CDbTableRow::CellAt(std::int64_t position) {
    m_cell->Show(m_row, position);
    return m_cell.Get();
}

HRESULT CDbTableRow::FieldByIndex(long fieldIdx, IDbFieldValue** pVal) {
    return Give(pVal, [&] {
        static_cast<void>(*m_row);
        return CellAt(fieldIdx);
    });
}

HRESULT CDbTableRow::get_FieldsCount(long* pVal) {
    return Give(pVal, [&] { return static_cast<std::int64_t>(m_row->size()); });
}

HRESULT CDbTableRow::FieldByName(BSTR fieldName, IDbFieldValue** pVal) {
    return Give(pVal, [&] {
        const DbTableDescr* const descr = m_row->GetDescr();
        return CellAt(descr == nullptr ? -1 : descr->GetFieldIndex(TextOf(fieldName)));
    });
}

}  // namespace quillet::automation
