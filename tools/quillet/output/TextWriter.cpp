#include "output/TextWriter.h"

#include <algorithm>

#include "output/PlainText.h"

namespace quillet::tool {

namespace {

constexpr std::size_t Gap = 2;
// The rows are read once for the widths and once for writing.
constexpr std::size_t Passes = 2;

// Lays out one line of cells.
class Line {
public:
    Line(const std::vector<Column>& columns, std::vector<std::size_t> widths, std::string indent)
        : m_columns(columns), m_widths(std::move(widths)), m_indent(std::move(indent)) {}

    void Begin() {
        m_text = m_indent;
        m_column = 0;
        m_blanks = 0;
    }

    void Add(std::string_view cell) {
        const std::size_t width = CountCodePoints(cell);
        const std::size_t padding = m_widths[m_column] > width ? m_widths[m_column] - width : 0;
        const bool isRight = m_columns[m_column].m_isNumeric;
        m_blanks += (m_column == 0 ? 0 : Gap) + (isRight ? padding : 0);
        // Blanks are written only when something follows them, so no line ends with any.
        if (!cell.empty()) {
            m_text.append(m_blanks, ' ');
            m_text += cell;
            m_blanks = 0;
        }
        m_blanks += isRight ? 0 : padding;
        ++m_column;
    }

    const std::string& End() {
        m_text += '\n';
        return m_text;
    }

private:
    const std::vector<Column>& m_columns;
    std::vector<std::size_t> m_widths;
    std::string m_indent;
    std::string m_text;
    std::size_t m_column = 0;
    std::size_t m_blanks = 0;
};

std::vector<std::size_t> MeasureColumns(const Listing& listing, const Writer::Progress& progress) {
    std::vector<std::size_t> widths;
    for (const Column& column : listing.Columns()) {
        widths.push_back(CountCodePoints(Visible(column.m_name)));
    }
    std::vector<Value> values;
    std::string visible;
    for (std::size_t row = 0; row < listing.CountRows(); ++row) {
        listing.ReadRow(row, NumberStyle::Locale, values);
        for (std::size_t i = 0; i < values.size(); ++i) {
            visible.clear();
            AppendVisible(values[i].m_text, visible);
            widths[i] = std::max(widths[i], CountCodePoints(visible));
        }
        progress((row + 1) / Passes);
    }
    return widths;
}

}  // namespace

void TextWriter::Write(const Listing& listing, Sink& sink, const Progress& progress) const {
    const std::vector<std::size_t> widths = MeasureColumns(listing, progress);
    Line line(listing.Columns(), widths, m_indent);
    line.Begin();
    for (const Column& column : listing.Columns()) {
        line.Add(Visible(column.m_name));
    }
    sink.Write(line.End());
    line.Begin();
    for (const std::size_t width : widths) {
        line.Add(std::string(width, '-'));
    }
    sink.Write(line.End());
    std::vector<Value> values;
    std::string visible;
    for (std::size_t row = 0; row < listing.CountRows(); ++row) {
        listing.ReadRow(row, NumberStyle::Locale, values);
        line.Begin();
        for (const Value& value : values) {
            visible.clear();
            AppendVisible(value.m_text, visible);
            line.Add(visible);
        }
        sink.Write(line.End());
        progress((listing.CountRows() + row + 1) / Passes);
    }
}

}  // namespace quillet::tool
