#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "support/CatalogHelpers.h"
#include "support/TestHelpers.h"

namespace {

using quillet::test::Open;
using quillet::test::Reading;
using quillet::test::TakeLog;
using quillet::test::ThrownMessage;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* NotOpenReport =
    "Quillet exception thrown\r\nFile: Db/Quillet/Db_TableDef @ 178\r\n"
    "Message: Did you forgot to call DbTableDef::Open() first ?";

// A database with a table "sections" (name, weight; two rows).
class DbTableDefTest : public testing::Test {
protected:
    DbTableDefTest() {
        const DbTableInfo* const info = m_database->CreateTable("sections", DbTableInfo::Table);
        info->GetDescr()->CreateField("name", true, DbFieldDescr::Text);
        info->GetDescr()->CreateField("weight", false, DbFieldDescr::Double);
        info->GetData()->AddRows(2);
        TakeLog(*m_database);
    }

    std::unique_ptr<DbDatabase> m_database = std::make_unique<DbDatabase>();
    DbTableDef m_def{m_database.get()};
    quillet::test::StaticsGuard m_statics;
};

// The results of a definition that refers to nothing.
void ExpectClosed(DbTableDef& def) {
    EXPECT_FALSE(def.IsOpen());
    EXPECT_EQ(def.GetTableDescr(), nullptr);
    EXPECT_EQ(def.GetFieldCount(), 0U);
    EXPECT_EQ(def.GetFieldInfo(0), nullptr);
    EXPECT_EQ(def.GetFieldInfo("name"), nullptr);
    EXPECT_FALSE(def.CreateField("new", DbFieldDescr::Long));
    EXPECT_FALSE(def.DeleteField(0));
    EXPECT_FALSE(def.DeleteField("name"));
    DbTableDescr::DbIndex index("i", "name");
    EXPECT_FALSE(def.CreateIndex(index));
    EXPECT_EQ(ThrownMessage([&] { def.GetRecordCount(); }), NotOpenReport);
}

// ---- Closed

TEST_F(DbTableDefTest, Construct_IsClosed) {
    ExpectClosed(m_def);
    EXPECT_EQ(m_def.GetTableName(), "");
    EXPECT_EQ(m_def.GetDatabase(), m_database.get());
    EXPECT_TRUE(m_def.CanUpdate());
}

TEST_F(DbTableDefTest, Construct_WithoutADatabase_IsClosedAndOpensNothing) {
    DbTableDef def(nullptr);
    EXPECT_EQ(def.GetDatabase(), nullptr);
    EXPECT_FALSE(def.Open("sections"));
    EXPECT_FALSE(def.Append());
    ExpectClosed(def);
}

TEST_F(DbTableDefTest, GetRecordCount_WhileClosed_Throws) {
    EXPECT_EQ(ThrownMessage([&] { m_def.GetRecordCount(); }), NotOpenReport);
}

// ---- Open

TEST_F(DbTableDefTest, Open_ATable_ShowsIt) {
    EXPECT_TRUE(m_def.Open("sections"));
    EXPECT_TRUE(m_def.IsOpen());
    EXPECT_TRUE(m_def.CanUpdate());
    EXPECT_EQ(m_def.GetTableName(), "sections");
    EXPECT_EQ(m_def.GetTableDescr(), m_database->GetTableDescr("sections"));
    EXPECT_EQ(m_def.GetFieldCount(), 2U);
    EXPECT_EQ(m_def.GetRecordCount(), 2);
}

TEST_F(DbTableDefTest, Open_NameInBrackets_OpensTheTableOfTheName) {
    EXPECT_TRUE(m_def.Open("[sections]"));
    EXPECT_EQ(m_def.GetTableName(), "sections");
    EXPECT_TRUE(m_def.IsOpen());
}

TEST_F(DbTableDefTest, Open_NameInAnotherCase_KeepsTheNameAsGiven) {
    EXPECT_TRUE(m_def.Open("SECTIONS"));
    EXPECT_EQ(m_def.GetTableName(), "SECTIONS");
}

TEST_F(DbTableDefTest, Open_UnknownTable_IsFalseAndChangesNothing) {
    ASSERT_TRUE(m_def.Open("sections"));
    EXPECT_FALSE(m_def.Open("nosuchtable"));
    EXPECT_TRUE(m_def.IsOpen());
    EXPECT_EQ(m_def.GetTableName(), "sections");
    EXPECT_EQ(m_def.GetRecordCount(), 2);
    EXPECT_THAT(TakeLog(*m_database), IsEmpty());
}

TEST_F(DbTableDefTest, Open_UnknownTable_KeepsThePreparedOne) {
    m_def.Create("new");
    EXPECT_FALSE(m_def.Open("nosuchtable"));
    EXPECT_EQ(m_def.GetTableName(), "new");
    EXPECT_TRUE(m_def.Append());
}

TEST_F(DbTableDefTest, Open_AfterCreate_DeletesThePreparedTable) {
    m_def.Create("new");
    EXPECT_TRUE(m_def.Open("sections"));
    EXPECT_TRUE(m_def.IsOpen());
    EXPECT_FALSE(m_def.Append());
    EXPECT_FALSE(m_database->IsTable("new"));
    EXPECT_TRUE(m_def.IsOpen());
}

TEST_F(DbTableDefTest, Open_ATableOfAFile_ReadsItsRows) {
    const quillet::test::TemporaryFolder folder;
    quillet::test::WriteBytes(folder / "small.xml", quillet::test::SmallCatalog());
    for (const Reading reading : {Reading::Whole, Reading::Sequential}) {
        const auto database = ::Open(folder / "small.xml", reading);
        DbTableDef def(database.get());
        EXPECT_TRUE(def.Open("Alpha"));
        EXPECT_EQ(def.GetRecordCount(), 2);
    }
}

TEST_F(DbTableDefTest, Open_AQuery_ShowsTheAnswer) {
    CString name;
    ASSERT_TRUE(m_database->Query("select top 1 name from sections", name));
    EXPECT_TRUE(m_def.Open(name));
    EXPECT_EQ(m_def.GetFieldCount(), 1U);
    EXPECT_EQ(m_def.GetRecordCount(), 1);
}

// ---- Create and Append

TEST_F(DbTableDefTest, Create_MakesATableThatTheDatabaseDoesNotKnow) {
    EXPECT_TRUE(m_def.Create("new"));
    EXPECT_FALSE(m_def.IsOpen());
    EXPECT_FALSE(m_database->IsTable("new"));
    EXPECT_EQ(m_def.GetTableName(), "new");
    ASSERT_NE(m_def.GetTableDescr(), nullptr);
    EXPECT_TRUE(m_def.CreateField("a", DbFieldDescr::Long));
    EXPECT_EQ(m_def.GetFieldCount(), 1U);
    EXPECT_EQ(m_def.GetRecordCount(), 0);
    EXPECT_THAT(TakeLog(*m_database), IsEmpty());
}

TEST_F(DbTableDefTest, Create_ForATakenName_IsTrueAllTheSame) {
    EXPECT_TRUE(m_def.Create("sections"));
    EXPECT_EQ(m_def.GetFieldCount(), 0U);
}

TEST_F(DbTableDefTest, Create_NameInBrackets_KeepsThem) {
    m_def.Create("[new]");
    EXPECT_EQ(m_def.GetTableName(), "[new]");
}

TEST_F(DbTableDefTest, Create_Twice_DropsTheFirstTable) {
    m_def.Create("first");
    m_def.CreateField("a", DbFieldDescr::Long);
    EXPECT_TRUE(m_def.Create("second"));
    EXPECT_EQ(m_def.GetFieldCount(), 0U);
    EXPECT_TRUE(m_def.Append());
    EXPECT_FALSE(m_database->IsTable("first"));
    EXPECT_TRUE(m_database->IsTable("second"));
}

TEST_F(DbTableDefTest, Create_OnAnOpenDefinition_LeavesThatTable) {
    ASSERT_TRUE(m_def.Open("sections"));
    EXPECT_TRUE(m_def.Create("new"));
    EXPECT_FALSE(m_def.IsOpen());
    EXPECT_TRUE(m_database->IsTable("sections"));
}

TEST_F(DbTableDefTest, Append_RegistersTheTable) {
    m_def.Create("new");
    m_def.CreateField("a", DbFieldDescr::Long);
    const DbTableDescr* const descr = m_def.GetTableDescr();
    EXPECT_TRUE(m_def.Append());
    EXPECT_TRUE(m_def.IsOpen());
    EXPECT_EQ(m_database->GetTableDescr("new"), descr);
    EXPECT_EQ(m_def.GetTableDescr(), descr);
    EXPECT_EQ(m_def.GetTableName(), "new");
    EXPECT_EQ(m_def.GetRecordCount(), 0);
    EXPECT_EQ(m_database->GetTableInfo("new")->GetType(), DbTableInfo::Table);
    EXPECT_EQ(m_database->GetTableInfo("new")->GetSql(), "");
    EXPECT_THAT(TakeLog(*m_database), ElementsAre("Table 'new' created, index = 1, type = TABLE, sql = ''"));
}

TEST_F(DbTableDefTest, Append_ThenAddRowsAndFields_FollowsTheDatabase) {
    m_def.Create("new");
    m_def.CreateField("a", DbFieldDescr::Long);
    m_def.Append();
    m_database->GetTableData("new")->AddRow();
    EXPECT_EQ(m_def.GetRecordCount(), 1);
    EXPECT_TRUE(m_def.CreateField("b", DbFieldDescr::Long));
    EXPECT_EQ(m_database->GetTableData("new")->GetRow(0)->size(), 2U);
}

TEST_F(DbTableDefTest, Append_WithoutCreate_IsFalseAndSaysSo) {
    EXPECT_FALSE(m_def.Append());
    EXPECT_THAT(TakeLog(*m_database),
                ElementsAre("Cannot append database... call DbTableDef::Create(...) first"));
}

TEST_F(DbTableDefTest, Append_OnAnOpenDefinition_IsFalseAndLeavesItOpen) {
    m_def.Open("sections");
    EXPECT_FALSE(m_def.Append());
    EXPECT_TRUE(m_def.IsOpen());
}

TEST_F(DbTableDefTest, Append_Twice_IsFalseTheSecondTimeAndSaysSo) {
    m_def.Create("new");
    ASSERT_TRUE(m_def.Append());
    TakeLog(*m_database);
    EXPECT_FALSE(m_def.Append());
    EXPECT_THAT(TakeLog(*m_database),
                ElementsAre("Cannot append database... call DbTableDef::Create(...) first"));
    EXPECT_TRUE(m_def.IsOpen()) << "the table stands";
}

TEST_F(DbTableDefTest, Append_TakenName_IsFalseAndClosesTheDefinition) {
    m_def.Create("Sections");
    m_def.CreateField("a", DbFieldDescr::Long);
    EXPECT_FALSE(m_def.Append());
    EXPECT_THAT(TakeLog(*m_database),
                ElementsAre("Table 'Sections' already in database, cannot add another 'Sections' table"));
    ExpectClosed(m_def);
    EXPECT_EQ(m_def.GetTableName(), "");
    EXPECT_EQ(m_database->GetTableDescr("sections")->size(), 2U);
    EXPECT_FALSE(m_def.Append()) << "nothing is prepared any more";
    EXPECT_THAT(TakeLog(*m_database),
                ElementsAre("Cannot append database... call DbTableDef::Create(...) first"));
}

TEST_F(DbTableDefTest, Append_AfterTheDatabaseWent_IsFalseAndCloses) {
    m_def.Create("new");
    m_def.CreateField("a", DbFieldDescr::Long);
    m_database.reset();
    EXPECT_EQ(m_def.GetDatabase(), nullptr);
    EXPECT_EQ(m_def.GetFieldCount(), 1U) << "a prepared table is the definition's own";
    EXPECT_FALSE(m_def.Append());
    ExpectClosed(m_def);
}

// ---- Close and destruction

TEST_F(DbTableDefTest, Close_OnAnOpenDefinition_LetsGo) {
    m_def.Open("sections");
    m_def.Close();
    ExpectClosed(m_def);
    EXPECT_EQ(m_def.GetTableName(), "");
    EXPECT_EQ(m_def.GetDatabase(), m_database.get());
    EXPECT_TRUE(m_database->IsTable("sections"));
    EXPECT_TRUE(m_def.Open("sections"));
}

TEST_F(DbTableDefTest, Close_AfterCreate_DropsThePreparedTable) {
    m_def.Create("new");
    m_def.Close();
    ExpectClosed(m_def);
    EXPECT_FALSE(m_def.Append());
    EXPECT_FALSE(m_database->IsTable("new"));
}

TEST_F(DbTableDefTest, Destroy_AfterCreate_DeletesThePreparedTable) {
    const uint64 before = m_database->CalcSize();
    {
        DbTableDef def(m_database.get());
        def.Create("new");
        def.CreateField("a", DbFieldDescr::Long);
        EXPECT_GT(m_database->CalcSize(), before);
    }
    EXPECT_EQ(m_database->CalcSize(), before);
    EXPECT_FALSE(m_database->IsTable("new"));
}

TEST_F(DbTableDefTest, Destroy_AfterAppend_LeavesTheTable) {
    {
        DbTableDef def(m_database.get());
        def.Create("new");
        def.Append();
    }
    EXPECT_TRUE(m_database->IsTable("new"));
    EXPECT_EQ(m_database->GetTableData("new")->size(), 0U);
}

// ---- Fields and indexes

TEST_F(DbTableDefTest, CreateField_AddsAFieldThatIsNoKey) {
    m_def.Open("sections");
    EXPECT_TRUE(m_def.CreateField("area", DbFieldDescr::Float));
    const DbFieldDescr* const field = m_def.GetFieldInfo("area");
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->GetDbType(), DbFieldDescr::Float);
    EXPECT_FALSE(field->IsKey());
    EXPECT_FALSE(m_def.CreateField("AREA", DbFieldDescr::Float)) << "the name is taken";
}

TEST_F(DbTableDefTest, DeleteField_ByNameAndByIndex) {
    m_def.Open("sections");
    EXPECT_FALSE(m_def.DeleteField("area"));
    EXPECT_FALSE(m_def.DeleteField(2));
    EXPECT_FALSE(m_def.DeleteField(-1));
    EXPECT_TRUE(m_def.DeleteField("[Name]"));
    EXPECT_TRUE(m_def.DeleteField(0));
    EXPECT_EQ(m_def.GetFieldCount(), 0U);
}

TEST_F(DbTableDefTest, GetFieldInfo_ByNameAndByIndex) {
    m_def.Open("sections");
    ASSERT_NE(m_def.GetFieldInfo(1), nullptr);
    EXPECT_EQ(m_def.GetFieldInfo(1)->GetName(), "weight");
    EXPECT_EQ(m_def.GetFieldInfo("[WEIGHT]"), m_def.GetFieldInfo(1));
    EXPECT_EQ(m_def.GetFieldInfo(2), nullptr);
    EXPECT_EQ(m_def.GetFieldInfo(-1), nullptr);
    EXPECT_EQ(m_def.GetFieldInfo("area"), nullptr);
}

TEST_F(DbTableDefTest, CreateIndex_AddsOneOfTheNameAndFields) {
    m_def.Open("sections");
    DbTableDescr::DbIndex index("ByWeight", "weight,name");
    EXPECT_TRUE(m_def.CreateIndex(index));
    const DbTableDescr::DbIndex* const made = m_def.GetTableDescr()->FindIndex("byweight");
    ASSERT_NE(made, nullptr);
    EXPECT_NE(made, &index) << "the given one stays the caller's";
    EXPECT_THAT(made->GetFieldIndexes(), ElementsAre(1U, 0U));
    EXPECT_TRUE(m_def.CreateIndex(index)) << "one of the name exists";
}

TEST_F(DbTableDefTest, CreateIndex_OverAnUnknownField_IsFalse) {
    m_def.Open("sections");
    DbTableDescr::DbIndex index("ByArea", "area");
    EXPECT_FALSE(m_def.CreateIndex(index));
    EXPECT_EQ(m_def.GetTableDescr()->FindIndex("byarea"), nullptr);
}

TEST_F(DbTableDefTest, CreateIndex_BeforeAppend_GoesWithTheTable) {
    m_def.Create("new");
    m_def.CreateField("a", DbFieldDescr::Long);
    DbTableDescr::DbIndex index("ByA", "a");
    EXPECT_TRUE(m_def.CreateIndex(index));
    m_def.Append();
    EXPECT_NE(m_database->GetTableDescr("new")->FindIndex("bya"), nullptr);
}

// ---- Copies

TEST_F(DbTableDefTest, Copy_OfAnOpenDefinition_IsOpenOnTheSameTable) {
    m_def.Open("sections");
    DbTableDef copy(m_def);
    m_def.Close();
    EXPECT_TRUE(copy.IsOpen());
    EXPECT_EQ(copy.GetTableName(), "sections");
    EXPECT_EQ(copy.GetDatabase(), m_database.get());
    EXPECT_EQ(copy.GetRecordCount(), 2);
}

TEST_F(DbTableDefTest, Copy_OfAnAppendedDefinition_IsOpen) {
    m_def.Create("new");
    m_def.Append();
    DbTableDef copy(m_def);
    EXPECT_TRUE(copy.IsOpen());
}

TEST_F(DbTableDefTest, Copy_OfAPreparedTable_IsClosed) {
    m_def.Create("new");
    DbTableDef copy(m_def);
    ExpectClosed(copy);
    EXPECT_EQ(copy.GetTableName(), "");
    EXPECT_FALSE(copy.Append());
    EXPECT_TRUE(m_def.Append()) << "the table stayed where it was";
}

TEST_F(DbTableDefTest, Assign_OntoAPreparedTable_DropsIt) {
    DbTableDef other(m_database.get());
    other.Open("sections");
    m_def.Create("new");
    m_def = other;
    EXPECT_TRUE(m_def.IsOpen());
    EXPECT_EQ(m_def.GetTableName(), "sections");
    EXPECT_FALSE(m_def.Append());
}

TEST_F(DbTableDefTest, Assign_APreparedTable_ClosesTheTarget) {
    DbTableDef other(m_database.get());
    other.Create("new");
    m_def.Open("sections");
    m_def = other;
    ExpectClosed(m_def);
}

TEST_F(DbTableDefTest, Assign_ToItself_KeepsThePreparedTable) {
    m_def.Create("new");
    DbTableDef& same = m_def;
    m_def = same;
    EXPECT_TRUE(m_def.Append());
}

// ---- Deleted and renamed tables

TEST_F(DbTableDefTest, DeletedTable_ClosesTheDefinition) {
    m_def.Open("sections");
    m_database->DeleteTable("sections");
    ExpectClosed(m_def);
    m_database->CreateTable("sections", DbTableInfo::Table);
    ExpectClosed(m_def);
    EXPECT_TRUE(m_def.Open("sections"));
}

TEST_F(DbTableDefTest, DeletedTableAfterAppend_ClosesTheDefinition) {
    m_def.Create("new");
    m_def.Append();
    m_database->DeleteTable("new");
    ExpectClosed(m_def);
}

TEST_F(DbTableDefTest, RenamedTable_StaysOpenUnderTheOldName) {
    m_def.Open("sections");
    m_database->RenameTable("sections", "profiles");
    EXPECT_TRUE(m_def.IsOpen());
    EXPECT_EQ(m_def.GetTableName(), "sections");
    EXPECT_EQ(m_def.GetRecordCount(), 2);
}

TEST_F(DbTableDefTest, ClearedTable_StaysOpenAndEmpty) {
    m_def.Open("sections");
    m_database->ClearTable("sections");
    EXPECT_TRUE(m_def.IsOpen());
    EXPECT_EQ(m_def.GetFieldCount(), 0U);
    EXPECT_EQ(m_def.GetRecordCount(), 0);
}

TEST_F(DbTableDefTest, DatabaseGone_ClosesTheDefinition) {
    m_def.Open("sections");
    m_database.reset();
    EXPECT_EQ(m_def.GetDatabase(), nullptr);
    ExpectClosed(m_def);
    EXPECT_FALSE(m_def.Open("sections"));
}

TEST_F(DbTableDefTest, DatabasePointedAtAnotherFile_ClosesTheDefinition) {
    m_def.Open("sections");
    m_database->GetSource()->SetFile("", false);
    ExpectClosed(m_def);
    EXPECT_EQ(m_def.GetDatabase(), m_database.get());
}

}  // namespace
