#include "output/CsvWriter.h"

namespace quillet::tool {

namespace {

void AppendField(std::string_view text, bool isOnlyField, std::string& line) {
    // An empty line would not be a row.
    const bool isQuoted =
        text.find_first_of(",\"\r\n") != std::string_view::npos || (isOnlyField && text.empty());
    if (!isQuoted) {
        line += text;
        return;
    }
    line += '"';
    for (const char letter : text) {
        line.append(letter == '"' ? 2 : 1, letter);
    }
    line += '"';
}

}  // namespace

void CsvWriter::Write(const Listing& listing, Sink& sink, const Progress& progress) const {
    const std::vector<Column>& columns = listing.Columns();
    const bool isOnlyField = columns.size() == 1;
    std::string line;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        line += i == 0 ? "" : ",";
        AppendField(columns[i].m_name, isOnlyField, line);
    }
    sink.Write(line + "\r\n");
    std::vector<Value> values;
    for (std::size_t row = 0; row < listing.CountRows(); ++row) {
        listing.ReadRow(row, NumberStyle::Point, values);
        line.clear();
        for (std::size_t i = 0; i < values.size(); ++i) {
            line += i == 0 ? "" : ",";
            AppendField(values[i].m_text, isOnlyField, line);
        }
        line += "\r\n";
        sink.Write(line);
        progress(row + 1);
    }
}

}  // namespace quillet::tool
