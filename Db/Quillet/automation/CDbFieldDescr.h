// A field of a table's structure, for automation clients.
#pragma once

#include "Quillet/Db_FieldDescr.h"
#include "Quillet/automation/Dispatch.h"
#include "Quillet/automation/Watch.h"

namespace quillet::automation {

// Shows nothing until Show is called.
class CDbFieldDescr final : public Dispatch<IDbFieldDescr> {
public:
    explicit CDbFieldDescr(IUnknown* outer) : Dispatch(outer) {}

    void Show(Watch<DbFieldDescr> field) { m_field = std::move(field); }

    HRESULT STDMETHODCALLTYPE get_Name(BSTR* pVal) override;
    // Numbers that are not types are ignored.
    HRESULT STDMETHODCALLTYPE put_Type(FieldType newVal) override;
    HRESULT STDMETHODCALLTYPE get_Type(FieldType* pVal) override;
    HRESULT STDMETHODCALLTYPE get_TypeName(BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE get_Index(long* pVal) override;

private:
    Watch<DbFieldDescr> m_field;
};

}  // namespace quillet::automation
