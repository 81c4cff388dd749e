#include "Quillet/records/AccessTables.h"

#include "Quillet/dbaccess/DBACCESS.h"

namespace quillet {

namespace {

void Tell(std::size_t done, std::size_t count, const CString& table, bool isWhole) {
    if (ListenerForTables()) {
        ListenerForTables()(done, count, table, isWhole);
    }
}

}  // namespace

TableListener& ListenerForTables() {
    static TableListener s_listener;
    return s_listener;
}

bool ReadAccessTables(const CString& path, DBACCESS_ALL& all) {
    DBACCESS access(path.GetString());
    std::vector<CString> names;
    access.GetTables(names);
    bool good = true;
    all.resize(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        auto& [name, rows] = all[i];
        name = names[i];
        rows.clear();
        const bool isWhole = access.GetTableData(name, rows);
        good = good && isWhole;
        Tell(i + 1, names.size(), name, isWhole);
    }
    return good;
}

void WriteAccessTables(const CString& path, const DBACCESS_ALL& all) {
    DBACCESS access(path.GetString(), DBACCESS::NoDialog);
    std::size_t done = 0;
    for (const auto& [name, rows] : all) {
        const bool isWhole = access.SetTableData(name, rows);
        Tell(++done, all.size(), name, isWhole);
    }
}

}  // namespace quillet
