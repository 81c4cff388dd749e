// Rows straight from the bytes of a document.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Quillet/rows/CellParser.h"
#include "Quillet/rows/ColumnStore.h"

namespace quillet {

// Reads elements <row .../> into columns. It knows the rows that programs write: elements without content,
// attributes in quotes, the references &amp; and its like and those by number, UTF-8. What it does not know
// it leaves alone: then the whole text has to be read in another way.
class RowScanner {
public:
    enum class Stop : std::uint8_t {
        // At markup that is no row.
        NoRow,
        // At a row that the text does not hold in whole.
        Incomplete,
        // At something that it does not know.
        Unknown,
    };

    // The beginning of a row that can be told from other markup is longer.
    static constexpr std::size_t StartBytes = 4;

    // The structure must outlive the scanner, and the rows are appended to an empty store.
    RowScanner(const DbTableDescr& descr, ColumnStore& rows);

    // Reads rows from the beginning of a text, white space between them, and returns how many bytes they
    // take. The text is followed by a byte that is neither a digit nor part of a number.
    std::size_t Read(std::string_view text, Stop& stop);

    std::uint64_t Rows() const { return m_count; }
    // How many rows have another number of values than the table has fields, and the number of the first of
    // them, from 1.
    std::uint64_t Misfits() const { return m_misfits; }
    std::uint64_t FirstMisfit() const { return m_firstMisfit; }

private:
    enum class Step : std::uint8_t { Done, Incomplete, Unknown };

    struct Field {
        const DbFieldDescr* m_descr;
        CellView::Kind m_kind;
        // Whether plain texts are values of the column's kind.
        bool m_isPlain;
        // What comes before the value in most rows: a blank, the name, = and a quote.
        std::string m_beginning;
    };

    Step ReadRow(const char*& at, const char* end);
    Step ReadCells(const char*& at, const char* end, std::size_t& values);
    // Null where the cell is to be read as any attribute is.
    const char* ReadPlainCell(const Field& field, std::size_t column, const char* at, const char* end);
    const char* ReadPlainValue(const Field& field, std::size_t column, const char* at, const char* end);
    const char* ReadPlainText(std::size_t column, const char* at, const char* end);
    // Into m_value. Done with an unchanged place: there is no further attribute.
    Step ReadAttribute(const char*& at, const char* end);
    Step ReadValue(const char*& at, const char* end, char quote);
    bool ReadReference(std::string_view reference);
    static Step ReadEnd(const char*& at, const char* end);
    void KeepPlace(std::size_t column);
    void FinishRow(std::size_t values);
    void OpenBlock();
    void CountRows();

    ColumnStore& m_rows;
    std::vector<Field> m_fields;
    ColumnKinds m_kinds;
    ColumnBlock* m_block = nullptr;
    // The slot of the row that is being read, and the first of those that the block does not know yet.
    std::uint32_t m_slot = 0;
    std::uint32_t m_uncounted = 0;
    std::uint64_t m_count = 0;
    std::uint64_t m_misfits = 0;
    std::uint64_t m_firstMisfit = 0;
    // The cells of the row that are not plain.
    std::vector<std::pair<std::size_t, std::string>> m_others;
    std::size_t m_otherCount = 0;
    std::string m_value;
    CellParser m_parser;
};

}  // namespace quillet
