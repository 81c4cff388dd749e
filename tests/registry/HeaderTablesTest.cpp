#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/ReadingTest.h"

namespace {

using namespace quillet::test;
using testing::ElementsAre;
using testing::HasSubstr;

class HeaderTables : public ReadingTest {};

INSTANTIATE_TEST_SUITE_P(, HeaderTables, testing::Values(Reading::Whole, Reading::Sequential), ReadingName);

std::vector<std::string> Fields(const DbTableDescr& descr) {
    std::vector<std::string> names;
    for (const DbFieldDescr* const field : descr) {
        EXPECT_EQ(field->GetDbType(), DbFieldDescr::Text);
        EXPECT_FALSE(field->IsKey());
        names.push_back(field->GetName().ToUtf8());
    }
    return names;
}

void ExpectDefaultTables(DbDatabase& database) {
    EXPECT_EQ(database.GetTableInfo("header")->GetName(), "Header");
    EXPECT_EQ(database.GetTableInfo("properties")->GetName(), "Properties");
    EXPECT_THAT(Fields(*database.GetTableDescr("header")),
                ElementsAre("category", "symbol", "title", "catalog_type", "units_type", "version"));
    EXPECT_THAT(Fields(*database.GetTableDescr("properties")),
                ElementsAre("units", "unit_long", "unit_sect", "unit_weight", "material"));
    for (const char* name : {"Header", "Properties"}) {
        DbTableData* const data = database.GetTableData(name);
        EXPECT_EQ(database.GetTableInfo(name)->GetType(), DbTableInfo::Table);
        EXPECT_TRUE(database.GetTableInfo(name)->GetSql().IsEmpty());
        ASSERT_EQ(data->size(), 1U);
        for (const DbFieldValue* const cell : (*data)[0]) {
            EXPECT_EQ(cell->GetType(), VT_BSTR);
            EXPECT_EQ(CellText(*cell), "");
        }
    }
}

TEST_F(HeaderTables, Create_MakesBothWithOneEmptyRow) {
    DbDatabase database;
    database.Create(Path("new.xml"));
    EXPECT_EQ(database.GetTablesCount(), 2);
    EXPECT_EQ(database.GetTableInfo("Header")->GetIndex(), 0U);
    EXPECT_EQ(database.GetTableInfo("Properties")->GetIndex(), 1U);
    ExpectDefaultTables(database);
    EXPECT_EQ(database.GetHeaderDescr(), database.GetTableDescr("Header"));
    EXPECT_EQ(database.GetHeaderData(), database.GetTableData("Header"));
    EXPECT_THAT(TakeLog(database),
                ElementsAre("Table 'Header' created, index = 0, type = TABLE, sql = ''",
                            "Table 'Properties' created, index = 1, type = TABLE, sql = ''"));
}

TEST_P(HeaderTables, FileWithoutThem_GetsThemAndCountsAsUnchanged) {
    CatalogParts parts;
    parts.m_headerStructure = "";
    parts.m_headerData = "";
    const auto database = OpenXml(parts.Xml());
    EXPECT_THAT(TableNames(*database), ElementsAre("Header", "Properties"));
    ExpectDefaultTables(*database);
    EXPECT_FALSE(database->IsChanged());
}

TEST_P(HeaderTables, FileWithThem_KeepsItsOwnFields) {
    const auto database = OpenXml(SmallCatalog());
    EXPECT_THAT(Fields(*database->GetTableDescr("Header")), ElementsAre("title"));
    EXPECT_THAT(Fields(*database->GetTableDescr("Properties")), ElementsAre("units"));
    EXPECT_EQ(Cell(database->GetTableData("Header"), 0, 0), "Small");
    EXPECT_EQ(database->GetTableData("Header")->size(), 1U);
}

TEST_P(HeaderTables, FileWithLowerCaseNames_GetsNoSecondOnes) {
    CatalogParts parts = SmallParts();
    parts.m_headerStructure =
        TableXml("header", FieldXml("title", TextType)) + TableXml("PROPERTIES", FieldXml("units", TextType));
    parts.m_headerData =
        TableXml("header", "<row title=\"t\" />\n") + TableXml("PROPERTIES", "<row units=\"mm\" />\n");
    const auto database = OpenXml(parts.Xml());
    EXPECT_THAT(TableNames(*database), ElementsAre("header", "PROPERTIES", "Alpha", "Beta", "Gamma"));
    EXPECT_EQ(Cell(database->GetTableData("Header"), 0, 0), "t");
    EXPECT_EQ(CountTroubles(*database), 0U);
}

TEST_P(HeaderTables, PropertiesDeletedThenSaved_AreMadeAnewInTheBody) {
    const auto database = OpenXml(SmallCatalog());
    database->DeleteTable("properties");
    EXPECT_TRUE(database->Save(Path("copy.xml")));
    EXPECT_FALSE(database->IsChanged());
    EXPECT_THAT(TableNames(*database), ElementsAre("Header", "Alpha", "Beta", "Gamma", "Properties"));
    EXPECT_EQ(database->GetTableData("Properties")->size(), 1U);
    EXPECT_EQ(database->GetTableDescr("Properties")->size(), 5U);
    const std::string saved = ReadBytes(m_folder / "copy.xml");
    EXPECT_THAT(saved.substr(0, saved.find("</header>")),
                HasSubstr("<table name=\"Alpha\">\n<row name=\"one\""));
    EXPECT_THAT(saved.substr(saved.find("<body>")),
                HasSubstr("<table name=\"Properties\">\n<row units=\"\" unit_long=\"\""));
}

TEST_P(HeaderTables, HeaderDeletedThenSaved_IsMadeAnewBehindTheOthers) {
    const auto database = OpenXml(SmallCatalog());
    database->DeleteTable("Header");
    EXPECT_EQ(database->GetHeaderData(), database->GetTableData("Properties"))
        << "it is the first that counts";
    EXPECT_TRUE(database->Save(Path("copy.xml")));
    EXPECT_THAT(TableNames(*database), ElementsAre("Properties", "Alpha", "Beta", "Gamma", "Header"));
    DbDatabase copy(Path("copy.xml"));
    EXPECT_THAT(TableNames(copy), ElementsAre("Properties", "Alpha", "Beta", "Gamma", "Header"));
}

TEST_P(HeaderTables, PropertiesThatStandInTheBody_KeepTheirRowsWhenReadAgain) {
    {
        const auto database = OpenXml(SmallCatalog());
        database->DeleteTable("Properties");
        EXPECT_TRUE(database->Save(Path("given.xml")));
        database->GetTableData("Properties")->GetRow(0)->SetValue("units", CString("inch"));
        EXPECT_TRUE(database->Save(Path("given.xml")));
    }
    const auto database = Open(m_folder / "given.xml", GetParam());
    ASSERT_EQ(database->GetTableData("Properties")->size(), 1U);
    EXPECT_EQ(Cell(database->GetTableData("Properties"), 0, 0), "inch");
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
    EXPECT_EQ(database->GetTableData("Beta")->size(), 1U);
    EXPECT_EQ(CountTroubles(*database), 0U) << "the library wrote this file";
    database->DeleteTable("Gamma");
    EXPECT_TRUE(database->Save(Path("copy.xml")));
    EXPECT_THAT(ReadBytes(m_folder / "copy.xml"), HasSubstr("<row units=\"inch\""));
}

TEST_P(HeaderTables, RenamedHeader_GetsASecondOneWhenSaved) {
    const auto database = OpenXml(SmallCatalog());
    EXPECT_TRUE(database->RenameTable("Header", "Title"));
    EXPECT_TRUE(database->Save(Path("copy.xml")));
    EXPECT_THAT(TableNames(*database),
                ElementsAre("Title", "Properties", "Alpha", "Beta", "Gamma", "Header"));
}

TEST_P(HeaderTables, ClearedHeader_IsSavedWithoutFieldsAndRows) {
    const auto database = OpenXml(SmallCatalog());
    database->ClearTable("Header");
    EXPECT_TRUE(database->Save(Path("copy.xml")));
    EXPECT_THAT(ReadBytes(m_folder / "copy.xml"), HasSubstr("<structure>\n<table name=\"Header\" />\n"));
    EXPECT_EQ(DbDatabase(Path("copy.xml")).GetTableDescr("Header")->size(), 0U);
}

}  // namespace
