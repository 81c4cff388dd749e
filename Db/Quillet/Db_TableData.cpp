#include "Quillet/Db_TableData.h"

#include <algorithm>
#include <typeinfo>
#include <utility>

#include "Quillet/base/CException.h"
#include "Quillet/base/OutOfRange.h"
#include "Quillet/platform/Clock.h"
#include "Quillet/registry/Upcalls.h"
#include "Quillet/rows/CellParser.h"
#include "Quillet/rows/RowsView.h"
#include "Quillet/rows/ScannedRows.h"
#include "Quillet/xml/Face.h"

using quillet::CComVariant;
using quillet::CString;

namespace {

// The search that all forms share: compare(i) compares the key with the row at place i.
template <typename Compare>
DbTableRow::eCmpResult Search(uint64 count, Compare compare, uint64& place) {
    DbTableRow::eCmpResult result = DbTableRow::CmpEqual;
    auto low = std::int32_t(0);
    auto high = static_cast<std::int32_t>(count) - 1;
    while (high - low >= 0) {
        const std::int32_t middle = low + (high - low) / 2;
        result = compare(static_cast<uint64>(middle));
        if (result == DbTableRow::CmpEqual) {
            low = middle;
            break;
        }
        if (result == DbTableRow::CmpLess) {
            high = middle - 1;
        } else {
            low = middle + 1;
        }
    }
    place = static_cast<uint64>(low);
    return result;
}

bool LostField(const DbTableDescr::DbIndex& index) {
    const std::vector<uint64>& fields = index.GetFieldIndexes();
    return std::find(fields.begin(), fields.end(), DbTableDescr::DbIndex::NoField) != fields.end();
}

}  // namespace

DbTableData::DbTableData(DbDatabase* db, DbTableDescr* descr)
    : DbItem(quillet::Upcalls::AsItem(db)),
      m_rows(std::make_unique<DbRows>(this, descr)),
      m_descr(descr == nullptr ? nullptr : descr->LifeToken()) {
}

DbTableData::~DbTableData() {
    *m_life = nullptr;
}

bool DbTableData::Save(IDispatch* document, IDispatch* parentElement) {
    if (!ParseXmlData()) {
        return false;
    }
    const quillet::xml::Node documentNode(document);
    const quillet::xml::Node parentNode(parentElement);
    for (uint64 i = 0; i < m_rows->GetRowsCount();) {
        if (const uint64 rows = m_rows->SaveColumns(i, documentNode, parentNode)) {
            i += rows;
        } else if (!m_rows->SaveRow(i++, document, parentElement)) {
            LogToDatabase({DbLogEntry::Kind::SaveTrace,
                           "Error on DbTableData::Save(IDispatch* doc, IDispatch* element)", TableName()});
            return false;
        }
    }
    return true;
}

bool DbTableData::Load(IDispatch* element) {
    return ReadWholly([&] { return LoadRows(element); });
}

template <typename Read>
bool DbTableData::ReadWholly(Read read) {
    const uint64 rows = m_rows->GetRowsCount();
    const bool wasInitialized = m_initialized;
    const bool wasChanged = IsChanged();
    try {
        return read();
    } catch (...) {
        m_rows->Truncate(rows);
        m_initialized = wasInitialized;
        if (!wasChanged) {
            Sync();
        }
        throw;
    }
}

bool DbTableData::LoadRows(IDispatch* element) {
    const double start = quillet::platform::CounterSeconds();
    try {
        const quillet::xml::Node node(element);
        if (node.IsNull()) {
            return false;
        }
        const std::size_t count = node.CountChildren();
        const uint64 first = m_rows->AddRows(count, false);
        m_initialized = true;
        m_loadingRow = first;
        m_misfits = 0;
        quillet::CellParser parser;
        for (quillet::xml::Node child = node.FirstChild(); !child.IsNull(); child = child.NextSibling()) {
            if (!m_rows->LoadRow(m_loadingRow++, child, parser)) {
                return false;
            }
        }
        LogRowsRead(count, quillet::platform::CounterSeconds() - start);
        return true;
    } catch (const quillet::xml::DomError&) {
        return false;
    }
}

void DbTableData::LogRowsRead(uint64 rows, double seconds) {
    LogMisfits();
    const CString name = TableName();
    CString line;
    line.Format("Table '%s' [%d %s] data parsed in: %.4f [s]", name.ToUtf8().c_str(), static_cast<int>(rows),
                rows == 1 ? "row" : "rows", seconds);
    LogToDatabase({DbLogEntry::Kind::Report, line, name});
}

bool DbTableData::CanTakeRows() const {
    return typeid(*this) == typeid(DbTableData) && m_rows->CanTakeRows();
}

void DbTableData::TakeRows(const quillet::ScannedRows& rows) {
    ReadWholly([&] {
        m_rows->TakeRows(rows.m_rows);
        m_initialized = true;
        m_misfits = rows.m_misfits;
        m_firstMisfit = rows.m_firstMisfit;
        LogRowsRead(m_rows->GetRowsCount(), rows.m_seconds);
        return true;
    });
}

void DbTableData::Clear() {
    PrepareClear();
    m_xmlSource.Empty();
    m_pending = false;
    m_rows = std::move(m_nextRows);
    SetChanged();
    quillet::Upcalls::RowsDeleted(LiveParent(), *this);
}

void DbTableData::PrepareClear() {
    quillet::Upcalls::RowsWillBeDeleted(LiveParent(), *this);
    if (m_nextRows == nullptr) {
        m_nextRows = std::make_unique<DbRows>(this, GetTableDescr());
    }
}

void DbTableData::SetXmlSource(const CString& xml) {
    m_xmlSource = xml;
    m_pending = true;
    m_initialized = true;
}

void DbTableData::DropXmlSource() {
    m_xmlSource.Empty();
    m_pending = false;
}

uint64 DbTableData::GetSize() const {
    constexpr uint64 OwnEstimate = 26;
    return DbItem::GetSize() + OwnEstimate;
}

bool DbTableData::ParseXmlData() {
    if (!m_pending) {
        return true;
    }
    // Rows that were added before still count as changed.
    const bool changed = IsChanged();
    std::vector<DbTableRow*> changedRows;
    const quillet::RowsView rows(*m_rows);
    for (std::size_t i = 0; changed && i < rows.Count(); ++i) {
        DbTableRow* const row = rows.HasRow(i) ? rows.MadeRow(i) : nullptr;
        if (row != nullptr && row->IsChanged()) {
            changedRows.push_back(row);
        }
    }
    try {
        if (!quillet::Upcalls::ParseRows(LiveParent(), *this, m_xmlSource)) {
            return false;
        }
    } catch (quillet::CException* exception) {
        exception->Delete();
        return false;
    } catch (...) {
        return false;
    }
    m_pending = false;
    m_xmlSource.Empty();
    Sync();
    if (changed) {
        SetChanged();
    }
    for (DbTableRow* const row : changedRows) {
        row->SetChanged();
    }
    return true;
}

uint64 DbTableData::size() {
    return ParseXmlData() ? m_rows->GetRowsCount() : 0;
}

DbRows* DbTableData::GetRows() {
    ParseXmlData();
    return m_rows.get();
}

DbTableRow& DbTableData::operator[](uint64 pos) {
    DbTableRow* const row = pos < size() ? m_rows->GetRow(static_cast<int>(pos)) : nullptr;
    return row == nullptr ? quillet::OutOfRange<DbTableRow>(nullptr) : *row;
}

DbTableRow* DbTableData::GetRow(int pos) {
    return GetRows()->GetRow(pos);
}

DbColumnView DbTableData::GetColumns() {
    return DbColumnView(*GetRows());
}

std::int64_t DbTableData::CountWhere(const CString& condition) {
    return quillet::Upcalls::CountWhere(LiveParent(), *this, condition);
}

void DbTableData::DeleteRow(uint64 pos) {
    if (pos < size()) {
        m_rows->DeleteRow(pos);
    }
}

void DbTableData::Bind(DbRows* other, std::vector<uint64>& order) {
    GetRows()->Bind(other, order);
}

uint64 DbTableData::AddRow() {
    return m_rows->AddRow(true);
}

uint64 DbTableData::AddRows(uint64 n) {
    return m_rows->AddRows(n, true);
}

void DbTableData::Update(uint64 fieldIndex, bool added) {
    m_rows->Update(fieldIndex, added);
}

uint64 DbTableData::SpatialIndex(std::vector<uint64>& fields, std::vector<uint64>& order, DbTableRow& key) {
    uint64 place = 0;
    Search(
        order.size(), [&](uint64 i) { return key.CompareEx(fields, (*this)[order[i]]); }, place);
    return place;
}

uint64 DbTableData::SpatialIndex(std::vector<uint64>& fields, std::vector<uint64>& order,
                                 std::vector<CComVariant>& key) {
    uint64 place = 0;
    Search(
        order.empty() ? size() : order.size(),
        [&](uint64 i) { return DbTableRow::CompareEx(fields, key, (*this)[order.empty() ? i : order[i]]); },
        place);
    return place;
}

DbTableRow::eCmpResult DbTableData::SpatialIndex(DbTableDescr::DbIndex* index, const CComVariant* key,
                                                 int count, uint64& pos) {
    pos = 0;
    if (index == nullptr || LostField(*index)) {
        return DbTableRow::CmpEqual;
    }
    const std::vector<uint64>& order = std::as_const(*index).GetRowOrder();
    return Search(
        order.empty() ? size() : order.size(),
        [&](uint64 i) {
            return DbTableRow::CompareEx(index->GetFieldIndexes(), key, count,
                                         (*this)[order.empty() ? i : order[i]]);
        },
        pos);
}

long DbTableData::LatestStamp() {
    if (!IsLatestStampKnown()) {
        m_latestStamp = GetChangeId();
        ConfirmLatestStamp();
    }
    return m_latestStamp;
}

CString DbTableData::TableName() const {
    return quillet::Upcalls::TableName(LiveParent(), *this);
}

void DbTableData::LogToDatabase(const DbLogEntry& entry) {
    quillet::Upcalls::Log(LiveParent(), entry);
}

void DbTableData::NoteMisfit() {
    if (m_misfits++ == 0) {
        m_firstMisfit = m_loadingRow;
    }
}

void DbTableData::LogMisfits() {
    if (m_misfits == 0) {
        return;
    }
    const CString name = TableName();
    CString line;
    line.Format("Table '%s' has rows whose values do not match its %d fields: %d, the first is row %d",
                name.ToUtf8().c_str(),
                GetTableDescr() == nullptr ? 0 : static_cast<int>(GetTableDescr()->size()),
                static_cast<int>(m_misfits), static_cast<int>(m_firstMisfit));
    LogToDatabase({DbLogEntry::Kind::ReadFault, line, name, m_firstMisfit});
}
