#include "Quillet/Db_Rows.h"

#include <algorithm>
#include <limits>
#include <new>
#include <numeric>
#include <utility>

#include "Quillet/Db_TableData.h"
#include "Quillet/Db_TableDescr.h"
#include "Quillet/base/Reserve.h"
#include "Quillet/base/Rollback.h"
#include "Quillet/rows/CellParser.h"
#include "Quillet/rows/NewCells.h"
#include "Quillet/rows/RowWriting.h"
#include "Quillet/rows/RowsView.h"
#include "Quillet/rows/SavedRows.h"
#include "Quillet/values/FieldNames.h"
#include "Quillet/xml/Face.h"

DbRows::DbRows(DbItem* parent, DbTableDescr* descr)
    : DbItem(parent),
      m_descr(descr == nullptr ? nullptr : descr->LifeToken()),
      m_storage(std::make_shared<quillet::ColumnStore>(*this, m_descr)),
      m_self(std::make_shared<DbRows*>(this)) {
}

DbRows::~DbRows() {
    m_storage->OwnerGoes(*this);
    ReleaseChildren();
}

long DbRows::GetChangeId() {
    const long latest = DbItem::GetChangeId();
    // A row that was not made has the stamp 0.
    return UnmadeRows() > 0 ? std::max(latest, 0L) : latest;
}

uint64 DbRows::GetSize() const {
    return DbItem::GetSize() + DbItem::EstimateOf(UnmadeRows()) - DbItem::EstimateOf(0);
}

uint64 DbRows::CalcSize() {
    return DbItem::CalcSize() + (UnmadeRows() > 0 ? m_storage->SizeOfUnmadeRows() : 0);
}

uint64 DbRows::UnmadeRows() const {
    return m_storage->IsOwnedBy(*this) ? m_storage->UnmadeRows() : 0;
}

DbRows* DbRows::BoundTo() const {
    const std::shared_ptr<DbRows*> rows = m_boundTo.lock();
    return rows ? *rows : nullptr;
}

uint64 DbRows::AddRow(bool initValues) {
    return AppendRows(1, initValues);
}

uint64 DbRows::AddRows(uint64 n, bool initValues) {
    const uint64 first = m_order.size();
    constexpr auto MostRows = static_cast<uint64>(std::numeric_limits<std::int32_t>::max());
    if (n == 0 || first > MostRows || n > MostRows - first) {
        return first;
    }
    return AppendRows(n, initValues);
}

uint64 DbRows::AppendRows(uint64 n, bool initValues) {
    DbRows* const boundTo = BoundTo();
    DbRows* const owner = boundTo == nullptr ? this : boundTo;
    const uint64 visible = m_order.size();
    quillet::ReserveMore(m_order, n);
    if (boundTo != nullptr) {
        quillet::ReserveMore(boundTo->m_order, n);
    }
    const uint64 stored = m_storage->Size();
    m_storage->Append(n, *owner, owner->m_descr, initValues);
    for (uint64 i = 0; i < n; ++i) {
        m_order.push_back(stored + i);
        if (boundTo != nullptr) {
            boundTo->m_order.push_back(stored + i);
        }
        owner->SetChanged();
        if (owner != this) {
            SetChanged();
        }
    }
    return visible;
}

void DbRows::TakeBackRow(uint64 pos) {
    DbRows* const boundTo = BoundTo();
    if (pos + 1 != m_order.size() || m_order.back() + 1 != m_storage->Size()) {
        return;
    }
    m_storage->DropLast(1);
    m_order.pop_back();
    if (boundTo != nullptr) {
        boundTo->m_order.pop_back();
    }
}

void DbRows::DeleteRow(uint64 pos) {
    if (!HasRow(pos)) {
        return;
    }
    const uint64 stored = m_order[pos];
    m_storage->Delete(stored);
    RemoveFromOrder(pos);
    SetChanged();
    if (DbRows* const boundTo = BoundTo()) {
        boundTo->RemoveFromOrder(pos);
        boundTo->SetChanged();
    }
}

void DbRows::Truncate(uint64 count) {
    if (count >= m_order.size()) {
        return;
    }
    DbRows* const boundTo = BoundTo();
    DbRows* const owner = boundTo == nullptr ? this : boundTo;
    const uint64 first = m_order[count];
    owner->ReleaseEach([&](auto release) { m_storage->ForEachMade(first, release); });
    m_storage->DropLast(m_storage->Size() - first);
    m_order.resize(count);
    if (boundTo != nullptr) {
        std::vector<uint64>& order = boundTo->m_order;
        order.erase(
            std::remove_if(order.begin(), order.end(), [&](uint64 stored) { return stored >= first; }),
            order.end());
    }
}

bool DbRows::SaveRow(uint64 pos, IDispatch* document, IDispatch* parentElement) {
    const quillet::RowsView view(*this);
    if (!view.HasRow(pos)) {
        return true;
    }
    if (DbTableRow* const row = view.MadeRow(pos)) {
        return row->Save(document, parentElement);
    }
    std::size_t position = 0;
    try {
        const DbTableDescr* const descr = m_storage->Descr();
        quillet::AppendRow(
            quillet::xml::Node(document), quillet::xml::Node(parentElement), view.Width(pos),
            [&](std::size_t field) -> const std::string& { return quillet::NameInFile(descr, field); },
            [&](std::size_t field) { return view.Cell(pos, field); }, position);
        return true;
    } catch (const quillet::xml::DomError&) {
        m_storage->RowAt(m_order[pos]).LogFailedSave(position);
        return false;
    }
}

bool DbRows::LoadRow(uint64 pos, const quillet::xml::Node& node, quillet::CellParser& parser) {
    const quillet::RowsView view(*this);
    if (!view.HasRow(pos)) {
        return false;
    }
    if (!m_storage->IsOwnedBy(*this) || view.MadeRow(pos) != nullptr) {
        quillet::xml::Face face(node);
        return m_storage->RowAt(m_order[pos]).Load(face.Get());
    }
    try {
        return LoadUnmadeRow(pos, node, parser);
    } catch (const quillet::xml::DomError&) {
        return false;
    }
}

bool DbRows::LoadUnmadeRow(uint64 pos, const quillet::xml::Node& node, quillet::CellParser& parser) {
    const DbTableDescr* const descr = Descr();
    if (node.IsNull() || !node.IsElement() || descr == nullptr) {
        return false;
    }
    quillet::RowsView view(*this);
    const std::size_t cells = view.Width(pos);
    std::size_t values = 0;
    quillet::xml::AttributeReader attributes(node);
    for (; attributes.Next(); ++values) {
        if (values < std::min(cells, descr->size())) {
            view.SetCell(pos, values, parser.Read(*descr->at(values), attributes.Value()));
        }
    }
    if (values != cells) {
        NoteMisfit();
    }
    return true;
}

bool DbRows::CanTakeRows() const {
    return m_order.empty() && m_storage->IsOwnedBy(*this) && m_storage->Size() == 0 &&
           m_storage.use_count() == 1;
}

void DbRows::TakeRows(const std::shared_ptr<quillet::ColumnStore>& rows) {
    std::vector<uint64> order(rows->Size());
    std::iota(order.begin(), order.end(), uint64{0});
    ReserveChildren(rows->Size() - rows->UnmadeRows());
    rows->ForEachMade(0, [this](DbTableRow& row) {
        Adopt(row);
        row.m_descr = m_descr;
    });
    rows->HandOver(*this, m_descr);
    m_storage = rows;
    m_order.swap(order);
    for (uint64 i = 0; i < m_order.size(); ++i) {
        SetChanged();
    }
}

void DbRows::RemoveFromOrder(uint64 pos) {
    m_order.erase(std::remove(m_order.begin(), m_order.end(), pos), m_order.end());
    for (uint64& entry : m_order) {
        if (entry > pos) {
            --entry;
        }
    }
}

void DbRows::Update(uint64 fieldIndex, bool added) {
    if (added) {
        quillet::NewCells(*this, fieldIndex).Insert();
    } else if (Descr() != nullptr) {
        EraseCells(fieldIndex);
    }
}

bool DbRows::Follows(const DbTableRow& row) const {
    // Rows borrowed from other rows are updated there.
    return row.GetDescr() == Descr() && (row.LiveParent() == nullptr || row.LiveParent() == this);
}

// Rows without an owner follow everybody who shows them; each may change their cells. What can fail happens
// here.
void DbRows::PrepareFieldChange() {
    if (!m_storage->HasOwner() && m_storage->Descr() == Descr()) {
        for (std::size_t i = 0; i < m_storage->Size(); ++i) {
            m_storage->RowAt(i);
        }
    }
    m_storage->OwnBlocks();
}

uint64 DbRows::SaveColumns(uint64 pos, const quillet::xml::Node& document,
                           const quillet::xml::Node& parentElement) {
    const quillet::RowsView view(*this);
    if (!quillet::xml::CanKeepLeaves(document, parentElement) || !view.HasRow(pos)) {
        return 0;
    }
    std::unique_ptr<const quillet::SavedRows> rows = quillet::SavedRows::Take(view, pos);
    const uint64 count = rows == nullptr ? 0 : rows->Count();
    if (count > 0) {
        quillet::xml::KeepLeaves(parentElement, std::move(rows));
    }
    return count;
}

void DbRows::EraseCells(uint64 fieldIndex) {
    PrepareFieldChange();
    if (m_storage->IsOwnedBy(*this) && m_storage->Descr() == Descr()) {
        m_storage->EraseColumns(fieldIndex);
    }
    m_storage->ForEachMade(0, [&](DbTableRow& row) {
        if (Follows(row)) {
            row.EraseCell(fieldIndex);
        }
    });
    // As for new cells.
    SetChanged();
}

void DbRows::Bind(DbRows* other, std::vector<uint64>& order) {
    if (other == nullptr || other == this) {
        return;
    }
    std::vector<uint64> shown = order;
    if (!m_isBound) {
        ReleaseEach([&](auto release) { m_storage->ForEachMade(0, release); });
        m_storage->OwnerGoes(*this);
    }
    m_storage = other->m_storage;
    m_boundTo = other->m_self;
    m_isBound = true;
    m_order.swap(shown);
}

DbRows* DbRows::GetLender() {
    DbRows* const boundTo = BoundTo();
    return boundTo != nullptr && boundTo->m_storage == m_storage ? boundTo : this;
}

bool DbRows::HasRow(uint64 pos) const {
    return pos < m_order.size() && m_order[pos] < m_storage->Size();
}

uint64 DbRows::NumberOf(const DbTableRow& row) const {
    for (uint64 pos = 0; pos < m_order.size(); ++pos) {
        if (HasRow(pos) && m_storage->MadeRowAt(m_order[pos]) == &row) {
            return pos + 1;
        }
    }
    return 0;
}

DbTableRow* DbRows::GetRow(int pos) {
    const auto place = static_cast<uint64>(pos);
    return pos >= 0 && HasRow(place) ? &m_storage->RowAt(m_order[place]) : nullptr;
}

std::shared_ptr<DbTableRow*> DbRows::LifeTokenOf(int pos) {
    const auto place = static_cast<uint64>(pos);
    return pos >= 0 && HasRow(place) ? m_storage->TokenOf(m_order[place]) : nullptr;
}

DbTableRow* DbRows::GetLastRow() {
    return m_order.empty() || !HasRow(m_order.size() - 1) ? nullptr : &m_storage->RowAt(m_order.back());
}

void DbRows::LogToDatabase(const DbLogEntry& entry) {
    if (auto* const data = dynamic_cast<DbTableData*>(LiveParent())) {
        data->LogToDatabase(entry);
    }
}

void DbRows::NoteMisfit() {
    if (auto* const data = dynamic_cast<DbTableData*>(LiveParent())) {
        data->NoteMisfit();
    }
}
