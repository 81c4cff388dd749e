#include "Quillet/Db_Database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <random>
#include <stdexcept>
#include <type_traits>

#include "Quillet/platform/MessageBox.h"
#include "Quillet/xml/Document.h"
#include "Quillet/xml/Face.h"
#include "support/CatalogHelpers.h"
#include "support/DispatchStub.h"
#include "support/RegexMatchers.h"
#include "support/Seed.h"

namespace {

using namespace quillet::test;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

static_assert(!std::is_copy_constructible_v<DbDatabase>);
static_assert(!std::is_copy_assignable_v<DbDatabase>);

class DbDatabaseTest : public testing::Test {
protected:
    CString Path(const std::string& name) { return CString(Utf8(m_folder / name)); }
    CString File(const std::string& name, const std::string& content) {
        WriteBytes(m_folder / name, content);
        return Path(name);
    }
    std::string Bytes(const std::string& name) { return ReadBytes(m_folder / name); }
    bool Exists(const std::string& name) { return std::filesystem::exists(m_folder / name); }
    std::unique_ptr<DbDatabase> OpenSmall(Reading reading) {
        File("small.xml", SmallCatalog());
        return Open(m_folder / "small.xml", reading);
    }

    StaticsGuard m_statics;
    TemporaryFolder m_folder;
};

// Tests for both ways of reading the file.
class DbDatabaseReading : public DbDatabaseTest, public testing::WithParamInterface<Reading> {
protected:
    std::unique_ptr<DbDatabase> OpenSmall() { return DbDatabaseTest::OpenSmall(GetParam()); }
    std::unique_ptr<DbDatabase> OpenXml(const std::string& xml) {
        File("given.xml", xml);
        return Open(m_folder / "given.xml", GetParam());
    }
};

INSTANTIATE_TEST_SUITE_P(, DbDatabaseReading, testing::Values(Reading::Whole, Reading::Sequential),
                         ReadingName);

DbTableInfo* AddTable(DbDatabase& database, const CString& name) {
    return database.CreateTable(name, DbTableInfo::Table);
}

DbTableInfo* AddQuery(DbDatabase& database, const CString& name, const CString& sql, DbTableInfo* related) {
    return database.CreateTable(name, DbTableInfo::Query, sql, related);
}

// A table with one text field and one row.
DbTableInfo* AddFilledTable(DbDatabase& database, const CString& name, const CString& text) {
    DbTableInfo* const info = AddTable(database, name);
    info->GetDescr()->CreateField("text", false, DbFieldDescr::Text);
    info->GetData()->AddRow();
    info->GetData()->GetRow(0)->SetValue("text", text);
    return info;
}

DbTableInfo* AddFilledTableIfFree(DbDatabase& database, const CString& name) {
    return database.IsTable(name) ? nullptr : AddFilledTable(database, name, "text");
}

// A failing save: the file has old contents, and one table can't be saved.
class DbDatabaseUnsavable : public DbDatabaseTest {
protected:
    DbDatabaseUnsavable() : m_file(File("kept.xml", SmallCatalog())), m_database(m_file) {
        m_info = AddTable(m_database, "Bad");
    }

    void AddField(const char* name) { m_info->GetDescr()->CreateField(name, false, DbFieldDescr::Text); }
    // The lines of the failing save; the file and the rows stay.
    std::vector<std::string> LinesOfFailingSave() {
        m_info->GetData()->GetRow(static_cast<int>(m_info->GetData()->AddRow()))->SetValue(m_lastField, "x");
        TakeLog(m_database);
        EXPECT_FALSE(m_database.Save(m_file));
        EXPECT_EQ(Bytes("kept.xml"), SmallCatalog());
        EXPECT_EQ(m_info->GetData()->size(), 1U);
        EXPECT_EQ(Cell(m_info->GetData(), 0, m_info->GetDescr()->size() - 1), "x");
        EXPECT_TRUE(m_database.IsChanged());
        std::vector<std::string> lines = TakeLog(m_database);
        lines.erase(std::remove_if(lines.begin(), lines.end(), IsRoutine), lines.end());
        // Nor does the save at destruction change anything.
        m_info->GetData()->Clear();
        return lines;
    }

    const CString m_file;
    DbDatabase m_database;
    DbTableInfo* m_info = nullptr;
    const char* m_lastField = nullptr;
};

TEST_F(DbDatabaseUnsavable, Save_TwoFieldsOfOneSafeName_NamesBothAndKeepsEverything) {
    AddField("a b");
    AddField(m_lastField = "a_b");
    EXPECT_THAT(
        LinesOfFailingSave(),
        ElementsAre("Table 'Bad' can't be saved: the fields 'a b' and 'a_b' would both be saved as 'a_b'",
                    "Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), a_b, 1",
                    "Error on DbTableData::Save(IDispatch* doc, IDispatch* element)",
                    "Error on table \"Bad\" - body data saving"));
}

TEST_F(DbDatabaseUnsavable, Save_AFieldWhoseNameNoDocumentCarries_NamesItAndKeepsEverything) {
    AddField(m_lastField = "a&b");
    EXPECT_THAT(
        LinesOfFailingSave(),
        ElementsAre(
            "Table 'Bad' can't be saved: the field 'a&b' would be saved as 'a&b', which is no name in XML",
            "Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), a&b, 0",
            "Error on DbTableData::Save(IDispatch* doc, IDispatch* element)",
            "Error on table \"Bad\" - body data saving"));
}

TEST_F(DbDatabaseUnsavable, Save_WithoutRows_WritesTheFieldsWithTheirNames) {
    AddField("a b");
    AddField("a_b");
    AddField("a&b");
    EXPECT_TRUE(m_database.Save(m_file));
    DbDatabase read(m_file);
    EXPECT_EQ(read.GetTableDescr("Bad")->size(), 3U);
}

// ---- Construction and lifetime

TEST_F(DbDatabaseTest, Construct_WithoutAFile_IsAnEmptyDatabaseThatIsNotOpen) {
    DbDatabase database;
    EXPECT_FALSE(database.IsOpen());
    EXPECT_TRUE(database.CanUpdate());
    EXPECT_TRUE(database.GetName().IsEmpty());
    EXPECT_EQ(database.GetTablesCount(), 0);
    EXPECT_EQ(database.GetHeaderDescr(), nullptr);
    EXPECT_EQ(database.GetHeaderData(), nullptr);
    EXPECT_EQ(database.GetTableData(0), nullptr);
    EXPECT_FALSE(database.IsTable("header"));
    EXPECT_TRUE(database.GetErrorLog().IsEmpty());
    EXPECT_EQ(database.GetParent(), nullptr);
    EXPECT_FALSE(database.IsChanged());
}

TEST_F(DbDatabaseTest, Construct_FromAFile_ReadsNothingYet) {
    DbDatabase database(File("small.xml", "later"));
    EXPECT_TRUE(database.IsOpen());
    EXPECT_EQ(database.GetName(), Path("small.xml"));
    File("small.xml", SmallCatalog());
    EXPECT_EQ(database.GetTablesCount(), 5);
}

TEST_F(DbDatabaseTest, Construct_MissingFile_ThrowsAndIsNotCounted) {
    const std::int32_t open = DbDatabase::m_openDbCount;
    EXPECT_THAT(ThrownMessage([&] { DbDatabase database(Path("none.xml")); }),
                HasSubstr("Message: Invalid source file '" + Path("none.xml").ToUtf8() + "'"));
    EXPECT_EQ(DbDatabase::m_openDbCount, open);
}

TEST_F(DbDatabaseTest, Construct_AndDestroy_AreCounted) {
    const std::int32_t open = DbDatabase::m_openDbCount;
    {
        const DbDatabase first;
        EXPECT_EQ(DbDatabase::m_openDbCount, open + 1);
        const DbDatabase second(File("small.xml", SmallCatalog()));
        EXPECT_EQ(DbDatabase::m_openDbCount, open + 2);
    }
    EXPECT_EQ(DbDatabase::m_openDbCount, open);
}

TEST_F(DbDatabaseTest, GetSize_IsThatOfTheItemAndEight) {
    DbDatabase database;
    EXPECT_EQ(database.GetSize(), 16U);
    AddTable(database, "A");
    EXPECT_EQ(database.GetSize(), 2 * 22U + 16U) << "structure and contents are its children";
}

TEST_F(DbDatabaseTest, GetSize_OfAnUnreadFile_ReadsNothing) {
    DbDatabase database(File("small.xml", SmallCatalog()));
    EXPECT_EQ(database.GetSize(), 16U);
    EXPECT_FALSE(database.IsChanged());
    EXPECT_EQ(database.GetChangeId(), 0);
}

TEST_P(DbDatabaseReading, Reading_IsNoChange) {
    const auto database = OpenSmall();
    database->LoadTables();
    for (std::size_t i = 0; i < 5; ++i) {
        database->GetTableData(i)->size();
    }
    EXPECT_FALSE(database->IsChanged());
}

TEST_P(DbDatabaseReading, Destroy_UnchangedDatabase_LeavesTheFile) {
    const std::string xml = "\n" + SmallCatalog().substr(SmallCatalog().find("<database>"));
    {
        const auto database = OpenXml(xml);
        EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
    }
    EXPECT_EQ(Bytes("given.xml"), xml);
}

TEST_P(DbDatabaseReading, Destroy_ChangedDatabase_SavesItToItsFile) {
    {
        const auto database = OpenSmall();
        database->GetTableData("Alpha")->GetRow(1)->SetValue("name", CString("drei"));
    }
    const std::string saved = Bytes("small.xml");
    EXPECT_THAT(saved, HasSubstr("<row name=\"drei\" count=\"2\" />"));
    EXPECT_THAT(saved, HasSubstr("<row size=\"2.5\" />")) << "tables that were not asked for are kept";
}

TEST_F(DbDatabaseTest, Destroy_ChangedDatabaseWithoutAFile_WritesNothing) {
    {
        DbDatabase database;
        AddFilledTable(database, "A", "text");
        EXPECT_TRUE(database.IsChanged());
    }
    EXPECT_THAT(m_folder.Names(), IsEmpty());
}

TEST_F(DbDatabaseTest, Destroy_ChangedMdbDatabase_WritesNothing) {
    DbSource::ForceXML = false;
    {
        DbDatabase database(File("steel.mdb", "Access"));
        AddFilledTable(database, "A", "text");
        EXPECT_TRUE(database.IsChanged());
    }
    EXPECT_EQ(Bytes("steel.mdb"), "Access");
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(DbDatabaseTest, Destroy_WhereTheFolderIsGone_IsSilent) {
    std::filesystem::create_directory(m_folder / "gone");
    {
        DbDatabase database;
        database.Create(CString(Utf8(m_folder / "gone" / "new.xml")));
        std::filesystem::remove(m_folder / "gone");
    }
    EXPECT_THAT(m_folder.Names(), IsEmpty());
}

// ---- Create

TEST_F(DbDatabaseTest, Create_NewFile_HasHeaderAndPropertiesAndCountsAsChanged) {
    DbDatabase database;
    EXPECT_TRUE(database.Create(Path("new.xml")));
    EXPECT_TRUE(database.IsOpen());
    EXPECT_EQ(database.GetName(), Path("new.xml"));
    EXPECT_THAT(TableNames(database), ElementsAre("Header", "Properties"));
    EXPECT_TRUE(database.IsChanged());
    EXPECT_FALSE(Exists("new.xml")) << "until it is saved";
}

TEST_F(DbDatabaseTest, Create_AndDestroy_WritesTheFile) {
    { DbDatabase().Create(Path("new.mdb")); }
    EXPECT_FALSE(Exists("new.mdb"));
    DbDatabase database(Path("new.xml"));
    EXPECT_THAT(TableNames(database), ElementsAre("Header", "Properties"));
}

TEST_P(DbDatabaseReading, Create_OverAnOpenDatabase_StartsAnew) {
    const auto database = OpenSmall();
    EXPECT_EQ(database->GetTablesCount(), 5);
    database->Create(Path("new.xml"));
    EXPECT_THAT(TableNames(*database), ElementsAre("Header", "Properties"));
    EXPECT_FALSE(database->GetSource()->IsSequentialAccess());
    EXPECT_EQ(database->GetTableData("Alpha"), nullptr);
}

TEST_F(DbDatabaseTest, Create_OverAnExistingFile_DoesNotReadIt) {
    DbDatabase database;
    database.Create(File("small.xml", SmallCatalog()));
    EXPECT_EQ(database.GetTablesCount(), 2);
    database.GetSource()->SetSequentialAccess(true);
    database.LoadTables();
    EXPECT_EQ(database.GetTablesCount(), 2);
    EXPECT_TRUE(database.Save(Path("small.xml")));
    EXPECT_THAT(Bytes("small.xml"), HasSubstr("<body>\n<structure />\n<data />\n</body>"));
}

// ---- Registry

TEST_F(DbDatabaseTest, CreateTable_NewName_IsRegisteredBehindTheOthers) {
    DbDatabase database;
    DbTableInfo* const first = AddTable(database, "First");
    DbTableInfo* const second = AddTable(database, "Second");
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(first->GetIndex(), 0U);
    EXPECT_EQ(second->GetIndex(), 1U);
    EXPECT_EQ(second->GetName(), "Second");
    EXPECT_EQ(second->GetType(), DbTableInfo::Table);
    EXPECT_TRUE(second->GetSql().IsEmpty());
    EXPECT_EQ(second->GetRelated(), nullptr);
    EXPECT_EQ(second->GetDescr()->GetParent(), &database);
    EXPECT_EQ(second->GetData()->GetParent(), &database);
    EXPECT_EQ(second->GetData()->GetTableDescr(), second->GetDescr());
    EXPECT_EQ(second->GetData()->size(), 0U);
    EXPECT_THAT(TakeLog(database), ElementsAre("Table 'First' created, index = 0, type = TABLE, sql = ''",
                                               "Table 'Second' created, index = 1, type = TABLE, sql = ''"));
}

TEST_F(DbDatabaseTest, CreateTable_Query_KeepsItsSqlAndRelation) {
    DbDatabase database;
    DbTableInfo* const table = AddTable(database, "T");
    DbTableInfo* const query = AddQuery(database, "Q", "select * from T", table);
    EXPECT_EQ(query->GetType(), DbTableInfo::Query);
    EXPECT_EQ(query->GetSql(), "select * from T");
    EXPECT_EQ(query->GetRelated(), table);
    EXPECT_EQ(database.GetTablesCount(), 2) << "queries count as tables";
    EXPECT_EQ(TakeLog(database).back(),
              "Table 'Q' created, index = 1, type = QUERY, sql = 'select * from T'");
}

TEST_F(DbDatabaseTest, CreateTable_OfTypeNone_IsLoggedAsAQuery) {
    DbDatabase database;
    database.CreateTable("N", DbTableInfo::None);
    EXPECT_THAT(TakeLog(database), ElementsAre("Table 'N' created, index = 0, type = QUERY, sql = ''"));
}

TEST_F(DbDatabaseTest, CreateTable_NameWithPercentSigns_IsLoggedAsItIs) {
    DbDatabase database;
    database.CreateTable("100%s %d", DbTableInfo::Table, "%n");
    EXPECT_THAT(TakeLog(database),
                ElementsAre("Table '100%s %d' created, index = 0, type = TABLE, sql = '%n'"));
}

TEST_F(DbDatabaseTest, CreateTable_TakenNameInAnotherCase_IsRefusedNamingTheNewNameTwice) {
    DbDatabase database;
    DbTableInfo* const sections = AddTable(database, "Sections");
    TakeLog(database);
    EXPECT_EQ(AddTable(database, "SECTIONS"), nullptr);
    EXPECT_THAT(TakeLog(database),
                ElementsAre("Table 'SECTIONS' already in database, cannot add another 'SECTIONS' table"));
    EXPECT_EQ(database.GetTablesCount(), 1);
    EXPECT_EQ(database.GetTableInfo("sections"), sections);
    EXPECT_EQ(database.GetTableName(0), "Sections");
}

TEST_F(DbDatabaseTest, CreateTable_AlphabetsBeyondAscii_AreComparedWithoutCaseToo) {
    DbDatabase database;
    EXPECT_NE(AddTable(database, "\u00C4\u0416\u03A9"), nullptr);
    EXPECT_EQ(AddTable(database, "\u00E4\u0436\u03C9"), nullptr);
    EXPECT_TRUE(database.IsTable("\u00E4\u0416\u03C9"));
}

TEST_P(DbDatabaseReading, CreateTable_OnAnUnreadFile_ReadsItsTablesFirst) {
    const auto database = OpenSmall();
    EXPECT_EQ(AddTable(*database, "ALPHA"), nullptr);
    EXPECT_EQ(AddTable(*database, "New")->GetIndex(), 5U);
}

TEST_P(DbDatabaseReading, CreateTable_Alone_IsNoChange) {
    const auto database = OpenSmall();
    AddTable(*database, "New");
    EXPECT_FALSE(database->IsChanged());
    database->GetTableDescr("New")->CreateField("a", false, DbFieldDescr::Long);
    EXPECT_TRUE(database->IsChanged());
}

TEST_F(DbDatabaseTest, CreateTableOfInfo_StructureAndContents_AreTakenOver) {
    DbDatabase database;
    auto* const descr = new DbTableDescr(&database);
    auto* const data = new DbTableData(&database, descr);
    DbTableInfo info("Given", DbTableInfo::Table, 77, "sql", descr, data, nullptr);
    DbTableInfo* const made = database.CreateTable(&info);
    ASSERT_NE(made, nullptr);
    EXPECT_NE(made, &info);
    EXPECT_EQ(made->GetDescr(), descr);
    EXPECT_EQ(made->GetData(), data);
    EXPECT_EQ(made->GetIndex(), 0U) << "the position counts, not the given index";
    EXPECT_EQ(made->GetSql(), "sql");
    EXPECT_EQ(database.GetTableData("given"), data);
    EXPECT_THAT(TakeLog(database),
                ElementsAre("Table 'Given' created, index = 0, type = TABLE, sql = 'sql'"));
}

TEST_F(DbDatabaseTest, CreateTableOfInfo_WithoutStructureOrContents_MakesThem) {
    DbDatabase database;
    DbTableInfo bare("Bare", DbTableInfo::Table, 0, "", nullptr, nullptr, nullptr);
    DbTableInfo* const made = database.CreateTable(&bare);
    ASSERT_NE(made->GetDescr(), nullptr);
    EXPECT_EQ(made->GetData()->GetTableDescr(), made->GetDescr());
    auto* const descr = new DbTableDescr(&database);
    DbTableInfo half("Half", DbTableInfo::Table, 0, "", descr, nullptr, nullptr);
    EXPECT_EQ(database.CreateTable(&half)->GetData()->GetTableDescr(), descr);
}

TEST_F(DbDatabaseTest, CreateTableOfInfo_TakenName_LeavesStructureAndContentsToTheCaller) {
    DbDatabase database;
    AddTable(database, "Given");
    const auto descr = std::make_unique<DbTableDescr>(&database);
    const auto data = std::make_unique<DbTableData>(&database, descr.get());
    DbTableInfo info("GIVEN", DbTableInfo::Table, 0, "", descr.get(), data.get(), nullptr);
    TakeLog(database);
    EXPECT_EQ(database.CreateTable(&info), nullptr);
    EXPECT_THAT(TakeLog(database),
                ElementsAre("Table 'GIVEN' already in database, cannot add another 'GIVEN' table"));
    EXPECT_EQ(database.GetTablesCount(), 1);
}

TEST_F(DbDatabaseTest, CreateTableOfInfo_Null_IsRefused) {
    DbDatabase database;
    EXPECT_EQ(database.CreateTable(nullptr), nullptr);
}

// Registers the table under a second name: structure and contents are shared.
DbTableInfo* AddAlias(DbDatabase& database, const CString& name, const CString& alias) {
    DbTableInfo info;
    EXPECT_TRUE(database.GetTableInfo(name, info));
    info.SetName(alias);
    return database.CreateTable(&info);
}

TEST_F(DbDatabaseTest, CreateTableOfInfo_UnderTwoNames_IsDestroyedOnce) {
    DbDatabase database;
    AddFilledTable(database, "One", "shared");
    ASSERT_NE(AddAlias(database, "One", "Two"), nullptr);
    EXPECT_EQ(database.GetTableData("One"), database.GetTableData("Two"));
    EXPECT_EQ(database.GetTableInfo("Two")->GetIndex(), 1U);
}

TEST_F(DbDatabaseTest, CreateTableOfInfo_UnderTwoNames_OneDeleted_LeavesTheOther) {
    for (const bool first : {true, false}) {
        DbDatabase database;
        AddFilledTable(database, "One", "shared");
        AddAlias(database, "One", "Two");
        database.DeleteTable(first ? "One" : "Two");
        const CString left = first ? "Two" : "One";
        EXPECT_THAT(TableNames(database), ElementsAre(left.ToUtf8()));
        ASSERT_EQ(database.GetTableData(left)->size(), 1U);
        EXPECT_EQ(Cell(database.GetTableData(left), 0, 0), "shared");
        database.DeleteTable(left);
        EXPECT_EQ(database.GetTablesCount(), 0);
    }
}

TEST_F(DbDatabaseTest, CreateTableOfInfo_UnderTwoNames_AFieldIsAddedToItsRowsOnce) {
    DbDatabase database;
    DbTableInfo* const info = AddFilledTable(database, "One", "shared");
    AddAlias(database, "One", "Two");
    EXPECT_TRUE(info->GetDescr()->CreateField("more", false, DbFieldDescr::Long));
    EXPECT_EQ(info->GetData()->GetRow(0)->size(), 2U);
    EXPECT_TRUE(info->GetDescr()->DeleteField(0));
    EXPECT_EQ(info->GetData()->GetRow(0)->size(), 1U);
}

TEST_P(DbDatabaseReading, CreateTableOfInfo_UnderTwoNames_TheFirstDeleted_KeepsTheRowsOfTheFile) {
    const auto database = OpenSmall();
    AddAlias(*database, "Alpha", "Alias");
    database->DeleteTable("Alpha");
    ASSERT_EQ(database->GetTableData("Alias")->size(), 2U);
    EXPECT_EQ(Cell(database->GetTableData("Alias"), 0, 0), "one");
    EXPECT_TRUE(database->Save(Path("copy.xml")));
}

TEST_P(DbDatabaseReading, CreateTableOfInfo_UnderTwoNames_BothAreSaved) {
    const auto database = OpenSmall();
    AddAlias(*database, "Alpha", "Alias");
    EXPECT_TRUE(database->Save(Path("copy.xml")));
    DbDatabase copy(Path("copy.xml"));
    EXPECT_EQ(copy.GetTableData("Alias")->size(), 2U);
    EXPECT_EQ(copy.GetTableData("Alpha")->size(), 2U);
}

TEST_P(DbDatabaseReading, Lookups_IgnoreCase) {
    const auto database = OpenSmall();
    for (const char* name : {"Alpha", "ALPHA", "alpha", "aLPHa"}) {
        EXPECT_TRUE(database->IsTable(name));
        ASSERT_NE(database->GetTableInfo(name), nullptr);
        EXPECT_EQ(database->GetTableInfo(name)->GetName(), "Alpha");
        EXPECT_EQ(database->GetTableDescr(name), database->GetTableDescr(2));
        EXPECT_EQ(database->GetTableData(name), database->GetTableData(2));
    }
}

TEST_P(DbDatabaseReading, Lookups_OfWhatIsNotThere_GiveNothingAndWriteNothing) {
    const auto database = OpenSmall();
    database->LoadTables();
    TakeLog(*database);
    EXPECT_FALSE(database->IsTable("Omega"));
    EXPECT_FALSE(database->IsTable(""));
    EXPECT_FALSE(database->IsTable("[Alpha]")) << "brackets belong to the name";
    EXPECT_EQ(database->GetTableInfo("Omega"), nullptr);
    EXPECT_EQ(database->GetTableDescr("Omega"), nullptr);
    EXPECT_EQ(database->GetTableData("Omega"), nullptr);
    EXPECT_EQ(database->GetTableDescr(5), nullptr);
    EXPECT_EQ(database->GetTableData(5), nullptr);
    EXPECT_EQ(database->GetTableDescr(std::size_t(-1)), nullptr);
    EXPECT_EQ(database->GetTableData(std::size_t(-1)), nullptr);
    EXPECT_TRUE(database->GetTableName(5).IsEmpty());
    EXPECT_THAT(TakeLog(*database), IsEmpty());
}

TEST_P(DbDatabaseReading, GetTableInfo_IntoAnObject_CopiesTheEntry) {
    const auto database = OpenSmall();
    DbTableInfo info;
    EXPECT_TRUE(database->GetTableInfo("BETA", info));
    EXPECT_EQ(info.GetName(), "Beta");
    EXPECT_EQ(info.GetIndex(), 3U);
    EXPECT_EQ(info.GetType(), DbTableInfo::Table);
    EXPECT_EQ(info.GetDescr(), database->GetTableDescr("Beta"));
    EXPECT_FALSE(database->GetTableInfo("Omega", info));
    EXPECT_EQ(info.GetName(), "Beta") << "what was there stays";
}

TEST_P(DbDatabaseReading, GetHeaderDescrAndData_ReadNothing) {
    const auto database = OpenSmall();
    EXPECT_EQ(database->GetHeaderDescr(), nullptr);
    EXPECT_EQ(database->GetHeaderData(), nullptr);
    EXPECT_TRUE(database->IsTable("Header"));
    EXPECT_EQ(database->GetHeaderDescr(), database->GetTableDescr(0));
    EXPECT_EQ(database->GetHeaderData(), database->GetTableData(0));
    EXPECT_EQ(Cell(database->GetHeaderData(), 0, 0), "Small");
}

TEST_P(DbDatabaseReading, DeleteTable_InTheMiddle_RenumbersTheLaterOnes) {
    const auto database = OpenSmall();
    database->DeleteTable("ALPHA");
    EXPECT_THAT(TableNames(*database), ElementsAre("Header", "Properties", "Beta", "Gamma"));
    EXPECT_EQ(database->GetTableInfo("Beta")->GetIndex(), 2U);
    EXPECT_EQ(database->GetTableInfo("Gamma")->GetIndex(), 3U);
    EXPECT_FALSE(database->IsTable("Alpha"));
    EXPECT_EQ(Cell(database->GetTableData("Beta"), 0, 0), "2.5");
    EXPECT_EQ(AddTable(*database, "Alpha")->GetIndex(), 4U);
}

TEST_P(DbDatabaseReading, DeleteTable_MarksTheDatabaseChanged) {
    const auto database = OpenSmall();
    database->DeleteTable("Alpha");
    EXPECT_TRUE(database->IsChanged());
    EXPECT_FALSE(LogHolds(*database, "delete")) << "and no line tells of it";
}

TEST_P(DbDatabaseReading, DeleteTable_UnknownName_ChangesNothing) {
    const auto database = OpenSmall();
    database->DeleteTable("Omega");
    EXPECT_EQ(database->GetTablesCount(), 5);
    EXPECT_FALSE(database->IsChanged());
}

TEST_P(DbDatabaseReading, DeleteTable_EveryOneInAnyOrder_LeavesNone) {
    for (const auto& order : {std::vector<const char*>{"Header", "Gamma", "Beta", "Properties", "Alpha"},
                              std::vector<const char*>{"Gamma", "Beta", "Alpha", "Properties", "Header"}}) {
        const auto database = OpenSmall();
        int left = 5;
        for (const char* name : order) {
            database->DeleteTable(name);
            EXPECT_EQ(database->GetTablesCount(), --left);
        }
        EXPECT_EQ(database->GetHeaderDescr(), nullptr);
        database->GetSource()->Create("");
    }
}

TEST_F(DbDatabaseTest, DeleteTable_DeletesEveryQueryThatStandsOnIt) {
    DbDatabase database;
    DbTableInfo* const table = AddTable(database, "T");
    DbTableInfo* const other = AddTable(database, "U");
    DbTableInfo* const query = AddQuery(database, "Q", "select * from T", table);
    DbTableInfo* const queryOnQuery = AddQuery(database, "A", "select * from Q", query);
    AddQuery(database, "Z", "select * from A", queryOnQuery);
    AddQuery(database, "V", "select * from U", other);
    database.DeleteTable("t");
    EXPECT_THAT(TableNames(database), ElementsAre("U", "V"));
    EXPECT_EQ(database.GetTableInfo("V")->GetIndex(), 1U);
    EXPECT_EQ(database.GetTableInfo("V")->GetRelated(), database.GetTableInfo("U"));
}

TEST_F(DbDatabaseTest, DropAnswers_DeletesEveryQueryAndNoTable) {
    DbDatabase database;
    DbTableInfo* const base = AddFilledTable(database, "Base", "a");
    AddFilledTable(database, "Other", "a");
    CString first;
    CString second;
    ASSERT_TRUE(database.Query("select text from Base where text = 'a'", first));
    ASSERT_TRUE(database.Query("select * from " + first + " where text = 'a'", second));
    const CString join = database.inner_join("Base", "Other", "text", "=", "text");
    AddQuery(database, "ByHost", "select text from Base", base);
    DbRecordset onAnswer(&database);
    DbRecordset onTable(&database);
    ASSERT_TRUE(onAnswer.Open(second));
    ASSERT_TRUE(onTable.Open("Base"));
    database.Sync();

    EXPECT_EQ(database.DropAnswers(), 4);
    EXPECT_THAT(TableNames(database), ElementsAre("Base", "Other"));
    for (const CString& name : {first, second, join, CString("ByHost")}) {
        EXPECT_FALSE(database.IsTable(name)) << name;
    }
    EXPECT_FALSE(database.IsChanged()) << "answers are no part of what is saved";
    EXPECT_FALSE(onAnswer.IsOpen());
    EXPECT_TRUE(onTable.IsOpen());
    EXPECT_EQ(onTable.GetFieldValue("text").Text(), CString("a").View());
    EXPECT_EQ(database.DropAnswers(), 0);

    CString again;
    ASSERT_TRUE(database.Query("select text from Base where text = 'a'", again));
    EXPECT_EQ(Cell(database.GetTableData(again), 0, 0), "a");
    EXPECT_EQ(database.GetTableInfo(again)->GetIndex(), 2U);
    EXPECT_FALSE(database.inner_join("Base", "Other", "text", "=", "text").IsEmpty());
}

TEST_F(DbDatabaseTest, DropAnswers_RowsOfAnAnswerAddedToTheTable_Stay) {
    DbDatabase database;
    DbTableInfo* const base = AddFilledTable(database, "Base", "a");
    CString answer;
    ASSERT_TRUE(database.Query("select * from Base where text = 'a'", answer));
    database.GetTableData(answer)->AddRow();
    EXPECT_EQ(database.DropAnswers(), 1);
    EXPECT_EQ(base->GetData()->size(), 2U);
    EXPECT_EQ(Cell(base->GetData(), 0, 0), "a");
}

TEST_F(DbDatabaseTest, DeleteTable_OfAQuery_LeavesItsBase) {
    DbDatabase database;
    DbTableInfo* const table = AddTable(database, "T");
    DbTableInfo* const query = AddQuery(database, "Q", "select * from T", table);
    AddQuery(database, "A", "select * from Q", query);
    database.DeleteTable("Q");
    EXPECT_THAT(TableNames(database), ElementsAre("T"));
}

TEST_P(DbDatabaseReading, ClearTable_EmptiesStructureAndRowsAndKeepsTheName) {
    const auto database = OpenSmall();
    DbTableDescr* const descr = database->GetTableDescr("Alpha");
    DbTableData* const data = database->GetTableInfo("Alpha")->GetData();
    descr->CreateIndex("byname", "name");
    TakeLog(*database);
    database->ClearTable("ALPHA");
    EXPECT_EQ(database->GetTablesCount(), 5);
    EXPECT_EQ(database->GetTableDescr("Alpha"), descr);
    EXPECT_EQ(database->GetTableData("Alpha"), data);
    EXPECT_EQ(descr->size(), 0U);
    EXPECT_EQ(descr->FindIndex("byname"), nullptr);
    EXPECT_EQ(data->size(), 0U) << "rows that stood in the file do not come back";
    EXPECT_TRUE(database->IsChanged());
    EXPECT_EQ(Cell(database->GetTableData("Beta"), 0, 0), "2.5");
}

TEST_P(DbDatabaseReading, ClearTable_OfReadRows_WritesNoLine) {
    const auto database = OpenSmall();
    database->GetTableData("Alpha")->size();
    TakeLog(*database);
    database->ClearTable("Alpha");
    EXPECT_THAT(TakeLog(*database), IsEmpty());
}

TEST_P(DbDatabaseReading, ClearTable_UnknownName_ChangesNothing) {
    const auto database = OpenSmall();
    database->ClearTable("Omega");
    EXPECT_FALSE(database->IsChanged());
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
}

// ---- Changes

TEST_F(DbDatabaseTest, Fields_EveryChange_MarksTheDatabaseChanged) {
    DbDatabase database;
    DbTableDescr& descr = *database.CreateTable("T", DbTableInfo::Table)->GetDescr();
    descr.CreateField("a", false, DbFieldDescr::Long);
    const auto changes = [&](auto change) {
        database.Sync();
        change();
        return database.IsChanged();
    };
    EXPECT_TRUE(changes([&] { descr[0].SetName("b"); }));
    EXPECT_TRUE(changes([&] { descr[0].SetKey(true); }));
    EXPECT_TRUE(changes([&] { descr[0].SetDbType(DbFieldDescr::Text); }));
    EXPECT_TRUE(changes([&] { descr.Clear(); }));
    database.Sync();
}

TEST_F(DbDatabaseTest, FieldAddedOrDeleted_RowsFollow_RaisesTheChangeIdOfTheData) {
    DbDatabase database;
    const DbTableInfo* const info = database.CreateTable("T", DbTableInfo::Table);
    info->GetData()->AddRow();
    long before = info->GetData()->GetChangeId();
    info->GetDescr()->CreateField("a", false, DbFieldDescr::Long);
    EXPECT_GT(info->GetData()->GetChangeId(), before);
    before = info->GetData()->GetChangeId();
    info->GetDescr()->DeleteField("a");
    EXPECT_GT(info->GetData()->GetChangeId(), before);
    database.Sync();
}

// ---- Rename

TEST_P(DbDatabaseReading, RenameTable_ToAFreeName_KeepsPlaceAndRows) {
    const auto database = OpenSmall();
    EXPECT_TRUE(database->RenameTable("ALPHA", "Omega"));
    EXPECT_THAT(TableNames(*database), ElementsAre("Header", "Properties", "Omega", "Beta", "Gamma"));
    EXPECT_FALSE(database->IsTable("Alpha"));
    EXPECT_EQ(database->GetTableInfo("omega")->GetName(), "Omega");
    EXPECT_EQ(database->GetTableInfo("omega")->GetIndex(), 2U);
    EXPECT_EQ(database->GetTableData("Omega")->size(), 2U);
    EXPECT_EQ(TakeLog(*database).back(), "Table 'ALPHA' renamed to 'Omega'")
        << "the old name as it was asked for";
}

TEST_P(DbDatabaseReading, RenameTable_MarksStructureAndContentsChanged) {
    const auto database = OpenSmall();
    database->RenameTable("Alpha", "Omega");
    EXPECT_TRUE(database->GetTableDescr("Omega")->IsChanged());
    EXPECT_TRUE(database->GetTableData("Omega")->IsChanged());
    EXPECT_FALSE(database->GetTableDescr("Beta")->IsChanged());
}

TEST_P(DbDatabaseReading, RenameTable_UnknownName_IsFalse) {
    const auto database = OpenSmall();
    EXPECT_FALSE(database->RenameTable("Omega", "Psi"));
    EXPECT_FALSE(database->IsTable("Psi"));
    EXPECT_FALSE(LogHolds(*database, "renamed"));
    EXPECT_FALSE(database->IsChanged());
}

TEST_P(DbDatabaseReading, RenameTable_ToAnotherCase_ChangesTheSpelling) {
    const auto database = OpenSmall();
    EXPECT_TRUE(database->RenameTable("Alpha", "ALPHA"));
    EXPECT_EQ(database->GetTableName(2), "ALPHA");
    EXPECT_EQ(database->GetTableInfo("alpha")->GetName(), "ALPHA");
    EXPECT_EQ(database->GetTableData("alpha")->size(), 2U);
}

TEST_P(DbDatabaseReading, RenameTable_ThenSave_WritesTheNewName) {
    const auto database = OpenSmall();
    database->RenameTable("Beta", "Omega");
    EXPECT_TRUE(database->Save(Path("copy.xml")));
    DbDatabase copy(Path("copy.xml"));
    EXPECT_THAT(TableNames(copy), ElementsAre("Header", "Properties", "Alpha", "Omega", "Gamma"));
    EXPECT_EQ(Cell(copy.GetTableData("Omega"), 0, 0), "2.5");
}

TEST_F(DbDatabaseTest, RenameTable_QueriesThatStandOnIt_FollowIt) {
    DbDatabase database;
    DbTableInfo* const table = AddTable(database, "T");
    AddQuery(database, "Q", "T", table);
    database.RenameTable("T", "U");
    EXPECT_TRUE(database.GetTableInfo("Q")->IsRelatedWith(database.GetTableInfo("U")));
    database.DeleteTable("U");
    EXPECT_EQ(database.GetTablesCount(), 0);
}

TEST_P(DbDatabaseReading, RenameTable_OntoAnExistingName_KeepsTheOldEntry) {
    const auto database = OpenSmall();
    DbTableData* const beta = database->GetTableInfo("Beta")->GetData();
    DbTableData* const alpha = database->GetTableInfo("Alpha")->GetData();
    EXPECT_TRUE(database->RenameTable("Alpha", "BETA"));
    EXPECT_EQ(TakeLog(*database).back(), "Table 'Alpha' renamed to 'BETA'");
    EXPECT_THAT(TableNames(*database), ElementsAre("Header", "Properties", "BETA", "Beta", "Gamma"))
        << "the lists carry the new name";
    EXPECT_FALSE(database->IsTable("Alpha"));
    EXPECT_EQ(database->GetTableInfo("beta")->GetData(), beta);
    EXPECT_EQ(database->GetTableInfo("beta")->GetName(), "Beta");
    EXPECT_EQ(database->GetTableData(2), alpha);
    EXPECT_EQ(database->GetTableData(3), beta);
    EXPECT_EQ(database->GetTableData("Beta"), beta);
    EXPECT_EQ(alpha->size(), 2U);
    EXPECT_EQ(beta->size(), 1U);
}

TEST_P(DbDatabaseReading, RenameTable_OntoAnExistingName_EverythingCanBeCalledAfterwards) {
    const auto database = OpenSmall();
    database->RenameTable("Alpha", "Beta");
    DbTableInfo info;
    CString name;
    EXPECT_TRUE(database->GetTableInfo("Beta", info));
    EXPECT_TRUE(database->Query("Beta", name));
    EXPECT_TRUE(database->GetTableDescr(2)->CreateField("more", false, DbFieldDescr::Long));
    EXPECT_EQ(database->GetTableData(2)->GetRow(0)->size(), 3U);
    EXPECT_NE(AddTable(*database, "Alpha"), nullptr);
    EXPECT_TRUE(database->RenameTable("Gamma", "Delta"));
    database->ClearTable("Beta");
    EXPECT_EQ(database->GetTableData(3)->size(), 0U);
    EXPECT_EQ(database->GetTableData(2)->size(), 2U);
    database->LoadTables();
    EXPECT_TRUE(database->Save(Path("copy.xml")));
    EXPECT_TRUE(database->RenameTable("Beta", "Epsilon"));
    EXPECT_EQ(database->GetTablesCount(), 6);
}

TEST_P(DbDatabaseReading, RenameTable_OntoAnExistingName_ThatOneCanBeDeleted) {
    const auto database = OpenSmall();
    DbTableData* const alpha = database->GetTableInfo("Alpha")->GetData();
    database->RenameTable("Alpha", "Beta");
    database->DeleteTable("Beta");
    EXPECT_THAT(TableNames(*database), ElementsAre("Header", "Properties", "Beta", "Gamma"));
    EXPECT_FALSE(database->IsTable("Beta")) << "the table that is left is found by its index alone";
    EXPECT_EQ(database->GetTableData(2), alpha);
    EXPECT_EQ(alpha->size(), 2U);
    database->DeleteTable("Beta");
    EXPECT_EQ(database->GetTablesCount(), 4);
    EXPECT_TRUE(database->Save(Path("copy.xml")));
    DbDatabase copy(Path("copy.xml"));
    EXPECT_THAT(TableNames(copy), ElementsAre("Header", "Properties", "Gamma"))
        << "what no name finds is not written";
}

TEST_P(DbDatabaseReading, RenameTable_OntoAnExistingName_OthersCanBeDeleted) {
    const auto database = OpenSmall();
    DbTableData* const alpha = database->GetTableInfo("Alpha")->GetData();
    DbTableData* const beta = database->GetTableInfo("Beta")->GetData();
    database->RenameTable("Beta", "Alpha");
    database->DeleteTable("Gamma");
    EXPECT_EQ(database->GetTableData(2), alpha);
    EXPECT_EQ(database->GetTableData(3), beta);
    database->DeleteTable("Alpha");
    EXPECT_EQ(database->GetTablesCount(), 3);
    EXPECT_EQ(database->GetTableData(2), beta);
    EXPECT_EQ(beta->size(), 1U);
}

TEST_P(DbDatabaseReading, RenameTable_EveryTableOntoOneName_ThenDeleteIt_LeavesTheNamelessOnes) {
    const auto database = OpenSmall();
    for (const char* name : {"Alpha", "Beta", "Header", "Properties"}) {
        EXPECT_TRUE(database->RenameTable(name, "Gamma"));
    }
    EXPECT_THAT(TableNames(*database), ElementsAre("Gamma", "Gamma", "Gamma", "Gamma", "Gamma"));
    database->DeleteTable("Gamma");
    EXPECT_EQ(database->GetTablesCount(), 4);
    EXPECT_EQ(database->GetTableData(2)->size(), 2U);
    EXPECT_FALSE(database->IsTable("Gamma"));
}

TEST_F(DbDatabaseTest, RenameTable_OntoAnExistingName_QueriesOnItStandOnNothing) {
    DbDatabase database;
    DbTableInfo* const table = AddFilledTable(database, "T", "text");
    AddTable(database, "U");
    AddQuery(database, "Q", "T", table);
    database.RenameTable("T", "U");
    DbTableInfo* const query = database.GetTableInfo("Q");
    EXPECT_EQ(query->GetRelated(), nullptr);
    EXPECT_TRUE(query->IsQuerySync());
    EXPECT_FALSE(query->IsRelatedWith(database.GetTableInfo("U")));
    EXPECT_NE(database.GetTableData("Q"), nullptr);
    database.DeleteTable("U");
    EXPECT_TRUE(database.IsTable("Q"));
    EXPECT_TRUE(database.Save(Path("copy.xml")));
}

TEST_P(DbDatabaseReading, RenameTable_ToTheNameOfADeletedTable_GetsItsName) {
    const auto database = OpenSmall();
    database->DeleteTable("Alpha");
    EXPECT_TRUE(database->RenameTable("Beta", "Alpha"));
    EXPECT_EQ(Cell(database->GetTableData("Alpha"), 0, 0), "2.5");
    EXPECT_EQ(database->GetTableData("Gamma")->size(), 0U);
    EXPECT_TRUE(database->Save(Path("copy.xml")));
}

// ---- Any calls in any order

TEST_P(DbDatabaseReading, RandomCalls_InAnyOrder_KeepListsAndEntriesTogether) {
    std::mt19937 random(quillet::test::Seed(21));
    const auto below = [&](std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random);
    };
    const std::vector<CString> names = {"Header", "Properties", "Alpha", "Beta", "Gamma",
                                        "A",      "B",          "Q",     "R",    "X"};
    const auto name = [&] { return names[below(names.size())]; };
    for (int round = 0; round < 300; ++round) {
        const auto database = OpenSmall();
        for (std::size_t calls = 5 + below(40); calls > 0; --calls) {
            const auto index = below(static_cast<std::size_t>(database->GetTablesCount()) + 1);
            switch (below(12)) {
                case 0:
                    AddFilledTableIfFree(*database, name());
                    break;
                case 1:
                case 2:
                    for (std::size_t chain = below(4); chain > 0; --chain) {
                        AddQuery(*database, name(), name(), database->GetTableInfo(name()));
                    }
                    break;
                case 3:
                    database->DeleteTable(name());
                    break;
                case 4:
                case 5:
                    database->RenameTable(name(), name());
                    break;
                case 6:
                    database->ClearTable(name());
                    break;
                case 7:
                    if (DbTableInfo alias; database->GetTableInfo(name(), alias)) {
                        alias.SetName(name());
                        database->CreateTable(&alias);
                    }
                    break;
                case 8:
                    if (DbTableData* const data = database->GetTableData(index)) {
                        data->size();
                        data->AddRow();
                        data->DeleteRow(0);
                    }
                    break;
                case 9:
                    if (DbTableDescr* const descr = database->GetTableDescr(index)) {
                        descr->CreateField(name(), false, DbFieldDescr::Text);
                        descr->DeleteField(static_cast<int>(below(3)));
                    }
                    break;
                case 10:
                    if (DbTableInfo* const info = database->GetTableInfo(name())) {
                        info->IsQuerySync();
                        info->IsRelatedWith(database->GetTableInfo(name()));
                    }
                    break;
                default: {
                    quillet::xml::Document document;
                    quillet::xml::Face face(document.Root());
                    database->Save(face.Get(), nullptr);
                    break;
                }
            }
            for (std::size_t i = 0; i < static_cast<std::size_t>(database->GetTablesCount()); ++i) {
                ASSERT_NE(database->GetTableDescr(i), nullptr);
                ASSERT_FALSE(database->GetTableName(i).IsEmpty());
            }
            for (const CString& each : names) {
                if (const DbTableInfo* const info = database->GetTableInfo(each)) {
                    ASSERT_LT(info->GetIndex(), static_cast<uint64>(database->GetTablesCount()));
                    ASSERT_EQ(database->GetTableName(info->GetIndex()).CompareNoCase(each), 0);
                }
            }
        }
        database->GetSource()->Create("");
    }
}

// ---- Log

TEST_F(DbDatabaseTest, GetError_AppendsTheLinesAndEmptiesTheLog) {
    DbDatabase database;
    AddTable(database, "A");
    AddTable(database, "A");
    std::vector<CString> lines = {"before"};
    database.GetError(lines);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0], "before");
    EXPECT_EQ(lines[1], "Table 'A' created, index = 0, type = TABLE, sql = ''");
    EXPECT_EQ(lines[2], "Table 'A' already in database, cannot add another 'A' table");
    EXPECT_TRUE(database.GetErrorLog().IsEmpty());
    database.GetError(lines);
    EXPECT_EQ(lines.size(), 3U);
}

TEST_F(DbDatabaseTest, GetErrorLog_JoinsTheLinesAndKeepsThem) {
    DbDatabase database;
    EXPECT_TRUE(database.GetErrorLog().IsEmpty());
    AddTable(database, "A");
    EXPECT_EQ(database.GetErrorLog(), "Table 'A' created, index = 0, type = TABLE, sql = ''");
    AddTable(database, "a");
    const CString both =
        "Table 'A' created, index = 0, type = TABLE, sql = ''\r\n"
        "Table 'a' already in database, cannot add another 'a' table";
    EXPECT_EQ(database.GetErrorLog(), both);
    EXPECT_EQ(database.GetErrorLog(), both);
}

TEST_F(DbDatabaseTest, Log_OutlivesTheTables) {
    DbDatabase database;
    AddTable(database, "A");
    database.GetSource()->SetFile(File("small.xml", SmallCatalog()), false);
    EXPECT_TRUE(LogHolds(database, "Table 'A' created"));
}

TEST_F(DbDatabaseTest, ShowErrorLog_ShowsTheLinesUnderTheCaption) {
    std::vector<std::pair<std::string, std::string>> shown;
    const auto before = quillet::platform::SetMessageHandler(
        [&](quillet::platform::WideView text, quillet::platform::WideView caption) {
            shown.emplace_back(CString(text).ToUtf8(), CString(caption).ToUtf8());
        });
    DbDatabase database;
    database.ShowErrorLog();
    AddTable(database, "L\u00E4nge");
    AddTable(database, "L\u00E4nge");
    database.ShowErrorLog();
    quillet::platform::SetMessageHandler(before);
    ASSERT_EQ(shown.size(), 2U);
    EXPECT_EQ(shown[0], std::make_pair(std::string(), std::string("Quillet")));
    EXPECT_EQ(shown[1].second, "Quillet");
    EXPECT_EQ(shown[1].first, database.GetErrorLog().ToUtf8()) << "and the log keeps them";
}

// ---- Reading

using LogMatchers = std::vector<testing::Matcher<std::string>>;

// The log after the header and the structure of the small catalog were read, followed by the given lines.
LogMatchers SmallCatalogLog(const LogMatchers& more) {
    LogMatchers lines = {
        "Table 'Header' created, index = 0, type = TABLE, sql = ''",
        "Table 'Properties' created, index = 1, type = TABLE, sql = ''",
        MatchesPattern("Table 'Header' \\[1 row\\] data parsed in: [0-9.]+ \\[s\\]"),
        MatchesPattern("Table 'Properties' \\[1 row\\] data parsed in: [0-9.]+ \\[s\\]"),
        "Table 'Alpha' created, index = 2, type = TABLE, sql = ''",
        "Table 'Beta' created, index = 3, type = TABLE, sql = ''",
        "Table 'Gamma' created, index = 4, type = TABLE, sql = ''",
    };
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

TEST_F(DbDatabaseTest, Read_Whole_LogsCreationAndParsingOfEveryTable) {
    const auto database = OpenSmall(Reading::Whole);
    EXPECT_EQ(database->GetTablesCount(), 5);
    EXPECT_THAT(TakeLog(*database),
                ElementsAreArray(SmallCatalogLog(
                    {MatchesPattern("Table 'Alpha' \\[2 rows\\] data parsed in: [0-9.]+ \\[s\\]"),
                     MatchesPattern("Table 'Beta' \\[1 row\\] data parsed in: [0-9.]+ \\[s\\]"),
                     MatchesPattern("Table 'Gamma' \\[0 rows\\] data parsed in: [0-9.]+ \\[s\\]")})));
    database->LoadTables();
    EXPECT_THAT(TakeLog(*database), IsEmpty());
}

TEST_F(DbDatabaseTest, Read_Sequential_BringsInTheHeaderAndTheStructureOnly) {
    const auto database = OpenSmall(Reading::Sequential);
    EXPECT_EQ(database->GetTablesCount(), 5);
    EXPECT_THAT(TakeLog(*database), ElementsAreArray(SmallCatalogLog({})));
    EXPECT_TRUE(database->GetTableInfo("Header")->GetData()->IsInitialized());
    for (const char* name : {"Alpha", "Beta", "Gamma"}) {
        EXPECT_FALSE(database->GetTableInfo(name)->GetData()->IsInitialized());
    }
    EXPECT_EQ(database->GetTableDescr("Alpha")->size(), 2U);
    EXPECT_THAT(TakeLog(*database), IsEmpty());
}

TEST_F(DbDatabaseTest, GetTableData_OfTheLastTable_CutsEveryEarlierOneOnTheWay) {
    const auto database = OpenSmall(Reading::Sequential);
    database->GetTablesCount();
    TakeLog(*database);
    DbTableData* const gamma = database->GetTableData("Gamma");
    EXPECT_THAT(
        TakeLog(*database),
        ElementsAre(MatchesPattern("Table 'Alpha' xml source extracted in [0-9]+\\.[0-9][0-9][0-9][0-9] "
                                   "\\[s\\]"),
                    MatchesPattern("Table 'Beta' xml source extracted in [0-9.]+ \\[s\\]"),
                    MatchesPattern("Table 'Gamma' xml source extracted in [0-9.]+ \\[s\\]")));
    EXPECT_EQ(gamma->size(), 0U);
    EXPECT_THAT(TakeLog(*database),
                ElementsAre(MatchesPattern("Table 'Gamma' \\[0 rows\\] data parsed in: .*")));
    DbTableData* const alpha = database->GetTableData("Alpha");
    EXPECT_THAT(TakeLog(*database), IsEmpty()) << "it was cut already";
    EXPECT_TRUE(alpha->IsInitialized());
    EXPECT_EQ(alpha->size(), 2U);
    EXPECT_THAT(TakeLog(*database),
                ElementsAre(MatchesPattern("Table 'Alpha' \\[2 rows\\] data parsed in: .*")));
    EXPECT_EQ(alpha->size(), 2U);
    EXPECT_THAT(TakeLog(*database), IsEmpty());
}

TEST_F(DbDatabaseTest, LoadTables_Sequential_CutsAllAndReleasesTheSource) {
    const auto database = OpenSmall(Reading::Sequential);
    database->LoadTables();
    for (const char* name : {"Alpha", "Beta", "Gamma"}) {
        EXPECT_TRUE(database->GetTableInfo(name)->GetData()->IsInitialized());
    }
    EXPECT_TRUE(database->GetSource()->IsEof());
    EXPECT_EQ(CountTroubles(*database), 0U);
    database->LoadTables();
    EXPECT_THAT(TakeLog(*database), IsEmpty());
}

TEST_P(DbDatabaseReading, Rows_InAnotherOrderThanTheStructure_GoToTheTableThatTheyName) {
    CatalogParts parts = SmallParts();
    parts.m_bodyData = TableXml("Gamma", "<row note=\"n\" />\n") + TableXml("BETA", "<row size=\"7\" />\n") +
                       TableXml("Alpha", "<row name=\"x\" count=\"9\" />\n");
    const auto database = OpenXml(parts.Xml());
    EXPECT_EQ(Cell(database->GetTableData("Alpha"), 0, 1), "9");
    EXPECT_EQ(Cell(database->GetTableData("Beta"), 0, 0), "7");
    EXPECT_EQ(Cell(database->GetTableData("Gamma"), 0, 0), "n");
    EXPECT_EQ(CountTroubles(*database), 0U);
}

TEST_P(DbDatabaseReading, Rows_AreMatchedThoughTheProgramAddedTablesBefore) {
    const auto database = OpenSmall();
    AddFilledTable(*database, "Aaa", "own");
    AddTable(*database, "Empty");
    EXPECT_EQ(Cell(database->GetTableData("Alpha"), 1, 0), "two");
    EXPECT_EQ(database->GetTableData("Empty")->size(), 0U);
    EXPECT_EQ(Cell(database->GetTableData("Beta"), 0, 0), "2.5");
    EXPECT_EQ(Cell(database->GetTableData("Aaa"), 0, 0), "own");
    EXPECT_EQ(CountTroubles(*database), 0U);
}

TEST_P(DbDatabaseReading, GetTableData_OfATableThatTheProgramMade_ReadsNothing) {
    const auto database = OpenSmall();
    AddTable(*database, "Own");
    TakeLog(*database);
    EXPECT_NE(database->GetTableData("Own"), nullptr);
    EXPECT_THAT(TakeLog(*database), IsEmpty());
    EXPECT_FALSE(database->GetSource()->IsEof());
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
}

TEST_P(DbDatabaseReading, DeleteTable_WhoseRowsStandInTheFile_LeavesTheLaterOnesTheirs) {
    for (const char* doomed : {"Alpha", "Beta"}) {
        const auto database = OpenSmall();
        database->DeleteTable(doomed);
        database->LoadTables();
        for (const char* name : {"Alpha", "Beta"}) {
            if (database->IsTable(name)) {
                EXPECT_EQ(database->GetTableData(name)->size(), name == std::string("Alpha") ? 2U : 1U);
            }
        }
        EXPECT_EQ(database->GetTableData("Gamma")->size(), 0U);
        EXPECT_EQ(CountTroubles(*database), 0U);
    }
}

TEST_P(DbDatabaseReading, DeleteTable_AndMakeItAnew_DoesNotBringBackTheRowsOfTheFile) {
    const auto database = OpenSmall();
    database->DeleteTable("Alpha");
    AddTable(*database, "Alpha");
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 0U);
    EXPECT_EQ(database->GetTableData("Beta")->size(), 1U);
}

TEST_P(DbDatabaseReading, CreateField_OnRowsThatStandInTheFile_ReadsThemFirst) {
    const auto database = OpenSmall();
    EXPECT_TRUE(database->GetTableDescr("Alpha")->CreateField("weight", false, DbFieldDescr::Long));
    DbTableData* const alpha = database->GetTableData("Alpha");
    ASSERT_EQ(alpha->size(), 2U);
    ASSERT_EQ(alpha->GetRow(1)->size(), 3U);
    EXPECT_EQ(Cell(alpha, 1, 0), "two");
    EXPECT_EQ(Cell(alpha, 1, 1), "2");
    EXPECT_EQ(Cell(alpha, 1, 2), "0");
    EXPECT_EQ(CountTroubles(*database), 0U);
}

TEST_P(DbDatabaseReading, DeleteField_OnRowsThatStandInTheFile_ReadsThemFirst) {
    const auto database = OpenSmall();
    EXPECT_TRUE(database->GetTableDescr("Alpha")->DeleteField("name"));
    DbTableData* const alpha = database->GetTableData("Alpha");
    ASSERT_EQ(alpha->size(), 2U);
    ASSERT_EQ(alpha->GetRow(1)->size(), 1U);
    EXPECT_EQ(Cell(alpha, 1, 0), "2");
}

TEST_P(DbDatabaseReading, CreateField_OnRowsThatWereCutButNotParsed_ReadsThemFirst) {
    const auto database = OpenSmall();
    database->LoadTables();
    EXPECT_TRUE(database->GetTableDescr("Alpha")->CreateField("weight", false, DbFieldDescr::Text));
    EXPECT_EQ(database->GetTableData("Alpha")->GetRow(0)->size(), 3U);
}

TEST_P(DbDatabaseReading, HeaderOfOneTable_DoesNotLoseTheBody) {
    CatalogParts parts = SmallParts();
    parts.m_headerStructure = TableXml("Header", FieldXml("title", TextType));
    parts.m_headerData = TableXml("Header", "<row title=\"Small\" />\n");
    const auto database = OpenXml(parts.Xml());
    EXPECT_TRUE(database->IsTable("Properties"));
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
    EXPECT_EQ(database->GetTableData("Beta")->size(), 1U);
    EXPECT_EQ(CountTroubles(*database), 0U);
}

TEST_P(DbDatabaseReading, HeaderOfNoTable_DoesNotLoseTheBody) {
    CatalogParts parts = SmallParts();
    parts.m_headerStructure = "";
    parts.m_headerData = "";
    const auto database = OpenXml(parts.Xml());
    EXPECT_EQ(database->GetTablesCount(), 5);
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
    EXPECT_EQ(CountTroubles(*database), 0U);
}

TEST_F(DbDatabaseTest, MissingPropertiesTable_IsAddedBehindTheBodyOrBeforeIt) {
    CatalogParts parts = SmallParts();
    parts.m_headerStructure = TableXml("Header", FieldXml("title", TextType));
    parts.m_headerData = TableXml("Header", "<row title=\"Small\" />\n");
    File("given.xml", parts.Xml());
    EXPECT_THAT(TableNames(*Open(m_folder / "given.xml", Reading::Whole)),
                ElementsAre("Header", "Alpha", "Beta", "Gamma", "Properties"))
        << "the whole document is read before";
    EXPECT_THAT(TableNames(*Open(m_folder / "given.xml", Reading::Sequential)),
                ElementsAre("Header", "Properties", "Alpha", "Beta", "Gamma"))
        << "the body is read afterwards";
}

TEST_F(DbDatabaseTest, SetSequentialAccess_OffHalfway_SavesEveryTableAllTheSame) {
    const auto database = OpenSmall(Reading::Sequential);
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
    database->GetSource()->SetSequentialAccess(false);
    EXPECT_TRUE(database->Save(Path("copy.xml")));
    EXPECT_EQ(Bytes("copy.xml"), SmallCatalog());
}

TEST_F(DbDatabaseTest, SetSequentialAccess_OnAfterEverythingWasRead_ChangesNothing) {
    const auto database = OpenSmall(Reading::Whole);
    EXPECT_EQ(database->GetTablesCount(), 5);
    database->GetSource()->SetSequentialAccess(true);
    database->LoadTables();
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
    EXPECT_TRUE(database->Save(Path("copy.xml")));
    EXPECT_EQ(Bytes("copy.xml"), SmallCatalog());
}

TEST_P(DbDatabaseReading, SetSequentialAccess_AfterTheFirstAccess_SaysThatItComesTooLate) {
    const bool on = GetParam() != Reading::Sequential;
    const auto database = OpenSmall();
    const auto set = [&](bool sequential) {
        TakeLog(*database);
        database->GetSource()->SetSequentialAccess(sequential);
        EXPECT_EQ(database->GetSource()->IsSequentialAccess(), sequential);
        return TakeLog(*database);
    };
    EXPECT_THAT(set(on), IsEmpty());
    EXPECT_THAT(set(!on), IsEmpty());
    EXPECT_EQ(database->GetTablesCount(), 5);
    EXPECT_THAT(set(!on), IsEmpty()) << "nothing changes";
    EXPECT_THAT(set(on), ElementsAre(std::string("Sequential access was switched ") + (on ? "on" : "off") +
                                     " after the first access to '" + Path("small.xml").ToUtf8() +
                                     "': too late, no effect"));
    database->GetSource()->SetFile(Path("small.xml"), false);
    EXPECT_THAT(set(true), IsEmpty()) << "a file that nobody has asked for anything";
}

TEST_P(DbDatabaseReading, SetFile_ToAnotherFile_ReadsThatOne) {
    const auto database = OpenSmall();
    EXPECT_EQ(database->GetTablesCount(), 5);
    CatalogParts parts;
    parts.m_bodyStructure = TableXml("Other", FieldXml("a", LongType));
    parts.m_bodyData = TableXml("Other", "<row a=\"3\" />\n");
    database->GetSource()->SetFile(File("other.xml", parts.Xml()), false);
    database->GetSource()->SetSequentialAccess(GetParam() == Reading::Sequential);
    EXPECT_THAT(TableNames(*database), ElementsAre("Header", "Properties", "Other"));
    EXPECT_EQ(Cell(database->GetTableData("Other"), 0, 0), "3");
    EXPECT_FALSE(database->IsChanged());
}

TEST_F(DbDatabaseTest, SetFile_AfterASequentialSourceCameToItsEnd_ReadsNothingSequentially) {
    const auto database = OpenSmall(Reading::Sequential);
    database->LoadTables();
    database->GetSource()->SetFile(Path("small.xml"), false);
    database->GetSource()->SetSequentialAccess(true);
    EXPECT_THAT(TableNames(*database), ElementsAre("Header", "Properties"));
    database->GetSource()->SetFile(Path("small.xml"), false);
    EXPECT_EQ(database->GetTablesCount(), 5) << "the whole document can be read still";
}

TEST_F(DbDatabaseTest, SetFile_MissingFile_LeavesAnEmptyDatabaseThatCanBeUsed) {
    const auto database = OpenSmall(Reading::Whole);
    EXPECT_EQ(database->GetTablesCount(), 5);
    EXPECT_NE(ThrownMessage([&] { database->GetSource()->SetFile(Path("none.xml"), false); }), "");
    EXPECT_EQ(database->GetName(), Path("none.xml"));
    EXPECT_THAT(TableNames(*database), ElementsAre("Header", "Properties"));
    EXPECT_TRUE(LogHolds(*database, "Invalid xml database file format"));
    EXPECT_FALSE(database->IsChanged());
}

TEST_F(DbDatabaseTest, MdbSource_IsImportedAtTheFirstQuestionAndOnce) {
    DbSource::ForceXML = false;
    DbDatabase database(File("steel.mdb", "no Access file"));
    EXPECT_TRUE(database.IsOpen());
    EXPECT_TRUE(database.GetErrorLog().IsEmpty());
    EXPECT_THAT(TableNames(database), ElementsAre("Header", "Properties")) << "a file without tables";
    const std::vector<std::string> lines = TakeLog(database);
    EXPECT_EQ(lines[0], "Importing mdb file '" + Path("steel.mdb").ToUtf8() + "'");
    EXPECT_EQ(database.GetTablesCount(), 2);
    EXPECT_THAT(TakeLog(database), IsEmpty());
    EXPECT_FALSE(database.IsChanged());
}

TEST_F(DbDatabaseTest, CanUpdate_OfAReadOnlySource_IsFalse) {
    DbDatabase database(File("small.xml", SmallCatalog()));
    EXPECT_TRUE(database.CanUpdate());
    database.GetSource()->SetFile(Path("small.xml"), true);
    EXPECT_FALSE(database.CanUpdate());
}

TEST_F(DbDatabaseTest, ParseXmlTableData_LoadsTheRowsOfTheTableThatTheTextNames) {
    DbDatabase database;
    AddTable(database, "A")->GetDescr()->CreateField("n", false, DbFieldDescr::Long);
    database.ParseXmlTableData("<table name=\"a\"><row n=\"4\" /></table>");
    database.ParseXmlTableData("<any first=\"A\" name=\"other\"><row x=\"5\" /></any>");
    ASSERT_EQ(database.GetTableData("A")->size(), 2U) << "each text adds its rows";
    EXPECT_EQ(Cell(database.GetTableData("A"), 1, 0), "5");
    EXPECT_TRUE(database.GetTableData("A")->IsInitialized());
}

TEST_F(DbDatabaseTest, ParseXmlTableData_TextThatIsNone_ThrowsInvalidPointer) {
    DbDatabase database;
    AddTable(database, "A");
    for (const char* text :
         {"", "text", "<table name=\"B\" />", "<table />", "<table name=\"A\"", "<a><b></a></b>"}) {
        EXPECT_EQ(ThrownMessage([&] { database.ParseXmlTableData(text); }), "Invalid pointer") << text;
    }
    EXPECT_EQ(database.GetTableData("A")->size(), 0U);
}

// ---- Queries: the counter, lookups, refreshes

TEST_F(DbDatabaseTest, Query_OfATableName_IsAnsweredByTheTable) {
    DbDatabase database;
    AddTable(database, "Steel Sections");
    DbDatabase::m_queriesCount = 41;
    for (const char* sql : {"Steel Sections", "[STEEL sections]"}) {
        CString name;
        EXPECT_TRUE(database.Query(sql, name)) << sql;
        EXPECT_EQ(name, "Steel Sections");
    }
    EXPECT_EQ(DbDatabase::m_queriesCount, 43);
}

TEST_F(DbDatabaseTest, Query_OfAnUnknownTable_IsFalseWithALine) {
    DbDatabase database;
    CString name;
    const std::int32_t count = DbDatabase::m_queriesCount;
    EXPECT_FALSE(database.Query("Nothing", name));
    EXPECT_EQ(DbDatabase::m_queriesCount, count + 1);
    const auto lines = TakeLog(database);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines[0], HasSubstr("nothing"));
}

TEST_F(DbDatabaseTest, Query_AtTheLargestCount_WrapsAround) {
    DbDatabase database;
    AddTable(database, "T");
    DbDatabase::m_queriesCount = std::numeric_limits<std::int32_t>::max();
    CString name;
    EXPECT_TRUE(database.Query("T", name));
    EXPECT_EQ(DbDatabase::m_queriesCount, std::numeric_limits<std::int32_t>::min());
}

TEST_P(DbDatabaseReading, Query_OnAnUnreadFile_ReadsItsTables) {
    const auto database = OpenSmall();
    CString name;
    EXPECT_TRUE(database->Query("alpha", name));
    EXPECT_EQ(name, "Alpha");
}

TEST_F(DbDatabaseTest, GetTableData_OfAQueryOutOfStep_AsksItAgain) {
    DbDatabase database;
    DbTableInfo* const table = AddFilledTable(database, "T", "text");
    DbTableInfo* const query = AddQuery(database, "Q", "T", table);
    EXPECT_FALSE(query->IsQuerySync());
    std::int32_t count = DbDatabase::m_queriesCount;
    EXPECT_EQ(database.GetTableData("Q"), query->GetData());
    EXPECT_EQ(DbDatabase::m_queriesCount, ++count);
    EXPECT_EQ(database.GetTableData(1), query->GetData());
    EXPECT_EQ(DbDatabase::m_queriesCount, ++count);
    query->SetSyncStamp(table->GetData()->GetChangeId());
    EXPECT_EQ(database.GetTableData("Q"), query->GetData());
    EXPECT_EQ(DbDatabase::m_queriesCount, count);
    EXPECT_EQ(database.GetTableData("T"), table->GetData()) << "a table is never asked";
    EXPECT_EQ(DbDatabase::m_queriesCount, count);
}

// ---- Save

TEST_P(DbDatabaseReading, Save_PartlyReadDatabase_WritesEveryTable) {
    const auto database = OpenSmall();
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
    EXPECT_TRUE(database->Save(Path("copy.xml")));
    EXPECT_EQ(Bytes("copy.xml"), SmallCatalog());
    EXPECT_EQ(CountTroubles(*database), 0U);
}

TEST_P(DbDatabaseReading, Save_UnreadDatabase_WritesEveryTable) {
    EXPECT_TRUE(OpenSmall()->Save(Path("copy.xml")));
    EXPECT_EQ(Bytes("copy.xml"), SmallCatalog());
}

TEST_P(DbDatabaseReading, Save_OntoTheOwnFile_KeepsEveryTable) {
    const auto database = OpenSmall();
    ASSERT_EQ(database->GetTableData("Alpha")->size(), 2U);
    database->GetTableData("Alpha")->AddRow();
    EXPECT_TRUE(database->Save(Path("small.xml")));
    EXPECT_FALSE(database->IsChanged());
    const std::string saved = Dump(*database);
    EXPECT_EQ(Dump(*Open(m_folder / "small.xml", GetParam())), saved);
    EXPECT_THAT(saved, HasSubstr("row 5:2.5"));
}

TEST_P(DbDatabaseReading, Save_XmlEndingInAnyCase_IsWritten) {
    const auto database = OpenSmall();
    EXPECT_TRUE(database->Save(Path("copy.XML")));
    EXPECT_TRUE(database->Save(Path("copyxMl")));
    EXPECT_EQ(Bytes("copyxMl"), SmallCatalog());
}

TEST_P(DbDatabaseReading, Save_OtherEnding_ReturnsFalseAndLogsNothing) {
    const auto database = OpenSmall();
    database->LoadTables();
    database->DeleteTable("Gamma");
    TakeLog(*database);
    for (const char* name : {"copy.txt", "copy", "copy.xmlx"}) {
        EXPECT_FALSE(database->Save(Path(name)));
        EXPECT_FALSE(Exists(name));
    }
    EXPECT_FALSE(database->Save(""));
    EXPECT_THAT(TakeLog(*database), IsEmpty());
    EXPECT_TRUE(database->IsChanged()) << "what was not written is still a change";
}

TEST_P(DbDatabaseReading, Save_OtherEnding_ReadsTheTablesAllTheSame) {
    const auto database = OpenSmall();
    EXPECT_FALSE(database->Save(Path("copy.txt")));
    EXPECT_TRUE(database->GetTableInfo("Gamma")->GetData()->IsInitialized());
}

TEST_P(DbDatabaseReading, Save_MdbEnding_IsFalse) {
    const auto database = OpenSmall();
    EXPECT_FALSE(database->Save(Path("copy.mdb")));
    EXPECT_FALSE(Exists("copy.mdb"));
    EXPECT_FALSE(Exists("copy.xml")) << "the ending is not rewritten";
}

TEST_P(DbDatabaseReading, Save_UnderAnyNameAndOverItself_ReadsBackTheSame) {
    for (const char8_t* name : {u8"Tr\u00E4ger \u0436 \u65E5\u672C \U0001F600.xml", u8"with  blanks.xml",
                                u8"\uFF80\uFF91\uFFE6.xml", u8"\uFFFD.xml"}) {
        const std::filesystem::path path = m_folder / name;
        const CString text(Utf8(path));
        EXPECT_TRUE(OpenSmall()->Save(text));
        const auto database = Open(path, GetParam());
        EXPECT_EQ(database->GetSource()->GetFile(), text);
        EXPECT_TRUE(database->CanUpdate());
        database->GetTableData("Beta")->AddRow();
        EXPECT_TRUE(database->Save(text)) << "over the file that it reads";
        EXPECT_EQ(Dump(*Open(path, GetParam())), Dump(*database));
        EXPECT_EQ(Open(path, GetParam())->GetTableData("Beta")->size(), 2U);
    }
    EXPECT_EQ(m_folder.Names().size(), 5U);
}

TEST_P(DbDatabaseReading, Save_OntoALongPathAndOverItself_ReadsBackTheSame) {
    for (const std::size_t length : {270U, 1000U}) {
        const std::filesystem::path folder = MakeDeepFolder(m_folder.Path(), length);
        const std::filesystem::path path = folder / "deep.xml";
        EXPECT_TRUE(OpenSmall()->Save(CString(Utf8(path))));
        {
            const auto database = Open(path, GetParam());
            EXPECT_TRUE(database->CanUpdate());
            EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
            database->DeleteTable("Alpha");
            EXPECT_TRUE(database->Save(CString(Utf8(path)))) << "over the file that it reads";
            database->GetTableData("Beta")->AddRow();
        }
        const auto database = Open(path, GetParam());
        EXPECT_FALSE(database->IsTable("Alpha"));
        EXPECT_EQ(database->GetTableData("Beta")->size(), 2U) << "the destructor saved the last change";
        EXPECT_EQ(CountTroubles(*database), 0U);
        EXPECT_EQ(NamesIn(folder).size(), 1U) << "nothing is left beside it";
    }
}

TEST_F(DbDatabaseTest, Save_IntoAFolderThatIsNotThere_IsFalseWithALine) {
    DbDatabase database;
    AddFilledTable(database, "A", "text");
    const CString path = CString(Utf8(m_folder / "none" / "copy.xml"));
    EXPECT_FALSE(database.Save(path));
    EXPECT_THAT(TakeLog(database).back(), HasSubstr(path.ToUtf8()));
    EXPECT_TRUE(database.IsChanged());
}

TEST_F(DbDatabaseTest, Save_OntoADirectory_IsFalseWithALine) {
    std::filesystem::create_directory(m_folder / "copy.xml");
    DbDatabase database;
    AddFilledTable(database, "A", "text");
    EXPECT_FALSE(database.Save(Path("copy.xml")));
    EXPECT_TRUE(LogHolds(database, Path("copy.xml").ToUtf8()));
    EXPECT_TRUE(std::filesystem::is_directory(m_folder / "copy.xml"));
}

TEST_F(DbDatabaseTest, Save_WithoutHeaderTables_AppendsThemSoThatTheFirstTwoTablesStandInTheHeader) {
    DbDatabase database;
    AddFilledTable(database, "A", "a");
    AddFilledTable(database, "B", "b");
    AddFilledTable(database, "C", "c");
    EXPECT_TRUE(database.Save(Path("copy.xml")));
    EXPECT_THAT(TableNames(database), ElementsAre("A", "B", "C", "Header", "Properties"));
    const std::string saved = Bytes("copy.xml");
    EXPECT_LT(saved.find("<table name=\"B\">"), saved.find("</header>"));
    EXPECT_GT(saved.find("<table name=\"C\">"), saved.find("</header>"));
    EXPECT_EQ(Dump(*Open(m_folder / "copy.xml", Reading::Whole)), Dump(database));
}

TEST_F(DbDatabaseTest, Save_Queries_AreNotWritten) {
    DbDatabase database;
    database.Create(Path("new.xml"));
    DbTableInfo* const table = AddFilledTable(database, "T", "text");
    AddQuery(database, "Q", "T", table);
    AddFilledTable(database, "U", "text");
    database.CreateTable("N", DbTableInfo::None);
    EXPECT_TRUE(database.Save(Path("new.xml")));
    DbDatabase copy(Path("new.xml"));
    EXPECT_THAT(TableNames(copy), ElementsAre("Header", "Properties", "T", "U"));
}

TEST_F(DbDatabaseTest, Save_QueryAmongTheFirstTwo_IsWrittenIntoTheHeader) {
    DbDatabase database;
    DbTableInfo* const table = AddFilledTable(database, "T", "text");
    AddQuery(database, "Q", "T", table);
    EXPECT_TRUE(database.Save(Path("new.xml")));
    DbDatabase copy(Path("new.xml"));
    EXPECT_THAT(TableNames(copy), ElementsAre("T", "Q", "Header", "Properties"));
    EXPECT_EQ(copy.GetTableInfo("Q")->GetType(), DbTableInfo::Table);
    EXPECT_TRUE(copy.GetTableInfo("Q")->GetSql().IsEmpty());
}

TEST_F(DbDatabaseTest, Save_QueriesOutOfStep_AreAskedAgainFirst) {
    DbDatabase database;
    DbTableInfo* const table = AddFilledTable(database, "T", "text");
    DbTableInfo* const query = AddQuery(database, "Q", "T", table);
    AddQuery(database, "R", "Q", query);
    const std::int32_t count = DbDatabase::m_queriesCount;
    EXPECT_TRUE(database.Save(Path("new.xml")));
    EXPECT_EQ(DbDatabase::m_queriesCount, count + 2);
    EXPECT_FALSE(database.Save(Path("new.txt")));
    EXPECT_EQ(DbDatabase::m_queriesCount, count + 4) << "whatever the ending";
}

TEST_F(DbDatabaseTest, Save_QueryThatCantBeAnswered_DoesNotHinder) {
    DbDatabase database;
    DbTableInfo* const table = AddFilledTable(database, "T", "text");
    AddQuery(database, "Q", "no such table", table);
    EXPECT_TRUE(database.Save(Path("new.xml")));
    EXPECT_FALSE(database.IsChanged());
}

TEST_F(DbDatabaseTest, Save_FieldWithoutXmlName_FailsWithTheLinesOfRowTableAndDatabase) {
    DbDatabase database;
    database.Create(File("new.xml", "the old file"));
    DbTableDescr* const descr = AddTable(database, "T")->GetDescr();
    descr->CreateField("good", false, DbFieldDescr::Text);
    descr->CreateField("1 bad", false, DbFieldDescr::Text);
    database.GetTableData("T")->AddRow();
    TakeLog(database);
    EXPECT_FALSE(database.Save(Path("new.xml")));
    EXPECT_THAT(
        TakeLog(database),
        ElementsAre("Table 'T' can't be saved: the field '1 bad' would be saved as '1_bad', which is no "
                    "name in XML",
                    "Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), 1_bad, 1",
                    "Error on DbTableData::Save(IDispatch* doc, IDispatch* element)",
                    "Error on table \"T\" - body data saving"));
    EXPECT_EQ(Bytes("new.xml"), "the old file");
    EXPECT_TRUE(database.IsChanged());
    EXPECT_EQ(m_folder.Names().size(), 1U) << "nothing is left beside it";
}

TEST_F(DbDatabaseTest, Save_FieldWithoutXmlNameButNoRows_IsWritten) {
    DbDatabase database;
    database.Create(Path("new.xml"));
    AddTable(database, "T")->GetDescr()->CreateField("1 bad", false, DbFieldDescr::Text);
    EXPECT_TRUE(database.Save(Path("new.xml")));
    EXPECT_EQ(DbDatabase(Path("new.xml")).GetTableDescr("T")->front()->GetName(), "1 bad");
}

TEST_F(DbDatabaseTest, Save_TextThatXmlCantCarry_FailsWithTheLines) {
    DbDatabase database;
    database.Create(File("new.xml", "the old file"));
    AddFilledTable(database, "T", CString("a\x01z"));
    TakeLog(database);
    EXPECT_FALSE(database.Save(Path("new.xml")));
    EXPECT_THAT(TakeLog(database),
                ElementsAre("Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), text, 0",
                            "Error on DbTableData::Save(IDispatch* doc, IDispatch* element)",
                            "Error on table \"T\" - body data saving"));
    EXPECT_EQ(Bytes("new.xml"), "the old file");
}

TEST_F(DbDatabaseTest, Save_FieldNameThatXmlCantCarry_FailsInTheStructureToo) {
    DbDatabase database;
    database.Create(File("new.xml", "the old file"));
    AddTable(database, "T")->GetDescr()->CreateField(CString("a\x01"), false, DbFieldDescr::Text);
    TakeLog(database);
    EXPECT_FALSE(database.Save(Path("new.xml")));
    EXPECT_THAT(TakeLog(database), ElementsAre("Error on table \"T\" - body structure saving"));
    EXPECT_EQ(Bytes("new.xml"), "the old file");
}

TEST_F(DbDatabaseTest, Save_HeaderThatXmlCantCarry_FailsWithTheHeaderLines) {
    DbDatabase database;
    database.Create(File("new.xml", "the old file"));
    database.GetHeaderData()->GetRow(0)->SetValue("title", CString("\x1F"));
    database.GetTableDescr("Properties")->CreateField(CString("\x02"), false, DbFieldDescr::Text);
    TakeLog(database);
    EXPECT_FALSE(database.Save(Path("new.xml")));
    const std::vector<std::string> lines = TakeLog(database);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.front(), "Error on table \"Properties\" - header structure saving");
    EXPECT_THAT(lines, testing::Contains("Error on table \"Header\" - header data saving"));
    EXPECT_EQ(lines.back(), "Error on table \"Properties\" - header data saving");
    EXPECT_EQ(Bytes("new.xml"), "the old file");
}

TEST_F(DbDatabaseTest, Save_TableNameThatXmlCantCarry_FailsWithTheLines) {
    const WCHAR lone[] = {'T', WCHAR(0xD800), 0};
    for (const CString& name : {CString("T\x01"), CString(lone)}) {
        DbDatabase database;
        database.Create(File("new.xml", "the old file"));
        AddTable(database, name);
        TakeLog(database);
        EXPECT_FALSE(database.Save(Path("new.xml"))) << name;
        EXPECT_THAT(TakeLog(database),
                    ElementsAre("Error on table \"" + name.ToUtf8() + "\" - body structure saving",
                                "Error on table \"" + name.ToUtf8() + "\" - body data saving"));
        EXPECT_EQ(Bytes("new.xml"), "the old file");
    }
}

TEST_F(DbDatabaseTest, Save_TextWithALoneSurrogate_Fails) {
    const WCHAR high[] = {'a', WCHAR(0xD800), 'b', 0};
    const WCHAR low[] = {WCHAR(0xDC00), 0};
    for (const CString& text : {CString(high), CString(low)}) {
        DbDatabase database;
        database.Create(File("new.xml", "the old file"));
        AddFilledTable(database, "T", text);
        EXPECT_FALSE(database.Save(Path("new.xml")));
        EXPECT_EQ(Bytes("new.xml"), "the old file");
    }
}

TEST_F(DbDatabaseTest, Save_TwoFieldsWithOneSafeName_LosesNoColumn) {
    DbDatabase database;
    database.Create(File("new.xml", "the old file"));
    DbTableDescr* const descr = AddTable(database, "T")->GetDescr();
    descr->CreateField("a b", false, DbFieldDescr::Text);
    descr->CreateField("a_b", false, DbFieldDescr::Text);
    database.GetTableData("T")->AddRow();
    EXPECT_FALSE(database.Save(Path("new.xml")));
    EXPECT_TRUE(LogHolds(database, "Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), a_b, 1"));
    EXPECT_EQ(Bytes("new.xml"), "the old file");
}

TEST_F(DbDatabaseTest, Save_AfterAFailureWasMended_Succeeds) {
    DbDatabase database;
    database.Create(Path("new.xml"));
    AddFilledTable(database, "T", CString("\x01"));
    EXPECT_FALSE(database.Save(Path("new.xml")));
    database.GetTableData("T")->GetRow(0)->SetValue("text", CString("good"));
    EXPECT_TRUE(database.Save(Path("new.xml")));
    EXPECT_EQ(Cell(DbDatabase(Path("new.xml")).GetTableData("T"), 0, 0), "good");
}

// ---- Save into a document

TEST_P(DbDatabaseReading, SaveToADocument_AppendsTheDatabaseElement) {
    const auto database = OpenSmall();
    database->LoadTables();
    quillet::xml::Document document;
    quillet::xml::Face face(document.Root());
    EXPECT_TRUE(database->Save(face.Get(), nullptr));
    EXPECT_EQ(document.SaveText(), SmallCatalog().substr(SmallCatalog().find("<database>")));
}

TEST_P(DbDatabaseReading, SaveToADocument_WithAParent_AppendsToThat) {
    const auto database = OpenSmall();
    database->LoadTables();
    quillet::xml::Document document;
    document.LoadText("<set><first /></set>");
    quillet::xml::Face face(document.Root());
    quillet::xml::Face parent(document.Root().FirstChild());
    EXPECT_TRUE(database->Save(face.Get(), parent.Get()));
    EXPECT_TRUE(database->Save(face.Get(), parent.Get()));
    EXPECT_THAT(document.SaveText(), testing::StartsWith("<set>\n<first />\n<database>\n"));
    EXPECT_THAT(document.SaveText(), HasSubstr("</database>\n<database>\n"));
}

TEST_P(DbDatabaseReading, SaveToADocument_DoesNotCountAsSaved) {
    const auto database = OpenSmall();
    database->DeleteTable("Alpha");
    quillet::xml::Document document;
    quillet::xml::Face face(document.Root());
    EXPECT_TRUE(database->Save(face.Get(), nullptr));
    EXPECT_TRUE(database->IsChanged());
}

TEST_P(DbDatabaseReading, SaveToADocument_BeforeAnythingWasRead_DamagesNothing) {
    const auto database = OpenSmall();
    quillet::xml::Document document;
    quillet::xml::Face face(document.Root());
    database->Save(face.Get(), nullptr);
    EXPECT_THAT(TableNames(*database), ElementsAre("Header", "Properties", "Alpha", "Beta", "Gamma"));
    EXPECT_EQ(database->GetTableDescr("Header")->size(), 1U) << "the structure is that of the file";
    EXPECT_TRUE(database->Save(Path("copy.xml")));
    EXPECT_EQ(Bytes("copy.xml"), SmallCatalog());
}

TEST_F(DbDatabaseTest, SaveToADocument_FailingTable_LeavesItsElement) {
    DbDatabase database;
    database.Create(Path("new.xml"));
    AddFilledTable(database, "T", CString("\x01"));
    AddFilledTable(database, "U", "good");
    quillet::xml::Document document;
    quillet::xml::Face face(document.Root());
    EXPECT_FALSE(database.Save(face.Get(), nullptr));
    EXPECT_THAT(document.SaveText(), HasSubstr("<data>\n<table name=\"T\" />\n<table name=\"U\">\n"));
}

// Refuses every call.
class RefusingDom final : public DispatchStub {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (iid == IID_IUnknown || iid == IID_IDispatch) {
            *object = static_cast<IDispatch*>(this);
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
};

TEST_F(DbDatabaseTest, SaveToADocument_ThatRefuses_IsFalse) {
    DbDatabase database;
    database.Create(Path("new.xml"));
    RefusingDom refusing;
    quillet::xml::Document document;
    quillet::xml::Document other;
    quillet::xml::Face face(document.Root());
    quillet::xml::Face otherFace(other.Root());
    EXPECT_EQ(ThrownMessage([&] { database.Save(static_cast<IDispatch*>(nullptr), nullptr); }),
              "Invalid pointer");
    EXPECT_FALSE(database.Save(&refusing, nullptr));
    EXPECT_FALSE(database.Save(face.Get(), &refusing));
    EXPECT_FALSE(database.Save(face.Get(), otherFace.Get())) << "a parent of another document";
}

TEST_F(DbDatabaseTest, SaveToADocument_WithoutHeaderTables_MakesThem) {
    DbDatabase database;
    quillet::xml::Document document;
    quillet::xml::Face face(document.Root());
    EXPECT_TRUE(database.Save(face.Get(), nullptr));
    EXPECT_THAT(TableNames(database), ElementsAre("Header", "Properties"));
}

// ---- Derived classes

class MdbWriter : public DbDatabase {
public:
    using DbDatabase::Save;

    std::function<bool(const CString&)> m_write = [](const CString&) { return true; };
    std::vector<CString> m_paths;

protected:
    bool SaveMdb(const CString& path) override {
        m_paths.push_back(path);
        return m_write(path);
    }
};

TEST_F(DbDatabaseTest, SaveMdb_Overridden_IsCalledForMdbEndingsOnly) {
    MdbWriter database;
    AddFilledTable(database, "A", "text");
    EXPECT_TRUE(database.Save(Path("copy.MDB")));
    EXPECT_FALSE(database.IsChanged()) << "a database that was written is unchanged";
    EXPECT_TRUE(database.Save(Path("copy.xml")));
    EXPECT_FALSE(database.Save(Path("copy.txt")));
    EXPECT_THAT(database.m_paths, ElementsAre(Path("copy.MDB")));
}

TEST_F(DbDatabaseTest, SaveMdb_Failing_LeavesTheDatabaseChanged) {
    MdbWriter database;
    AddFilledTable(database, "A", "text");
    database.m_write = [](const CString&) { return false; };
    EXPECT_FALSE(database.Save(Path("copy.mdb")));
    EXPECT_TRUE(database.IsChanged());
}

TEST_F(DbDatabaseTest, Save_WhateverAnOverrideThrows_IsFalse) {
    MdbWriter database;
    AddFilledTable(database, "A", "text");
    database.m_write = [](const CString&) -> bool { throw new DbException("thrown"); };
    EXPECT_FALSE(database.Save(Path("copy.mdb")));
    database.m_write = [](const CString&) -> bool { throw std::runtime_error("thrown"); };
    EXPECT_FALSE(database.Save(Path("copy.mdb")));
    database.m_write = [](const CString&) -> bool { throw 42; };
    bool saved = true;
    EXPECT_NO_THROW(saved = database.Save(Path("copy.mdb")));
    EXPECT_FALSE(saved);
    EXPECT_TRUE(database.IsChanged());
}

class DocumentWriter : public DbDatabase {
public:
    using DbDatabase::DbDatabase;
    using DbDatabase::Save;

    bool Save(IDispatch* document, IDispatch* parent) override {
        ++m_calls;
        return !m_refuse && DbDatabase::Save(document, parent);
    }

    int m_calls = 0;
    bool m_refuse = false;
};

TEST_F(DbDatabaseTest, SaveToAFile_GoesThroughTheVirtualSaveToADocument) {
    DocumentWriter database(File("small.xml", SmallCatalog()));
    EXPECT_TRUE(database.Save(Path("copy.xml")));
    EXPECT_EQ(database.m_calls, 1);
    database.m_refuse = true;
    database.DeleteTable("Alpha");
    EXPECT_FALSE(database.Save(Path("copy.xml")));
    EXPECT_EQ(database.m_calls, 2);
    EXPECT_EQ(Bytes("copy.xml"), SmallCatalog()) << "what was refused is not written";
    database.m_refuse = false;
    database.GetSource()->Create("");
}

// Contents that override how rows are saved.
class OwnContents : public DbTableData {
public:
    using DbTableData::DbTableData;

    bool Save(IDispatch* document, IDispatch* parentElement) override {
        const quillet::xml::Node row = quillet::xml::Node(document).CreateElement("row");
        row.SetAttribute("text", "written by the override");
        quillet::xml::Node(parentElement).AppendChild(row);
        return m_good;
    }
    bool Load(IDispatch* element) override {
        ++m_loads;
        return DbTableData::Load(element);
    }
    void Clear() override {
        ++m_clears;
        DbTableData::Clear();
    }

    bool m_good = true;
    int m_loads = 0;
    int m_clears = 0;
};

OwnContents* AddOwnContents(DbDatabase& database, const CString& name) {
    auto* const descr = new DbTableDescr(&database);
    auto* const data = new OwnContents(&database, descr);
    DbTableInfo info(name, DbTableInfo::Table, 0, "", descr, data, nullptr);
    EXPECT_NE(database.CreateTable(&info), nullptr);
    descr->CreateField("text", false, DbFieldDescr::Text);
    return data;
}

TEST_F(DbDatabaseTest, Save_ContentsWithASaveOfTheirOwn_AreHonoured) {
    DbDatabase database;
    database.Create(Path("new.xml"));
    AddOwnContents(database, "Own");
    AddFilledTable(database, "Usual", "usual");
    EXPECT_TRUE(database.Save(Path("new.xml")));
    EXPECT_THAT(Bytes("new.xml"),
                HasSubstr("<table name=\"Own\">\n<row text=\"written by the override\" />\n</table>\n"
                          "<table name=\"Usual\">\n<row text=\"usual\" />\n</table>\n"));
}

TEST_F(DbDatabaseTest, Save_ContentsWhoseOwnSaveFails_FailTheSave) {
    DbDatabase database;
    database.Create(File("new.xml", "the old file"));
    AddOwnContents(database, "Own")->m_good = false;
    TakeLog(database);
    EXPECT_FALSE(database.Save(Path("new.xml")));
    EXPECT_THAT(TakeLog(database), ElementsAre("Error on table \"Own\" - body data saving"));
    EXPECT_EQ(Bytes("new.xml"), "the old file");
}

TEST_F(DbDatabaseTest, Overrides_OfLoadAndClear_AreHonoured) {
    DbDatabase database;
    OwnContents* const data = AddOwnContents(database, "Own");
    database.ParseXmlTableData("<table name=\"Own\"><row text=\"a\" /></table>");
    EXPECT_EQ(data->m_loads, 1);
    EXPECT_EQ(data->size(), 1U);
    database.ClearTable("Own");
    EXPECT_EQ(data->m_clears, 1);
    EXPECT_EQ(data->size(), 0U);
}

// A structure that saves no fields.
class SilentStructure : public DbTableDescr {
public:
    using DbTableDescr::DbTableDescr;
    bool Save(IDispatch*, IDispatch*) override { return m_good; }

    bool m_good = true;
};

TEST_F(DbDatabaseTest, Save_StructureWithASaveOfItsOwn_IsHonoured) {
    DbDatabase database;
    database.Create(Path("new.xml"));
    auto* const descr = new SilentStructure(&database);
    DbTableInfo info("Own", DbTableInfo::Table, 0, "", descr, nullptr, nullptr);
    database.CreateTable(&info);
    descr->CreateField("text", false, DbFieldDescr::Text);
    EXPECT_TRUE(database.Save(Path("new.xml")));
    EXPECT_THAT(Bytes("new.xml"), HasSubstr("<body>\n<structure>\n<table name=\"Own\" />\n</structure>"));
    descr->m_good = false;
    TakeLog(database);
    EXPECT_FALSE(database.Save(Path("new.xml")));
    EXPECT_THAT(TakeLog(database), ElementsAre("Error on table \"Own\" - body structure saving"));
}

}  // namespace
