#include "Quillet/Db_Rows.h"

#include <algorithm>

#include "Quillet/Db_TableData.h"
#include "Quillet/Db_TableDescr.h"

struct DbRows::Storage {
    Storage() = default;
    Storage(const Storage&) = delete;
    Storage& operator=(const Storage&) = delete;
    ~Storage() {
        for (const DbTableRow* row : m_rows) {
            delete row;
        }
    }

    std::vector<DbTableRow*> m_rows;
};

DbRows::DbRows(DbItem* parent, DbTableDescr* descr)
    : DbItem(parent),
      m_descr(descr),
      m_storage(std::make_shared<Storage>()),
      m_self(std::make_shared<DbRows*>(this)) {}

DbRows::~DbRows() {
    ReleaseChildren();
}

DbRows* DbRows::BoundTo() const {
    const std::shared_ptr<DbRows*> rows = m_boundTo.lock();
    return rows ? *rows : nullptr;
}

uint64 DbRows::AddRow(bool initValues) {
    DbRows* const boundTo = BoundTo();
    DbRows* const owner = boundTo == nullptr ? this : boundTo;
    auto row = std::make_unique<DbTableRow>(owner);
    row->SetDescr(owner->m_descr);
    row->MakeCells(initValues);
    const uint64 visible = m_order.size();
    const uint64 stored = m_storage->m_rows.size();
    m_order.push_back(stored);
    if (boundTo != nullptr) {
        boundTo->m_order.push_back(stored);
    }
    m_storage->m_rows.push_back(row.get());
    static_cast<void>(row.release());
    owner->SetChanged();
    return visible;
}

uint64 DbRows::AddRows(uint64 n, bool initValues) {
    const uint64 first = m_order.size();
    Reserve(n);
    for (uint64 i = 0; i < n; ++i) {
        AddRow(initValues);
    }
    return first;
}

void DbRows::Reserve(uint64 more) {
    const std::size_t total = m_storage->m_rows.size() + more;
    m_order.reserve(m_order.size() + more);
    m_storage->m_rows.reserve(total);
    ReserveChildren(total);
}

void DbRows::DeleteRow(uint64 pos) {
    std::vector<DbTableRow*>& rows = m_storage->m_rows;
    if (pos >= m_order.size() || m_order[pos] >= rows.size()) {
        return;
    }
    const uint64 stored = m_order[pos];
    delete rows[stored];
    rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(stored));
    RemoveFromOrder(pos);
    SetChanged();
    if (DbRows* const boundTo = BoundTo()) {
        boundTo->RemoveFromOrder(pos);
        boundTo->SetChanged();
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
    for (DbTableRow* const row : m_storage->m_rows) {
        if (row->GetDescr() != m_descr) {
            continue;
        }
        if (added) {
            row->InsertCell(fieldIndex, m_descr->GetField(static_cast<int>(fieldIndex)));
        } else {
            row->EraseCell(fieldIndex);
        }
    }
}

void DbRows::Bind(DbRows* other, std::vector<uint64>& order) {
    if (other == nullptr || other == this) {
        return;
    }
    if (!m_isBound) {
        ReleaseChildren(m_storage->m_rows.begin(), m_storage->m_rows.end());
    }
    m_storage = other->m_storage;
    m_boundTo = other->m_self;
    m_isBound = true;
    m_order = order;
}

DbTableRow* DbRows::GetRow(int pos) {
    const auto index = static_cast<uint64>(pos);
    if (pos < 0 || index >= m_order.size() || m_order[index] >= m_storage->m_rows.size()) {
        return nullptr;
    }
    return m_storage->m_rows[m_order[index]];
}

DbTableRow* DbRows::GetLastRow() {
    return GetRow(static_cast<int>(m_order.size()) - 1);
}

void DbRows::LogToDatabase(const quillet::CString& line) {
    if (auto* const data = dynamic_cast<DbTableData*>(LiveParent())) {
        data->LogToDatabase(line);
    }
}

void DbRows::NoteMisfit() {
    if (auto* const data = dynamic_cast<DbTableData*>(LiveParent())) {
        data->NoteMisfit();
    }
}
