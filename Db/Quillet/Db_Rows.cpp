#include "Quillet/Db_Rows.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "Quillet/Db_TableData.h"
#include "Quillet/Db_TableDescr.h"
#include "Quillet/base/Reserve.h"
#include "Quillet/base/Rollback.h"
#include "Quillet/rows/RowArena.h"
#include "Quillet/rows/RowTokens.h"

// Rows and their memory.
struct DbRows::Storage {
    Storage() = default;
    Storage(const Storage&) = delete;
    Storage& operator=(const Storage&) = delete;
    ~Storage() {
        for (DbTableRow* const row : m_rows) {
            if (row != nullptr) {
                row->~DbTableRow();
            }
        }
    }

    void Append(DbItem* parent, DbTableDescr* descr, bool initValues) {
        const std::size_t bytes = DbTableRow::PieceBytes(descr == nullptr ? 0 : descr->size());
        quillet::ReserveOneMore(m_rows);
        void* const piece = m_arena.Allocate(bytes);
        quillet::Rollback allocated([&] { m_arena.Release(piece, bytes); });
        auto* const row = new (piece) DbTableRow(parent);
        quillet::Rollback made([&] { row->~DbTableRow(); });
        row->SetDescr(descr);
        row->MakeCells(initValues);
        made.Keep();
        allocated.Keep();
        m_rows.push_back(row);
    }

    void DropLast(std::size_t count) {
        for (; count > 0; --count) {
            Delete(m_rows.size() - 1);
        }
    }

    void Delete(std::size_t position) {
        DbTableRow* const row = m_rows[position];
        m_tokens.RowGoes(*row);
        m_rows.erase(m_rows.begin() + static_cast<std::ptrdiff_t>(position));
        const std::size_t bytes = DbTableRow::PieceBytes(row->CellsInPiece());
        row->~DbTableRow();
        m_arena.Release(row, bytes);
    }

    quillet::RowArena m_arena;
    std::vector<DbTableRow*> m_rows;
    quillet::RowTokens m_tokens;
};

DbRows::DbRows(DbItem* parent, DbTableDescr* descr)
    : DbItem(parent),
      m_descr(descr == nullptr ? nullptr : descr->LifeToken()),
      m_storage(std::make_shared<Storage>()),
      m_self(std::make_shared<DbRows*>(this)) {
}

DbRows::~DbRows() {
    ReleaseChildren();
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
    const std::size_t cells = Descr() == nullptr ? 0 : Descr()->size();
    quillet::ReserveMore(m_storage->m_rows, n);
    m_storage->m_arena.Reserve(n * DbTableRow::PieceBytes(cells));
    ReserveChildren(m_storage->m_rows.capacity());
    return AppendRows(n, initValues);
}

uint64 DbRows::AppendRows(uint64 n, bool initValues) {
    DbRows* const boundTo = BoundTo();
    DbRows* const owner = boundTo == nullptr ? this : boundTo;
    const uint64 visible = m_order.size();
    uint64 appended = 0;
    quillet::ReserveMore(m_order, n);
    if (boundTo != nullptr) {
        quillet::ReserveMore(boundTo->m_order, n);
    }
    const uint64 stored = m_storage->m_rows.size();
    quillet::Rollback rows([&] { m_storage->DropLast(appended); });
    for (; appended < n; ++appended) {
        m_storage->Append(owner, owner->Descr(), initValues);
    }
    rows.Keep();
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
    if (pos + 1 != m_order.size() || m_order.back() + 1 != m_storage->m_rows.size()) {
        return;
    }
    m_storage->DropLast(1);
    m_order.pop_back();
    if (boundTo != nullptr) {
        boundTo->m_order.pop_back();
    }
}

void DbRows::DeleteRow(uint64 pos) {
    if (RowAt(pos) == nullptr) {
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
    std::vector<DbTableRow*>& rows = m_storage->m_rows;
    const uint64 first = m_order[count];
    owner->ReleaseChildren(rows.begin() + static_cast<std::ptrdiff_t>(first), rows.end());
    while (rows.size() > first) {
        m_storage->Delete(rows.size() - 1);
    }
    m_order.resize(count);
    if (boundTo != nullptr) {
        std::vector<uint64>& order = boundTo->m_order;
        order.erase(
            std::remove_if(order.begin(), order.end(), [&](uint64 stored) { return stored >= first; }),
            order.end());
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

DbRows::NewCells::NewCells(DbRows& rows, uint64 fieldIndex) : m_rows(rows), m_index(fieldIndex) {
    const DbTableDescr* const descr = rows.Descr();
    if (descr == nullptr) {
        return;
    }
    const DbFieldDescr& field = descr->GetField(static_cast<int>(fieldIndex));
    for (DbTableRow* const row : rows.m_storage->m_rows) {
        if (rows.Follows(row)) {
            m_cells.emplace_back(row, row->MakeCell(fieldIndex, field));
        }
    }
}

void DbRows::NewCells::Insert() {
    for (auto& [row, cell] : m_cells) {
        row->InsertCell(m_index, std::move(cell));
    }
    // Even without rows, answers computed from them have to follow.
    if (m_rows.Descr() != nullptr) {
        m_rows.SetChanged();
    }
}

void DbRows::Update(uint64 fieldIndex, bool added) {
    if (added) {
        NewCells(*this, fieldIndex).Insert();
    } else if (Descr() != nullptr) {
        EraseCells(fieldIndex);
    }
}

bool DbRows::Follows(const DbTableRow* row) const {
    // Rows borrowed from other rows are updated there.
    return row != nullptr && row->GetDescr() == Descr() &&
           (row->LiveParent() == nullptr || row->LiveParent() == this);
}

void DbRows::EraseCells(uint64 fieldIndex) {
    for (DbTableRow* const row : m_storage->m_rows) {
        if (Follows(row)) {
            row->EraseCell(fieldIndex);
        }
    }
    // As for new cells.
    SetChanged();
}

void DbRows::Bind(DbRows* other, std::vector<uint64>& order) {
    if (other == nullptr || other == this) {
        return;
    }
    std::vector<uint64> shown = order;
    if (!m_isBound) {
        ReleaseChildren(m_storage->m_rows.begin(), m_storage->m_rows.end());
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

DbTableRow* DbRows::RowAt(uint64 pos) const {
    if (pos >= m_order.size() || m_order[pos] >= m_storage->m_rows.size()) {
        return nullptr;
    }
    return m_storage->m_rows[m_order[pos]];
}

uint64 DbRows::NumberOf(const DbTableRow& row) const {
    uint64 number = 1;
    while (number <= m_order.size() && RowAt(number - 1) != &row) {
        ++number;
    }
    return number <= m_order.size() ? number : 0;
}

DbTableRow* DbRows::GetRow(int pos) {
    return pos < 0 ? nullptr : RowAt(static_cast<uint64>(pos));
}

std::shared_ptr<DbTableRow*> DbRows::LifeTokenOf(int pos) {
    DbTableRow* const row = GetRow(pos);
    return row == nullptr ? nullptr : m_storage->m_tokens.Of(*row);
}

DbTableRow* DbRows::GetLastRow() {
    return m_order.empty() ? nullptr : RowAt(m_order.size() - 1);
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
