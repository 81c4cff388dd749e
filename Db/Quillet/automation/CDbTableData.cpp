#include "Quillet/automation/CDbTableData.h"

namespace quillet::automation {

CDbTableRow* CDbTableData::RowAt(DbTableData& data, long position) {
    m_row->Show(Watch<DbTableRow>(data.GetRows()->LifeTokenOf(static_cast<int>(position))));
    return m_row.Get();
}

HRESULT CDbTableData::get_RowsCount(long* pVal) {
    return Give(pVal, [&] { return static_cast<std::int64_t>(m_data->size()); });
}

HRESULT CDbTableData::AddRow(IDbTableRow** pVal) {
    return Give(pVal, [&] {
        DbTableData& data = *m_data;
        data.ParseXmlData();
        return RowAt(data, static_cast<long>(data.AddRow()));
    });
}

HRESULT CDbTableData::Row(long rowIdx, IDbTableRow** pVal) {
    return Give(pVal, [&] { return RowAt(*m_data, rowIdx); });
}

HRESULT CDbTableData::RemoveRow(long rowIndex) {
    return Do([&] {
        DbTableData& data = *m_data;
        if (rowIndex >= 0) {
            data.DeleteRow(static_cast<uint64>(rowIndex));
        }
    });
}

}  // namespace quillet::automation
