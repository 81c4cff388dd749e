#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/CatalogHelpers.h"
#include "support/OtherLocale.h"
#include "support/RecordHelpers.h"
#include "support/Seed.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Table = std::pair<CString, DBACCESS_VECTOR>;

Strings ReportOf(const DbDatabase& database) {
    return Utf8Of(database.ImportReport());
}

DBACCESS_ALL All(const std::vector<Table>& tables) {
    DBACCESS_ALL all;
    all.assign(tables.begin(), tables.end());
    return all;
}

// ---- one table

Table OneOfEachCode() {
    return {
        "T",
        {Record({Column("bool", true), Column("int", 5), IntegerColumn("short", -3), Column("long", -70000L),
                 Column("float", 1.5F), Column("double", 2.5), Column("bytes", BytesOfText("ab")),
                 Column("text", "zażółć"), DBACCESS_COLUMN("nothing")})}};
}

TEST(CopyTableFrom, NewTable_HasAFieldOfTheTypeOfEachColumnOfTheFirstRecord) {
    DbDatabase database;
    database.CopyTableFrom(OneOfEachCode());
    const DbTableDescr& descr = *database.GetTableDescr("T");
    std::vector<unsigned> types;
    for (std::size_t i = 0; i < descr.size(); ++i) {
        types.push_back(descr.at(i)->GetType());
        EXPECT_EQ(descr.at(i)->GetIndex(), static_cast<int>(i));
        EXPECT_FALSE(descr.at(i)->IsKey());
    }
    EXPECT_THAT(types,
                ElementsAre(VT_BOOL, VT_BOOL, VT_I4, VT_I4, VT_R4, VT_R8, ByteArrayType, VT_BSTR, VT_EMPTY));
    EXPECT_THAT(FieldNames(database, "T"),
                ElementsAre("bool", "int", "short", "long", "float", "double", "bytes", "text", "nothing"));
    EXPECT_EQ(ContentOf(descr.GetField("bytes").GetVariant()), (ArrayContent{1, std::string(1, '\0')}));
    EXPECT_EQ(database.GetTableInfo("T")->GetType(), DbTableInfo::Table);
    EXPECT_TRUE(database.GetTableInfo("T")->GetSql().IsEmpty());
}

TEST(CopyTableFrom, Values_HaveTheTypesOfTheirCodes) {
    DbDatabase database;
    database.CopyTableFrom(OneOfEachCode());
    const DbTableRow& row = *database.GetTableData("T")->GetRow(0);
    EXPECT_EQ(row[0].GetVariant().boolVal, VARIANT_TRUE);
    EXPECT_EQ(row[1].GetVariant().boolVal, VARIANT_FALSE) << "5 is not exactly 1";
    EXPECT_EQ(row[1].GetType(), VT_BOOL);
    EXPECT_EQ(row[2].GetVariant().lVal, -3);
    EXPECT_EQ(row[2].GetType(), VT_I4);
    EXPECT_EQ(row[3].GetVariant().lVal, -70000);
    EXPECT_EQ(row[4].GetVariant().fltVal, 1.5F);
    EXPECT_EQ(row[5].GetVariant().dblVal, 2.5);
    EXPECT_EQ(ContentOf(row[6].GetVariant()), (ArrayContent{0, "ab"}));
    EXPECT_EQ(TextOf(row[7].GetVariant()), "zażółć");
    EXPECT_EQ(row[8].GetType(), VT_EMPTY);
    EXPECT_EQ(row.GetDescr(), database.GetTableDescr("T"));
}

TEST(CopyTableFrom, TakesTheFieldsOfTheFirstRecordOnly_AndEachValueAsItComes) {
    DbDatabase database;
    database.CopyTableFrom(Table("T", {Record({Column("a", 1L)}), Record({Column("other", "text")})}));
    EXPECT_THAT(FieldNames(database, "T"), ElementsAre("a"));
    EXPECT_EQ(database.GetTableDescr("T")->at(0)->GetType(), VT_I4);
    EXPECT_EQ(database.GetTableData("T")->GetRow(1)->GetField(0).GetType(), VT_BSTR);
}

TEST(CopyTableFrom, NoRecords_MakesATableWithoutFields) {
    DbDatabase database;
    database.CopyTableFrom(Table("T", {}));
    EXPECT_THAT(TableNames(database), ElementsAre("T"));
    EXPECT_EQ(database.GetTableDescr("T")->size(), 0U);
    EXPECT_EQ(database.GetTableData("T")->size(), 0U);
}

TEST(CopyTableFrom, FieldsOfOneName_AreBothThere) {
    DbDatabase database;
    database.CopyTableFrom(Table("T", {Record({Column("a", 1L), Column("A", "x")})}));
    EXPECT_THAT(FieldNames(database, "T"), ElementsAre("a", "A"));
    EXPECT_THAT(RowsOf(database, "T"), ElementsAre("1 x"));
}

TEST(CopyTableFrom, KnownTable_KeepsItsFieldsAndLosesItsRows) {
    DbDatabase database;
    database.CopyTableFrom(TextTable("T", "a", {"old", "older"}));
    database.CopyTableFrom(Table("t", {Record({Column("b", 5L)})}));
    EXPECT_THAT(TableNames(database), ElementsAre("T"));
    EXPECT_THAT(FieldNames(database, "T"), ElementsAre("a"));
    EXPECT_EQ(database.GetTableDescr("T")->at(0)->GetType(), VT_BSTR);
    EXPECT_THAT(RowsOf(database, "T"), ElementsAre("5"));
    EXPECT_EQ(database.GetTableData("T")->GetRow(0)->GetField(0).GetType(), VT_I4) << "the record's type";
}

TEST(CopyTableFrom, FewerColumnsThanFields_LeaveTheirDefaults) {
    DbDatabase database;
    database.CopyTableFrom(
        Table("T", {Record({Column("a", "x"), Column("b", 5L)}), Record({Column("a", "y")})}));
    EXPECT_THAT(RowsOf(database, "T"), ElementsAre("x 5", "y 0"));
}

TEST(CopyTableFrom, MoreColumnsThanFields_LoseTheSurplusWithOneLine) {
    DbDatabase database;
    const DBACCESS_RECORD wide = Record({Column("a", "x"), Column("b", "surplus")});
    database.CopyTableFrom(Table("T", {Record({Column("a", "v")}), wide, wide}));
    EXPECT_THAT(RowsOf(database, "T"), ElementsAre("v", "x", "x"));
    const Strings lines = TakeLog(database);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[1],
                HasSubstr("Table 'T' has records with more columns than its 1 fields: 2, the first is "
                          "record 2"));
}

TEST(CopyTableFrom, WithoutRows_MakesFieldsAndNoRowAndAReportLine) {
    DbDatabase database;
    database.CopyTableFrom(TableWithoutRows("T", "a"));
    EXPECT_THAT(FieldNames(database, "T"), ElementsAre("a"));
    EXPECT_EQ(database.GetTableData("T")->size(), 0U);
    EXPECT_THAT(ReportOf(database), ElementsAre("table 'T' found in ''"));
}

TEST(CopyTableFrom, WithoutRows_OntoAKnownTable_EmptiesIt) {
    DbDatabase database;
    database.CopyTableFrom(TextTable("T", "a", {"old"}));
    database.CopyTableFrom(TableWithoutRows("T", "b"));
    EXPECT_THAT(FieldNames(database, "T"), ElementsAre("a"));
    EXPECT_EQ(database.GetTableData("T")->size(), 0U);
    EXPECT_EQ(ReportOf(database).size(), 1U);
}

TEST(CopyTableFrom, WithoutRows_RemarksStandBetweenBraces) {
    const TemporaryFolder folder;
    WriteBytes(folder / "small.xml", SmallCatalog());
    DbDatabase database{CString(Utf8(folder / "small.xml"))};
    Table table = TableWithoutRows("T", "a");
    table.second.m_remarks = Names({"one", "two"});
    database.CopyTableFrom(table);
    EXPECT_THAT(ReportOf(database), ElementsAre("table 'T' found in '" + Utf8(folder / "small.xml") + "'",
                                                "{", "   one", "   two", "}"));
    database.GetSource()->SetFile("", false);
}

TEST(CopyTableFrom, WithRows_ReportsNothing) {
    DbDatabase database;
    Table table = TextTable("T", "a", {"x"});
    table.second.m_remarks = Names({"one"});
    database.CopyTableFrom(table);
    EXPECT_THAT(ReportOf(database), IsEmpty());
}

TEST(ImportReport, HoldsTheLinesOfAllCopiesInTheirOrderAsLongAsTheDatabaseLives) {
    DbDatabase database;
    const DbDatabase& fixed = database;
    EXPECT_THAT(fixed.ImportReport(), IsEmpty());
    database.CopyTableFrom(TableWithoutRows("Second", "a"));
    database.CopyTableFrom(TextTable("Rows", "a", {"x"}));
    database.CopyFrom(All({TableWithoutRows("First", "a")}));
    const std::vector<CString>& report = fixed.ImportReport();
    EXPECT_THAT(report,
                ElementsAre(CString("table 'Second' found in ''"), CString("table 'First' found in ''")));
    database.ClearLog();
    database.DeleteTable("First");
    EXPECT_EQ(fixed.ImportReport().size(), 2U) << "it is no part of the log, and tables come and go";
    EXPECT_EQ(&fixed.ImportReport(), &report);
}

TEST(CopyTableFrom, RecordsThatJoinedATableWithoutRows_AreRows) {
    DbDatabase database;
    Table table = TextTable("T", "a", {"one", "two"});
    table.second.m_noRows = true;
    database.CopyTableFrom(table);
    EXPECT_THAT(RowsOf(database, "T"), ElementsAre("one", "two"));
    EXPECT_EQ(ReportOf(database).size(), 1U);
}

TEST(CopyTableFrom, Changes_TheDatabase) {
    DbDatabase database;
    database.CopyTableFrom(TextTable("T", "a", {"x"}));
    database.Sync();
    database.CopyTableFrom(TextTable("T", "a", {"x"}));
    EXPECT_TRUE(database.IsChanged());
    EXPECT_TRUE(database.GetTableData("T")->GetRow(0)->GetField(0).IsChanged());
}

TEST(CopyTableFrom, Index_CopiesThatTable_AndNothingOutOfRange) {
    DbDatabase database;
    const DBACCESS_ALL all = All({TextTable("A", "a", {"x"}), TextTable("B", "b", {"y"})});
    database.CopyTableFrom(all, 2);
    database.CopyTableFrom(all, -1);
    EXPECT_EQ(database.GetTablesCount(), 0);
    database.CopyTableFrom(all, 1);
    EXPECT_THAT(TableNames(database), ElementsAre("B"));
}

TEST(CopyTableFrom, RowsThatStillStandInTheFile_DoNotComeBack) {
    for (const Reading reading : {Reading::Whole, Reading::Sequential}) {
        const TemporaryFolder folder;
        WriteBytes(folder / "small.xml", SmallCatalog());
        const auto database = Open(folder / "small.xml", reading);
        database->CopyTableFrom(Table("Beta", {Record({Column("size", 7.5)})}));
        EXPECT_THAT(RowsOf(*database, "Beta"), ElementsAre("7.5"));
        EXPECT_THAT(RowsOf(*database, "Alpha"), ElementsAre("one 1", "two 2"));
        database->GetSource()->SetFile("", false);
    }
}

TEST(CopyTableFrom, ThenGetTable_GivesTheValuesBack) {
    DbDatabase database;
    const Table table = OneOfEachCode();
    database.CopyTableFrom(table);
    DBACCESS_VECTOR rows;
    database.GetTable("T", rows);
    ASSERT_EQ(rows.size(), 1U);
    ASSERT_EQ(rows[0].size(), table.second[0].size());
    for (std::size_t i = 0; i < rows[0].size(); ++i) {
        EXPECT_EQ(rows[0][i].m_name, table.second[0][i].m_name);
    }
    EXPECT_EQ(rows[0].GetBool("bool"), 1);
    EXPECT_EQ(rows[0].GetBool("int"), 0);
    EXPECT_EQ(rows[0].GetLong("short"), -3) << "a 32-bit integer in the database";
    EXPECT_EQ(rows[0].GetLong("long"), -70000);
    EXPECT_EQ(rows[0].GetFloat("float"), 1.5F);
    EXPECT_EQ(rows[0].GetDouble("double"), 2.5);
    EXPECT_EQ(rows[0].GetBinary("bytes"), BytesOfText("ab"));
    EXPECT_EQ(rows[0].GetString("text"), CString("zażółć"));
    EXPECT_EQ(rows[0].find("nothing").m_type, 0);
}

// ---- the language of texts

// Whether copying the tables converts a text under a language: the locale is "C" then.
bool UsesALanguage(const std::vector<Table>& tables) {
    const OtherLocale locale;
    DbDatabase database;
    for (const Table& table : tables) {
        database.CopyTableFrom(table);
    }
    EXPECT_EQ(LangMappings::Instance().Current(), nullptr) << "reset at the end of each table";
    return !locale.IsUnchanged();
}

TEST(CopyTableFrom, Language_IsThatOfTheTablesName) {
    EXPECT_TRUE(UsesALanguage({TextTable("desc_48", "a", {"text"})}));
    EXPECT_FALSE(UsesALanguage({TextTable("T", "a", {"text"})}));
    EXPECT_FALSE(UsesALanguage({TextTable("desc_48", "a", {""})}));
}

TEST(CopyTableFrom, Language_IsThatOfTheFieldsName) {
    EXPECT_TRUE(UsesALanguage({TextTable("T", "DESC_48", {"text"})}));
}

TEST(CopyTableFrom, Language_OfAField_StaysForTheFieldsBehindItAndTheRowsBelow) {
    const auto row = [](const char* before, const char* behind) {
        return Record({Column("a", before), Column("desc_48", ""), Column("b", behind)});
    };
    EXPECT_TRUE(UsesALanguage({{"T", {row("", "text")}}}));
    EXPECT_FALSE(UsesALanguage({{"T", {row("text", "")}}}));
    EXPECT_TRUE(UsesALanguage({{"T", {row("", ""), row("text", "")}}}));
}

TEST(CopyTableFrom, Language_IsResetAtTheEndOfTheTable) {
    EXPECT_FALSE(UsesALanguage({TextTable("desc_48", "a", {""}), TextTable("T", "a", {"text"})}));
    EXPECT_FALSE(UsesALanguage({TableWithoutRows("desc_48", "a"), TextTable("T", "a", {"text"})}));
}

TEST(CopyTableFrom, Language_FollowsTheStepsOneByOne) {
    // The documented steps: select by the table, by each field of each row, convert.
    const auto literal = [](const std::vector<Table>& tables) {
        const OtherLocale locale;
        LangMappings mappings;
        CComVariant value;
        for (const auto& [name, records] : tables) {
            mappings.Select(name);
            for (const DBACCESS_RECORD& record : records) {
                for (const DBACCESS_COLUMN& column : record) {
                    mappings.Select(column.m_name);
                    mappings.Convert(column, value);
                }
            }
            mappings.Reset();
        }
        return !locale.IsUnchanged();
    };
    const char* const names[] = {"a", "b", "Desc_40", "c", "d", "desc_48", "Cfr0", "e"};
    const char* const texts[] = {"", "", "", "", "text"};
    std::mt19937 random(quillet::test::Seed(19991231));
    int languages = 0;
    for (int round = 0; round < 300; ++round) {
        std::vector<Table> tables;
        for (const char* table : {"T", "U"}) {
            const std::size_t fields = random() % 3 + 1;
            std::vector<const char*> fieldNames;
            for (std::size_t i = 0; i < fields; ++i) {
                fieldNames.push_back(names[random() % std::size(names)]);
            }
            tables.emplace_back(table, DBACCESS_VECTOR());
            for (std::size_t i = random() % 3; i > 0; --i) {
                DBACCESS_RECORD& record = tables.back().second.emplace_back();
                for (const char* field : fieldNames) {
                    record.push_back(Column(field, texts[random() % std::size(texts)]));
                }
            }
        }
        const bool expected = literal(tables);
        ASSERT_EQ(UsesALanguage(tables), expected) << round;
        languages += expected ? 1 : 0;
    }
    EXPECT_GT(languages, 20);
    EXPECT_LT(languages, 280);
}

// ---- all tables

TEST(CopyFrom, HeaderAndProperties_ComeFirstWhereverTheyStand) {
    DbDatabase database;
    database.CopyFrom(All({TextTable("A", "a", {"x"}), TextTable("PROPERTIES", "units", {"metric"}),
                           TextTable("B", "b", {"y"}), TextTable("header", "title", {"Steel"})}));
    EXPECT_THAT(TableNames(database), ElementsAre("header", "PROPERTIES", "A", "B"));
    EXPECT_THAT(RowsOf(database, "Header"), ElementsAre("Steel"));
    EXPECT_THAT(FieldNames(database, "Properties"), ElementsAre("units"));
}

TEST(CopyFrom, WithoutHeaderAndProperties_MakesBothWithOneEmptyRowEach) {
    DbDatabase database;
    database.CopyFrom(All({TextTable("A", "a", {"x"})}));
    EXPECT_THAT(TableNames(database), ElementsAre("Header", "Properties", "A"));
    EXPECT_EQ(database.GetTableDescr("Header")->size(), 6U);
    EXPECT_EQ(database.GetTableData("Header")->size(), 1U);
    EXPECT_EQ(database.GetTableData("Properties")->size(), 1U);
}

TEST(CopyFrom, WithPropertiesOnly_MakesTheHeaderBeforeThem) {
    DbDatabase database;
    database.CopyFrom(All({TextTable("Properties", "units", {"metric"})}));
    EXPECT_THAT(TableNames(database), ElementsAre("Header", "Properties"));
    EXPECT_THAT(RowsOf(database, "Properties"), ElementsAre("metric"));
}

TEST(CopyFrom, HeaderOfTheDatabase_StaysWhereTheRecordsHaveNone) {
    DbDatabase database;
    database.CopyFrom(All({TextTable("Header", "title", {"Steel"})}));
    database.CopyFrom(All({TextTable("A", "a", {"x"})}));
    EXPECT_THAT(RowsOf(database, "Header"), ElementsAre("Steel"));
}

TEST(CopyFrom, NoTables_LeavesAnEmptyCatalog) {
    DbDatabase database;
    database.CopyFrom({});
    EXPECT_THAT(TableNames(database), ElementsAre("Header", "Properties"));
    EXPECT_TRUE(database.IsChanged());
}

TEST(CopyFrom, IntoAnOpenCatalog_AddsAndReplacesTables) {
    for (const Reading reading : {Reading::Whole, Reading::Sequential}) {
        const TemporaryFolder folder;
        WriteBytes(folder / "small.xml", SmallCatalog());
        const auto database = Open(folder / "small.xml", reading);
        database->CopyFrom(
            All({TextTable("New", "a", {"x"}), Table("beta", {Record({Column("size", 7.5)})})}));
        EXPECT_THAT(TableNames(*database),
                    ElementsAre("Header", "Properties", "Alpha", "Beta", "Gamma", "New"));
        EXPECT_THAT(RowsOf(*database, "Alpha"), ElementsAre("one 1", "two 2"));
        EXPECT_THAT(RowsOf(*database, "Beta"), ElementsAre("7.5"));
        database->GetSource()->SetFile("", false);
    }
}

TEST(CopyFrom, ManyRows_AllArrive) {
    Table table("T", {});
    for (int i = 0; i < 20000; ++i) {
        table.second.push_back(Record({Column("a", static_cast<long>(i)), Column("desc_48", "opis")}));
    }
    DbDatabase database;
    database.CopyTableFrom(table);
    ASSERT_EQ(database.GetTableData("T")->size(), 20000U);
    EXPECT_EQ(Cell(database.GetTableData("T"), 19999, 0), "19999");
    EXPECT_EQ(Cell(database.GetTableData("T"), 19999, 1), "opis");
}

}  // namespace
