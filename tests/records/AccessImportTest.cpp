// Real Access files, read through their driver into records and into a database.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <sstream>
#include <string>

#include "support/AccessHelpers.h"
#include "support/CatalogHelpers.h"
#include "support/OtherLocale.h"
#include "support/RecordHelpers.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;
using testing::ElementsAre;
using testing::IsEmpty;

Strings ReportOf(const DbDatabase& database) {
    return Utf8Of(database.ImportReport());
}

// ---- steel shapes

// Names that end in .mdb mean Access files here, not documents.
class SteelImport : public SharedFileTest {
protected:
    SteelImport() : SharedFileTest("aisc.mdb") { DbSource::ForceXML = false; }

private:
    StaticsGuard m_statics;
};

const char* const Shapes[] = {"W",  "M",  "S",  "HP",    "C",   "MC",    "L",
                              "WT", "MT", "ST", "DBL_L", "HSS", "HSS_R", "PIPE"};

std::vector<Strings> CsvOf(const std::filesystem::path& path) {
    std::istringstream lines(ReadBytes(path));
    std::vector<Strings> rows;
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        std::istringstream cells(line);
        rows.emplace_back();
        for (std::string cell; std::getline(cells, cell, ',');) {
            rows.back().push_back(cell);
        }
    }
    return rows;
}

// Access names are case-insensitive: the second of two is numbered in the file.
Strings WithoutRepetitions(Strings names) {
    for (auto name = names.begin(); name != names.end(); ++name) {
        const bool isTaken = std::any_of(names.begin(), name, [&](const std::string& earlier) {
            return CString(earlier).CompareNoCase(*name) == 0;
        });
        *name += isTaken ? "_2" : "";
    }
    return names;
}

// A dash (U+2013) stands for nothing, which is a zero or an empty text.
const std::string Dash = "–";

// Whether the cell has the value of the text.
bool IsValueOf(const CComVariant& cell, const std::string& text) {
    if (cell.vt == VT_BSTR) {
        return TextOf(cell) == (text == Dash ? "" : text);
    }
    double number = 0;
    if (text != Dash) {
        const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
        EXPECT_EQ(end.ptr, text.data() + text.size()) << text;
    }
    return cell.vt == VT_R8 && cell.dblVal == number;
}

TEST_F(SteelImport, EveryRowEqualsThePublishedOne) {
    DbDatabase database(File());
    uint64 total = 0;
    int dashes = 0;
    for (const char* shape : Shapes) {
        const std::vector<Strings> rows =
            CsvOf(SharedDatabase("steel") / (std::string(shape) + "_shapes.csv"));
        ASSERT_GT(rows.size(), 1U) << shape;
        EXPECT_EQ(FieldNames(database, shape), WithoutRepetitions(rows[0]));
        DbTableData* const data = database.GetTableData(shape);
        ASSERT_NE(data, nullptr) << shape;
        ASSERT_EQ(data->size(), rows.size() - 1) << shape;
        for (std::size_t row = 1; row < rows.size(); ++row) {
            const DbTableRow& cells = *data->GetRow(static_cast<int>(row - 1));
            ASSERT_EQ(cells.size(), rows[row].size()) << shape << " row " << row;
            for (std::size_t i = 0; i < cells.size(); ++i) {
                EXPECT_TRUE(IsValueOf(cells[i].GetVariant(), rows[row][i]))
                    << shape << " row " << row << " field " << i << ": " << rows[row][i];
                dashes += rows[row][i] == Dash ? 1 : 0;
            }
        }
        total += data->size();
    }
    EXPECT_EQ(total, 2299U);
    EXPECT_GT(dashes, 0);
    EXPECT_THAT(m_messages.m_texts, IsEmpty());
}

TEST_F(SteelImport, HeaderAndPropertiesComeFirst_ThoughTheyStandLastInTheFile) {
    DbDatabase database(File());
    EXPECT_EQ(database.GetTablesCount(), 16);
    EXPECT_EQ(database.GetTableName(0), CString("Header"));
    EXPECT_EQ(database.GetTableName(1), CString("Properties"));
    EXPECT_EQ(database.GetTableName(2), CString("W"));
    EXPECT_EQ(database.GetTableName(15), CString("PIPE"));
    EXPECT_THAT(RowsOf(database, "Header"),
                ElementsAre("sections AISC American steel shapes profiles imperial 1.0"));
    EXPECT_THAT(RowsOf(database, "Properties"), ElementsAre("imperial ft in lb/ft steel A992"));
    DBACCESS_ALL all;
    EXPECT_TRUE(DbSerializer::Load(File(), all));
    EXPECT_EQ(all.back().first, CString("Header"));
    EXPECT_EQ(all[14].first, CString("Properties"));
}

TEST_F(SteelImport, LogsTheFileFirstAndCountsAsUnchanged) {
    DbDatabase database(File());
    EXPECT_EQ(database.GetErrorLog(), CString()) << "nothing is read before the first question";
    EXPECT_EQ(database.GetTablesCount(), 16);
    EXPECT_FALSE(database.IsChanged());
    const Strings lines = TakeLog(database);
    ASSERT_EQ(lines.size(), 17U);
    EXPECT_EQ(lines[0], "Importing mdb file '" + Utf8(m_path) + "'");
    EXPECT_EQ(lines[1], "Table 'Header' created, index = 0, type = TABLE, sql = ''");
    EXPECT_FALSE(DBACCESS::m_forceExtractTableDefiniton);
    EXPECT_EQ(LangMappings::Instance().Current(), nullptr);
}

TEST_F(SteelImport, OnceOnly) {
    DbDatabase database(File());
    database.LoadTables();
    TakeLog(database);
    EXPECT_EQ(database.GetTableData("W")->size(), 289U);
    database.LoadTables();
    EXPECT_THAT(TakeLog(database), IsEmpty());
}

TEST_F(SteelImport, AnswersQueries) {
    DbDatabase database(File());
    CString name;
    ASSERT_TRUE(database.Query("select shape from W where weight > 900", name));
    EXPECT_GT(database.GetTableData(name)->size(), 0U);
}

TEST_F(SteelImport, SaveAsADocument_KeepsEveryCell) {
    DbDatabase database(File());
    const CString path(Utf8(m_folder / "aisc.xml"));
    ASSERT_TRUE(database.Save(path));
    DbDatabase copy(path);
    for (const char* shape : Shapes) {
        EXPECT_EQ(RowsOf(copy, shape), RowsOf(database, shape)) << shape;
    }
    EXPECT_EQ(RowsOf(copy, "Header"), RowsOf(database, "Header"));
}

TEST_F(SteelImport, ChangedDatabase_WritesNothingWhenItIsDestroyed) {
    const std::string bytes = ReadBytes(m_path);
    WriteBytes(m_folder / "copy.mdb", bytes);
    {
        DbDatabase database(CString(Utf8(m_folder / "copy.mdb")));
        database.GetTableData("W")->DeleteRow(0);
        EXPECT_TRUE(database.IsChanged());
        EXPECT_FALSE(database.Save(CString(Utf8(m_folder / "copy.mdb"))));
    }
    EXPECT_EQ(ReadBytes(m_folder / "copy.mdb"), bytes);
}

// ---- a column of every kind

// Names that end in .mdb mean Access files here, not documents.
class TypesImport : public SharedFileTest {
protected:
    TypesImport() : SharedFileTest("types.mdb") { DbSource::ForceXML = false; }

private:
    StaticsGuard m_statics;
};

enum Column : std::size_t { Bool, Byte, Short16, Long32, Single, Real, Text, Memo, Date, Binary, Money };

std::vector<int> CodesOf(const DBACCESS_RECORD& record) {
    std::vector<int> codes;
    for (const DBACCESS_COLUMN& column : record) {
        codes.push_back(column.m_type);
    }
    return codes;
}

TEST_F(TypesImport, Load_EachKind_HasItsCodeAndValue) {
    DBACCESS_ALL all;
    ASSERT_TRUE(DbSerializer::Load(File(), all));
    ASSERT_EQ(all.size(), 3U);
    for (const std::size_t table : {0U, 2U}) {
        const DBACCESS_VECTOR& rows = all[table].second;
        ASSERT_EQ(rows.size(), 4U);
        EXPECT_THAT(CodesOf(rows[0]), ElementsAre(1, 0, 3, 4, 6, 7, 10, 10, 0, 9, 10));
        EXPECT_EQ(rows[0].GetBool("a bool"), 1);
        EXPECT_EQ(rows[0].GetInt("an_int"), -1234);
        EXPECT_EQ(rows[0].GetLong("a_long"), 123456789);
        EXPECT_EQ(rows[0].GetFloat("a_float"), 1.5F);
        EXPECT_EQ(rows[0].GetDouble("a_double"), -0.00225);
        EXPECT_EQ(rows[0].GetString("a_text"), CString("plain text"));
        EXPECT_EQ(rows[0].GetString("a_memo"), CString("memo one"));
        EXPECT_EQ(rows[0].GetString("a_money"), CString("12.3400"));
        EXPECT_FALSE(rows.m_noRows);
    }
    EXPECT_EQ(all[1].first, CString("no_rows"));
    EXPECT_TRUE(all[1].second.empty());
    EXPECT_TRUE(all[1].second.m_noRows);
    EXPECT_EQ(all[2].first, CString("desc_48"));
}

TEST_F(TypesImport, Load_Extremes_AreExact) {
    DBACCESS_ALL all;
    ASSERT_TRUE(DbSerializer::Load(File(), all));
    const DBACCESS_RECORD& row = all[0].second[1];
    EXPECT_THAT(CodesOf(row), ElementsAre(1, 0, 3, 4, 6, 7, 10, 10, 0, 9, 10));
    EXPECT_EQ(row.GetBool("a bool"), 0);
    EXPECT_EQ(row.GetInt("an_int"), 32767);
    EXPECT_EQ(row.GetLong("a_long"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(row.GetFloat("a_float"), 3.4e38F);
    EXPECT_EQ(row.GetDouble("a_double"), std::numeric_limits<double>::max());
    EXPECT_EQ(row.GetString("a_text"), CString("zażółć gęślą jaźń <&>\"'"));
    EXPECT_EQ(row.GetString("a_memo"), CString("line one\r\nline two"));
    EXPECT_EQ(row.GetString("a_money"), CString("-0.5000"));
}

TEST_F(TypesImport, Load_Nulls_AreZerosOfTheirTypeOrEmptyTexts) {
    DBACCESS_ALL all;
    ASSERT_TRUE(DbSerializer::Load(File(), all));
    const DBACCESS_RECORD& row = all[0].second[2];
    EXPECT_THAT(CodesOf(row), ElementsAre(1, 3, 3, 3, 6, 7, 10, 10, 10, 10, 10))
        << "a NULL long has the code of 16 bits";
    for (const DBACCESS_COLUMN& column : row) {
        EXPECT_EQ(column.m_int, 0);
        EXPECT_EQ(column.m_float, 0.0F);
        EXPECT_EQ(column.m_double, 0.0);
        EXPECT_EQ(column.m_text, CString());
    }
}

TEST_F(TypesImport, Load_WithForcedDefinitions_DescribesTheTableWithoutRows) {
    DBACCESS_ALL all;
    DBACCESS::m_forceExtractTableDefiniton = true;
    const bool loaded = DbSerializer::Load(File(), all);
    DBACCESS::m_forceExtractTableDefiniton = false;
    ASSERT_TRUE(loaded);
    const DBACCESS_VECTOR& rows = all[1].second;
    EXPECT_TRUE(rows.m_noRows);
    ASSERT_EQ(rows.size(), 1U);
    // Types without a zero value take the value of the previous column.
    EXPECT_THAT(CodesOf(rows[0]), ElementsAre(1, 3, 3, 3, 6, 7, 10, 10, 10, 10, 10));
    EXPECT_EQ(rows[0][Bool].m_name, CString("a bool"));
    EXPECT_EQ(rows[0][Money].m_name, CString("a_money"));
}

TEST_F(TypesImport, Fields_HaveTheTypesOfTheFirstRecord) {
    DbDatabase database(File());
    std::vector<unsigned> types;
    for (const DbFieldDescr* const field : *database.GetTableDescr("values")) {
        types.push_back(field->GetType());
    }
    EXPECT_THAT(types, ElementsAre(VT_BOOL, VT_EMPTY, VT_I4, VT_I4, VT_R4, VT_R8, VT_BSTR, VT_BSTR, VT_EMPTY,
                                   ByteArrayType, VT_BSTR));
    EXPECT_THAT(FieldNames(database, "values"),
                ElementsAre("a bool", "a_byte", "an_int", "a_long", "a_float", "a_double", "a_text", "a_memo",
                            "a_date", "a_binary", "a_money"));
}

TEST_F(TypesImport, Values_HaveTheTypesOfTheirCodes) {
    DbDatabase database(File());
    for (const char* table : {"values", "desc_48"}) {
        DbTableData& data = *database.GetTableData(table);
        ASSERT_EQ(data.size(), 4U);
        const DbTableRow& first = data[0];
        EXPECT_EQ(first[Bool].GetVariant().boolVal, VARIANT_TRUE);
        EXPECT_EQ(first[Byte].GetType(), VT_EMPTY);
        EXPECT_EQ(first[Short16].GetVariant().lVal, -1234);
        EXPECT_EQ(first[Short16].GetType(), VT_I4);
        EXPECT_EQ(first[Long32].GetVariant().lVal, 123456789);
        EXPECT_EQ(first[Single].GetVariant().fltVal, 1.5F);
        EXPECT_EQ(first[Real].GetVariant().dblVal, -0.00225);
        EXPECT_EQ(TextOf(first[Text].GetVariant()), "plain text");
        EXPECT_EQ(first[Date].GetType(), VT_EMPTY);
        EXPECT_EQ(first[Binary].GetType(), ByteArrayType);
        EXPECT_EQ(TextOf(first[Money].GetVariant()), "12.3400");
        EXPECT_EQ(TextOf(data[1][Text].GetVariant()), "zażółć gęślą jaźń <&>\"'");
        const DbTableRow& nulls = data[2];
        EXPECT_EQ(nulls[Bool].GetVariant().boolVal, VARIANT_FALSE);
        EXPECT_EQ(nulls[Byte].GetType(), VT_I4);
        EXPECT_EQ(nulls[Long32].GetType(), VT_I4);
        EXPECT_EQ(nulls[Long32].GetVariant().lVal, 0);
        EXPECT_EQ(nulls[Single].GetType(), VT_R4);
        EXPECT_EQ(nulls[Real].GetType(), VT_R8);
        EXPECT_EQ(TextOf(nulls[Memo].GetVariant()), "");
        EXPECT_EQ(TextOf(nulls[Date].GetVariant()), "") << "a NULL date is an empty text";
        EXPECT_EQ(TextOf(nulls[Binary].GetVariant()), "");
    }
}

TEST_F(TypesImport, TableWithoutRows_HasFieldsAndAReportLine) {
    DbDatabase database(File());
    EXPECT_EQ(database.GetTableData("no_rows")->size(), 0U);
    EXPECT_EQ(database.GetTableDescr("no_rows")->size(), 11U);
    EXPECT_EQ(database.GetTableDescr("no_rows")->at(Long32)->GetType(), VT_I4);
    EXPECT_EQ(database.GetTableDescr("no_rows")->at(Date)->GetType(), VT_BSTR);
    EXPECT_THAT(ReportOf(database), ElementsAre("table 'no_rows' found in '" + Utf8(m_path) + "'"));
}

TEST_F(TypesImport, WithoutHeaderAndProperties_MakesBothBeforeTheFirstTable) {
    DbDatabase database(File());
    EXPECT_EQ(database.GetTablesCount(), 5);
    EXPECT_EQ(database.GetTableName(0), CString("Header"));
    EXPECT_EQ(database.GetTableName(1), CString("Properties"));
    EXPECT_EQ(database.GetTableName(2), CString("values"));
    EXPECT_EQ(database.GetTableData("Header")->size(), 1U);
    EXPECT_EQ(database.GetTableData("Properties")->size(), 1U);
}

TEST_F(TypesImport, TableNamedAfterALanguage_LeavesTheCharacterTypeLocaleAtC) {
    const OtherLocale locale;
    DbDatabase database(File());
    EXPECT_EQ(database.GetTablesCount(), 5);
    EXPECT_EQ(OtherLocale::Now(), "C");
}

TEST_F(TypesImport, Truncated_AtEveryPage_NeverFails) {
    const std::string bytes = ReadBytes(m_path);
    constexpr std::size_t Page = 4096;
    for (std::size_t size = 0; size < bytes.size(); size += Page) {
        WriteBytes(m_folder / "cut.mdb", bytes.substr(0, size));
        DbDatabase database(CString(Utf8(m_folder / "cut.mdb")));
        EXPECT_LE(database.GetTablesCount(), 5) << size;
    }
}

// ---- no Access file

class AccessImport : public testing::Test {
protected:
    AccessImport() { DbSource::ForceXML = false; }

    TemporaryFolder m_folder;
    ShownMessages m_messages;

private:
    StaticsGuard m_statics;
};

TEST_F(AccessImport, OfWhatCantBeOpened_IsAnEmptyCatalog) {
    WriteBytes(m_folder / "text.mdb", "this is no Access file");
    WriteBytes(m_folder / "empty.mdb", "");
    for (const char* name : {"text.mdb", "empty.mdb"}) {
        DbDatabase database(CString(Utf8(m_folder / name)));
        EXPECT_EQ(database.GetTablesCount(), 2);
        EXPECT_FALSE(database.IsChanged());
        const Strings lines = TakeLog(database);
        ASSERT_EQ(lines.size(), 3U);
        EXPECT_EQ(lines[0], "Importing mdb file '" + Utf8(m_folder / name) + "'");
        EXPECT_THAT(ReportOf(database), IsEmpty());
    }
    EXPECT_THAT(m_messages.m_texts, IsEmpty()) << "nothing waits for a person";
}

TEST_F(AccessImport, OfADirectory_IsRefusedAsASource) {
    std::filesystem::create_directory(m_folder / "folder.mdb");
    EXPECT_NE(ThrownMessage([&] { DbDatabase database(CString(Utf8(m_folder / "folder.mdb"))); }), "");
}

TEST_F(AccessImport, WithoutTheDriver_IsAnEmptyCatalog) {
    const ConnectFormat format("DBQ=%s;Driver={A driver that nobody has}");
    WriteBytes(m_folder / "steel.mdb", "whatever");
    DbDatabase database(CString(Utf8(m_folder / "steel.mdb")));
    EXPECT_EQ(database.GetTablesCount(), 2);
    EXPECT_EQ(TakeLog(database)[0], "Importing mdb file '" + Utf8(m_folder / "steel.mdb") + "'");
}

}  // namespace
