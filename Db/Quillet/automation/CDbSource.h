// The file of a database, for automation clients.
#pragma once

#include "Quillet/Db_Database.h"
#include "Quillet/automation/Dispatch.h"
#include "Quillet/automation/Watch.h"

namespace quillet::automation {

// Shows nothing until Show is called.
class CDbSource final : public Dispatch<IDbSource> {
public:
    explicit CDbSource(IUnknown* outer) : Dispatch(outer) {}

    // The source lives as long as its database.
    void Show(const DbDatabase& database);

    HRESULT STDMETHODCALLTYPE get_FilePath(BSTR* pVal) override;
    HRESULT STDMETHODCALLTYPE put_FilePath(BSTR newVal) override;
    HRESULT STDMETHODCALLTYPE get_SequentialAccess(VARIANT_BOOL* pVal) override;
    HRESULT STDMETHODCALLTYPE put_SequentialAccess(VARIANT_BOOL newVal) override;
    HRESULT STDMETHODCALLTYPE get_IsXmlBased(VARIANT_BOOL* pVal) override;
    HRESULT STDMETHODCALLTYPE get_ForceXML(VARIANT_BOOL* pVal) override;
    HRESULT STDMETHODCALLTYPE put_ForceXML(VARIANT_BOOL newVal) override;

private:
    // Throws MethodFailure if there is none.
    DbSource& Source() const;

    WatchedDatabase m_database;
};

}  // namespace quillet::automation
