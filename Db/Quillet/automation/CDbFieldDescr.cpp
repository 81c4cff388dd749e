#include "Quillet/automation/CDbFieldDescr.h"

namespace quillet::automation {

HRESULT CDbFieldDescr::get_Name(BSTR* pVal) {
    return Give(pVal, [&] { return m_field->GetName(); });
}

HRESULT CDbFieldDescr::put_Type(FieldType newVal) {
    return Do([&] {
        DbFieldDescr& field = *m_field;
        const auto type = static_cast<std::int32_t>(newVal);
        if (type >= DbFieldDescr::Empty && type <= DbFieldDescr::Binary) {
            field.SetDbType(static_cast<DbFieldDescr::eFieldType>(type));
        }
    });
}

HRESULT CDbFieldDescr::get_Type(FieldType* pVal) {
    return Give(pVal, [&] { return m_field->GetDbType(); });
}

HRESULT CDbFieldDescr::get_TypeName(BSTR* pVal) {
    return Give(pVal, [&] { return m_field->GetTypeString(); });
}

HRESULT CDbFieldDescr::get_Index(long* pVal) {
    return Give(pVal, [&] { return m_field->GetIndex(); });
}

}  // namespace quillet::automation
