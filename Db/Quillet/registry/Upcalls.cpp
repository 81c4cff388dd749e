#include "Quillet/registry/Upcalls.h"

#include <vector>

#include "Quillet/Db_Database.h"
#include "Quillet/Db_Recordset.h"
#include "Quillet/cursor/RowCondition.h"
#include "Quillet/document/LazyReader.h"
#include "Quillet/query/SqlText.h"
#include "Quillet/registry/Log.h"
#include "Quillet/registry/Registry.h"
#include "Quillet/rows/NewCells.h"

namespace quillet {

DbItem* Upcalls::AsItem(DbDatabase* database) {
    return database;
}

std::weak_ptr<DbDatabase*> Upcalls::LifeTokenOf(const DbDatabase& database) {
    return database.LifeToken();
}

void Upcalls::Clear(DbDatabase& database) {
    database.Clear();
}

void Upcalls::Sync(DbDatabase& database) {
    database.Sync();
}

std::int32_t Upcalls::NextQueryNumber() {
    const std::int32_t number = DbDatabase::m_queriesCount;
    // After the largest number comes the smallest, without undefined behaviour.
    DbDatabase::m_queriesCount = static_cast<std::int32_t>(static_cast<std::uint32_t>(number) + 1U);
    return number;
}

void Upcalls::Log(DbItem* item, const DbLogEntry& entry) {
    if (auto* const database = dynamic_cast<DbDatabase*>(item)) {
        database->m_log->Add(entry);
    }
}

bool Upcalls::HasBegunToRead(DbItem* item) {
    auto* const database = dynamic_cast<DbDatabase*>(item);
    return database != nullptr && database->m_reader->HasBegun();
}

void Upcalls::FieldsWillChange(DbItem* item, const DbTableDescr& descr) {
    if (auto* const database = dynamic_cast<DbDatabase*>(item)) {
        for (DbTableData* const data : database->m_registry->DataOf(descr)) {
            database->m_reader->ReadUntil(data);
            data->ParseXmlData();
            data->m_rows->PrepareFieldChange();
        }
    }
}

void Upcalls::FieldsChanged(DbItem* item, const DbTableDescr& descr, uint64 index, bool added) {
    if (auto* const database = dynamic_cast<DbDatabase*>(item)) {
        const std::vector<DbTableData*> followers = database->m_registry->DataOf(descr);
        if (!added) {
            for (DbTableData* const data : followers) {
                data->Update(index, false);
            }
            return;
        }
        // Either all of them follow, or none.
        std::vector<NewCells> cells;
        cells.reserve(followers.size());
        for (DbTableData* const data : followers) {
            cells.emplace_back(*data->m_rows, index);
        }
        for (NewCells& made : cells) {
            made.Insert();
        }
    }
}

bool Upcalls::ParseRows(DbItem* item, const DbTableData& data, const CString& xml) {
    auto* const database = dynamic_cast<DbDatabase*>(item);
    if (database != nullptr) {
        database->m_reader->ParseRows(data, xml);
    }
    return database != nullptr;
}

void Upcalls::RowsWillBeDeleted(DbItem* item, const DbTableData& data) {
    if (auto* const database = dynamic_cast<DbDatabase*>(item)) {
        database->m_reader->Reach(&data);
    }
}

void Upcalls::RowsDeleted(DbItem* item, const DbTableData& data) {
    if (auto* const database = dynamic_cast<DbDatabase*>(item)) {
        database->m_reader->Forget(&data);
    }
}

std::int64_t Upcalls::CountWhere(DbItem* item, DbTableData& data, const CString& condition) {
    auto* const database = dynamic_cast<DbDatabase*>(item);
    const DbTableInfo* const info = database == nullptr ? nullptr : database->m_registry->Find(&data);
    const DbTableDescr* const descr = info == nullptr ? nullptr : info->GetDescr();
    if (descr == nullptr) {
        return -1;
    }
    CString text = DbRecordset::Condition(condition);
    JoinLines(text);
    LowerOutsideQuotes(text);
    RowCondition rows;
    if (!rows.Read(*database, info->GetName(), *descr, text) || !rows.IsValid()) {
        return -1;
    }
    database->m_reader->ReadUntil(&data);
    return data.ParseXmlData() ? static_cast<std::int64_t>(rows.Count(*data.GetRows())) : -1;
}

CString Upcalls::TableName(DbItem* item, const DbTableData& data) {
    auto* const database = dynamic_cast<DbDatabase*>(item);
    const DbTableInfo* const info = database == nullptr ? nullptr : database->m_registry->Find(&data);
    return info == nullptr ? CString() : info->GetName();
}

void Upcalls::Detach(DbDatabase& database, const std::vector<DbItem*>& items) {
    database.ReleaseEach([&items](auto release) {
        for (DbItem* const item : items) {
            if (item != nullptr) {
                release(*item);
            }
        }
    });
}

}  // namespace quillet
