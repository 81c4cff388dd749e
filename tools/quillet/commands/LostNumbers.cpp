#include "commands/LostNumbers.h"

#include <algorithm>

#include "Quillet/rows/RowsView.h"
#include "input/CellText.h"
#include "output/PlainText.h"

namespace quillet::tool {

namespace {

bool AreSurelyReadBack(const DbColumnView::Block& block, std::size_t column) {
    const auto doubles = block.Doubles(column);
    const auto floats = block.Floats(column);
    bool mayHaveOthers = false;
    for (std::size_t row = 0; row < block.Rows() && !block.Missing(column).empty(); ++row) {
        mayHaveOthers = mayHaveOthers || block.StateOf(column, row) == DbColumnView::State::OtherType;
    }
    return !mayHaveOthers && std::all_of(doubles.begin(), doubles.end(), IsSurelyReadBack) &&
           std::all_of(floats.begin(), floats.end(), IsSurelyReadBack);
}

// False for a table whose numbers have to be looked at one by one.
bool AreSurelyReadBack(DbTableData& data) {
    const DbColumnView view = data.GetColumns();
    for (const DbColumnView::Block& block : view.Blocks()) {
        for (std::size_t column = 0; column < view.Columns(); ++column) {
            if (!AreSurelyReadBack(block, column)) {
                return false;
            }
        }
    }
    return true;
}

// The place of a number whose text can't be read back, and how many more there are; empty if there is none.
std::string FindLostNumbers(Catalog& catalog) {
    DbDatabase& database = catalog.Database();
    std::string first;
    std::size_t others = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(database.GetTablesCount()); ++i) {
        const DbTableDescr& descr = *database.GetTableDescr(i);
        DbTableData& data = *database.GetTableData(i);
        if (AreSurelyReadBack(data)) {
            continue;
        }
        const RowsView rows(*data.GetRows());
        for (std::size_t row = 0; row < rows.Count(); ++row) {
            const std::size_t cells = rows.HasRow(row) ? rows.Width(row) : 0;
            for (std::size_t cell = 0; cell < cells; ++cell) {
                const CellView value = rows.Cell(row, cell);
                if (IsReadBack(value)) {
                    continue;
                }
                others += first.empty() ? 0U : 1U;
                if (first.empty()) {
                    first = "table " + Quoted(database.GetTableName(i).ToUtf8()) + ", row " +
                            std::to_string(row + 1) + ", field " +
                            Quoted(descr.GetField(static_cast<int>(cell)).GetName().ToUtf8()) + ": " +
                            LostNumber(value);
                }
            }
        }
    }
    return first + (others == 0 ? "" : " (and " + std::to_string(others) + " more)");
}

}  // namespace

void RefuseLostNumbers(Catalog& catalog, const std::string& consequence, const Settings& settings) {
    const std::string lost = FindLostNumbers(catalog);
    if (lost.empty()) {
        return;
    }
    if (!settings.m_lossy) {
        throw catalog.Failed(consequence + ": " + lost + "; --lossy goes on");
    }
    Complain("warning: " + catalog.Path() + ": " + lost);
}

}  // namespace quillet::tool
