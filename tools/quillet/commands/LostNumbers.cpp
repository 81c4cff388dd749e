#include "commands/LostNumbers.h"

#include "Quillet/rows/RowsView.h"
#include "input/CellText.h"
#include "output/PlainText.h"

namespace quillet::tool {

namespace {

// The place of a number whose text can't be read back, and how many more there are; empty if there is none.
std::string FindLostNumbers(Catalog& catalog) {
    DbDatabase& database = catalog.Database();
    std::string first;
    std::size_t others = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(database.GetTablesCount()); ++i) {
        const DbTableDescr& descr = *database.GetTableDescr(i);
        DbTableData& data = *database.GetTableData(i);
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
