// A file whose rows are read straight from its bytes gives the catalog, and the log, that its document gives.
#include "Quillet/document/CatalogScanner.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <regex>
#include <string>

#include "Quillet/document/CountRows.h"
#include "Quillet/document/DocumentReader.h"
#include "Quillet/platform/File.h"
#include "support/CatalogHelpers.h"

namespace quillet::test {
namespace {

// One line of the log for each that reading wrote, without times and the name of the file.
std::string LogOf(DbDatabase& database) {
    std::string text;
    for (const std::string& line : TakeLog(database)) {
        text += std::regex_replace(line, std::regex("[0-9]+[.,][0-9]{4}"), "*") + "\n";
    }
    return text;
}

std::string ReadAll(const std::filesystem::path& path) {
    const auto database = Open(path, Reading::Whole);
    database->SetLogLimit(100000);
    std::string text = std::to_string(database->GetTablesCount()) + " tables\n";
    text += Dump(*database);
    text += LogOf(*database);
    text += database->IsChanged() ? "changed\n" : "unchanged\n";
    text += database->LastReadError().ToUtf8() + "\n";
    // A catalog of which something was left out is not saved over its file.
    text += database->Save(CString(Utf8(path))) ? "saved" : "refused";
    return text;
}

constexpr const char* Fields = R"(<field name="a" key="false" type="3" required="0" />
<field name="t" key="false" type="8" required="0" />)";

std::string Table(const std::string& name, const std::string& content) {
    return "<table name=\"" + name + "\">\n" + content + "</table>\n";
}

std::string Described(const std::string& name) {
    return Table(name, Fields);
}

struct CatalogParts {
    std::string m_declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    std::string m_headerStructure = Described("Header") + Described("Properties");
    std::string m_headerRows = Table("Header", "<row a=\"1\" t=\"h\" />\n") + Table("Properties", "");
    std::string m_structure = Described("First") + Described("Second");
    std::string m_rows = Table("First", "<row a=\"1\" t=\"x\" />\n<row a=\"2\" t=\"y\" />\n") +
                         Table("Second", "<row a=\"3\" t=\"z &amp; z\" />\n");
    std::string m_afterRows;
    std::string m_database = "database";

    std::string Text() const {
        return m_declaration + "<" + m_database + ">\n<header>\n<structure>\n" + m_headerStructure +
               "</structure>\n<data>\n" + m_headerRows + "</data>\n</header>\n<body>\n<structure>\n" +
               m_structure + "</structure>\n<data>\n" + m_rows + "</data>\n" + m_afterRows + "</body>\n</" +
               m_database + ">\n";
    }
};

struct Variant {
    const char* m_what;
    void (*m_change)(CatalogParts&);
    // Whether the scanner reads it; the reader may still find that the rows have to be read by the document.
    bool m_isKnown;
};

void PrintTo(const Variant& variant, std::ostream* stream) {
    *stream << variant.m_what;
}

// Rows of more than one window of the scanner.
std::string ManyRows() {
    std::string rows;
    for (int i = 0; i < 40000; ++i) {
        rows += "<row a=\"" + std::to_string(i) + "\" t=\"number " + std::to_string(i) + "\" />\n";
    }
    return rows;
}

const Variant Variants[] = {
    {"Usual", [](CatalogParts&) {}, true},
    {"NoDeclaration", [](CatalogParts& parts) { parts.m_declaration.clear(); }, true},
    {"ByteOrderMark", [](CatalogParts& parts) { parts.m_declaration.insert(0, "\xEF\xBB\xBF"); }, true},
    {"OtherCase", [](CatalogParts& parts) { parts.m_database = "DataBase"; }, true},
    {"ManyRows",
     [](CatalogParts& parts) { parts.m_rows = Table("Second", ManyRows()) + Table("First", ManyRows()); },
     true},
    {"NoRows", [](CatalogParts& parts) { parts.m_rows = Table("First", "") + "<table name=\"Second\" />\n"; },
     true},
    {"NoTables", [](CatalogParts& parts) { parts.m_structure.clear(), parts.m_rows.clear(); }, true},
    {"NoRowsOfOne", [](CatalogParts& parts) { parts.m_rows = Table("Second", "<row a=\"3\" t=\"z\" />\n"); },
     true},
    {"NamesInOtherCase",
     [](CatalogParts& parts) { parts.m_rows = Table("FIRST", "<row a=\"3\" t=\"z\" />\n"); }, true},
    {"TooFewAndTooManyValues",
     [](CatalogParts& parts) {
         parts.m_rows = Table(
             "First", "<row a=\"1\" />\n<row a=\"1\" t=\"x\" b=\"2\" />\n<row />\n<row a=\"1\" t=\"\" />");
     },
     true},
    {"NoNumbers", [](CatalogParts& parts) { parts.m_rows = Table("First", "<row a=\"one\" t=\"x\" />\n"); },
     true},
    {"ASecondListOfRows",
     [](CatalogParts& parts) {
         parts.m_afterRows = "<data>\n" + Table("First", "<row a=\"9\" t=\"9\" />") + "</data>\n";
     },
     true},
    {"RowsTwice",
     [](CatalogParts& parts) { parts.m_rows += Table("First", "<row a=\"7\" t=\"again\" />\n"); }, true},
    {"DescribedTwice", [](CatalogParts& parts) { parts.m_structure += Described("FIRST"); }, false},
    {"NameOfTheHeader",
     [](CatalogParts& parts) {
         parts.m_structure += Described("header");
         parts.m_rows += Table("header", "<row a=\"7\" t=\"body\" />\n");
     },
     true},
    {"RowsWithoutStructure",
     [](CatalogParts& parts) { parts.m_rows += Table("Third", "<row a=\"7\" t=\"x\" />\n"); }, false},
    {"TableWithoutName", [](CatalogParts& parts) { parts.m_rows += "<table><row a=\"1\" /></table>\n"; },
     false},
    {"OtherElementAmongRows",
     [](CatalogParts& parts) {
         parts.m_rows = Table("First", "<row a=\"1\" t=\"x\" /><line a=\"2\" t=\"y\" />");
     },
     true},
    {"TextAmongRows",
     [](CatalogParts& parts) { parts.m_rows = Table("First", "<row a=\"1\" t=\"x\" />text"); }, false},
    {"Comment", [](CatalogParts& parts) { parts.m_afterRows = "<!-- none -->\n"; }, false},
    {"OtherEncoding",
     [](CatalogParts& parts) {
         parts.m_declaration = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n";
         parts.m_rows = Table("First", "<row a=\"1\" t=\"\xE9\" />\n");
     },
     false},
    {"OtherEncodingNamedAfterUtf8",
     [](CatalogParts& parts) {
         parts.m_declaration = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\" standalone=\"UTF-8\"?>\n";
     },
     false},
    {"DocumentType", [](CatalogParts& parts) { parts.m_declaration += "<!DOCTYPE database>\n"; }, false},
    {"OtherRoot", [](CatalogParts& parts) { parts.m_database = "other"; }, true},
    {"NotUtf8", [](CatalogParts& parts) { parts.m_rows = Table("First", "<row a=\"1\" t=\"\xE9\" />\n"); },
     false},
    {"EndsEarly", [](CatalogParts& parts) { parts.m_afterRows = "</body>"; }, false},
};

class ScannedCatalog : public testing::TestWithParam<Variant> {};

TEST_P(ScannedCatalog, File_IsTheCatalogOfItsDocument) {
    CatalogParts parts;
    GetParam().m_change(parts);
    const TemporaryFolder folder;
    const std::filesystem::path path = folder / "given.xml";
    WriteBytes(path, parts.Text());
    {
        const auto file = platform::ReadableFile::Open(Utf8(path));
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(CatalogScanner(*file).Scan(), GetParam().m_isKnown);
    }
    const std::string scanned = ReadAll(path);
    // A comment makes the scanner give up, and is nothing to the document.
    WriteBytes(path, parts.Text() + "<!-- -->");
    EXPECT_EQ(scanned, ReadAll(path));
}

TEST_P(ScannedCatalog, CountRows_IsNothingOrWhatReadingFinds) {
    CatalogParts parts;
    GetParam().m_change(parts);
    const TemporaryFolder folder;
    const std::filesystem::path path = folder / "given.xml";
    WriteBytes(path, parts.Text());
    const auto counts = CountRows(CString(Utf8(path)));
    if (!counts) {
        return;
    }
    const auto database = Open(path, Reading::Whole);
    database->LoadTables();
    ASSERT_EQ(static_cast<std::size_t>(database->GetTablesCount()), counts->size() + 2);
    for (std::size_t i = 2; i < counts->size() + 2; ++i) {
        EXPECT_EQ(counts->at(Lowered(database->GetTableName(i))), database->GetTableData(i)->size());
    }
    EXPECT_EQ(database->LastReadError(), CString());
    database->Sync();
}

TEST(CountedCatalog, RowsOfSeveralTables_AreCountedWithoutReadingThem) {
    CatalogParts parts;
    std::string rows;
    constexpr int Rows = 60000;
    for (int i = 0; i < Rows; ++i) {
        rows += "<row a=\"" + std::to_string(i) + "\" t=\"text " + std::to_string(i) + "\" />\n";
    }
    parts.m_rows = Table("First", rows) + Table("Second", "");
    const TemporaryFolder folder;
    WriteBytes(folder / "long.xml", parts.Text());
    const auto counts = CountRows(CString(Utf8(folder / "long.xml")));
    ASSERT_TRUE(counts);
    EXPECT_EQ(counts->at("first"), uint64{Rows});
    EXPECT_EQ(counts->at("second"), 0U);
}

TEST(CountedCatalog, FirstRowsOfATable_AreTheOnlyOnesKept) {
    CatalogParts parts;
    std::string rows;
    constexpr LONG Rows = 100000;
    for (LONG i = 0; i < Rows; ++i) {
        rows += "<row a=\"" + std::to_string(i) + "\" t=\"text\" />\n";
    }
    parts.m_rows = Table("First", rows) + Table("Second", rows);
    const TemporaryFolder folder;
    WriteBytes(folder / "long.xml", parts.Text());
    const CString file(Utf8(folder / "long.xml"));
    for (const char* const name : {"First", "SECOND"}) {
        const DocumentReader::Table table = DocumentReader::ReadFirstRows(file, name, 50000);
        ASSERT_NE(table.m_data, nullptr);
        EXPECT_EQ(table.m_descr->size(), 2U);
        EXPECT_GE(table.m_data->size(), 50000U);
        EXPECT_LT(table.m_data->size(), uint64{Rows});
        EXPECT_EQ((*table.m_data)[49999][0].GetValue().lVal, 49999);
    }
    EXPECT_EQ(DocumentReader::ReadFirstRows(file, "Third", 1).m_data, nullptr);
    EXPECT_EQ(DocumentReader::ReadFirstRows(file, "First", uint64{Rows} + 1).m_data->size(), uint64{Rows});
}

TEST(CountedCatalog, RowsThatDoNotMatchTheFields_AreToBeRead) {
    CatalogParts parts;
    parts.m_rows = Table("First", "<row a=\"1\" t=\"x\" /><row a=\"2\" />");
    const TemporaryFolder folder;
    WriteBytes(folder / "misfit.xml", parts.Text());
    const CString file(Utf8(folder / "misfit.xml"));
    EXPECT_FALSE(CountRows(file));
    EXPECT_EQ(DocumentReader::ReadFirstRows(file, "Second", 1).m_data, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Variants, ScannedCatalog, testing::ValuesIn(Variants),
                         [](const auto& variant) { return std::string(variant.param.m_what); });

}  // namespace
}  // namespace quillet::test
