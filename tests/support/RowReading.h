// Rows read straight from the bytes of a document, and by its nodes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Quillet/rows/RowScanner.h"
#include "Quillet/rows/RowsView.h"
#include "Quillet/xml/Document.h"
#include "Quillet/xml/Face.h"
#include "support/RowHelpers.h"

namespace quillet::test {

inline std::string ShowRows(DbRows& rows) {
    const RowsView view(rows);
    std::string text;
    for (uint64 i = 0; i < view.Count(); ++i) {
        for (std::size_t field = 0; field < view.Width(i); ++field) {
            text += ShowCell(view.Cell(i, field)) + "|";
        }
        text += "\n";
    }
    return text;
}

// Fields of every type: d, f, n, b, t and x, the last of bytes.
inline void DescribeFields(DbTableDescr& descr) {
    descr.CreateField("d", false, DbFieldDescr::Double);
    descr.CreateField("f", false, DbFieldDescr::Float);
    descr.CreateField("n", false, DbFieldDescr::Long);
    descr.CreateField("b", false, DbFieldDescr::Boolean);
    descr.CreateField("t", false, DbFieldDescr::Text);
    descr.CreateField("x", false, DbFieldDescr::Binary);
}

// The rows as the document gives them; nothing if it can't be read.
inline std::optional<std::string> ReadByDocument(const std::string& rows) {
    xml::Document document;
    if (!document.LoadText("<table>" + rows + "</table>")) {
        return std::nullopt;
    }
    DbTableDescr descr(nullptr);
    DescribeFields(descr);
    DbTableData data(nullptr, &descr);
    const xml::Face face(document.Root().FirstChild());
    data.Load(face.Get());
    return ShowRows(*data.GetRows());
}

// The same straight from the bytes; nothing if the scanner leaves that to the document.
inline std::optional<std::string> ReadByScanner(const std::string& rows, std::size_t pieces = 1) {
    DbTableDescr descr(nullptr);
    DescribeFields(descr);
    ColumnStore store;
    RowScanner scanner(descr, store);
    std::string text;
    std::size_t taken = 0;
    for (std::size_t piece = 1; piece <= pieces; ++piece) {
        RowScanner::Stop stop = RowScanner::Stop::NoRow;
        // A piece ends anywhere.
        text = rows.substr(taken, rows.size() * piece / pieces - taken);
        taken += scanner.Read(text, stop);
        if (stop == RowScanner::Stop::Unknown) {
            return std::nullopt;
        }
    }
    if (rows.find_first_not_of(" \t\r\n", taken) != std::string::npos) {
        return std::nullopt;
    }
    std::string shown;
    for (std::size_t i = 0; i < store.Size(); ++i) {
        for (std::size_t field = 0; field < store.WidthOf(i); ++field) {
            shown += ShowCell(store.CellAt(i, field)) + "|";
        }
        shown += "\n";
    }
    return shown;
}

}  // namespace quillet::test
