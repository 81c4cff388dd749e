#include "Quillet/Db_Recordset.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "Quillet/Db_Database.h"
#include "Quillet/Db_Exception.h"
#include "Quillet/Db_QueryDef.h"
#include "Quillet/Db_TableDef.h"
#include "Quillet/base/OutOfRange.h"
#include "Quillet/base/Rollback.h"
#include "Quillet/cursor/Bookmarks.h"
#include "Quillet/cursor/CurrentIndex.h"
#include "Quillet/cursor/FieldBindings.h"
#include "Quillet/cursor/PendingEdit.h"
#include "Quillet/cursor/RowCondition.h"
#include "Quillet/cursor/TextExport.h"
#include "Quillet/platform/Clock.h"
#include "Quillet/platform/File.h"
#include "Quillet/registry/Upcalls.h"

using quillet::CComVariant;
using quillet::CString;
using quillet::FieldBindings;
using quillet::PendingEdit;

namespace {

constexpr uint64 LastModifiedBookmark = 0;

// What a report names: the same in every version, so that it can be searched for.
enum ReportLine {
    NoTableDefLine = 334,
    NoQueryDefLine = 352,
    BoundColumnLine = 411,
    DeleteLine = 895,
    UpdateLine = 990,
    RangeLine = 1302,
    ColumnLine = 1311,
    ReadNamedColumnLine = 1320,
    WriteNamedColumnLine = 1340,
    NoEditLine = 1353,
    IsNullRangeLine = 1361,
    IsNullBindingLine = 1371,
    SetNullRangeLine = 1380,
    SetNullBindingLine = 1390
};

[[noreturn]] void Throw(ReportLine line, const CString& message) {
    throw new DbException("Db/Quillet/Db_Recordset", line, message);
}

// The table that answers a text; false if none does.
bool NameOfAnswer(DbDatabase& database, const CString& sql, CString& name) {
    return database.Query(sql, name);
}

// The table of that name as it is registered; false where there is none.
bool NameOfTable(DbDatabase& database, const CString& text, CString& name) {
    const DbTableInfo* const info = database.GetTableInfo(text);
    if (info == nullptr) {
        return false;
    }
    name = info->GetName();
    return true;
}

}  // namespace

uint64 DbRecordset::bookmarkid = 0;

DbRecordset::DbRecordset(DbDatabase* db)
    : m_index(std::make_unique<quillet::CurrentIndex>()),
      m_bindings(std::make_unique<FieldBindings>()),
      m_bookmarks(std::make_unique<quillet::Bookmarks>()),
      m_edit(std::make_unique<PendingEdit>()) {
    if (db != nullptr) {
        m_hasDatabase = true;
        m_database = db->LifeToken();
    }
}

DbRecordset::~DbRecordset() = default;

// ---- Open and close

bool DbRecordset::Open() {
    return Open(GetDefaultSQL());
}

bool DbRecordset::Open(CString sql) {
    return OpenBy(NameOfAnswer, sql);
}

bool DbRecordset::OpenTable(CString name) {
    return OpenBy(NameOfTable, name);
}

bool DbRecordset::Open(DbTableDef* def) {
    if (def == nullptr) {
        Throw(NoTableDefLine, "tableDef object not defined");
    }
    if (!def->IsOpen()) {
        return false;
    }
    SetDatabase(def->GetDatabase());
    return Open(def->GetTableName());
}

bool DbRecordset::Open(DbQueryDef* def) {
    if (def == nullptr) {
        Throw(NoQueryDefLine, "queryDef object not defined");
    }
    if (!def->IsOpen()) {
        return false;
    }
    SetDatabase(def->GetDatabase());
    return Open(def->GetSQL());
}

void DbRecordset::Close() {
    Release();
    m_hasDatabase = false;
    m_database.reset();
    m_ownDatabase.reset();
}

void DbRecordset::SetDatabase(DbDatabase* db) {
    const std::weak_ptr<DbDatabase*> database =
        db == nullptr ? std::weak_ptr<DbDatabase*>() : db->LifeToken();
    Release();
    m_position = 0;
    if (db != m_ownDatabase.get()) {
        m_ownDatabase.reset();
    }
    m_hasDatabase = db != nullptr;
    m_database = database;
}

bool DbRecordset::IsOpen() {
    return Data() != nullptr;
}

CString DbRecordset::GetTableName() const {
    DbDatabase* const database = Database();
    if (database == nullptr || Data() == nullptr) {
        return {};
    }
    const DbTableInfo* const info = database->GetTableInfo(m_name);
    return info != nullptr && info->GetData() == Data() ? info->GetName()
                                                        : quillet::Upcalls::TableName(database, *Data());
}

bool DbRecordset::OpenBy(NameFunction nameOf, const CString& text) {
    if (!GoOverTo(nameOf, text)) {
        return false;
    }
    InitFieldExchange();
    MoveTo(0);
    return true;
}

bool DbRecordset::GoOverTo(NameFunction nameOf, const CString& text) {
    try {
        DbDatabase* const database = DatabaseToOpen();
        CString name;
        if (database == nullptr || !nameOf(*database, text, name)) {
            return false;
        }
        const DbTableData* const data = database->GetTableData(name);
        const DbTableDescr* const descr = database->GetTableDescr(name);
        if (data == nullptr || descr == nullptr) {
            return false;
        }
        CancelUpdate();
        if (descr != Descr()) {
            m_index->Set(nullptr);
        }
        m_name = std::move(name);
        m_data = data->LifeToken();
        m_descr = descr->LifeToken();
        return true;
    } catch (quillet::CException* exception) {
        exception->Delete();
        return false;
    }
}

DbDatabase* DbRecordset::DatabaseToOpen() {
    if (!m_hasDatabase) {
        auto database = std::make_unique<DbDatabase>();
        database->GetSource()->SetFile(GetDefaultDBName(), false);
        m_database = database->LifeToken();
        m_ownDatabase = std::move(database);
        m_hasDatabase = true;
    }
    return Database();
}

DbDatabase* DbRecordset::Database() const {
    const std::shared_ptr<DbDatabase*> database = m_database.lock();
    return database ? *database : nullptr;
}

void DbRecordset::Release() {
    m_index->Set(nullptr);
    m_name.Empty();
    m_data.reset();
    m_descr.reset();
    m_bindings->Clear();
    m_bookmarks->Clear();
    m_edit->Drop();
    m_lastModified = 0;
}

// ---- The position

bool DbRecordset::Move(long rows) {
    CancelUpdate();
    // Neither number goes beyond 32 bits far enough for their sum to matter.
    constexpr std::int64_t Most = std::int64_t{1} << 33;
    return MoveTo(m_position + std::clamp<std::int64_t>(rows, -Most, Most));
}

bool DbRecordset::MoveFirst() {
    CancelUpdate();
    return MoveTo(0);
}

bool DbRecordset::MoveNext() {
    CancelUpdate();
    return MoveTo(std::int64_t{m_position} + 1);
}

bool DbRecordset::MoveLast() {
    CancelUpdate();
    const uint64 rows = RowCount();
    return rows > 0 && MoveTo(static_cast<std::int64_t>(rows) - 1);
}

bool DbRecordset::MovePrev() {
    CancelUpdate();
    return !IsBOF() && MoveTo(std::int64_t{m_position} - 1);
}

bool DbRecordset::SetAbsolutePosition(long position) {
    return MoveTo(position);
}

long DbRecordset::GetAbsolutePosition() {
    return m_position;
}

bool DbRecordset::IsEOF() const {
    return Data() == nullptr || (m_position >= 0 && static_cast<uint64>(m_position) >= RowCount());
}

bool DbRecordset::IsBOF() const {
    return m_position < 0;
}

bool DbRecordset::IsDeleted() {
    return false;
}

long DbRecordset::GetRecordCount() const {
    return static_cast<long>(RowCount());
}

DbTableRow* DbRecordset::GetCurrentRow() const {
    return RowAt(m_position);
}

uint64 DbRecordset::RemapRowIndex(uint64 i) const {
    return m_index->PositionAt(i);
}

void DbRecordset::PlaceAt(std::int64_t position) {
    m_position = static_cast<std::int32_t>(std::clamp<std::int64_t>(
        position, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}

bool DbRecordset::MoveTo(std::int64_t position) {
    PlaceAt(position);
    return ReadTableRow(m_position);
}

DbTableRow* DbRecordset::RowAt(std::int64_t position) const {
    if (Data() == nullptr || position < 0) {
        return nullptr;
    }
    const uint64 stored = RemapRowIndex(static_cast<uint64>(position));
    return stored < RowCount() ? Data()->GetRow(static_cast<int>(stored)) : nullptr;
}

bool DbRecordset::ReadTableRow(std::int64_t position) {
    try {
        return !IsEOF() && !IsBOF() && m_bindings->Read([&] { return RowAt(position); });
    } catch (quillet::CException* exception) {
        exception->Delete();
        return false;
    } catch (...) {
        return false;
    }
}

// ---- Find

CString DbRecordset::Condition(const CString& text) {
    return CString("  ") + text;
}

bool DbRecordset::Find(eFindOperation operation, CString where) {
    CancelUpdate();
    switch (operation) {
        case Next:
            return FindNext(where);
        case Previous:
            return FindPrev(where);
        case First:
            return FindFirst(where);
        case Last:
            return FindLast(where);
    }
    return false;
}

bool DbRecordset::FindFirst(CString where) {
    CancelUpdate();
    return FindRow(where, 0, RowCount(), Forward);
}

bool DbRecordset::FindNext(CString where) {
    CancelUpdate();
    return FindRow(where, static_cast<uint64>(std::int64_t{m_position} + 1), RowCount(), Forward);
}

bool DbRecordset::FindPrev(CString where) {
    CancelUpdate();
    return m_position >= 1 && FindRow(where, static_cast<uint64>(m_position) - 1, 0, Backward);
}

bool DbRecordset::FindLast(CString where) {
    CancelUpdate();
    const uint64 rows = RowCount();
    return rows > 0 && FindRow(where, rows - 1, 0, Backward);
}

bool DbRecordset::FindRow(const CString& where, uint64 from, uint64 to, eFindDirection direction) {
    const double start = quillet::platform::CounterSeconds();
    DbDatabase* const database = Database();
    if (database == nullptr || Data() == nullptr) {
        return false;
    }
    quillet::RowCondition condition;
    if (!condition.Read(*database, m_name, *Descr(), where)) {
        return false;
    }
    const uint64 rows = RowCount();
    bool found = false;
    if (direction == Forward) {
        const uint64 end = std::min(to, rows);
        for (uint64 i = from; i < end && !found; ++i) {
            if (m_index->Get() == nullptr && Data() != nullptr) {
                i = condition.FirstCandidate(*Data()->GetRows(), i, end);
            }
            found = i < end && TakeRow(condition, i);
        }
    } else {
        // i is the position after the row that is tested, so that the loop can end at 0.
        for (uint64 i = rows == 0 ? 0 : std::min(from, rows - 1) + 1; i > to && !found; --i) {
            found = TakeRow(condition, i - 1);
        }
    }
    if (DbTableDescr* const descr = Descr()) {
        descr->ClearFilters();
    }
    CString line;
    line.Format("FindRow '%s' processed in %.4f [s]", where.ToUtf8().c_str(),
                quillet::platform::CounterSeconds() - start);
    quillet::Upcalls::Log(Database(), {DbLogEntry::Kind::QueryReport, line});
    return found;
}

bool DbRecordset::TakeRow(quillet::RowCondition& condition, uint64 position) {
    const auto place = static_cast<std::int64_t>(position);
    const uint64 stored = Data() == nullptr ? 0 : RemapRowIndex(position);
    DbRows* const rows = Data() == nullptr ? nullptr : Data()->GetRows();
    return rows != nullptr && stored < RowCount() && quillet::RowsView(*rows).HasRow(stored) &&
           condition.Holds(*rows, stored) && MoveTo(place);
}

bool DbRecordset::Seek(CString index, CComVariant* keys, uint64 count) {
    CancelUpdate();
    const DbTableDescr::DbIndex* const named = Data() == nullptr ? nullptr : Descr()->FindIndex(index);
    if (named == nullptr || (keys == nullptr && count > 0) || !Descr()->CheckIndexFields(named) ||
        !SetCurrentIndex(index) || m_index->Get() != named) {
        return false;
    }
    const std::optional<uint64> place = m_index->Find(*Descr(), *Data(), keys, count);
    // An order that was made before rows were deleted has places that no row of the cursor is at.
    return place.has_value() && *place < RowCount() && MoveTo(static_cast<std::int64_t>(*place));
}

bool DbRecordset::Seek(CString index, CComVariant* keys) {
    return Seek(std::move(index), keys, std::numeric_limits<uint64>::max());
}

// ---- Bookmarks

bool DbRecordset::IsBookmark(uint64 bookmark) const {
    return m_bookmarks->Find(bookmark).has_value();
}

uint64 DbRecordset::GetBookmark() {
    CancelUpdate();
    ++bookmarkid;
    const uint64 bookmark = bookmarkid + 1;
    m_bookmarks->Add(bookmark, m_position);
    return bookmark;
}

bool DbRecordset::SetBookmark(uint64 bookmark) {
    CancelUpdate();
    const std::optional<std::int32_t> position = m_bookmarks->Find(bookmark);
    if (!position.has_value() || !IsOpen()) {
        return false;
    }
    MoveTo(*position);
    return true;
}

uint64 DbRecordset::GetLastModifiedBookmark() {
    CancelUpdate();
    m_bookmarks->Set(LastModifiedBookmark, m_lastModified);
    return LastModifiedBookmark;
}

// ---- The current index

bool DbRecordset::SetCurrentIndex(CString name) {
    if (Data() == nullptr) {
        return false;
    }
    const DbTableDescr::DbIndex* const index = Descr()->FindIndex(name);
    if (index == m_index->Get()) {
        return true;
    }
    m_index->Set(index);
    return SetCurrentIndex(index);
}

bool DbRecordset::SetCurrentIndex(const DbTableDescr::DbIndex* index) {
    if (!IsOpen()) {
        return false;
    }
    if (index != m_index->Get()) {
        m_index->Set(index);
        if (index == nullptr || !index->GetRowOrder().empty()) {
            return true;
        }
    }
    if (!Descr()->CheckIndexFields(index)) {
        return false;
    }
    m_index->Build(*Descr(), *Data());
    return true;
}

CString DbRecordset::GetCurrentIndex() const {
    const DbTableDescr::DbIndex* const index = m_index->Get();
    return index == nullptr ? CString() : index->GetName();
}

// ---- Fields

uint64 DbRecordset::GetFieldCount() const {
    return Data() == nullptr ? 0 : Descr()->size();
}

int DbRecordset::GetFieldIndex(const CString& name) const {
    return Data() == nullptr ? -1 : Descr()->GetFieldIndex(name);
}

const DbFieldDescr* DbRecordset::GetFieldInfo(uint64 index) {
    return index < GetFieldCount() ? Descr()->at(index) : nullptr;
}

const DbFieldDescr* DbRecordset::GetFieldInfo(CString name) {
    // An unknown name gives a position where no field is.
    return GetFieldInfo(static_cast<uint64>(GetFieldIndex(name)));
}

void DbRecordset::GetFieldValue(uint64 index, CComVariant& value) {
    DbTableRow* const row = IsBOF() || IsEOF() ? nullptr : GetCurrentRow();
    if (row == nullptr) {
        Throw(RangeLine, "Out of recordset range");
    }
    if (index >= row->size()) {
        CString message;
        message.Format("Column '%d' not found in table '%s'", static_cast<int>(index),
                       m_name.ToUtf8().c_str());
        Throw(ColumnLine, message);
    }
    value = row->GetField(index).GetVariant();
}

void DbRecordset::GetFieldValue(CString name, CComVariant& value) {
    GetFieldValue(FieldOrThrow(name, ReadNamedColumnLine), value);
}

CComVariant DbRecordset::GetFieldValue(CString name) {
    CComVariant value;
    GetFieldValue(std::move(name), value);
    return value;
}

CComVariant DbRecordset::GetFieldValue(uint64 index) {
    CComVariant value;
    GetFieldValue(index, value);
    return value;
}

void DbRecordset::SetFieldValue(uint64 index, CComVariant& value) {
    if (!m_edit->IsPending()) {
        Throw(NoEditLine, "SetFieldValue(...) without proper update operation");
    }
    m_edit->Set(index, quillet::Dereferenced(value));
}

void DbRecordset::SetFieldValue(CString name, CComVariant& value) {
    SetFieldValue(FieldOrThrow(name, WriteNamedColumnLine), value);
}

void DbRecordset::SetFieldValue(uint64 index, const CComVariant& value) {
    CComVariant copy = value;
    SetFieldValue(index, copy);
}

void DbRecordset::SetFieldValue(CString name, const CComVariant& value) {
    CComVariant copy = value;
    SetFieldValue(std::move(name), copy);
}

bool DbRecordset::IsFieldNull(void* variable) {
    if (IsEOF() || IsBOF()) {
        Throw(IsNullRangeLine, "Out of recordset range");
    }
    const int field = m_bindings->FieldOf(variable);
    if (field < 0) {
        Throw(IsNullBindingLine, "IsFieldNull invalid field binding");
    }
    const DbFieldValue& cell = StoredCell(field);
    return cell.IsNull() || cell.GetType() == VT_EMPTY || cell.GetType() == VT_NULL;
}

void DbRecordset::SetFieldNull(void* variable) {
    if (IsEOF() || IsBOF()) {
        Throw(SetNullRangeLine, "SetFieldNull out of recordset range");
    }
    const int field = m_bindings->FieldOf(variable);
    if (field < 0) {
        Throw(SetNullBindingLine, "SetFieldNull invalid field binding");
    }
    DbFieldValue& cell = StoredCell(field);
    cell.SetNull(true);
    cell.SetChanged();
}

DbFieldValue& DbRecordset::StoredCell(int field) const {
    DbTableRow* const row = Data()->GetRow(m_position);
    return row == nullptr ? quillet::OutOfRange<DbFieldValue>() : row->GetField(static_cast<uint64>(field));
}

uint64 DbRecordset::FieldOrThrow(const CString& name, int line) const {
    const int field = GetFieldIndex(name);
    if (field < 0) {
        CString message;
        message.Format("Column '%s' not found in table '%s'", name.ToUtf8().c_str(), m_name.ToUtf8().c_str());
        Throw(static_cast<ReportLine>(line), message);
    }
    return static_cast<uint64>(field);
}

// ---- Bound variables

CString DbRecordset::GetDefaultDBName() {
    return {};
}

CString DbRecordset::GetDefaultSQL() {
    return {};
}

void DbRecordset::InitFieldExchange() {
}

void DbRecordset::MapClassMember(CString name, short& variable) {
    MapClassMember(std::move(name), &variable, FieldBindings::ReadVariable<short>,
                   FieldBindings::WriteVariable<short>);
}

void DbRecordset::MapClassMember(CString name, int& variable) {
    MapClassMember(std::move(name), &variable, FieldBindings::ReadVariable<int>,
                   FieldBindings::WriteVariable<int>);
}

void DbRecordset::MapClassMember(CString name, long& variable) {
    MapClassMember(std::move(name), &variable, FieldBindings::ReadVariable<long>,
                   FieldBindings::WriteVariable<long>);
}

void DbRecordset::MapClassMember(CString name, CString& variable) {
    MapClassMember(std::move(name), &variable, FieldBindings::ReadVariable<CString>,
                   FieldBindings::WriteVariable<CString>);
}

void DbRecordset::MapClassMember(CString name, float& variable) {
    MapClassMember(std::move(name), &variable, FieldBindings::ReadVariable<float>,
                   FieldBindings::WriteVariable<float>);
}

void DbRecordset::MapClassMember(CString name, double& variable) {
    MapClassMember(std::move(name), &variable, FieldBindings::ReadVariable<double>,
                   FieldBindings::WriteVariable<double>);
}

void DbRecordset::MapClassMember(CString name, bool& variable) {
    MapClassMember(std::move(name), &variable, FieldBindings::ReadVariable<bool>,
                   FieldBindings::WriteVariable<bool>);
}

void DbRecordset::MapClassMember(CString name, void* variable, ReadFunction read, WriteFunction write) {
    m_bindings->Bind(variable, FieldOrThrow(name, BoundColumnLine), read, write);
}

// ---- Edits

bool DbRecordset::CanUpdate() {
    DbDatabase* const database = Database();
    if (database == nullptr || Data() == nullptr || !database->CanUpdate()) {
        return false;
    }
    const DbTableInfo* const info = database->GetTableInfo(m_name);
    if (info == nullptr || info->GetData() != Data()) {
        return false;
    }
    return info->GetType() == DbTableInfo::Table ||
           (info->GetType() == DbTableInfo::Query && Data()->GetRows()->IsBinded());
}

void DbRecordset::AddNew() {
    CancelUpdate();
    m_edit->Begin(PendingEdit::Kind::NewRow);
}

void DbRecordset::Edit() {
    CancelUpdate();
    m_edit->Begin(PendingEdit::Kind::Change);
}

void DbRecordset::CancelUpdate() {
    m_edit->Drop();
}

void DbRecordset::Update() {
    if (!CanUpdate()) {
        Throw(UpdateLine, "Read only recordset (or database), cannot be modified (Update operation)");
    }
    // Where the values can't be stored, the cursor and the table are what they were, and the edit is pending.
    std::optional<uint64> added;
    quillet::Rollback begun([&, position = m_position, index = *m_index] {
        if (added && Data() != nullptr) {
            Data()->TakeBackRow(*added);
        }
        m_position = position;
        *m_index = index;
    });
    if (m_edit->IsNewRow()) {
        // Rows that wait to be read come first.
        Data()->ParseXmlData();
        added = Data()->AddRow();
        PlaceAt(static_cast<std::int64_t>(*added));
    }
    if (m_edit->IsPending()) {
        m_index->Set(nullptr);
        m_edit->Store(*m_bindings, [&] { return RowAt(m_position); });
        m_lastModified = m_position;
    }
    begun.Keep();
    CancelUpdate();
}

void DbRecordset::Delete() {
    if (!CanUpdate()) {
        Throw(DeleteLine, "Read only recordset (or database), cannot be modified (Delete operation)");
    }
    m_edit->Drop();
    const auto place = static_cast<uint64>(m_position);
    const uint64 stored = RemapRowIndex(place);
    Data()->DeleteRow(stored);
    m_index->RowDeleted(place, stored);
    PlaceAt(std::int64_t{m_position} - 1);
    m_bookmarks->RowDeleted(m_position);
}

void DbRecordset::Requery() {
}

// ---- Export

void DbRecordset::ExportCVS(CString path) {
    if (Data() == nullptr) {
        return;
    }
    const auto file = quillet::platform::AtomicFile::Create(path.ToUtf8());
    if (file == nullptr) {
        return;
    }
    if (file->Write(quillet::FirstHalf(quillet::ExportedText(*Descr(), *Data())))) {
        file->Commit();
    }
}
