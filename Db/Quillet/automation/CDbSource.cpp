#include "Quillet/automation/CDbSource.h"

namespace quillet::automation {

void CDbSource::Show(const DbDatabase& database) {
    m_database = WatchedDatabase(database.LifeToken());
}

DbSource& CDbSource::Source() const {
    return *m_database->GetSource();
}

HRESULT CDbSource::get_FilePath(BSTR* pVal) {
    return Give(pVal, [&] { return Source().GetFile(); });
}

HRESULT CDbSource::put_FilePath(BSTR newVal) {
    return Do([&] { Source().SetFile(TextOf(newVal), false); });
}

HRESULT CDbSource::get_SequentialAccess(VARIANT_BOOL* pVal) {
    return Give(pVal, [&] { return Source().IsSequentialAccess(); });
}

HRESULT CDbSource::put_SequentialAccess(VARIANT_BOOL newVal) {
    return Do([&] { Source().SetSequentialAccess(newVal != VARIANT_FALSE); });
}

HRESULT CDbSource::get_IsXmlBased(VARIANT_BOOL* pVal) {
    return Give(pVal, [&] { return Source().IsXmlBased(); });
}

// One setting for all sources of the process.
HRESULT CDbSource::get_ForceXML(VARIANT_BOOL* pVal) {
    return Give(pVal, [&] { return Source().ForceXML; });
}

HRESULT CDbSource::put_ForceXML(VARIANT_BOOL newVal) {
    return Do([&] { Source().ForceXML = newVal != VARIANT_FALSE; });
}

}  // namespace quillet::automation
