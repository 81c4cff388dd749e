#include "Quillet/Db_Serializer.h"

#include <algorithm>
#include <utility>

#include "Quillet/Db_Database.h"
#include "Quillet/Db_Exception.h"
#include "Quillet/platform/MessageBox.h"
#include "Quillet/records/AccessTables.h"

using quillet::CString;

namespace {

DbSerializer::StepHandler& Handler() {
    static DbSerializer::StepHandler s_handler;
    return s_handler;
}

bool IsXml(const CString& path) {
    return path.Right(3).CompareNoCase("xml") == 0;
}

void LoadXml(const CString& path, DBACCESS_ALL& all) {
    DbDatabase database;
    database.GetSource()->SetFile(path, false);
    database.GetSource()->SetSequentialAccess(false);
    database.LoadTables();
    all.resize(static_cast<std::size_t>(database.GetTablesCount()));
    for (std::size_t i = 0; i < all.size(); ++i) {
        auto& [name, rows] = all[i];
        name = database.GetTableName(i);
        // The list's earlier contents say nothing about this table's rows.
        rows = {};
        database.GetTable(name, rows);
    }
}

// The first table of the name; the end of the list where there is none.
template <typename Tables>
auto FindTable(Tables& all, const CString& name) {
    return std::find_if(all.begin(), all.end(), [&](const auto& table) { return table.first == name; });
}

}  // namespace

DbSerializer::StepHandler DbSerializer::SetStepHandler(StepHandler handler) {
    quillet::ListenerForTables() = [](std::size_t done, std::size_t count, const CString& table,
                                      bool isWhole) {
        if (Handler()) {
            Handler()({done, count, table, isWhole});
        }
    };
    return std::exchange(Handler(), std::move(handler));
}

bool DbSerializer::Load(const CString& path, DBACCESS_ALL& all) {
    try {
        if (!IsXml(path)) {
            return quillet::ReadAccessTables(path, all);
        }
        LoadXml(path, all);
        return true;
    } catch (DbException* exception) {
        exception->Delete();
        CString text;
        text.Format("Error while trying to read '%s' file. Check if file exists on given path.",
                    path.ToUtf8().c_str());
        quillet::platform::ShowMessage(text.View(), {});
        return false;
    }
}

bool DbSerializer::Save(const CString& path, const DBACCESS_ALL& all) {
    if (IsXml(path)) {
        // The database is changed, and writes its file when it goes.
        DbDatabase database;
        database.Create(path);
        database.CopyFrom(all);
        return true;
    }
    quillet::WriteAccessTables(path, all);
    return true;
}

bool DbSerializer::CopyTableFromDatabase(const DBACCESS_ALL& all, const CString& table,
                                         DBACCESS_VECTOR& rows) {
    const auto found = FindTable(all, table);
    if (found == all.end()) {
        rows.clear();
        return false;
    }
    rows = found->second;
    return true;
}

bool DbSerializer::CopyTableToDatabase(DBACCESS_ALL& all, const CString& table, const DBACCESS_VECTOR& rows) {
    const auto found = FindTable(all, table);
    if (found == all.end()) {
        all.emplace_back(table, rows);
    } else {
        found->second = rows;
    }
    return true;
}
