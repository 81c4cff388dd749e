#include "input/Catalog.h"

#include <algorithm>
#include <new>
#include <utility>

#include "Quillet/Db_Recordset.h"
#include "Quillet/base/CException.h"
#include "Quillet/document/DocumentReader.h"
#include "Quillet/platform/File.h"
#include "Quillet/values/Names.h"
#include "Quillet/xml/Document.h"
#include "System.h"
#include "input/AccessCatalog.h"
#include "input/CellText.h"
#include "input/FileKind.h"
#include "input/LogEntries.h"
#include "input/SaveErrors.h"
#include "input/WriteLock.h"
#include "output/NameSuggestions.h"
#include "output/PlainText.h"
#include "output/Progress.h"
#include "output/TableProgress.h"

namespace quillet::tool {

namespace {

constexpr const char* IncompleteCatalog = "no catalog: its header or its body is not complete";
constexpr const char* IncompleteSequentially =
    "no catalog that can be read sequentially: its header or its body is not found, or not all "
    "of it";
constexpr const char* TryAsAWhole = "; try it without --sequential";

// The model returns false out of memory; the program ends.
void RequireMemory(const DbDatabase& database) {
    if (database.RanOutOfMemory()) {
        throw std::bad_alloc();
    }
}

void WriteLine(const std::string& line) {
    WriteToStandardError(Visible(line) + "\n");
}

bool EqualNames(const std::string& left, const char* right) {
    return CString(left).CompareNoCase(right) == 0;
}

std::unique_ptr<DbDatabase> OpenDatabase(const std::string& path) {
    std::string why;
    if (!platform::ReadableFile::Open(path, &why)) {
        throw Failure(path + ": " + why);
    }
    RefuseOtherKind(path);
    // The path is used as it was given.
    DbSource::ForceXML = false;
    try {
        return std::make_unique<DbDatabase>(path);
    } catch (CException* exception) {
        exception->Delete();
        throw Failure(path + ": can't be read");
    }
}

}  // namespace

Catalog::Catalog(const std::string& path, const Settings& settings)
    : Catalog(path, settings, OpenDatabase(path)) {
    if (!m_database->IsOpen()) {
        throw Failed("no catalog: its name ends neither in .xml nor in .mdb");
    }
    m_database->GetSource()->SetSequentialAccess(settings.m_sequential);
}

Catalog::Catalog(const std::string& path, const Settings& settings, std::unique_ptr<DbDatabase> database)
    : m_path(path), m_showsLog(settings.m_log), m_database(std::move(database)) {
}

Catalog::~Catalog() {
    if (m_database) {
        // A changed database would save itself.
        m_database->Sync();
    }
}

Catalog Catalog::Create(const std::string& path, const Settings& settings) {
    DbSource::ForceXML = false;
    Catalog catalog(path, settings, std::make_unique<DbDatabase>());
    catalog.m_database->Create(path);
    catalog.m_database->RefuseForeignChanges(true);
    return catalog;
}

Catalog Catalog::OpenForEditing(const std::string& path, const Settings& settings) {
    Catalog catalog(path, settings);
    if (!catalog.IsXml()) {
        throw catalog.Failed("only .xml catalogs can be changed");
    }
    if (!catalog.m_database->CanUpdate()) {
        throw catalog.Failed("the file is read-only");
    }
    catalog.m_lock = LockForWriting(path, settings);
    catalog.m_database->RefuseForeignChanges(true);
    catalog.ReadAll();
    catalog.RefuseUnreadable();
    catalog.RefuseFaults("not changed");
    catalog.RefuseMisplacedHeader();
    return catalog;
}

void Catalog::ReadStructure() {
    TryReadStructure();
    RefuseUnreadable();
}

void Catalog::TryReadStructure() {
    {
        const TableProgress progress("Reading " + FileName(m_path));
        m_database->GetTablesCount();
    }
    CollectLog();
    if (IsXml() || std::exchange(m_isCompared, true)) {
        return;
    }
    // For an Access file that can't be read, there are only the tables that every catalog has.
    if (m_database->GetTablesCount() <= 2) {
        const std::string why = WhyNoAccess(m_path);
        if (!why.empty()) {
            throw Failed(why);
        }
    }
    const std::vector<DbLogEntry> missing = MissingRows(m_path, *m_database);
    m_faults.insert(m_faults.end(), missing.begin(), missing.end());
}

void Catalog::ReadAll() {
    TryReadStructure();
    {
        const RunningProgress progress(ScreenBesideFiles(), "Reading " + FileName(m_path));
        m_database->LoadTables();
        for (std::size_t i = 0; i < static_cast<std::size_t>(m_database->GetTablesCount()); ++i) {
            if (!m_database->GetTableData(i)->ParseXmlData()) {
                RequireMemory(*m_database);
                m_faults.push_back(DocumentReader::MalformedRows(m_database->GetTableName(i)));
            }
        }
    }
    CollectLog();
}

std::vector<std::string> Catalog::TableNames() {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < static_cast<std::size_t>(m_database->GetTablesCount()); ++i) {
        names.push_back(m_database->GetTableName(i).ToUtf8());
    }
    return names;
}

std::size_t Catalog::FindIndex(const std::string& name) {
    const DbTableInfo* const info = m_database->GetTableInfo(name);
    if (info == nullptr) {
        throw Failed("no table " + Quoted(name) + ": " + SuggestNames(name, TableNames()));
    }
    return info->GetIndex();
}

Table Catalog::FindTable(const std::string& name) {
    return TableAt(FindIndex(name));
}

Table Catalog::TableAt(std::size_t index) {
    DbTableData* data = nullptr;
    bool isRead = false;
    {
        const RunningProgress progress(ScreenBesideFiles(), "Reading " + FileName(m_path));
        data = m_database->GetTableData(index);
        isRead = data->ParseXmlData();
    }
    CollectLog();
    const CString& name = m_database->GetTableName(index);
    if (!isRead) {
        RequireMemory(*m_database);
        // The database logs it itself, unless it cuts tables out of the file.
        m_faults.push_back(DocumentReader::MalformedRows(name));
    }
    RefuseUnreadable();
    const auto malformed = std::find_if(m_faults.begin(), m_faults.end(), [&](const DbLogEntry& fault) {
        return fault.m_kind == DbLogEntry::Kind::MalformedRows && fault.m_table.CompareNoCase(name) == 0;
    });
    if (malformed != m_faults.end()) {
        throw Failed(malformed->m_text.ToUtf8());
    }
    return {name.ToUtf8(), m_database->GetTableDescr(index), data};
}

QueryResult Catalog::Query(const std::string& query) {
    CString name;
    bool isAnswered = false;
    {
        const RunningProgress progress(ScreenBesideFiles(), "Reading " + FileName(m_path));
        DbRecordset cursor(m_database.get());
        if (cursor.OpenTable(query) || cursor.OpenTable(WithoutBrackets(query))) {
            name = cursor.GetTableName();
            isAnswered = true;
        } else {
            isAnswered = m_database->Query(query, name);
        }
    }
    const std::vector<DbLogEntry> entries = CollectLog();
    RefuseUnreadable();
    if (!isAnswered) {
        RequireMemory(*m_database);
        return {false, IsQueryRead(entries), "", QueryComplaint(entries)};
    }
    const DbTableInfo& answer = *m_database->GetTableInfo(name);
    TableAt((answer.GetType() == DbTableInfo::Query ? *answer.GetRelated() : answer).GetIndex());
    return {true, IsQueryRead(entries), name.ToUtf8(), ""};
}

bool Catalog::IsIncomplete() const {
    return std::any_of(m_faults.begin(), m_faults.end(),
                       [](const DbLogEntry& fault) { return fault.m_kind == DbLogEntry::Kind::NoCatalog; });
}

void Catalog::WarnOfFaults() const {
    if (!m_faults.empty()) {
        const std::string others =
            m_faults.size() == 1 ? "" : " (and " + std::to_string(m_faults.size() - 1) + " more)";
        Complain("warning: " + m_path + ": " + m_faults.front().m_text.ToUtf8() + others);
    }
}

void Catalog::RefuseUncarriable(const std::string& what, const std::string& text) const {
    const std::string character = UncarriableCharacter(text);
    if (!character.empty()) {
        throw Failed(what + " holds " + character + ", which a catalog can't carry");
    }
}

void Catalog::RefuseFaults(const std::string& consequence) const {
    if (!m_faults.empty()) {
        throw Failed(consequence +
                     ", for it has faults that 'quillet check' lists: " + m_faults.front().m_text.ToUtf8());
    }
}

void Catalog::SaveAs(const std::string& path) {
    bool isSaved = false;
    {
        const RunningProgress progress(ScreenBesideFiles(), "Saving " + FileName(path));
        isSaved = m_database->Save(path);
    }
    if (isSaved && !m_showsLog) {
        // From here on nothing can fail.
        return;
    }
    m_faults.clear();
    CollectLog();
    if (!isSaved) {
        RequireMemory(*m_database);
        std::string reasons;
        for (const std::string& reason : ExplainSaveErrors(*m_database, m_faults)) {
            reasons += (reasons.empty() ? ": " : "; ") + reason;
        }
        throw Failure(path + ": not saved" + reasons);
    }
}

std::vector<DbLogEntry> Catalog::CollectLog() {
    std::vector<DbLogEntry> ofQuery;
    std::vector<DbLogEntry> entries;
    m_database->GetLogEntries(entries);
    for (DbLogEntry& entry : entries) {
        if (m_showsLog) {
            WriteLine(entry.m_text.ToUtf8());
        }
        if (IsOfQuery(entry)) {
            ofQuery.push_back(std::move(entry));
        } else if (IsFault(entry)) {
            if (entry.m_kind == DbLogEntry::Kind::NoCatalog) {
                entry.m_text = IncompleteCatalog;
            }
            m_faults.push_back(std::move(entry));
        }
    }
    return ofQuery;
}

// The database keeps what it could read of a damaged file. If it could read nothing, the file is not a
// catalog.
void Catalog::RefuseUnreadable() {
    if (m_faults.empty() || !IsXml()) {
        return;
    }
    xml::Document document;
    m_isWellFormed = m_isWellFormed || document.LoadFile(m_path);
    if (!m_isWellFormed) {
        const xml::ReadError& error = document.Error();
        throw Failure(m_path + (error.m_line == 0 ? "" : ":" + std::to_string(error.m_line)) + ": " +
                      error.m_message);
    }
    if (IsIncomplete()) {
        throw Failed(WhyIncomplete());
    }
}

std::string Catalog::WhyIncomplete() const {
    const bool isSequential = m_database->GetSource()->IsSequentialAccess();
    // What could not be read then may be fine now.
    const DbLogEntry why = m_database->LastReadFault();
    if (!why.m_text.IsEmpty() && why.m_kind != DbLogEntry::Kind::NoCatalog) {
        return why.m_text.ToUtf8() + (isSequential ? TryAsAWhole : "");
    }
    return isSequential ? std::string(IncompleteSequentially) + TryAsAWhole : IncompleteCatalog;
}

// The first two tables are written as the header, whatever they are.
void Catalog::RefuseMisplacedHeader() {
    const std::vector<std::string> names = TableNames();
    if (names.size() < 2 || !EqualNames(names[0], HeaderName) || !EqualNames(names[1], PropertiesName)) {
        throw Failed("not changed, for the tables Header and Properties are not the first ones");
    }
}

bool IsHeaderOrProperties(const std::string& name) {
    return EqualNames(name, HeaderName) || EqualNames(name, PropertiesName);
}

std::vector<std::string> FieldNames(const DbTableDescr& descr) {
    std::vector<std::string> names;
    for (const DbFieldDescr* field : descr) {
        names.push_back(field->GetName().ToUtf8());
    }
    return names;
}

std::string FileName(const std::string& path) {
    const std::size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool HasXmlEnding(const std::string& path) {
    return CString(path).Right(4).CompareNoCase(".xml") == 0;
}

void Complain(const std::string& message) {
    WriteLine("quillet: " + message);
}

}  // namespace quillet::tool
