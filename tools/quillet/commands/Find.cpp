// Finds rows of a table by a condition.
#include <algorithm>

#include "Quillet/Db_Recordset.h"
#include "Quillet/cursor/RowCondition.h"
#include "Quillet/rows/RowsView.h"
#include "commands/Commands.h"
#include "commands/Printing.h"
#include "commands/QueryHints.h"
#include "input/Catalog.h"
#include "input/LogEntries.h"
#include "output/PlainText.h"

namespace quillet::tool {

namespace {

// A column for the position, whose name no field has, then the columns of the table.
std::vector<Column> WithPosition(const std::vector<Column>& columns) {
    std::string name = "position";
    const auto isTaken = [&](const Column& column) {
        return CString(column.m_name).CompareNoCase(name) == 0;
    };
    while (std::any_of(columns.begin(), columns.end(), isTaken)) {
        name.insert(0, "row ");
    }
    std::vector<Column> all = {{name, true}};
    all.insert(all.end(), columns.begin(), columns.end());
    return all;
}

// The rows at given positions of a table, each with its position in front.
class FoundRows : public Listing {
public:
    FoundRows(const TableListing& rows, const std::vector<std::size_t>& positions)
        : Listing(WithPosition(rows.Columns())), m_rows(rows), m_positions(positions) {}

    std::size_t CountRows() const override { return m_positions.size(); }
    void ReadRow(std::size_t row, NumberStyle style, std::vector<Value>& values) const override {
        m_rows.ReadRow(m_positions[row], style, m_cells);
        values.resize(Columns().size());
        values.front() = Value::OfCount(m_positions[row]);
        std::copy(m_cells.begin(), m_cells.end(), values.begin() + 1);
    }

private:
    const TableListing& m_rows;
    const std::vector<std::size_t>& m_positions;
    mutable std::vector<Value> m_cells;
};

void ReadCondition(Catalog& catalog, const Table& table, const std::string& where, RowCondition& condition) {
    const bool isRead =
        condition.Read(catalog.Database(), table.m_name, *table.m_descr, DbRecordset::Condition(where));
    const std::vector<DbLogEntry> entries = catalog.CollectLog();
    if (!isRead || !condition.IsValid()) {
        throw catalog.Failed(QueryComplaint(entries) +
                             HintOnRefusal(catalog.Database(), {where, table.m_name}));
    }
}

std::vector<std::size_t> FindRows(DbTableData& data, RowCondition& condition, const FindRequest& request) {
    const std::size_t count = data.size();
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < count && (request.m_all || positions.empty()); ++i) {
        const std::size_t position = request.m_backward ? count - 1 - i : i;
        DbRows& rows = *data.GetRows();
        if (RowsView(rows).HasRow(position) && condition.Holds(rows, position)) {
            positions.push_back(position);
        }
    }
    return positions;
}

}  // namespace

int Find(const Settings& settings, const FindRequest& request) {
    Catalog catalog(request.m_file, settings);
    catalog.ReadStructure();
    const Table table = catalog.FindTable(request.m_table);
    RowCondition condition;
    ReadCondition(catalog, table, request.m_where, condition);
    const std::vector<std::size_t> positions = FindRows(*table.m_data, condition, request);
    const std::vector<std::string> warnings =
        WarningsOnAnswer(catalog.Database(), {request.m_where, table.m_name});
    if (positions.empty()) {
        std::string why = "no row of " + Quoted(table.m_name) + " fits";
        for (const std::string& warning : warnings) {
            why += "; " + warning;
        }
        throw catalog.Failed(why);
    }
    const TableListing rows(*table.m_descr, *table.m_data, 0, table.m_data->size());
    Print(settings, FoundRows(rows, positions));
    for (const std::string& warning : warnings) {
        Complain("warning: " + catalog.Path() + ": " + warning);
    }
    catalog.WarnOfFaults();
    return Done;
}

}  // namespace quillet::tool
