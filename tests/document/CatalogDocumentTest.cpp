#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <sstream>

#include "Quillet/xml/Document.h"
#include "Quillet/xml/Face.h"
#include "TestPaths.h"
#include "support/ReadingTest.h"
#include "support/Seed.h"

namespace {

using namespace quillet::test;
using testing::HasSubstr;

class CatalogDocument : public ReadingTest {
protected:
    CatalogDocument() { m_database.Create(Path("saved.xml")); }

    // A table of the database to save.
    DbTableData* AddTable(const CString& name,
                          std::initializer_list<std::pair<CString, DbFieldDescr::eFieldType>> fields) {
        DbTableInfo* const info = m_database.CreateTable(name, DbTableInfo::Table);
        for (const auto& [field, type] : fields) {
            EXPECT_TRUE(info->GetDescr()->CreateField(field, false, type));
        }
        return info->GetData();
    }
    // Saves the database and opens the file with the parameter's way of reading; its contents equal what was
    // saved, and saving it again gives the same bytes.
    std::unique_ptr<DbDatabase> SaveAndOpen() {
        EXPECT_TRUE(m_database.Save(Path("saved.xml"))) << m_database.GetErrorLog();
        EXPECT_FALSE(m_database.IsChanged());
        auto copy = Open(m_folder / "saved.xml", GetParam());
        EXPECT_TRUE(Dump(*copy) == Dump(m_database));
        EXPECT_EQ(CountTroubles(*copy), 0U);
        EXPECT_TRUE(copy->Save(Path("again.xml")));
        EXPECT_TRUE(ReadBytes(m_folder / "again.xml") == ReadBytes(m_folder / "saved.xml"));
        return copy;
    }

    DbDatabase m_database;
};

INSTANTIATE_TEST_SUITE_P(, CatalogDocument, testing::Values(Reading::Whole, Reading::Sequential),
                         ReadingName);

const DbFieldValue& CellOf(DbDatabase& database, const CString& table, uint64 row, uint64 field) {
    return (*database.GetTableData(table))[row].GetField(field);
}

CString TextOf(DbDatabase& database, const CString& table, uint64 row) {
    return CString(CellOf(database, table, row, 0).GetVariant().Text());
}

TEST_F(CatalogDocument, EmptyDatabase_HasThisText) {
    EXPECT_TRUE(m_database.Save(Path("saved.xml")));
    EXPECT_EQ(ReadBytes(m_folder / "saved.xml"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<database>\n"
              "<header>\n"
              "<structure>\n"
              "<table name=\"Header\">\n"
              "<field name=\"category\" key=\"false\" type=\"8\" required=\"0\" />\n"
              "<field name=\"symbol\" key=\"false\" type=\"8\" required=\"0\" />\n"
              "<field name=\"title\" key=\"false\" type=\"8\" required=\"0\" />\n"
              "<field name=\"catalog_type\" key=\"false\" type=\"8\" required=\"0\" />\n"
              "<field name=\"units_type\" key=\"false\" type=\"8\" required=\"0\" />\n"
              "<field name=\"version\" key=\"false\" type=\"8\" required=\"0\" />\n"
              "</table>\n"
              "<table name=\"Properties\">\n"
              "<field name=\"units\" key=\"false\" type=\"8\" required=\"0\" />\n"
              "<field name=\"unit_long\" key=\"false\" type=\"8\" required=\"0\" />\n"
              "<field name=\"unit_sect\" key=\"false\" type=\"8\" required=\"0\" />\n"
              "<field name=\"unit_weight\" key=\"false\" type=\"8\" required=\"0\" />\n"
              "<field name=\"material\" key=\"false\" type=\"8\" required=\"0\" />\n"
              "</table>\n"
              "</structure>\n"
              "<data>\n"
              "<table name=\"Header\">\n"
              "<row category=\"\" symbol=\"\" title=\"\" catalog_type=\"\" units_type=\"\" version=\"\" />\n"
              "</table>\n"
              "<table name=\"Properties\">\n"
              "<row units=\"\" unit_long=\"\" unit_sect=\"\" unit_weight=\"\" material=\"\" />\n"
              "</table>\n"
              "</data>\n"
              "</header>\n"
              "<body>\n"
              "<structure />\n"
              "<data />\n"
              "</body>\n"
              "</database>\n");
}

TEST_F(CatalogDocument, TableOfEveryType_HasThisText) {
    DbTableData* const data = AddTable("A<b>", {{"flag", DbFieldDescr::Boolean},
                                                {"short", DbFieldDescr::Integer},
                                                {"long one", DbFieldDescr::Long},
                                                {"f/s", DbFieldDescr::Float},
                                                {"d", DbFieldDescr::Double},
                                                {"bin", DbFieldDescr::Binary},
                                                {"any", DbFieldDescr::Empty}});
    EXPECT_TRUE(data->GetTableDescr()->CreateField("t", true, DbFieldDescr::Text));
    data->AddRow();
    DbTableRow& row = (*data)[0];
    row[0].SetValue(CComVariant(true));
    row[1].SetValue(CComVariant(-7));
    row[2].SetValue(CComVariant(123456));
    row[3].SetValue(CComVariant(0.5F));
    row[4].SetValue(CComVariant(1.25));
    row[5].GetVariant().SetBytes(reinterpret_cast<const BYTE*>("ABC"), 3, 0);
    row[7].SetValue(CComVariant("<a> & \"b\"\t'c'\r\n"));
    EXPECT_TRUE(m_database.Save(Path("saved.xml")));
    const std::string saved = ReadBytes(m_folder / "saved.xml");
    EXPECT_EQ(
        saved.substr(saved.find("<body>")),
        "<body>\n"
        "<structure>\n"
        "<table name=\"A&lt;b&gt;\">\n"
        "<field name=\"flag\" key=\"false\" type=\"11\" required=\"0\" />\n"
        "<field name=\"short\" key=\"false\" type=\"3\" required=\"0\" />\n"
        "<field name=\"long one\" key=\"false\" type=\"3\" required=\"0\" />\n"
        "<field name=\"f/s\" key=\"false\" type=\"4\" required=\"0\" />\n"
        "<field name=\"d\" key=\"false\" type=\"5\" required=\"0\" />\n"
        "<field name=\"bin\" key=\"false\" type=\"8209\" required=\"0\" />\n"
        "<field name=\"any\" key=\"false\" type=\"0\" required=\"0\" />\n"
        "<field name=\"t\" key=\"true\" type=\"8\" required=\"0\" />\n"
        "</table>\n"
        "</structure>\n"
        "<data>\n"
        "<table name=\"A&lt;b&gt;\">\n"
        "<row flag=\"true\" short=\"-7\" long_one=\"123456\" f_S_s=\"0.5\" d=\"1.25\" bin=\"QUJD\" any=\"\" "
        "t=\"&lt;a&gt; &amp; &quot;b&quot;&#9;'c'&#13;&#10;\" />\n"
        "</table>\n"
        "</data>\n"
        "</body>\n"
        "</database>\n");
}

TEST_P(CatalogDocument, EveryFieldType_ComesBack) {
    DbTableData* const data = AddTable("T", {{"b", DbFieldDescr::Boolean},
                                             {"i", DbFieldDescr::Integer},
                                             {"l", DbFieldDescr::Long},
                                             {"f", DbFieldDescr::Float},
                                             {"d", DbFieldDescr::Double},
                                             {"t", DbFieldDescr::Text},
                                             {"x", DbFieldDescr::Binary}});
    for (uint64 i = 0; i < 3; ++i) {
        data->AddRow();
        DbTableRow& row = (*data)[i];
        row[0].SetValue(CComVariant(i == 1));
        row[1].SetValue(CComVariant(static_cast<int>(i) - 1));
        row[2].SetValue(CComVariant(1000000 * static_cast<int>(i)));
        row[3].SetValue(CComVariant(0.25F * static_cast<float>(i)));
        row[4].SetValue(CComVariant(-1.5 * static_cast<double>(i)));
        row[5].SetValue(CComVariant("text"));
        row[6].GetVariant().SetBytes(reinterpret_cast<const BYTE*>("\x01\x00\xFF"), static_cast<ULONG>(i), 0);
    }
    const auto copy = SaveAndOpen();
    const VARTYPE types[] = {VT_BOOL, VT_I4, VT_I4, VT_R4, VT_R8, VT_BSTR, VT_ARRAY | VT_UI1};
    for (uint64 field = 0; field < std::size(types); ++field) {
        EXPECT_EQ(copy->GetTableDescr("T")->at(field)->GetType(), types[field]) << field;
        EXPECT_EQ(CellOf(*copy, "T", 2, field).GetType(), types[field]) << field;
    }
    EXPECT_EQ(CellOf(*copy, "T", 1, 0).GetVariant().boolVal, VARIANT_TRUE);
    EXPECT_EQ(CellOf(*copy, "T", 0, 1).GetVariant().lVal, -1);
    EXPECT_EQ(CellOf(*copy, "T", 2, 4).GetVariant().dblVal, -3.0);
}

TEST_P(CatalogDocument, TypelessField_KeepsWhatWasGivenAsText) {
    CatalogParts parts;
    parts.m_bodyStructure = TableXml("T", FieldXml("any", 0));
    parts.m_bodyData = TableXml("T", "<row any=\"12\" />\n<row any=\"\" />\n");
    const auto database = OpenXml(parts.Xml());
    EXPECT_TRUE(database->Save(Path("copy.xml")));
    EXPECT_THAT(ReadBytes(m_folder / "copy.xml"), HasSubstr(parts.m_bodyData));
}

TEST_P(CatalogDocument, NamesWithSpecialCharacters_ComeBack) {
    const std::vector<CString> names = {"two blanks here", " at both ends ", "a<b>c",
                                        "a/b\\c",          "f(x)*2",         "a&b \"c\" 'd'",
                                        "tab\there",       "line\nend",      "L\u00E4nge \u0448\u0438",
                                        "\u540D\u524D",    "[brackets]",     "a,b;c"};
    for (const CString& name : names) {
        DbTableInfo* const info = m_database.CreateTable(name, DbTableInfo::Table);
        ASSERT_NE(info, nullptr);
        info->GetDescr()->CreateField("n", false, DbFieldDescr::Long);
        info->GetData()->AddRow();
    }
    const auto copy = SaveAndOpen();
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(copy->GetTableName(i + 2), names[i]);
        EXPECT_EQ(copy->GetTableData(names[i])->size(), 1U);
    }
}

TEST_P(CatalogDocument, FieldNamesWithSpecialCharacters_ComeBack) {
    DbTableData* const data = AddTable("T", {{"two blanks", DbFieldDescr::Text},
                                             {"a/b", DbFieldDescr::Text},
                                             {"a\\b", DbFieldDescr::Text},
                                             {"<a>", DbFieldDescr::Text},
                                             {"f(x)*2", DbFieldDescr::Text},
                                             {"L\u00E4nge", DbFieldDescr::Text},
                                             {"\u540D\u524D", DbFieldDescr::Text},
                                             {"_1", DbFieldDescr::Text}});
    data->AddRow();
    const auto copy = SaveAndOpen();
    EXPECT_EQ(copy->GetTableDescr("T")->at(4)->GetName(), "f(x)*2");
    EXPECT_THAT(ReadBytes(m_folder / "saved.xml"),
                HasSubstr("<row two_blanks=\"\" a_S_b=\"\" a_BS_b=\"\" _L_a_G_=\"\" f_LP_x_RP__STAR_2=\"\" "
                          "L\u00E4nge=\"\" \u540D\u524D=\"\" _1=\"\" />"));
}

void AppendWideCode(char32_t code, std::basic_string<WCHAR>& text) {
    if (code < 0x10000) {
        text += static_cast<WCHAR>(code);
    } else {
        text += static_cast<WCHAR>(0xD800 + ((code - 0x10000) >> 10));
        text += static_cast<WCHAR>(0xDC00 + ((code - 0x10000) & 0x3FF));
    }
}

bool IsXmlChar(char32_t code) {
    return code == 0x9 || code == 0xA || code == 0xD || (code >= 0x20 && code <= 0xD7FF) ||
           (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
}

TEST_P(CatalogDocument, EveryCharacterOfXml_ComesBackInAText) {
    constexpr char32_t CodesOfARow = 0x400;
    DbTableData* const data = AddTable("T", {{"text", DbFieldDescr::Text}});
    std::vector<std::basic_string<WCHAR>> texts;
    for (char32_t first = 0; first <= 0x10FFFF; first += CodesOfARow) {
        std::basic_string<WCHAR> text;
        for (char32_t code = first; code < first + CodesOfARow; ++code) {
            if (IsXmlChar(code)) {
                AppendWideCode(code, text);
            }
        }
        texts.push_back(text);
    }
    for (char32_t code = 0; code < 0x180; ++code) {
        if (IsXmlChar(code)) {
            std::basic_string<WCHAR> alone;
            AppendWideCode(code, alone);
            texts.push_back(alone);
            texts.push_back(alone + alone);
        }
    }
    data->AddRows(texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) {
        (*data)[i][0].GetVariant().SetText(texts[i]);
    }
    ASSERT_TRUE(m_database.Save(Path("saved.xml"))) << m_database.GetErrorLog();
    const auto copy = Open(m_folder / "saved.xml", GetParam());
    ASSERT_EQ(copy->GetTableData("T")->size(), texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) {
        ASSERT_TRUE(TextOf(*copy, "T", i).View() == texts[i]) << "row " << i;
    }
    EXPECT_TRUE(copy->Save(Path("again.xml")));
    EXPECT_TRUE(ReadBytes(m_folder / "again.xml") == ReadBytes(m_folder / "saved.xml"));
}

TEST_F(CatalogDocument, EveryUnitThatXmlCantCarry_IsRefused) {
    DbTableData* const data = AddTable("T", {{"text", DbFieldDescr::Text}});
    data->AddRow();
    std::vector<char32_t> units = {0xFFFE, 0xFFFF};
    for (char32_t unit = 0; unit < 0x20; ++unit) {
        if (!IsXmlChar(unit)) {
            units.push_back(unit);
        }
    }
    for (char32_t unit = 0xD800; unit <= 0xDFFF; ++unit) {
        units.push_back(unit);
    }
    for (const char32_t unit : units) {
        std::basic_string<WCHAR> text(OLESTR("a"));
        text += static_cast<WCHAR>(unit);
        text += OLESTR("z");
        (*data)[0][0].GetVariant().SetText(text);
        quillet::xml::Document document;
        quillet::xml::Face face(document.Root());
        ASSERT_FALSE(m_database.Save(face.Get(), nullptr)) << static_cast<unsigned>(unit);
    }
}

TEST_P(CatalogDocument, MarkupInsideValues_IsCutAgainByTheScanner) {
    const std::vector<CString> texts = {"/>",   "?>",       "<",    "</table>",    "<table name=\"x\">",
                                        "</",   "<?xml ?>", "a\"b", "]]>",         "<!-- -->",
                                        "&lt;", "&",        "'",    "</database>", "//>>\"\"<<"};
    DbTableData* const data =
        AddTable("</table>/>?>", {{"text", DbFieldDescr::Text}, {"n<a/>", DbFieldDescr::Text}});
    data->AddRows(texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) {
        (*data)[i][0].GetVariant().SetText(texts[i]);
        (*data)[i][1].GetVariant().SetText(texts[i]);
    }
    AddTable("Behind", {{"n", DbFieldDescr::Long}})->AddRow();
    const auto copy = SaveAndOpen();
    for (std::size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(TextOf(*copy, "</table>/>?>", i), texts[i]);
    }
    EXPECT_EQ(copy->GetTableData("Behind")->size(), 1U);
}

TEST_P(CatalogDocument, MarkupLeftUnescapedInAFile_EndsTheElementInSequentialReading) {
    CatalogParts parts = SmallParts();
    parts.m_bodyData = TableXml("Alpha", "<row name=\"a /> b\" count=\"1\" />\n") +
                       TableXml("Beta", "<row size=\"2.5\" />\n") + TableXml("Gamma", "");
    const auto database = OpenXml(parts.Xml());
    DbTableData* const alpha = database->GetTableData("Alpha");
    if (GetParam() == Reading::Whole) {
        EXPECT_EQ(Cell(alpha, 0, 0), "a /> b");
    } else {
        EXPECT_EQ(alpha->size(), 0U) << "markup counts as markup, quoted or not";
    }
}

TEST_P(CatalogDocument, BinaryOfEveryLength_ComesBack) {
    constexpr ULONG Longest = 200;
    DbTableData* const data = AddTable("T", {{"bytes", DbFieldDescr::Binary}});
    std::vector<BYTE> bytes;
    std::mt19937 random(quillet::test::Seed(5));
    for (ULONG i = 0; i < Longest; ++i) {
        bytes.push_back(static_cast<BYTE>(random()));
    }
    data->AddRows(Longest + 1);
    for (ULONG length = 0; length <= Longest; ++length) {
        (*data)[length][0].GetVariant().SetBytes(bytes.data(), length, 0);
    }
    const auto copy = SaveAndOpen();
    for (ULONG length = 0; length <= Longest; ++length) {
        const CComVariant& value = CellOf(*copy, "T", length, 0).GetVariant();
        ASSERT_EQ(value.vt, VT_ARRAY | VT_UI1) << length;
        LONG lower = -1;
        LONG upper = -1;
        ASSERT_EQ(SafeArrayGetLBound(value.parray, 1, &lower), S_OK);
        ASSERT_EQ(SafeArrayGetUBound(value.parray, 1, &upper), S_OK);
        ASSERT_EQ(lower, 0);
        ASSERT_EQ(upper + 1, static_cast<LONG>(length));
        void* content = nullptr;
        ASSERT_EQ(SafeArrayAccessData(value.parray, &content), S_OK);
        EXPECT_TRUE(std::equal(bytes.data(), bytes.data() + length, static_cast<const BYTE*>(content)))
            << length;
        SafeArrayUnaccessData(value.parray);
    }
}

TEST_P(CatalogDocument, Doubles_KeepFifteenDigits) {
    std::mt19937_64 random(quillet::test::Seed(11));
    std::vector<double> values = {0.0,   1.0,    -1.0, 0.1,    1e15, 1e-5, 123456789012345.0,
                                  1e308, 1e-300, 0.5,  1.0 / 3};
    while (values.size() < 2000) {
        const auto value = std::bit_cast<double>(random());
        if (std::isnormal(value) && std::abs(value) < 1e308) {
            values.push_back(value);
        }
    }
    std::uniform_real_distribution<double> usual(-10000, 10000);
    while (values.size() < 4000) {
        values.push_back(usual(random));
    }
    DbTableData* const data = AddTable("T", {{"d", DbFieldDescr::Double}});
    data->AddRows(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        (*data)[i][0].SetValue(CComVariant(values[i]));
    }
    const auto copy = SaveAndOpen();
    for (std::size_t i = 0; i < values.size(); ++i) {
        char digits[40];
        std::snprintf(digits, sizeof digits, "%.15g", values[i]);
        const CComVariant& value = CellOf(*copy, "T", i, 0).GetVariant();
        ASSERT_EQ(value.vt, VT_R8);
        EXPECT_EQ(value.dblVal, std::strtod(digits, nullptr)) << digits;
    }
}

TEST_P(CatalogDocument, Floats_KeepSevenDigits) {
    std::mt19937 random(quillet::test::Seed(12));
    std::vector<float> values = {0.0F, 1.0F, -1.0F, 0.1F, 1e7F, 1e-5F, 1234567.0F, 1e38F, 0.5F, 1.0F / 3};
    while (values.size() < 4000) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (std::isnormal(value) && std::abs(value) < 1e38F) {
            values.push_back(value);
        }
    }
    DbTableData* const data = AddTable("T", {{"f", DbFieldDescr::Float}});
    data->AddRows(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        (*data)[i][0].SetValue(CComVariant(values[i]));
    }
    const auto copy = SaveAndOpen();
    for (std::size_t i = 0; i < values.size(); ++i) {
        const CComVariant& value = CellOf(*copy, "T", i, 0).GetVariant();
        ASSERT_EQ(value.vt, VT_R4);
        // Half a unit of the seventh digit, and the rounding to the nearest float.
        EXPECT_LE(std::abs(value.fltVal - values[i]), 5.7e-7F * std::abs(values[i])) << values[i];
    }
}

TEST_P(CatalogDocument, Longs_AreExact) {
    std::mt19937 random(quillet::test::Seed(13));
    std::vector<int> values = {0, 1, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()};
    while (values.size() < 1000) {
        values.push_back(static_cast<int>(random()));
    }
    DbTableData* const data = AddTable("T", {{"n", DbFieldDescr::Long}});
    data->AddRows(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        (*data)[i][0].SetValue(CComVariant(values[i]));
    }
    const auto copy = SaveAndOpen();
    for (std::size_t i = 0; i < values.size(); ++i) {
        ASSERT_EQ(CellOf(*copy, "T", i, 0).GetVariant().vt, VT_I4);
        EXPECT_EQ(CellOf(*copy, "T", i, 0).GetVariant().lVal, values[i]);
    }
}

TEST_P(CatalogDocument, ManyTablesAndRows_ComeBackInTheirOrder) {
    for (int table = 0; table < 60; ++table) {
        DbTableData* const data = AddTable(CString("Table " + std::to_string(97 * table % 60)),
                                           {{"key", DbFieldDescr::Long}, {"text", DbFieldDescr::Text}});
        for (int row = 0; row < table * 7 % 50; ++row) {
            const uint64 place = data->AddRow();
            (*data)[place][0].SetValue(CComVariant(1000 - row));
            (*data)[place][1].SetValue(
                CComVariant(CString(std::string(static_cast<std::size_t>(row) * 9, 'x'))));
        }
    }
    const auto copy = SaveAndOpen();
    EXPECT_EQ(copy->GetTablesCount(), 62);
    EXPECT_EQ(copy->GetTableName(0), "Header");
    EXPECT_EQ(copy->GetTableName(1), "Properties");
}

TEST_P(CatalogDocument, TextLongerThanTheReadBuffer_ComesBack) {
    DbTableData* const data = AddTable("T", {{"text", DbFieldDescr::Text}});
    data->AddRow();
    (*data)[0][0].SetValue(CComVariant(CString(std::string(1 << 20, 'y') + "<>&\"/>")));
    const auto copy = SaveAndOpen();
    EXPECT_EQ(TextOf(*copy, "T", 0).GetLength(), (1 << 20) + 6);
}

TEST_P(CatalogDocument, FirstAttributeOfATable_IsItsNameWhateverItIsCalled) {
    std::string xml = SmallCatalog();
    for (std::size_t place = 0; (place = xml.find("<table name=", place)) != std::string::npos; place += 10) {
        xml.replace(place, 12, "<table other=");
    }
    const auto database = OpenXml(xml);
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
    EXPECT_EQ(database->GetTableData("Beta")->size(), 1U);
    EXPECT_EQ(CountTroubles(*database), 0U);
    const auto behind = OpenXml([] {
        std::string text = SmallCatalog();
        text.replace(text.find("<table name=\"Alpha\">"), 20, "<table id=\"First\" name=\"Alpha\">");
        return text;
    }());
    EXPECT_TRUE(behind->IsTable("First"));
    EXPECT_FALSE(behind->IsTable("Alpha"));
}

TEST_P(CatalogDocument, BlanksBetweenElements_CarryNoMeaning) {
    std::string xml;
    for (const char unit : SmallCatalog()) {
        if (unit == '\n') {
            xml += "\r\n \t \n  ";
        } else {
            xml += unit;
        }
    }
    const auto database = OpenXml(xml);
    EXPECT_EQ(Dump(*database), Dump(*OpenXml(SmallCatalog())));
    EXPECT_EQ(CountTroubles(*database), 0U);
}

TEST_P(CatalogDocument, EndTagsInsteadOfEmptyElements_AreReadTheSame) {
    std::string xml = SmallCatalog();
    const std::string empty = "<table name=\"Gamma\" />";
    xml.replace(xml.find(empty), empty.size(), "<table name=\"Gamma\"></table>");
    EXPECT_EQ(Dump(*OpenXml(xml)), Dump(*OpenXml(SmallCatalog())));
}

TEST_F(CatalogDocument, RootInAnotherCase_IsKnownToTheWholeReadingOnly) {
    std::string xml = SmallCatalog();
    xml.replace(xml.find("<database>"), 10, "<DataBase>");
    xml.replace(xml.find("</database>"), 11, "</DataBase>");
    WriteBytes(m_folder / "given.xml", xml);
    const auto whole = Open(m_folder / "given.xml", Reading::Whole);
    EXPECT_EQ(whole->GetTableData("Alpha")->size(), 2U);
    EXPECT_EQ(CountTroubles(*whole), 0U);
    const auto sequential = Open(m_folder / "given.xml", Reading::Sequential);
    EXPECT_FALSE(sequential->IsTable("Alpha"));
    EXPECT_TRUE(LogHolds(*sequential, "Invalid xml database file format"));
}

TEST_F(CatalogDocument, ElementsOfOtherNames_AreWalkedByPositionInTheWholeReadingOnly) {
    std::string xml = SmallCatalog();
    for (const char* name : {"header", "body", "structure", "data"}) {
        for (const std::string& tag : {"<" + std::string(name) + ">", "</" + std::string(name) + ">"}) {
            for (std::size_t place = 0; (place = xml.find(tag, place)) != std::string::npos;) {
                xml.insert(place + tag.size() - 1, "X");
            }
        }
    }
    WriteBytes(m_folder / "given.xml", xml);
    const auto whole = Open(m_folder / "given.xml", Reading::Whole);
    EXPECT_EQ(whole->GetTableData("Alpha")->size(), 2U);
    EXPECT_EQ(CountTroubles(*whole), 0U);
    EXPECT_FALSE(Open(m_folder / "given.xml", Reading::Sequential)->IsTable("Alpha"));
}

TEST_F(CatalogDocument, SeveralRoots_AreNoDocument) {
    std::string xml = SmallCatalog();
    xml += SmallCatalog().substr(SmallCatalog().find("<database>"));
    WriteBytes(m_folder / "given.xml", xml);
    const auto database = Open(m_folder / "given.xml", Reading::Whole);
    EXPECT_GE(database->GetTablesCount(), 2);
    EXPECT_LE(database->GetTablesCount(), 5) << "one of them at most";
}

TEST_P(CatalogDocument, BundledCatalogs_OpenWithoutTrouble) {
    for (const char* name : {"european-steel.xml", "materials.xml", "field-types.xml"}) {
        const auto database =
            Open(std::filesystem::path(QUILLET_SOURCE_DIR) / "examples" / "catalogs" / name, GetParam());
        database->LoadTables();
        for (std::size_t i = 0; i < static_cast<std::size_t>(database->GetTablesCount()); ++i) {
            EXPECT_GT(database->GetTableData(i)->size(), 0U) << name << ", " << database->GetTableName(i);
        }
        EXPECT_GE(database->GetTablesCount(), 3) << name;
        EXPECT_EQ(CountTroubles(*database), 0U) << name;
    }
}

TEST_P(CatalogDocument, EuropeanSteel_IsSavedToTheSameBytes) {
    const std::filesystem::path path =
        std::filesystem::path(QUILLET_SOURCE_DIR) / "examples" / "catalogs" / "european-steel.xml";
    const auto database = Open(path, GetParam());
    EXPECT_TRUE(database->Save(Path("copy.xml")));
    EXPECT_TRUE(ReadBytes(m_folder / "copy.xml") == ReadBytes(path));
}

// The first line of a file of shapes names its columns; the first column holds text, the others numbers or
// text.
void FillFromCsv(DbTableInfo& info, const std::filesystem::path& path) {
    std::istringstream lines(ReadBytes(path));
    std::string line;
    const auto split = [&] {
        std::vector<std::string> parts;
        std::istringstream cells(line);
        for (std::string part; std::getline(cells, part, ',');) {
            parts.push_back(part);
        }
        return parts;
    };
    std::getline(lines, line);
    for (const std::string& name : split()) {
        info.GetDescr()->CreateField(CString(name), info.GetDescr()->empty(),
                                     info.GetDescr()->empty() ? DbFieldDescr::Text : DbFieldDescr::Double);
    }
    while (std::getline(lines, line)) {
        const uint64 row = info.GetData()->AddRow();
        const std::vector<std::string> parts = split();
        for (std::size_t i = 0; i < parts.size(); ++i) {
            (*info.GetData())[row][i].SetValue(CComVariant(CString(parts[i])));
        }
    }
}

TEST_P(CatalogDocument, TablesOfRealShapes_ComeBack) {
    const std::filesystem::path folder = std::filesystem::path(QUILLET_SHARED_DATA_DIR) / "steel";
    if (!std::filesystem::exists(folder)) {
        GTEST_SKIP() << "there is no folder " << folder;
    }
    uint64 rows = 0;
    for (const char* name : {"C_shapes", "HP_shapes", "L_shapes", "PIPE_shapes", "W_shapes"}) {
        DbTableInfo* const info = m_database.CreateTable(name, DbTableInfo::Table);
        FillFromCsv(*info, folder / (std::string(name) + ".csv"));
        rows += info->GetData()->size();
    }
    EXPECT_GT(rows, 400U);
    const auto copy = SaveAndOpen();
    EXPECT_EQ(Cell(copy->GetTableData("C_shapes"), 0, 0), "C15X50");
    EXPECT_EQ(Cell(copy->GetTableData("C_shapes"), 0, 2), "14.7");
}

}  // namespace
