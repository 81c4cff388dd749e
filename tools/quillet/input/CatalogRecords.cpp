#include "input/CatalogRecords.h"

#include "output/PlainText.h"

namespace quillet::tool {

namespace {

// The column for the values of a field. A field without a type has texts.
DBACCESS_COLUMN::eType ColumnType(const DbFieldDescr& field) {
    switch (field.GetDbType()) {
        case DbFieldDescr::Boolean:
            return DBACCESS_COLUMN::Boolean;
        case DbFieldDescr::Integer:
            return DBACCESS_COLUMN::Integer;
        case DbFieldDescr::Long:
            return DBACCESS_COLUMN::Long;
        case DbFieldDescr::Float:
            return DBACCESS_COLUMN::Float;
        case DbFieldDescr::Double:
            return DBACCESS_COLUMN::Double;
        case DbFieldDescr::Binary:
            return DBACCESS_COLUMN::Binary;
        default:
            return DBACCESS_COLUMN::Text;
    }
}

DBACCESS_RECORD DescribingRecord(const DbTableDescr& descr) {
    DBACCESS_RECORD record;
    for (const DbFieldDescr* field : descr) {
        record.emplace_back(field->GetName()).m_type = ColumnType(*field);
    }
    return record;
}

// Gives cells without a value the types of their fields.
void FitCells(const Catalog& catalog, const std::string& table, const DbTableDescr& descr,
              DBACCESS_VECTOR& rows) {
    for (std::size_t row = 0; row < rows.size(); ++row) {
        for (std::size_t i = 0; i < descr.size(); ++i) {
            const DbFieldDescr& field = descr.GetField(static_cast<int>(i));
            DBACCESS_COLUMN& cell = rows[row][i];
            if (cell.m_type == DBACCESS_COLUMN::None) {
                cell.m_type = ColumnType(field);
            } else if (cell.m_type != ColumnType(field)) {
                throw catalog.Failed("not converted: table " + Quoted(table) + ", row " +
                                     std::to_string(row + 1) + ", field " + Quoted(field.GetName().ToUtf8()) +
                                     ": no value of the type " + field.GetTypeString().ToUtf8());
            }
        }
    }
}

}  // namespace

DBACCESS_ALL ReadRecords(Catalog& catalog) {
    DbDatabase& database = catalog.Database();
    DBACCESS_ALL tables;
    for (const std::string& name : catalog.TableNames()) {
        DbTableInfo* const info = database.GetTableInfo(name);
        if (info->GetType() != DbTableInfo::Table) {
            continue;
        }
        const DbTableDescr& descr = *database.GetTableDescr(info->GetIndex());
        if (descr.empty()) {
            throw catalog.Failed("not converted: table " + Quoted(name) +
                                 " has no fields, and an Access file takes no such table");
        }
        DBACCESS_VECTOR& rows = tables.emplace_back(name, DBACCESS_VECTOR()).second;
        database.GetTable(info, rows);
        FitCells(catalog, name, descr, rows);
        if (rows.empty()) {
            rows.push_back(DescribingRecord(descr));
            rows.m_noRows = true;
        }
    }
    return tables;
}

}  // namespace quillet::tool
