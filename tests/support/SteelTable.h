// A database with one table whose rows need memory.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "support/TestHelpers.h"

namespace quillet::test {

// Table "Steel" with a field of each type, five rows, and an index by number in the reverse order of the
// rows.
inline std::unique_ptr<DbDatabase> SteelDatabase() {
    auto database = std::make_unique<DbDatabase>();
    database->CreateTable("Steel", DbTableInfo::Table);
    DbTableDescr& descr = *database->GetTableDescr("Steel");
    for (const auto& [name, type] :
         {std::pair("name", DbFieldDescr::Text), std::pair("h", DbFieldDescr::Double),
          std::pair("n", DbFieldDescr::Long), std::pair("ok", DbFieldDescr::Boolean),
          std::pair("bytes", DbFieldDescr::Binary)}) {
        descr.CreateField(name, false, type);
    }
    descr.CreateIndex("by number", "n");
    DbTableData& data = *database->GetTableData("Steel");
    for (int i = 0; i < 5; ++i) {
        DbTableRow& row = data[data.AddRow()];
        row.SetValue("name", CString("a name that takes memory of its own, ") + CString(std::to_string(i)));
        row.SetValue("h", CComVariant(100.5 * i));
        row.SetValue("n", CComVariant(10 - i));
        row.SetValue("bytes", ByteArray("bytes"));
    }
    return database;
}

}  // namespace quillet::test
