#include "Quillet/Db_Database.h"

#include "Quillet/Db_Exception.h"
#include "Quillet/document/DocumentReader.h"
#include "Quillet/document/DocumentWriter.h"
#include "Quillet/document/LazyReader.h"
#include "Quillet/document/Omissions.h"
#include "Quillet/document/SaveGuard.h"
#include "Quillet/platform/MessageBox.h"
#include "Quillet/query/JoinBuilder.h"
#include "Quillet/query/QueryBuilder.h"
#include "Quillet/records/AccessImporter.h"
#include "Quillet/records/TableRecords.h"
#include "Quillet/registry/HeaderTables.h"
#include "Quillet/registry/LastError.h"
#include "Quillet/registry/Log.h"
#include "Quillet/registry/Registry.h"
#include "Quillet/xml/Document.h"
#include "Quillet/xml/Face.h"

using quillet::CString;

namespace {

enum class Ending { Xml, Mdb, Other };

Ending EndingOf(const CString& path) {
    const CString ending = path.Right(3);
    if (ending.CompareNoCase("xml") == 0) {
        return Ending::Xml;
    }
    return ending.CompareNoCase("mdb") == 0 ? Ending::Mdb : Ending::Other;
}

}  // namespace

std::int32_t DbDatabase::m_openDbCount = 0;
std::int32_t DbDatabase::m_queriesCount = 0;

DbDatabase::DbDatabase() : DbDatabase("") {
}

DbDatabase::DbDatabase(const CString& path)
    : DbItem(nullptr),
      m_life(std::make_shared<DbDatabase*>(this)),
      m_log(std::make_unique<quillet::Log>()),
      m_registry(std::make_unique<quillet::Registry>(*this, *m_log)),
      m_source(std::make_unique<DbSource>(this)),
      m_importer(std::make_unique<quillet::AccessImporter>(*m_source, *m_registry, *m_log)),
      m_reader(std::make_unique<quillet::LazyReader>(*this, *m_source, *m_registry, *m_importer, *m_log)),
      m_queries(std::make_unique<quillet::QueryBuilder>(*this, *m_registry, *m_reader, *m_log)),
      m_saveError(std::make_unique<quillet::LastError>(DbLogEntry::Kind::SaveFault)) {
    m_source->SetFile(path, false);
    ++m_openDbCount;
}

DbDatabase::~DbDatabase() {
    try {
        if (IsChanged() && (m_source->IsXmlBased() || m_source->IsMdbBased())) {
            Save(m_source->GetFile());
        }
    } catch (...) {
        // A destructor can't report it; the file is unchanged.
    }
    Clear();
    --m_openDbCount;
}

uint64 DbDatabase::GetSize() const {
    constexpr uint64 OwnEstimate = 8;
    return DbItem::GetSize() + OwnEstimate;
}

bool DbDatabase::SaveMdb(const CString&) {
    return false;
}

bool DbDatabase::Save(const CString& path) {
    m_saveError->Clear();
    bool isSaved = false;
    try {
        isSaved = TrySave(path);
    } catch (quillet::CException* exception) {
        m_saveError->SetToCurrentException();
        exception->Delete();
    } catch (...) {
        m_saveError->SetToCurrentException();
    }
    if (!isSaved) {
        LogFailedSave(path);
    }
    return isSaved;
}

bool DbDatabase::TrySave(const CString& path) {
    m_queries->RefreshAll();
    LoadTables();
    const CString lost = m_reader->ReadRest(path);
    if (!lost.IsEmpty()) {
        m_saveError->Set("what was not read from it would be lost: " + lost);
        return false;
    }
    const bool isOwnFile = m_reader->IsOwnFile(path);
    switch (EndingOf(path)) {
        case Ending::Xml:
            if (!SaveXml(path)) {
                return false;
            }
            break;
        case Ending::Mdb:
            if (!SaveMdb(path)) {
                m_saveError->Set("this database writes no Access files");
                return false;
            }
            break;
        default:
            m_saveError->Set("its name ends neither in xml nor in mdb");
            return false;
    }
    Sync();
    if (isOwnFile) {
        m_reader->MarkWritten();
    }
    if (IsChanged()) {
        m_saveError->Set("it is written, but the database still counts as changed");
        return false;
    }
    return true;
}

void DbDatabase::LogFailedSave(const CString& path) noexcept {
    try {
        if (!m_saveError->IsSet()) {
            m_saveError->Set("the document was not made");
        }
        // The last line says it already where a table failed and nothing came after it.
        const CString why = m_saveError->Text();
        if (EndingOf(path) != Ending::Other && m_log->Last() != why) {
            m_log->Print(quillet::Log::Kind::SaveFault, "File '%s' could not be written: %s",
                         path.ToUtf8().c_str(), why.ToUtf8().c_str());
        }
    } catch (const std::bad_alloc&) {
        m_saveError->SetToCurrentException();
    }
}

bool DbDatabase::SaveXml(const CString& path) {
    quillet::xml::Document document;
    const quillet::xml::Node root = document.Root();
    root.AppendChild(root.CreateProcessingInstruction("xml", "version='1.0' encoding='UTF-8'"));
    quillet::xml::Face face(root);
    if (!Save(face.Get(), nullptr)) {
        return false;
    }
    std::string why;
    const bool isWritten =
        document.SaveFile(path.ToUtf8(), &why, m_guard ? m_guard->For(path.ToUtf8()) : nullptr);
    if (!isWritten) {
        m_saveError->Set(why);
    }
    return isWritten;
}

bool DbDatabase::Save(IDispatch* document, IDispatch* parent) {
    if (document == nullptr) {
        throw new DbException("Invalid pointer");
    }
    m_saveError->Clear();
    LoadTables();
    quillet::CreateHeaderTable(*m_registry);
    quillet::CreatePropertiesTable(*m_registry);
    quillet::DocumentWriter writer(*m_registry, *m_log);
    try {
        if (writer.Write(quillet::xml::Node(document), quillet::xml::Node(parent))) {
            return true;
        }
        m_saveError->Set(writer.LastFailure());
    } catch (const quillet::xml::DomError& error) {
        m_saveError->Set(CString("The document could not be made: " + error.m_message));
        m_log->Add(quillet::Log::Kind::SaveFault, m_saveError->Text());
    }
    return false;
}

void DbDatabase::RefuseForeignChanges(bool on) {
    m_guard = on ? std::make_unique<quillet::SaveGuard>(m_source->GetFile().ToUtf8()) : nullptr;
}

void DbDatabase::RefuseForeignChangesOf(const CString& path) {
    m_guard = std::make_unique<quillet::SaveGuard>(path.ToUtf8());
}

bool DbDatabase::Create(CString path) {
    m_source->Create(path);
    quillet::CreateHeaderTable(*m_registry);
    quillet::CreatePropertiesTable(*m_registry);
    m_reader->MarkRead();
    return true;
}

void DbDatabase::Clear() {
    m_registry->Clear();
    m_reader->Reset();
}

DbTableInfo* DbDatabase::CreateTable(CString name, DbTableInfo::eType type, const CString& sql,
                                     DbTableInfo* related) {
    m_reader->ReadStructure();
    return m_registry->Create(name, type, sql, related);
}

DbTableInfo* DbDatabase::CreateTable(DbTableInfo* info) {
    m_reader->ReadStructure();
    return info == nullptr ? nullptr
                           : m_registry->Create(info->GetName(), info->GetType(), info->GetDescr(),
                                                info->GetData(), info->GetSql(), info->GetRelated());
}

void DbDatabase::DeleteTable(const CString& name) {
    m_reader->ReadStructure();
    if (const DbTableInfo* const info = m_registry->Find(name)) {
        m_reader->Reach(info->GetData());
        m_reader->Forget(info->GetData());
        m_reader->ForgetStructure(info->GetDescr());
        m_registry->DeleteWithRelated(name);
        SetChanged();
    }
}

void DbDatabase::ClearTable(const CString& name) {
    m_reader->ReadStructure();
    if (DbTableInfo* const info = m_registry->Find(name)) {
        info->Clear();
        m_reader->ForgetStructure(info->GetDescr());
    }
}

int DbDatabase::DropAnswers() {
    return static_cast<int>(m_registry->DeleteQueries());
}

bool DbDatabase::RenameTable(CString oldName, CString newName) {
    if (!IsTable(oldName)) {
        return false;
    }
    // Rows that still wait to be read name their table.
    DbTableData* const data = GetTableData(oldName);
    if (!data->ParseXmlData() && m_reader->IsOutOfMemory()) {
        throw std::bad_alloc();
    }
    DbTableDescr* const descr = m_registry->Find(oldName)->GetDescr();
    m_registry->Rename(oldName, newName);
    descr->SetChanged();
    data->SetChanged();
    return true;
}

bool DbDatabase::IsTable(CString name) {
    return GetTableInfo(std::move(name)) != nullptr;
}

int DbDatabase::GetTablesCount() {
    m_reader->ReadStructure();
    return static_cast<int>(m_registry->Count());
}

const CString& DbDatabase::GetTableName(std::size_t index) {
    static const CString NoName;
    m_reader->ReadStructure();
    return index < m_registry->Count() ? m_registry->NameAt(index) : NoName;
}

DbTableDescr* DbDatabase::GetTableDescr(std::size_t index) {
    m_reader->ReadStructure();
    return index < m_registry->Count() ? m_registry->DescrAt(index) : nullptr;
}

DbTableDescr* DbDatabase::GetTableDescr(const CString& name) {
    const DbTableInfo* const info = GetTableInfo(name);
    return info == nullptr ? nullptr : info->GetDescr();
}

DbTableData* DbDatabase::GetTableData(std::size_t index) {
    m_reader->ReadStructure();
    if (index >= m_registry->Count()) {
        return nullptr;
    }
    m_reader->ReadUntil(m_registry->DataAt(index));
    if (DbTableInfo* const info = m_registry->Find(m_registry->NameAt(index))) {
        m_queries->Refresh(*info);
    }
    return index < m_registry->Count() ? m_registry->DataAt(index) : nullptr;
}

DbTableData* DbDatabase::GetTableData(const CString& name) {
    const DbTableInfo* const info = GetTableInfo(name);
    return info == nullptr ? nullptr : GetTableData(info->GetIndex());
}

bool DbDatabase::GetTableInfo(CString name, DbTableInfo& out) {
    const DbTableInfo* const info = GetTableInfo(std::move(name));
    if (info != nullptr) {
        out = *info;
    }
    return info != nullptr;
}

DbTableInfo* DbDatabase::GetTableInfo(CString name) {
    m_reader->ReadStructure();
    return m_registry->Find(name);
}

DbTableDescr* DbDatabase::GetHeaderDescr() {
    return m_registry->Count() > 0 ? m_registry->DescrAt(0) : nullptr;
}

DbTableData* DbDatabase::GetHeaderData() {
    return m_registry->Count() > 0 ? m_registry->DataAt(0) : nullptr;
}

void DbDatabase::LoadTables() {
    m_reader->ReadStructure();
    m_reader->ReadAll();
}

bool DbDatabase::LoadWhole() {
    LoadTables();
    m_reader->ReadRest(m_source->GetFile());
    return m_reader->LastReadError().IsEmpty();
}

void DbDatabase::CopyFrom(const DBACCESS_ALL& all) {
    // Rows that are still in the file would later replace those that are copied.
    LoadTables();
    m_importer->CopyFrom(all);
    m_reader->MarkRead();
}

void DbDatabase::CopyTableFrom(const std::pair<CString, DBACCESS_VECTOR>& table) {
    // As above.
    GetTableData(table.first);
    m_importer->CopyTable(table.first, table.second);
}

void DbDatabase::CopyTableFrom(const DBACCESS_ALL& all, int index) {
    const auto position = static_cast<std::size_t>(index);
    if (position < all.size()) {
        CopyTableFrom(all[position]);
    }
}

void DbDatabase::GetTable(DbTableInfo* info, DBACCESS_VECTOR& out) {
    if (info == nullptr || info->GetDescr() == nullptr || info->GetData() == nullptr) {
        return;
    }
    GetTableData(info->GetName());
    quillet::CopyRecords(*info, out);
}

void DbDatabase::GetTable(const CString& name, DBACCESS_VECTOR& out) {
    GetTable(GetTableInfo(name), out);
}

const std::vector<CString>& DbDatabase::ImportReport() const {
    return m_importer->Report();
}

bool DbDatabase::Query(CString sql, CString& name) {
    return m_queries->Query(sql, name);
}

bool DbDatabase::AnalyzeSQL(CString sql, parser::QueryAnalysisParams* params) {
    return params != nullptr && params->clause != nullptr && m_queries->Analyze(sql, *params);
}

bool DbDatabase::VerifySQL(CString sql) {
    return m_queries->Verify(sql);
}

CString DbDatabase::inner_join(CString first, CString second, CString left, CString op, CString right) {
    return quillet::JoinBuilder(*m_queries, *m_reader, *m_registry, *m_log)
        .Inner({first, second, left, op, right});
}

CString DbDatabase::right_join(CString first, CString second, CString left, CString op, CString right) {
    return quillet::JoinBuilder(*m_queries, *m_reader, *m_registry, *m_log)
        .Right({first, second, left, op, right});
}

CString DbDatabase::left_join(CString, CString, CString, CString, CString) {
    return {};
}

bool DbDatabase::CanUpdate() const {
    return !m_source->IsReadOnly();
}

bool DbDatabase::IsOpen() const {
    return m_source->IsValid();
}

const CString& DbDatabase::GetName() const {
    return m_source->GetFile();
}

void DbDatabase::ParseXmlTableData(const CString& xml) {
    quillet::Omissions ofThisText;
    quillet::DocumentReader(*m_registry, *m_log, ofThisText).ReadTableText(xml);
}

void DbDatabase::GetError(std::vector<CString>& out) {
    m_log->MoveTo(out);
}

void DbDatabase::GetLogEntries(std::vector<DbLogEntry>& out) {
    m_log->MoveTo(out);
}

CString DbDatabase::GetErrorLog() {
    return m_log->Joined();
}

void DbDatabase::ClearLog() {
    m_log->Clear();
}

void DbDatabase::SetLogLimit(std::size_t lines) {
    m_log->SetLimit(lines);
}

CString DbDatabase::LastSaveError() const {
    return m_saveError->Text();
}

bool DbDatabase::RanOutOfMemory() const {
    return m_reader->IsOutOfMemory() || m_saveError->IsOutOfMemory();
}

CString DbDatabase::LastReadError() const {
    return m_reader->LastReadError();
}

DbLogEntry DbDatabase::LastReadFault() const {
    return m_reader->LastReadFault();
}

void DbDatabase::ShowErrorLog() {
    quillet::platform::ShowMessage(m_log->Joined().View(), OLESTR("Quillet"));
}
