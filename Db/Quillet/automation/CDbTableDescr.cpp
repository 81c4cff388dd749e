#include "Quillet/automation/CDbTableDescr.h"

namespace quillet::automation {

CDbFieldDescr* CDbTableDescr::FieldAt(DbTableDescr& descr, std::int64_t position) {
    const auto place = static_cast<uint64>(position);
    if (!descr.IsField(place)) {
        m_field->Show({});
        return nullptr;
    }
    m_field->Show(Watch<DbFieldDescr>(descr.at(place)->LifeToken()));
    return m_field.Get();
}

HRESULT CDbTableDescr::get_FieldsCount(long* pVal) {
    return Give(pVal, [&] { return static_cast<std::int64_t>(m_descr->size()); });
}

HRESULT CDbTableDescr::FieldByIndex(long fieldIdx, IDbFieldDescr** pVal) {
    return Give(pVal, [&] { return FieldAt(*m_descr, fieldIdx); });
}

HRESULT CDbTableDescr::FieldByName(BSTR fieldName, IDbFieldDescr** pVal) {
    return Give(pVal, [&] { return FieldAt(*m_descr, m_descr->GetFieldIndex(TextOf(fieldName))); });
}

HRESULT CDbTableDescr::CreateField(BSTR fieldName, FieldType Type) {
    return Do(
        [&] { m_descr->CreateField(TextOf(fieldName), false, static_cast<DbFieldDescr::eFieldType>(Type)); });
}

HRESULT CDbTableDescr::DeleteField(long fieldIdx) {
    return Do([&] { m_descr->DeleteField(static_cast<int>(fieldIdx)); });
}

HRESULT CDbTableDescr::CreateIndex(BSTR Name, BSTR fields) {
    return Do([&] { m_descr->CreateIndex(TextOf(Name), TextOf(fields)); });
}

}  // namespace quillet::automation
