#include "Quillet/Db_LazyReader.h"

#include <algorithm>
#include <string>

#include "Quillet/Db_AccessImporter.h"
#include "Quillet/Db_Database.h"
#include "Quillet/Db_DocumentReader.h"
#include "Quillet/Db_HeaderTables.h"
#include "Quillet/Db_Log.h"
#include "Quillet/Db_Registry.h"
#include "platform/Clock.h"
#include "xml/Document.h"

namespace quillet {

namespace {

constexpr const char* HeaderStructurePath = "\\database\\header\\structure";
constexpr const char* HeaderDataPath = "\\database\\header\\data";
constexpr const char* BodyStructurePath = "\\database\\body\\structure";
constexpr const char* BodyTablePath = "\\database\\body\\data\\table";

}  // namespace

void DbLazyReader::Reset() {
    m_pending = true;
    m_unread.clear();
}

void DbLazyReader::MarkRead() {
    m_pending = false;
}

void DbLazyReader::ReadStructure() {
    if (!m_pending || (!m_source.IsXmlBased() && !m_source.IsMdbBased())) {
        return;
    }
    m_pending = false;
    if (m_source.IsMdbBased()) {
        m_importer.Import();
    } else if (m_source.IsSequentialAccess()) {
        ReadSequentially();
    } else {
        DbDocumentReader(m_registry, m_log).ReadDatabase(m_source.GetFile());
        CreateHeaderTable(m_registry);
        CreatePropertiesTable(m_registry);
    }
    m_owner.Sync();
}

void DbLazyReader::ReadSequentially() {
    DbDocumentReader reader(m_registry, m_log);
    CString xml;
    bool good = m_source.ExtractXmlNode(HeaderStructurePath, xml);
    if (good) {
        reader.ReadStructureText(xml);
    }
    // A search for rows that are not announced would run to the end of the file, past the body.
    if (m_registry.Count() > 0) {
        good = m_source.ExtractXmlNode(HeaderDataPath, xml);
        if (good) {
            reader.ReadDataText(xml);
        }
    }
    good = good && m_source.ExtractXmlNode(BodyStructurePath, xml);
    if (!good) {
        reader.LogInvalidFormat();
        CreateHeaderTable(m_registry);
        CreatePropertiesTable(m_registry);
        return;
    }
    // The fixed tables come before those of the body, unless they stand there.
    if (!DbDocumentReader::DescribesTable(xml, HeaderTable)) {
        CreateHeaderTable(m_registry);
    }
    if (!DbDocumentReader::DescribesTable(xml, PropertiesTable)) {
        CreatePropertiesTable(m_registry);
    }
    const std::size_t first = m_registry.Count();
    reader.ReadStructureText(xml);
    for (std::size_t i = first; i < m_registry.Count(); ++i) {
        m_unread.push_back(m_registry.DataAt(i));
    }
    CheckEnd();
}

DbTableData* DbLazyReader::ReadNextTable() {
    if (m_source.IsEof()) {
        return nullptr;
    }
    while (!m_unread.empty()) {
        const double start = platform::CounterSeconds();
        CString xml;
        if (!m_source.ExtractXmlNode(BodyTablePath, xml)) {
            break;
        }
        DbTableData* const data = TakeUnread(xml);
        CheckEnd();
        if (data != nullptr) {
            data->SetXmlSource(xml);
            m_log.Print("Table '%s' xml source extracted in %.4f [s]",
                        m_registry.Find(data)->GetName().ToUtf8().c_str(),
                        platform::CounterSeconds() - start);
            return data;
        }
    }
    CheckEnd();
    if (m_source.IsSequentialAccess()) {
        m_source.Release();
    }
    return nullptr;
}

// Reading has come to the end of a file that lacks the rows of some tables.
void DbLazyReader::CheckEnd() {
    if (m_source.IsEof() && !m_unread.empty()) {
        m_unread.clear();
        DbDocumentReader(m_registry, m_log).LogInvalidFormat();
    }
}

// Which table the rows belong to. The format puts them in the order of the structure; where a file does not,
// the name decides. Null for rows that no unread table waits for.
DbTableData* DbLazyReader::TakeUnread(const CString& xml) {
    std::string storage;
    std::string name;
    auto place = m_unread.begin();
    if (xml::FirstAttributeOfText(xml.ViewUtf8(storage), name)) {
        const DbTableInfo* const named = m_registry.Find(CString(name));
        if (named == nullptr) {
            m_log.Print("Table '%s' has rows but no structure, they are left out", name.c_str());
            return nullptr;
        }
        place = std::find(m_unread.begin(), m_unread.end(), named->GetData());
        if (place == m_unread.end()) {
            m_log.Print("Table '%s' has rows in two places of the file, the later ones are left out",
                        name.c_str());
            return nullptr;
        }
    }
    DbTableData* const data = *place;
    m_unread.erase(place);
    return data;
}

void DbLazyReader::ReadUntil(const DbTableData* data) {
    while (IsUnread(data) && ReadNextTable() != nullptr) {
    }
}

void DbLazyReader::ReadAll() {
    while (ReadNextTable() != nullptr) {
    }
}

void DbLazyReader::Forget(const DbTableData* data) {
    ReadUntil(data);
    m_unread.erase(std::remove(m_unread.begin(), m_unread.end(), data), m_unread.end());
}

bool DbLazyReader::IsUnread(const DbTableData* data) const {
    return std::find(m_unread.begin(), m_unread.end(), data) != m_unread.end();
}

}  // namespace quillet
