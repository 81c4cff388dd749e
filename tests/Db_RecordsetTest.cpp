#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/CatalogHelpers.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

using Index = DbTableDescr::DbIndex;

std::string Report(int line, const std::string& message) {
    return "Quillet exception thrown\r\nFile: Db/Quillet/Db_Recordset @ " + std::to_string(line) +
           "\r\nMessage: " + message;
}

// A table t with a (long), b (text) and c (double), and a row for each number: the number, a letter, the
// number and a half.
DbTableInfo* AddNumbers(DbDatabase& database, const CString& name, const std::vector<int>& numbers) {
    DbTableInfo* const info = database.CreateTable(name, DbTableInfo::Table);
    info->GetDescr()->CreateField("a", true, DbFieldDescr::Long);
    info->GetDescr()->CreateField("b", false, DbFieldDescr::Text);
    info->GetDescr()->CreateField("c", false, DbFieldDescr::Double);
    for (const int number : numbers) {
        DbTableRow& row = (*info->GetData())[info->GetData()->AddRow()];
        row.SetValue("a", CComVariant(number));
        row.SetValue("b", CComVariant(CString(std::string(1, static_cast<char>('w' + number)))));
        row.SetValue("c", CComVariant(number + 0.5));
    }
    return info;
}

class DbRecordsetTest : public testing::Test {
protected:
    DbRecordsetTest() {
        AddNumbers(*m_database, "t", {1, 2, 3});
        AddNumbers(*m_database, "empty", {});
        m_database->Sync();
        TakeLog(*m_database);
    }

    // The cursor open on a table, with an empty log.
    DbRecordset& OnTable(const CString& name = "t") {
        EXPECT_TRUE(m_rs.Open(name));
        TakeLog(*m_database);
        return m_rs;
    }
    DbTableData& Data(const CString& name = "t") { return *m_database->GetTableData(name); }
    DbTableDescr& Descr(const CString& name = "t") { return *m_database->GetTableDescr(name); }

    // The numbers in field a, in the table's own order.
    std::vector<std::string> Numbers(const CString& name = "t") {
        std::vector<std::string> numbers;
        for (uint64 i = 0; i < Data(name).size(); ++i) {
            numbers.push_back(Cell(&Data(name), i, 0));
        }
        return numbers;
    }
    // The number in the current row.
    int Number() {
        CComVariant value;
        m_rs.GetFieldValue(0, value);
        return value.vt == VT_I4 ? static_cast<int>(value.lVal) : -1;
    }
    void SetNumber(int number) { m_rs.SetFieldValue(0, CComVariant(number)); }

    // An index that gives the rows of t in descending order of a.
    const Index* BackwardIndex() {
        Descr().CreateIndex("back", "a");
        Index* const index = Descr().FindIndex("back");
        index->GetRowOrder() = {2, 1, 0};
        return index;
    }

    StaticsGuard m_statics;
    std::unique_ptr<DbDatabase> m_database = std::make_unique<DbDatabase>();
    DbRecordset m_rs{m_database.get()};
};

// The results of a cursor without a table.
void ExpectClosed(DbRecordset& rs) {
    EXPECT_FALSE(rs.IsOpen());
    EXPECT_TRUE(rs.IsEOF());
    EXPECT_FALSE(rs.IsDeleted());
    EXPECT_EQ(rs.GetRecordCount(), 0);
    EXPECT_EQ(rs.GetFieldCount(), 0U);
    EXPECT_EQ(rs.GetFieldInfo(0), nullptr);
    EXPECT_EQ(rs.GetFieldInfo("a"), nullptr);
    EXPECT_EQ(rs.GetFieldIndex("a"), -1);
    EXPECT_EQ(rs.GetCurrentRow(), nullptr);
    EXPECT_EQ(rs.GetCurrentIndex(), "");
    EXPECT_FALSE(rs.CanUpdate());
    EXPECT_FALSE(rs.MoveFirst());
    EXPECT_FALSE(rs.MoveLast());
    EXPECT_FALSE(rs.MoveNext());
    EXPECT_FALSE(rs.MovePrev());
    EXPECT_FALSE(rs.Move(1));
    EXPECT_FALSE(rs.SetAbsolutePosition(0));
    EXPECT_FALSE(rs.FindFirst("a > 0"));
    EXPECT_FALSE(rs.FindNext("a > 0"));
    EXPECT_FALSE(rs.FindPrev("a > 0"));
    EXPECT_FALSE(rs.FindLast("a > 0"));
    CComVariant key(1);
    EXPECT_FALSE(rs.Seek("i", &key));
    EXPECT_FALSE(rs.SetCurrentIndex("i"));
    EXPECT_FALSE(rs.SetCurrentIndex(nullptr));
    CComVariant value;
    EXPECT_EQ(ThrownMessage([&] { rs.GetFieldValue(0, value); }), Report(1302, "Out of recordset range"));
    EXPECT_NE(ThrownMessage([&] { rs.GetFieldValue("a"); }), "");
    EXPECT_EQ(ThrownMessage([&] { rs.IsFieldNull(&value); }), Report(1361, "Out of recordset range"));
    EXPECT_NE(ThrownMessage([&] { rs.SetFieldNull(&value); }), "");
    rs.AddNew();
    EXPECT_NE(ThrownMessage([&] { rs.Update(); }), "");
    EXPECT_NE(ThrownMessage([&] { rs.Delete(); }), "");
    rs.CancelUpdate();
    rs.Requery();
    int number = 0;
    EXPECT_NE(ThrownMessage([&] { rs.MapClassMember("a", number); }), "");
}

// ---- Open and close

TEST_F(DbRecordsetTest, Construct_IsClosedAtTheFirstPosition) {
    EXPECT_FALSE(m_rs.IsOpen());
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 0);
    EXPECT_FALSE(m_rs.IsBOF());
    ExpectClosed(m_rs);
}

TEST_F(DbRecordsetTest, Open_ATable_ReadsItsFirstRow) {
    EXPECT_TRUE(m_rs.Open("t"));
    EXPECT_TRUE(m_rs.IsOpen());
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 0);
    EXPECT_EQ(m_rs.GetRecordCount(), 3);
    EXPECT_EQ(m_rs.GetFieldCount(), 3U);
    EXPECT_FALSE(m_rs.IsBOF());
    EXPECT_FALSE(m_rs.IsEOF());
    EXPECT_EQ(m_rs.GetCurrentRow(), Data().GetRow(0));
    EXPECT_EQ(Number(), 1);
    EXPECT_FALSE(m_rs.IsDeleted());
}

TEST_F(DbRecordsetTest, Open_AQuery_ShowsItsAnswer) {
    EXPECT_TRUE(m_rs.Open("select a from t where a > 1"));
    EXPECT_EQ(m_rs.GetRecordCount(), 2);
    EXPECT_EQ(m_rs.GetFieldCount(), 1U);
    EXPECT_EQ(Number(), 2);
}

TEST_F(DbRecordsetTest, Open_WithoutText_TakesTheDefaultOne) {
    class Numbers : public DbRecordset {
    public:
        using DbRecordset::DbRecordset;
        CString GetDefaultSQL() override { return "select * from t where a = 3"; }
    } rs(m_database.get());
    EXPECT_TRUE(rs.Open());
    EXPECT_EQ(rs.GetRecordCount(), 1);
    EXPECT_FALSE(DbRecordset(m_database.get()).Open()) << "no text names no table";
}

TEST_F(DbRecordsetTest, Open_UnknownTable_IsFalseAndTheLogSaysWhy) {
    EXPECT_FALSE(m_rs.Open("nosuchtable"));
    EXPECT_FALSE(m_rs.IsOpen());
    EXPECT_THAT(TakeLog(*m_database), Contains("SQL Analyze - table 'nosuchtable' not found"));
}

TEST_F(DbRecordsetTest, Open_ThatFails_LeavesAnOpenCursor) {
    OnTable().MoveLast();
    m_rs.Edit();
    EXPECT_FALSE(m_rs.Open("nosuchtable"));
    EXPECT_TRUE(m_rs.IsOpen());
    EXPECT_EQ(Number(), 3);
    EXPECT_TRUE(m_rs.CanUpdate());
    SetNumber(9);
    m_rs.Update();
    EXPECT_THAT(Numbers(), ElementsAre("1", "2", "9"));
}

TEST_F(DbRecordsetTest, Open_AnEmptyTable_IsTrueAndAtTheEnd) {
    EXPECT_TRUE(m_rs.Open("empty"));
    EXPECT_TRUE(m_rs.IsOpen());
    EXPECT_TRUE(m_rs.IsEOF());
    EXPECT_FALSE(m_rs.IsBOF());
    EXPECT_FALSE(m_rs.MoveFirst());
    EXPECT_FALSE(m_rs.MoveLast());
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 0);
    EXPECT_EQ(m_rs.GetCurrentRow(), nullptr);
}

TEST_F(DbRecordsetTest, Seek_AnIndexThatLostAField_FindsNothingAndMovesNowhere) {
    Descr().CreateIndex("c", "c");
    Descr().CreateIndex("ac", "a,c");
    OnTable().Move(1);
    CComVariant keys[] = {CComVariant(3.5)};
    Descr().DeleteField("b");
    EXPECT_TRUE(m_rs.Seek("c", keys)) << "a field before it went";
    EXPECT_EQ(m_rs.GetFieldValue("a").lVal, 3);
    Descr().DeleteField("c");
    const long position = m_rs.GetAbsolutePosition();
    for (CComVariant key : {CComVariant(3.5), CComVariant(), CComVariant(3)}) {
        EXPECT_FALSE(m_rs.Seek("c", &key)) << "the current index";
        EXPECT_FALSE(m_rs.Seek("ac", &key, 1));
    }
    EXPECT_EQ(m_rs.GetAbsolutePosition(), position);
    EXPECT_EQ(m_rs.GetCurrentIndex(), CString("c"));
    EXPECT_FALSE(m_rs.SetCurrentIndex(Descr().FindIndex("ac")));
}

TEST_F(DbRecordsetTest, Open_Again_StartsAtTheFirstRowWithoutIndexAndEdit) {
    OnTable().SetCurrentIndex(BackwardIndex());
    m_rs.MoveLast();
    m_rs.Edit();
    AddNumbers(*m_database, "u", {7, 8});
    EXPECT_TRUE(m_rs.Open("u"));
    EXPECT_EQ(Number(), 7);
    EXPECT_EQ(m_rs.GetCurrentIndex(), "");
    EXPECT_NE(ThrownMessage([&] { SetNumber(1); }), "");
}

TEST_F(DbRecordsetTest, Open_TheSameTableAgain_KeepsTheIndex) {
    OnTable().SetCurrentIndex(BackwardIndex());
    EXPECT_TRUE(m_rs.Open("t"));
    EXPECT_EQ(m_rs.GetCurrentIndex(), "back");
    EXPECT_EQ(Number(), 3);
}

TEST_F(DbRecordsetTest, Open_ATableDefinition_ShowsItsTable) {
    DbTableDef def(m_database.get());
    def.Open("t");
    DbRecordset rs(nullptr);
    EXPECT_TRUE(rs.Open(&def));
    EXPECT_EQ(rs.GetRecordCount(), 3);
}

TEST_F(DbRecordsetTest, Open_AClosedTableDefinition_IsFalseAndKeepsTheCursor) {
    OnTable();
    DbTableDef def(m_database.get());
    EXPECT_FALSE(m_rs.Open(&def));
    def.Create("new");
    EXPECT_FALSE(m_rs.Open(&def)) << "not appended yet";
    EXPECT_TRUE(m_rs.IsOpen());
}

TEST_F(DbRecordsetTest, Open_ATableDefinitionOfARenamedTable_IsFalse) {
    DbTableDef def(m_database.get());
    def.Open("t");
    m_database->RenameTable("t", "u");
    EXPECT_FALSE(m_rs.Open(&def));
    EXPECT_FALSE(m_rs.IsOpen());
}

TEST_F(DbRecordsetTest, Open_NullTableDefinition_Throws) {
    EXPECT_EQ(ThrownMessage([&] { m_rs.Open(static_cast<DbTableDef*>(nullptr)); }),
              Report(334, "tableDef object not defined"));
}

// ---- Tables by name only

TEST_F(DbRecordsetTest, OpenTable_NameThatHoldsSelect_Opens) {
    AddNumbers(*m_database, "Selection", {4});
    EXPECT_FALSE(m_rs.Open("Selection")) << "read as a query";
    TakeLog(*m_database);
    EXPECT_TRUE(m_rs.OpenTable("SELECTION"));
    EXPECT_EQ(Number(), 4);
    EXPECT_EQ(m_rs.GetTableName(), "Selection");
    EXPECT_THAT(TakeLog(*m_database), IsEmpty());
    EXPECT_TRUE(m_rs.FindFirst("a = 4"));
    EXPECT_TRUE(m_rs.CanUpdate());
}

TEST_F(DbRecordsetTest, OpenTable_UnknownName_IsFalseAndKeepsTheCursor) {
    OnTable().MoveLast();
    EXPECT_FALSE(m_rs.OpenTable("nosuchtable"));
    EXPECT_FALSE(m_rs.OpenTable("select * from empty"));
    EXPECT_FALSE(m_rs.OpenTable("[empty]")) << "brackets are letters of a name";
    EXPECT_FALSE(m_rs.OpenTable(""));
    EXPECT_EQ(Number(), 3);
    EXPECT_THAT(TakeLog(*m_database), IsEmpty());
    m_database.reset();
    EXPECT_FALSE(m_rs.OpenTable("t"));
}

TEST_F(DbRecordsetTest, OpenTable_BindsVariablesAndReadsTheFirstRow) {
    struct Bound : DbRecordset {
        using DbRecordset::DbRecordset;
        void InitFieldExchange() override { MapClassMember("a", m_number); }
        int m_number = 0;
    };
    Bound bound(m_database.get());
    EXPECT_TRUE(bound.OpenTable("t"));
    EXPECT_EQ(bound.m_number, 1);
}

TEST_F(DbRecordsetTest, OpenTable_AnswerOfAQuery_IsBroughtUpToDate) {
    CString name;
    ASSERT_TRUE(m_database->Query("select a from t where a > 1", name));
    Data()[0].SetValue("a", CComVariant(9));
    EXPECT_TRUE(m_rs.OpenTable(name));
    EXPECT_EQ(m_rs.GetRecordCount(), 3);
}

TEST_F(DbRecordsetTest, GetTableName_FollowsTheTable) {
    EXPECT_EQ(m_rs.GetTableName(), "");
    OnTable("T");
    EXPECT_EQ(m_rs.GetTableName(), "t") << "as it is registered";
    m_database->RenameTable("t", "T");
    EXPECT_EQ(m_rs.GetTableName(), "T");
    m_database->RenameTable("T", "u");
    EXPECT_EQ(m_rs.GetTableName(), "u");
    AddNumbers(*m_database, "t", {1});
    EXPECT_EQ(m_rs.GetTableName(), "u");
    m_database->RenameTable("u", "empty");
    EXPECT_EQ(m_rs.GetTableName(), "") << "the name stayed with the table that had it";
    EXPECT_TRUE(m_rs.Open("select a from t"));
    EXPECT_THAT(m_rs.GetTableName().ToUtf8(), StartsWith("Query_"));
    m_rs.Close();
    EXPECT_EQ(m_rs.GetTableName(), "");
}

TEST_F(DbRecordsetTest, Open_AQueryDefinition_ShowsItsAnswer) {
    DbQueryDef def(m_database.get());
    def.Create("q", "select a from t where a < 3");
    DbRecordset rs(nullptr);
    EXPECT_TRUE(rs.Open(&def));
    EXPECT_EQ(rs.GetRecordCount(), 2);
}

TEST_F(DbRecordsetTest, Open_AQueryDefinitionThatNoLongerAnalyses_IsFalse) {
    OnTable();
    DbQueryDef def(m_database.get());
    def.Create("q", "select a from empty");
    m_database->DeleteTable("empty");
    EXPECT_FALSE(m_rs.Open(&def));
    EXPECT_TRUE(m_rs.IsOpen()) << "the cursor stays where it was";
}

TEST_F(DbRecordsetTest, Open_NullQueryDefinition_Throws) {
    EXPECT_EQ(ThrownMessage([&] { m_rs.Open(static_cast<DbQueryDef*>(nullptr)); }),
              Report(352, "queryDef object not defined"));
}

TEST_F(DbRecordsetTest, Close_LetsGoOfTableAndDatabase) {
    OnTable().SetCurrentIndex(BackwardIndex());
    const uint64 bookmark = m_rs.GetBookmark();
    int number = 0;
    m_rs.MapClassMember("a", number);
    m_rs.Close();
    EXPECT_FALSE(m_rs.IsBookmark(bookmark));
    ExpectClosed(m_rs);
    EXPECT_FALSE(m_rs.Open("t")) << "the cursor's own database has no such table";
    EXPECT_TRUE(m_database->IsTable("t"));
}

TEST_F(DbRecordsetTest, Close_DropsAPendingEdit) {
    OnTable().Edit();
    m_rs.Close();
    EXPECT_EQ(ThrownMessage([&] { SetNumber(1); }),
              Report(1353, "SetFieldValue(...) without proper update operation"));
}

TEST_F(DbRecordsetTest, SetDatabase_ClosesAndGoesOver) {
    DbDatabase other;
    AddNumbers(other, "u", {5});
    OnTable().SetCurrentIndex(BackwardIndex());
    m_rs.MoveLast();
    const uint64 bookmark = m_rs.GetBookmark();
    m_rs.Edit();
    m_rs.SetDatabase(&other);
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 0);
    EXPECT_FALSE(m_rs.IsBookmark(bookmark));
    EXPECT_NE(ThrownMessage([&] { SetNumber(1); }), "");
    ExpectClosed(m_rs);
    EXPECT_TRUE(m_rs.Open("u"));
    EXPECT_EQ(Number(), 5);
}

// ---- A database owned by the cursor

class OwnDatabase : public DbRecordset {
public:
    explicit OwnDatabase(const CString& path) : DbRecordset(nullptr), m_path(path) {}
    CString GetDefaultDBName() override { return m_path; }
    CString GetDefaultSQL() override { return "Alpha"; }

    CString m_path;
};

class DbRecordsetOwnDatabase : public DbRecordsetTest {
protected:
    DbRecordsetOwnDatabase() { WriteBytes(m_folder / "small.xml", SmallCatalog()); }

    TemporaryFolder m_folder;
    CString m_path{Utf8(m_folder / "small.xml")};
    std::int32_t m_before = DbDatabase::m_openDbCount;
};

TEST_F(DbRecordsetOwnDatabase, Open_WithoutADatabase_OpensTheDefaultFile) {
    OwnDatabase rs(m_path);
    EXPECT_EQ(DbDatabase::m_openDbCount, m_before);
    EXPECT_TRUE(rs.Open());
    EXPECT_EQ(DbDatabase::m_openDbCount, m_before + 1);
    EXPECT_EQ(rs.GetRecordCount(), 2);
    EXPECT_EQ(TextOf(rs.GetFieldValue("name")), "one");
    EXPECT_TRUE(rs.Open("Beta")) << "the database is the same";
    EXPECT_EQ(DbDatabase::m_openDbCount, m_before + 1);
}

TEST_F(DbRecordsetOwnDatabase, Close_DeletesItAndSavesWhatChanged) {
    OwnDatabase rs(m_path);
    rs.Open();
    rs.Edit();
    rs.SetFieldValue("name", CComVariant("eins"));
    rs.Update();
    rs.Close();
    EXPECT_EQ(DbDatabase::m_openDbCount, m_before);
    EXPECT_THAT(ReadBytes(m_folder / "small.xml"), HasSubstr("<row name=\"eins\""));
    EXPECT_TRUE(rs.Open()) << "once more";
    EXPECT_EQ(TextOf(rs.GetFieldValue("name")), "eins");
}

TEST_F(DbRecordsetOwnDatabase, Destroy_DeletesIt) {
    {
        OwnDatabase rs(m_path);
        rs.Open();
    }
    EXPECT_EQ(DbDatabase::m_openDbCount, m_before);
}

TEST_F(DbRecordsetOwnDatabase, SetDatabase_DeletesIt) {
    OwnDatabase rs(m_path);
    rs.Open();
    rs.SetDatabase(m_database.get());
    EXPECT_EQ(DbDatabase::m_openDbCount, m_before);
    EXPECT_TRUE(rs.Open("t"));
}

TEST_F(DbRecordsetOwnDatabase, SetDatabase_ToTheOwnOne_KeepsIt) {
    OwnDatabase rs(m_path);
    rs.Open();
    auto* const own = dynamic_cast<DbDatabase*>(rs.GetCurrentRow()->GetDescr()->GetParent());
    ASSERT_NE(own, nullptr);
    DbTableDef def(own);
    def.Open("Beta");
    EXPECT_TRUE(rs.Open(&def));
    EXPECT_EQ(rs.GetRecordCount(), 1);
    EXPECT_EQ(DbDatabase::m_openDbCount, m_before + 1);
    rs.Close();
    EXPECT_EQ(DbDatabase::m_openDbCount, m_before);
}

TEST_F(DbRecordsetOwnDatabase, Open_AFileThatCannotBeRead_IsFalse) {
    OwnDatabase rs(Utf8(m_folder / "none.xml"));
    EXPECT_FALSE(rs.Open());
    EXPECT_FALSE(rs.IsOpen());
    EXPECT_EQ(DbDatabase::m_openDbCount, m_before);
    rs.m_path = m_path;
    EXPECT_TRUE(rs.Open()) << "the next attempt starts anew";
}

TEST_F(DbRecordsetOwnDatabase, Open_UnknownTable_IsFalseAndKeepsTheDatabase) {
    OwnDatabase rs(m_path);
    EXPECT_FALSE(rs.Open("nosuchtable"));
    EXPECT_EQ(DbDatabase::m_openDbCount, m_before + 1);
    EXPECT_TRUE(rs.Open("Alpha"));
    EXPECT_EQ(DbDatabase::m_openDbCount, m_before + 1);
}

TEST_F(DbRecordsetOwnDatabase, CanUpdate_ReadOnlySource_IsFalse) {
    DbDatabase database;
    database.GetSource()->SetFile(m_path, true);
    DbRecordset rs(&database);
    ASSERT_TRUE(rs.Open("Alpha"));
    EXPECT_FALSE(rs.CanUpdate());
    rs.Edit();
    EXPECT_EQ(ThrownMessage([&] { rs.Update(); }),
              Report(990, "Read only recordset (or database), cannot be modified (Update operation)"));
    EXPECT_EQ(ThrownMessage([&] { rs.Delete(); }),
              Report(895, "Read only recordset (or database), cannot be modified (Delete operation)"));
    EXPECT_EQ(rs.GetRecordCount(), 2);
}

TEST_F(DbRecordsetOwnDatabase, Open_LazyFile_ReadsTheRows) {
    for (const auto reading : {Reading::Whole, Reading::Sequential}) {
        const auto database = Open(m_folder / "small.xml", reading);
        DbRecordset rs(database.get());
        EXPECT_TRUE(rs.Open("beta"));
        EXPECT_EQ(rs.GetRecordCount(), 1);
        EXPECT_FALSE(database->IsChanged());
    }
}

// ---- Moves

TEST_F(DbRecordsetTest, MoveFirst_ReadsTheFirstRow) {
    OnTable().MoveLast();
    EXPECT_TRUE(m_rs.MoveFirst());
    EXPECT_EQ(Number(), 1);
}

TEST_F(DbRecordsetTest, MoveFirst_WithAnIndex_ReadsTheFirstRowOfItsOrder) {
    OnTable().SetCurrentIndex(BackwardIndex());
    EXPECT_TRUE(m_rs.MoveFirst());
    EXPECT_EQ(Number(), 3);
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 0);
}

TEST_F(DbRecordsetTest, MoveNext_PastTheLastRow_IsFalseAndAtTheEnd) {
    OnTable().MoveLast();
    EXPECT_FALSE(m_rs.MoveNext());
    EXPECT_TRUE(m_rs.IsEOF());
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 3);
    EXPECT_FALSE(m_rs.MoveNext());
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 4) << "the position moves on";
    EXPECT_FALSE(m_rs.MovePrev());
    EXPECT_TRUE(m_rs.MovePrev());
    EXPECT_EQ(Number(), 3);
}

TEST_F(DbRecordsetTest, MovePrev_BeforeTheFirstRow_IsFalseAndAtTheBeginning) {
    OnTable();
    EXPECT_FALSE(m_rs.MovePrev());
    EXPECT_TRUE(m_rs.IsBOF());
    EXPECT_FALSE(m_rs.IsEOF());
    EXPECT_EQ(m_rs.GetAbsolutePosition(), -1);
    EXPECT_FALSE(m_rs.MovePrev());
    EXPECT_EQ(m_rs.GetAbsolutePosition(), -1);
    EXPECT_TRUE(m_rs.MoveNext());
    EXPECT_EQ(Number(), 1);
}

TEST_F(DbRecordsetTest, MovePrev_FarBeforeTheFirstRow_StaysThere) {
    OnTable().SetAbsolutePosition(-5);
    EXPECT_FALSE(m_rs.MovePrev());
    EXPECT_EQ(m_rs.GetAbsolutePosition(), -5);
}

TEST_F(DbRecordsetTest, MoveLast_ReadsTheLastRow) {
    EXPECT_TRUE(OnTable().MoveLast());
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 2);
    EXPECT_EQ(Number(), 3);
}

TEST_F(DbRecordsetTest, MoveLast_OfAnEmptyTable_LeavesThePosition) {
    OnTable("empty").SetAbsolutePosition(4);
    EXPECT_FALSE(m_rs.MoveLast());
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 4);
}

TEST_F(DbRecordsetTest, Move_ByANumberOfRows) {
    EXPECT_TRUE(OnTable().Move(2));
    EXPECT_EQ(Number(), 3);
    EXPECT_TRUE(m_rs.Move(-1));
    EXPECT_EQ(Number(), 2);
    EXPECT_TRUE(m_rs.Move(0));
    EXPECT_FALSE(m_rs.Move(-4));
    EXPECT_EQ(m_rs.GetAbsolutePosition(), -3) << "unlike MovePrev";
    EXPECT_FALSE(m_rs.Move(6));
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 3);
}

TEST_F(DbRecordsetTest, Move_BeyondAnyPosition_StaysInRange) {
    OnTable().SetAbsolutePosition(2147483647);
    EXPECT_FALSE(m_rs.MoveNext());
    EXPECT_TRUE(m_rs.IsEOF());
    EXPECT_FALSE(m_rs.Move(2147483647));
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 2147483647);
    EXPECT_TRUE(m_rs.Move(-2147483647));
    EXPECT_FALSE(m_rs.Move(-2147483647));
    EXPECT_FALSE(m_rs.Move(-2147483647));
    EXPECT_TRUE(m_rs.IsBOF());
    EXPECT_FALSE(m_rs.FindNext("a = 1"));
}

TEST_F(DbRecordsetTest, SetAbsolutePosition_BehindTheRows_IsFalseAndKept) {
    EXPECT_FALSE(OnTable().SetAbsolutePosition(5));
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 5);
    EXPECT_TRUE(m_rs.IsEOF());
    EXPECT_TRUE(m_rs.SetAbsolutePosition(1));
    EXPECT_EQ(Number(), 2);
    EXPECT_FALSE(m_rs.SetAbsolutePosition(-1));
    EXPECT_TRUE(m_rs.IsBOF());
}

TEST_F(DbRecordsetTest, Moves_DropAPendingEdit) {
    Descr().CreateIndex("i", "a");
    CComVariant key(2);
    const uint64 bookmark = OnTable().GetBookmark();
    const std::vector<std::function<void()>> moves = {
        [&] { m_rs.MoveFirst(); },
        [&] { m_rs.MoveNext(); },
        [&] { m_rs.MovePrev(); },
        [&] { m_rs.MoveLast(); },
        [&] { m_rs.Move(0); },
        [&] { m_rs.FindFirst("a = 2"); },
        [&] { m_rs.FindNext("a = 2"); },
        [&] { m_rs.FindPrev("a = 2"); },
        [&] { m_rs.FindLast("a = 2"); },
        [&] { m_rs.Find(static_cast<DbRecordset::eFindOperation>(7), "a = 2"); },
        [&] { m_rs.Seek("i", &key); },
        [&] { m_rs.Seek("nosuchindex", &key); },
        [&] { m_rs.GetBookmark(); },
        [&] { m_rs.SetBookmark(bookmark); },
        [&] { m_rs.SetBookmark(99999); },
        [&] { m_rs.GetLastModifiedBookmark(); },
        [&] { m_rs.CancelUpdate(); },
        [&] { m_rs.Open("t"); },
    };
    for (std::size_t i = 0; i < moves.size(); ++i) {
        m_rs.SetAbsolutePosition(1);
        m_rs.Edit();
        SetNumber(77);
        moves[i]();
        EXPECT_EQ(ThrownMessage([&] { SetNumber(78); }),
                  Report(1353, "SetFieldValue(...) without proper update operation"))
            << i;
        m_rs.Edit();
        m_rs.Update();
        EXPECT_THAT(Numbers(), ElementsAre("1", "2", "3")) << i << ": what was pending is forgotten";
    }
}

TEST_F(DbRecordsetTest, SetAbsolutePosition_KeepsAPendingEdit) {
    OnTable().Edit();
    SetNumber(9);
    m_rs.SetAbsolutePosition(2);
    m_rs.Update();
    EXPECT_THAT(Numbers(), ElementsAre("1", "2", "9"));
}

// ---- Find

TEST_F(DbRecordsetTest, FindFirst_MovesToTheFirstRowThatMatches) {
    EXPECT_TRUE(OnTable().FindFirst("a > 1"));
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 1);
    EXPECT_EQ(Number(), 2);
}

TEST_F(DbRecordsetTest, FindFirstThenFindNext_OfTheOnlyMatch) {
    AddNumbers(*m_database, "u", {3, 2, 1});
    EXPECT_TRUE(OnTable("u").FindFirst("a = 1"));
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 2);
    EXPECT_FALSE(m_rs.FindNext("a = 1"));
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 2);
    std::vector<std::string> timings;
    for (const std::string& line : TakeLog(*m_database)) {
        if (line.starts_with("FindRow 'a = 1' processed in ") && line.ends_with(" [s]")) {
            timings.push_back(line);
        }
    }
    EXPECT_THAT(timings, SizeIs(2)) << "one line for each call";
}

TEST_F(DbRecordsetTest, FindNextAndFindPrev_GoOnFromTheCurrentRow) {
    OnTable();
    EXPECT_TRUE(m_rs.FindNext("a > 0"));
    EXPECT_EQ(Number(), 2) << "behind the current row";
    EXPECT_TRUE(m_rs.FindNext("a > 0"));
    EXPECT_FALSE(m_rs.FindNext("a > 0"));
    EXPECT_EQ(Number(), 3);
    EXPECT_TRUE(m_rs.FindPrev("a > 0"));
    EXPECT_TRUE(m_rs.FindPrev("a > 0"));
    EXPECT_EQ(Number(), 1);
}

TEST_F(DbRecordsetTest, FindNext_FromBeforeTheFirstRow_StartsAtIt) {
    OnTable().MovePrev();
    EXPECT_TRUE(m_rs.FindNext("a > 0"));
    EXPECT_EQ(Number(), 1);
}

TEST_F(DbRecordsetTest, FindPrev_FromFarBehindTheRows_FindsTheLastMatch) {
    OnTable().SetAbsolutePosition(2000000000);
    EXPECT_TRUE(m_rs.FindPrev("a < 3"));
    EXPECT_EQ(Number(), 2);
}

TEST_F(DbRecordsetTest, FindPrev_AtTheFirstRow_IsFalseWithoutAnalysing) {
    OnTable();
    EXPECT_FALSE(m_rs.FindPrev("a = 1"));
    m_rs.MovePrev();
    EXPECT_FALSE(m_rs.FindPrev("a = 1"));
    EXPECT_THAT(TakeLog(*m_database), IsEmpty());
}

TEST_F(DbRecordsetTest, FindLast_MovesToTheLastRowThatMatches) {
    EXPECT_TRUE(OnTable().FindLast("a < 3"));
    EXPECT_EQ(Number(), 2);
}

TEST_F(DbRecordsetTest, FindLast_OfAnEmptyTable_IsFalseWithoutAnalysing) {
    EXPECT_FALSE(OnTable("empty").FindLast("a = 1"));
    EXPECT_THAT(TakeLog(*m_database), IsEmpty());
}

TEST_F(DbRecordsetTest, FindFirst_OfAnEmptyTable_IsFalseWithATimingLine) {
    EXPECT_FALSE(OnTable("empty").FindFirst("a = 1"));
    EXPECT_THAT(TakeLog(*m_database).back(), StartsWith("FindRow 'a = 1' processed in "));
}

TEST_F(DbRecordsetTest, Find_ByOperation) {
    OnTable();
    EXPECT_TRUE(m_rs.Find(DbRecordset::Last, "a > 0"));
    EXPECT_EQ(Number(), 3);
    EXPECT_TRUE(m_rs.Find(DbRecordset::Previous, "a > 0"));
    EXPECT_EQ(Number(), 2);
    EXPECT_TRUE(m_rs.Find(DbRecordset::First, "a > 0"));
    EXPECT_EQ(Number(), 1);
    EXPECT_TRUE(m_rs.Find(DbRecordset::Next, "a > 0"));
    EXPECT_EQ(Number(), 2);
}

TEST_F(DbRecordsetTest, Find_UnknownOperation_IsFalseAndDropsAPendingEdit) {
    OnTable().MoveNext();
    m_rs.Edit();
    SetNumber(77);
    EXPECT_FALSE(m_rs.Find(static_cast<DbRecordset::eFindOperation>(7), "a > 0"));
    EXPECT_EQ(Number(), 2);
    m_rs.Update();
    EXPECT_THAT(Numbers(), ElementsAre("1", "2", "3"));
    EXPECT_THAT(TakeLog(*m_database), IsEmpty()) << "nothing was searched for";
}

TEST_F(DbRecordsetTest, Find_OperationsAreNumberedFromZero) {
    EXPECT_EQ(DbRecordset::Next, 0);
    EXPECT_EQ(DbRecordset::Previous, 1);
    EXPECT_EQ(DbRecordset::First, 2);
    EXPECT_EQ(DbRecordset::Last, 3);
    EXPECT_EQ(DbRecordset::Forward, 0);
    EXPECT_EQ(DbRecordset::Backward, 1);
}

TEST_F(DbRecordsetTest, FindRow_ForwardLeavesTheEndOut_BackwardTakesItIn) {
    OnTable();
    EXPECT_FALSE(m_rs.FindRow("a = 3", 0, 2, DbRecordset::Forward));
    EXPECT_TRUE(m_rs.FindRow("a = 3", 0, 3, DbRecordset::Forward));
    EXPECT_TRUE(m_rs.FindRow("a = 2", 2, 1, DbRecordset::Backward));
    EXPECT_FALSE(m_rs.FindRow("a = 1", 2, 1, DbRecordset::Backward));
    EXPECT_TRUE(m_rs.FindRow("a = 1", 0, 0, DbRecordset::Backward));
    EXPECT_FALSE(m_rs.FindRow("a = 1", 0, 0, DbRecordset::Forward));
    EXPECT_TRUE(m_rs.FindRow("a = 3", 0, 1000000000000, DbRecordset::Forward)) << "beyond the rows is none";
}

TEST_F(DbRecordsetTest, FindRow_KeepsAPendingEdit) {
    OnTable().Edit();
    SetNumber(9);
    EXPECT_TRUE(m_rs.FindRow("a = 3", 0, 3, DbRecordset::Forward));
    m_rs.Update();
    EXPECT_THAT(Numbers(), ElementsAre("1", "2", "9"));
}

TEST_F(DbRecordsetTest, FindRow_InvalidCondition_IsFalseWithoutATimingLine) {
    OnTable().MoveLast();
    TakeLog(*m_database);
    EXPECT_FALSE(m_rs.FindFirst("nosuchfield = 'x'"));
    EXPECT_THAT(TakeLog(*m_database),
                ElementsAre("SQL Analyze - query 'nosuchfield = 'x''",
                            "SQL Analyze - invalid condition 'nosuchfield = 'x''", "SQL Analyze - failed"));
    EXPECT_FALSE(m_rs.FindFirst("a >"));
    EXPECT_THAT(TakeLog(*m_database), Contains("SQL Analyze - invalid condintion 'a >'"));
    EXPECT_EQ(Number(), 3) << "the cursor stays";
}

TEST_F(DbRecordsetTest, FindRow_LogsTheTextAsGiven) {
    OnTable().FindFirst("A = 1\r\nand B = 'x'");
    const auto lines = TakeLog(*m_database);
    EXPECT_THAT(lines, Contains("SQL Analyze - query 'a = 1  and b = 'x''"));
    EXPECT_THAT(lines, Contains("SQL Analyze - ok"));
    EXPECT_THAT(lines.back(), StartsWith("FindRow 'A = 1\r\nand B = 'x'' processed in "));
}

TEST_F(DbRecordsetTest, FindRow_SeveralConditions) {
    OnTable();
    EXPECT_TRUE(m_rs.FindFirst("b = 'Z' and not a = 1"));
    EXPECT_EQ(Number(), 3);
    EXPECT_TRUE(m_rs.FindLast("a = 1 or c = 2.5"));
    EXPECT_EQ(Number(), 2);
}

TEST_F(DbRecordsetTest, FindRow_OperatorAmongTheFirstTwoCharacters_NeedsBlanks) {
    OnTable();
    EXPECT_FALSE(m_rs.FindFirst("a=2"));
    EXPECT_FALSE(m_rs.FindFirst("(a = 2)"));
    EXPECT_TRUE(m_rs.FindFirst(" ( a=2)"));
    EXPECT_EQ(Number(), 2);
}

TEST_F(DbRecordsetTest, Condition_ReadsATextFromItsFirstCharacterOn) {
    OnTable();
    EXPECT_EQ(DbRecordset::Condition("a=2"), "  a=2");
    EXPECT_TRUE(m_rs.FindFirst(DbRecordset::Condition("a=2")));
    EXPECT_EQ(Number(), 2);
    EXPECT_TRUE(m_rs.FindLast(DbRecordset::Condition("(a = 1)")));
    EXPECT_EQ(Number(), 1);
    EXPECT_TRUE(m_rs.FindNext(DbRecordset::Condition("3<=a")));
    EXPECT_EQ(Number(), 3);
    EXPECT_TRUE(m_rs.FindFirst(DbRecordset::Condition("")));
    EXPECT_EQ(Number(), 1);
    EXPECT_FALSE(m_rs.FindFirst(DbRecordset::Condition("a")));
}

TEST_F(DbRecordsetTest, FindRow_EmptyText_MatchesEveryRow) {
    EXPECT_TRUE(OnTable().FindLast(""));
    EXPECT_EQ(Number(), 3);
}

TEST_F(DbRecordsetTest, FindRow_ClearsTheFiltersOfTheTable) {
    OnTable();
    Descr().AddFilter("a", "=", "1");
    const auto filters = [&] { return Descr().TakeFilters({}).size(); };
    EXPECT_EQ(filters(), 0U);
    EXPECT_TRUE(m_rs.FindFirst("a = 2"));
    DbTableRow& row = Data()[0];
    DbFilter* const filter = Descr().AddFilter("a", "=", "1");
    row.Evaluate();
    EXPECT_TRUE(filter->value());
    EXPECT_FALSE(m_rs.FindFirst("a = 5"));
    EXPECT_THAT(Descr().TakeFilters({filter}), IsEmpty()) << "every filter is gone, the caller's too";
}

TEST_F(DbRecordsetTest, FindRow_ThatFails_LeavesItsFilters) {
    OnTable();
    DbFilter* const filter = Descr().AddFilter("a", "=", "1");
    EXPECT_FALSE(m_rs.FindFirst("a = 1 and nosuchfield = 2"));
    EXPECT_THAT(Descr().TakeFilters({filter}), SizeIs(1));
}

TEST_F(DbRecordsetTest, FindRow_ThroughAnIndex_GoesInItsOrder) {
    OnTable().SetCurrentIndex(BackwardIndex());
    EXPECT_TRUE(m_rs.FindFirst("a < 3"));
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 1);
    EXPECT_EQ(Number(), 2);
    EXPECT_TRUE(m_rs.FindNext("a < 3"));
    EXPECT_EQ(Number(), 1);
}

TEST_F(DbRecordsetTest, FindRow_InTheAnswerOfAQuery) {
    EXPECT_TRUE(m_rs.Open("select * from t where a > 1"));
    EXPECT_TRUE(m_rs.FindFirst("a = 3"));
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 1);
    EXPECT_FALSE(m_rs.FindFirst("a = 1"));
}

TEST_F(DbRecordsetTest, FindRow_InARenamedTable_IsAnalysedAndSaysSo) {
    const std::vector<std::string> lines = {"SQL Analyze - query 'a = 1'", "SQL Analyze - no table 't' found",
                                            "SQL Analyze - failed"};
    OnTable();
    m_database->RenameTable("t", "u");
    TakeLog(*m_database);
    EXPECT_FALSE(m_rs.FindFirst("a = 1"));
    EXPECT_EQ(TakeLog(*m_database), lines);
    DbTableDescr& taken = *AddNumbers(*m_database, "t", {1})->GetDescr();
    DbFilter* const filter = taken.AddFilter("a", "=", "2");
    TakeLog(*m_database);
    EXPECT_FALSE(m_rs.FindFirst("a = 1")) << "another table has the name now";
    EXPECT_EQ(TakeLog(*m_database), lines);
    EXPECT_THAT(taken.TakeFilters({filter}), SizeIs(1)) << "nobody touched the other table";
}

TEST_F(DbRecordsetTest, FindRow_EmptyText_MatchesEveryRowOfARenamedTable) {
    OnTable();
    m_database->RenameTable("t", "u");
    EXPECT_TRUE(m_rs.FindLast(""));
    EXPECT_EQ(Number(), 3);
    AddNumbers(*m_database, "t", {7});
    TakeLog(*m_database);
    EXPECT_TRUE(m_rs.FindFirst(""));
    EXPECT_EQ(Number(), 1);
    EXPECT_TRUE(m_rs.FindNext(""));
    EXPECT_EQ(Number(), 2);
    const auto lines = TakeLog(*m_database);
    EXPECT_THAT(lines, Contains("SQL Analyze - ok"));
    EXPECT_THAT(lines.back(), StartsWith("FindRow '' processed in "));
}

TEST_F(DbRecordsetTest, FindRow_TextThatNamesTheTableAgain_IsSafe) {
    ASSERT_TRUE(m_rs.Open("select * from t where a > 1"));
    const CString name = m_database->GetTableName(static_cast<std::size_t>(m_database->GetTablesCount()) - 1);
    CString text;
    text.Format("a = 3 from %s where a = 2", name.ToUtf8().c_str());
    Data().GetRow(0)->SetValue("a", CComVariant(1));
    EXPECT_TRUE(m_rs.FindFirst(text)) << "the first condition outlives that the query is answered again";
    EXPECT_EQ(m_rs.GetFieldValue("a"), Long(2))
        << "of two conditions without an operator the last one counts";
    EXPECT_TRUE(m_rs.FindFirst("a = 3"));
}

struct Bound {
    static void Fail(const CComVariant& value, void* variable) {
        if (value.vt == VT_I4 && value.lVal == *static_cast<int*>(variable)) {
            throw 1;
        }
    }
    static void FailByPointer(const CComVariant& value, void* variable) {
        if (value.vt == VT_I4 && value.lVal == *static_cast<int*>(variable)) {
            throw new DbException("unreadable");
        }
    }
};

TEST_F(DbRecordsetTest, FindRow_RowThatCannotBeRead_GoesOn) {
    int unreadable = 2;
    OnTable().MapClassMember("a", &unreadable, Bound::Fail, nullptr);
    EXPECT_TRUE(m_rs.FindNext("a > 1"));
    EXPECT_EQ(Number(), 3);
    m_rs.MoveFirst();
    unreadable = 3;
    EXPECT_FALSE(m_rs.FindFirst("a = 3"));
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 2) << "the position has moved to the row all the same";
}

TEST_F(DbRecordsetTest, Move_RowThatCannotBeRead_IsFalse) {
    int unreadable = 2;
    OnTable().MapClassMember("a", &unreadable, Bound::FailByPointer, nullptr);
    EXPECT_FALSE(m_rs.MoveNext());
    EXPECT_EQ(Number(), 2);
    EXPECT_TRUE(m_rs.MoveNext());
}

// ---- Bookmarks

TEST_F(DbRecordsetTest, GetBookmark_CountsFromTwo) {
    DbRecordset::bookmarkid = 0;
    OnTable().MoveLast();
    EXPECT_EQ(m_rs.GetBookmark(), 2U);
    EXPECT_EQ(DbRecordset::bookmarkid, 1U);
    m_rs.MoveFirst();
    DbRecordset other(m_database.get());
    EXPECT_EQ(other.GetBookmark(), 3U) << "all cursors count together";
    EXPECT_TRUE(m_rs.SetBookmark(2));
    EXPECT_EQ(Number(), 3);
    EXPECT_FALSE(m_rs.SetBookmark(3)) << "another cursor's";
    EXPECT_FALSE(m_rs.SetBookmark(99));
    EXPECT_EQ(Number(), 3);
}

TEST_F(DbRecordsetTest, GetBookmark_ForANumberThatIsTaken_KeepsTheFirst) {
    DbRecordset::bookmarkid = 0;
    OnTable().GetBookmark();
    DbRecordset::bookmarkid = 0;
    m_rs.MoveLast();
    EXPECT_EQ(m_rs.GetBookmark(), 2U);
    m_rs.SetBookmark(2);
    EXPECT_EQ(Number(), 1);
}

TEST_F(DbRecordsetTest, IsBookmark_OnlyForThoseHandedOut) {
    OnTable();
    EXPECT_FALSE(m_rs.IsBookmark(0));
    const uint64 bookmark = m_rs.GetBookmark();
    EXPECT_TRUE(m_rs.IsBookmark(bookmark));
    EXPECT_FALSE(m_rs.IsBookmark(bookmark + 1));
    m_rs.GetLastModifiedBookmark();
    EXPECT_TRUE(m_rs.IsBookmark(0));
}

TEST_F(DbRecordsetTest, SetBookmark_OfNoRow_IsTrue) {
    OnTable().SetAbsolutePosition(7);
    const uint64 bookmark = m_rs.GetBookmark();
    m_rs.MoveFirst();
    EXPECT_TRUE(m_rs.SetBookmark(bookmark));
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 7);
    EXPECT_TRUE(m_rs.IsEOF());
}

TEST_F(DbRecordsetTest, GetLastModifiedBookmark_AfterUpdate_StandsForTheRow) {
    OnTable().MoveNext();
    m_rs.Edit();
    m_rs.Update();
    m_rs.MoveFirst();
    EXPECT_EQ(m_rs.GetLastModifiedBookmark(), 0U);
    EXPECT_TRUE(m_rs.SetBookmark(0));
    EXPECT_EQ(Number(), 2);
    m_rs.AddNew();
    m_rs.Update();
    m_rs.MoveFirst();
    m_rs.SetBookmark(m_rs.GetLastModifiedBookmark());
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 3);
}

TEST_F(DbRecordsetTest, GetLastModifiedBookmark_BeforeAnyUpdate_StandsForTheFirstRow) {
    OnTable().MoveLast();
    EXPECT_TRUE(m_rs.SetBookmark(m_rs.GetLastModifiedBookmark()));
    EXPECT_EQ(Number(), 1);
}

// ---- Fields

TEST_F(DbRecordsetTest, GetFieldValue_ByIndexAndName) {
    CComVariant value;
    OnTable().GetFieldValue(2, value);
    EXPECT_EQ(value, CComVariant(1.5));
    m_rs.GetFieldValue("[A]", value);
    EXPECT_EQ(value, Long(1));
    EXPECT_EQ(TextOf(m_rs.GetFieldValue("b")), "x");
    EXPECT_EQ(m_rs.GetFieldValue(0), Long(1));
    EXPECT_EQ(TextOf(m_rs.GetFieldValue(uint64(1))), "x");
    EXPECT_EQ(ThrownMessage([&] { m_rs.GetFieldValue(3); }),
              Report(1311, "Column '3' not found in table 't'"));
}

TEST_F(DbRecordsetTest, GetFieldValue_OutsideTheRows_Throws) {
    CComVariant value;
    OnTable().MovePrev();
    EXPECT_EQ(ThrownMessage([&] { m_rs.GetFieldValue(0, value); }), Report(1302, "Out of recordset range"));
    m_rs.MoveLast();
    m_rs.MoveNext();
    EXPECT_EQ(ThrownMessage([&] { m_rs.GetFieldValue(0, value); }), Report(1302, "Out of recordset range"));
    EXPECT_EQ(ThrownMessage([&] { m_rs.GetFieldValue(9, value); }), Report(1302, "Out of recordset range"));
    EXPECT_EQ(ThrownMessage([&] { m_rs.GetFieldValue("a"); }), Report(1302, "Out of recordset range"));
}

TEST_F(DbRecordsetTest, GetFieldValue_UnknownIndex_Throws) {
    CComVariant value("kept");
    OnTable();
    EXPECT_EQ(ThrownMessage([&] { m_rs.GetFieldValue(5, value); }),
              Report(1311, "Column '5' not found in table 't'"));
    EXPECT_EQ(TextOf(value), "kept");
}

TEST_F(DbRecordsetTest, GetFieldValue_UnknownName_Throws) {
    CComVariant value;
    OnTable();
    EXPECT_THAT(ThrownMessage([&] { m_rs.GetFieldValue("d", value); }),
                testing::EndsWith("\r\nMessage: Column 'd' not found in table 't'"));
    EXPECT_THAT(ThrownMessage([&] { m_rs.GetFieldValue("d"); }),
                testing::EndsWith("\r\nMessage: Column 'd' not found in table 't'"));
}

TEST_F(DbRecordsetTest, SetFieldValue_WithoutAnEdit_Throws) {
    OnTable();
    EXPECT_EQ(ThrownMessage([&] { m_rs.SetFieldValue(0, CComVariant(5)); }),
              Report(1353, "SetFieldValue(...) without proper update operation"));
    EXPECT_EQ(ThrownMessage([&] { m_rs.SetFieldValue("a", CComVariant(5)); }),
              Report(1353, "SetFieldValue(...) without proper update operation"));
}

TEST_F(DbRecordsetTest, SetFieldValue_UnknownName_Throws) {
    OnTable().Edit();
    EXPECT_THAT(ThrownMessage([&] { m_rs.SetFieldValue("d", CComVariant(5)); }),
                testing::EndsWith("\r\nMessage: Column 'd' not found in table 't'"));
}

TEST_F(DbRecordsetTest, SetFieldValue_UnknownIndex_IsIgnored) {
    OnTable().Edit();
    m_rs.SetFieldValue(9, CComVariant(5));
    SetNumber(4);
    m_rs.Update();
    EXPECT_THAT(Numbers(), ElementsAre("4", "2", "3"));
    EXPECT_EQ(Data().GetRow(0)->size(), 3U);
}

TEST_F(DbRecordsetTest, SetFieldValue_Reference_IsReadAtOnce) {
    LONG number = 5;
    CComVariant reference;
    reference.vt = VT_BYREF | VT_I4;
    reference.plVal = &number;
    OnTable().Edit();
    m_rs.SetFieldValue(0, reference);
    number = 6;
    m_rs.Update();
    EXPECT_EQ(Number(), 5);
}

TEST_F(DbRecordsetTest, GetFieldInfo_ByIndexAndName) {
    OnTable();
    ASSERT_NE(m_rs.GetFieldInfo(1), nullptr);
    EXPECT_EQ(m_rs.GetFieldInfo(1)->GetName(), "b");
    EXPECT_EQ(m_rs.GetFieldInfo("[B]"), m_rs.GetFieldInfo(1));
    EXPECT_EQ(m_rs.GetFieldInfo(3), nullptr);
    EXPECT_EQ(m_rs.GetFieldInfo("d"), nullptr);
    EXPECT_EQ(m_rs.GetFieldIndex("C"), 2);
    EXPECT_EQ(m_rs.GetFieldIndex("d"), -1);
}

// ---- Edits

TEST_F(DbRecordsetTest, Edit_ThenUpdate_StoresWhatWasSet) {
    OnTable().MoveNext();
    m_database->Sync();
    m_rs.Edit();
    SetNumber(8);
    SetNumber(9);
    m_rs.SetFieldValue("b", CComVariant("new"));
    EXPECT_EQ(Number(), 2) << "nothing reaches the row before Update";
    EXPECT_FALSE(m_database->IsChanged());
    m_rs.Update();
    EXPECT_EQ(Number(), 9);
    EXPECT_EQ(TextOf(m_rs.GetFieldValue("b")), "new");
    EXPECT_THAT(Numbers(), ElementsAre("1", "9", "3"));
    EXPECT_TRUE(m_database->IsChanged());
    EXPECT_TRUE(Data().GetRow(1)->GetField(0).IsChanged());
    EXPECT_FALSE(Data().GetRow(1)->GetField(2).IsChanged());
    EXPECT_NE(ThrownMessage([&] { SetNumber(1); }), "") << "the edit is done";
}

TEST_F(DbRecordsetTest, Update_StoresTheValueAsItIs) {
    OnTable().Edit();
    m_rs.SetFieldValue("a", CComVariant("text"));
    m_rs.SetFieldValue("b", NullVariant());
    m_rs.SetFieldValue("c", Long(3));
    m_rs.Update();
    EXPECT_EQ(TextOf(m_rs.GetFieldValue("a")), "text");
    EXPECT_EQ(m_rs.GetFieldValue("b").vt, VT_NULL);
    EXPECT_EQ(m_rs.GetFieldValue("c").vt, VT_I4);
}

TEST_F(DbRecordsetTest, AddNew_ThenUpdate_AppendsARow) {
    OnTable().AddNew();
    SetNumber(4);
    EXPECT_EQ(m_rs.GetRecordCount(), 3);
    m_rs.Update();
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 3);
    EXPECT_THAT(Numbers(), ElementsAre("1", "2", "3", "4"));
    EXPECT_EQ(m_rs.GetFieldValue("c"), CComVariant(0.0)) << "other fields have their defaults";
}

TEST_F(DbRecordsetTest, AddNew_OnAnEmptyTable_MakesTheFirstRow) {
    OnTable("empty").AddNew();
    SetNumber(4);
    m_rs.Update();
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 0);
    EXPECT_EQ(Number(), 4);
}

TEST_F(DbRecordsetTest, AddNewAndEdit_DropWhatWasPending) {
    OnTable().Edit();
    SetNumber(9);
    m_rs.AddNew();
    m_rs.Update();
    EXPECT_THAT(Numbers(), ElementsAre("1", "2", "3", "0"));
    m_rs.AddNew();
    SetNumber(9);
    m_rs.Edit();
    m_rs.Update();
    EXPECT_THAT(Numbers(), ElementsAre("1", "2", "3", "0"));
}

TEST_F(DbRecordsetTest, Update_WithoutAnEdit_StoresNothing) {
    int number = 7;
    OnTable().MapClassMember("a", number);
    m_rs.MoveFirst();
    number = 9;
    m_rs.MoveLast();
    number = 9;
    m_rs.Update();
    EXPECT_THAT(Numbers(), ElementsAre("1", "2", "3"));
    m_rs.SetBookmark(m_rs.GetLastModifiedBookmark());
    EXPECT_EQ(Number(), 1) << "no row counts as modified";
}

TEST_F(DbRecordsetTest, Update_OutsideTheRows_StoresNothing) {
    OnTable().MoveLast();
    m_rs.MoveNext();
    m_rs.Edit();
    SetNumber(9);
    m_rs.Update();
    m_rs.SetAbsolutePosition(-1);
    m_rs.Edit();
    SetNumber(9);
    m_rs.Update();
    EXPECT_THAT(Numbers(), ElementsAre("1", "2", "3"));
    m_rs.SetBookmark(m_rs.GetLastModifiedBookmark());
    EXPECT_EQ(m_rs.GetAbsolutePosition(), -1) << "the position counts as modified all the same";
}

TEST_F(DbRecordsetTest, Update_WithAnIndex_WritesTheRowOfThatNumberInStorageOrder) {
    OnTable().SetCurrentIndex(BackwardIndex());
    m_rs.MoveFirst();
    EXPECT_EQ(Number(), 3);
    m_rs.Edit();
    SetNumber(9);
    m_rs.Update();
    EXPECT_THAT(Numbers(), ElementsAre("9", "2", "3"));
    EXPECT_EQ(m_rs.GetCurrentIndex(), "");
    EXPECT_EQ(Number(), 9);
}

TEST_F(DbRecordsetTest, Update_OfANewRowWithAnIndex_ClearsIt) {
    OnTable().SetCurrentIndex(BackwardIndex());
    m_rs.AddNew();
    SetNumber(4);
    m_rs.Update();
    EXPECT_EQ(m_rs.GetCurrentIndex(), "");
    EXPECT_EQ(Number(), 4);
}

TEST_F(DbRecordsetTest, CancelUpdate_ForgetsThePendingEdit) {
    OnTable().Edit();
    SetNumber(9);
    m_rs.CancelUpdate();
    m_rs.Update();
    EXPECT_THAT(Numbers(), ElementsAre("1", "2", "3"));
}

TEST_F(DbRecordsetTest, Delete_RemovesTheRowAndStandsBeforeIt) {
    OnTable().MoveNext();
    m_rs.Delete();
    EXPECT_THAT(Numbers(), ElementsAre("1", "3"));
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 0);
    EXPECT_EQ(Number(), 1);
    EXPECT_FALSE(m_rs.IsDeleted());
    EXPECT_TRUE(m_rs.MoveNext());
    EXPECT_EQ(Number(), 3);
}

TEST_F(DbRecordsetTest, Delete_OfTheFirstRow_StandsAtTheBeginning) {
    OnTable().Delete();
    EXPECT_TRUE(m_rs.IsBOF());
    EXPECT_THAT(Numbers(), ElementsAre("2", "3"));
    EXPECT_TRUE(m_rs.MoveNext());
    EXPECT_EQ(Number(), 2);
}

TEST_F(DbRecordsetTest, Delete_DoesNotReadTheRowBefore) {
    int number = 0;
    OnTable().MapClassMember("a", number);
    m_rs.MoveNext();
    m_rs.Delete();
    EXPECT_EQ(number, 2);
}

TEST_F(DbRecordsetTest, Delete_OutsideTheRows_OnlyMoves) {
    OnTable().SetAbsolutePosition(3);
    m_rs.Delete();
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 2);
    m_rs.SetAbsolutePosition(-1);
    m_rs.Delete();
    EXPECT_EQ(m_rs.GetAbsolutePosition(), -2);
    EXPECT_THAT(Numbers(), ElementsAre("1", "2", "3"));
}

TEST_F(DbRecordsetTest, Delete_EndsAPendingEdit) {
    OnTable().Edit();
    m_rs.Delete();
    EXPECT_NE(ThrownMessage([&] { SetNumber(1); }), "");
}

TEST_F(DbRecordsetTest, Delete_ThroughAnIndex_KeepsItInStep) {
    const Index* const index = BackwardIndex();
    OnTable().SetCurrentIndex(index);
    m_rs.SetAbsolutePosition(1);
    EXPECT_EQ(Number(), 2);
    m_rs.Delete();
    EXPECT_THAT(Numbers(), ElementsAre("1", "3"));
    EXPECT_THAT(index->GetRowOrder(), ElementsAre(1U, 0U));
    EXPECT_EQ(Number(), 3);
    EXPECT_TRUE(m_rs.MoveNext());
    EXPECT_EQ(Number(), 1);
    EXPECT_EQ(m_rs.GetCurrentIndex(), "back");
}

TEST_F(DbRecordsetTest, Delete_RepairsTheBookmarks) {
    AddNumbers(*m_database, "u", {1, 2, 3, 4});
    OnTable("u");
    std::vector<uint64> bookmarks;
    for (long position = 0; position < 4; ++position) {
        m_rs.SetAbsolutePosition(position);
        bookmarks.push_back(m_rs.GetBookmark());
    }
    m_rs.SetAbsolutePosition(2);
    m_rs.Delete();
    EXPECT_TRUE(m_rs.IsBookmark(bookmarks[0]));
    EXPECT_FALSE(m_rs.IsBookmark(bookmarks[1])) << "that of the row before is dropped";
    EXPECT_TRUE(m_rs.SetBookmark(bookmarks[0]));
    EXPECT_EQ(Number(), 1);
    EXPECT_TRUE(m_rs.SetBookmark(bookmarks[2]));
    EXPECT_EQ(Number(), 2) << "the deleted row's stands for the row before";
    EXPECT_TRUE(m_rs.SetBookmark(bookmarks[3]));
    EXPECT_EQ(Number(), 4);
}

TEST_F(DbRecordsetTest, CanUpdate_ATable) {
    EXPECT_FALSE(m_rs.CanUpdate());
    EXPECT_TRUE(OnTable().CanUpdate());
}

TEST_F(DbRecordsetTest, CanUpdate_AQueryThatSharesItsRows) {
    ASSERT_TRUE(m_rs.Open("select * from t where a > 1"));
    EXPECT_TRUE(m_rs.CanUpdate());
    m_rs.Edit();
    SetNumber(9);
    m_rs.Update();
    EXPECT_THAT(Numbers(), ElementsAre("1", "9", "3"));
}

TEST_F(DbRecordsetTest, CanUpdate_AQueryThatCopiesItsRows_IsFalse) {
    ASSERT_TRUE(m_rs.Open("select a from t where a > 1"));
    EXPECT_FALSE(m_rs.CanUpdate());
    m_rs.Edit();
    SetNumber(9);
    EXPECT_EQ(ThrownMessage([&] { m_rs.Update(); }),
              Report(990, "Read only recordset (or database), cannot be modified (Update operation)"));
    EXPECT_EQ(ThrownMessage([&] { m_rs.Delete(); }),
              Report(895, "Read only recordset (or database), cannot be modified (Delete operation)"));
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 0) << "the cursor is what it was";
    SetNumber(10);
}

TEST_F(DbRecordsetTest, CanUpdate_ATableOfNoType_IsFalse) {
    m_database->CreateTable("none", DbTableInfo::None);
    EXPECT_FALSE(OnTable("none").CanUpdate());
}

// ---- Bound variables

TEST_F(DbRecordsetTest, MapClassMember_FollowsTheRow) {
    int number = 0;
    CString text;
    double half = 0;
    OnTable().MapClassMember("a", number);
    m_rs.MapClassMember("[B]", text);
    m_rs.MapClassMember("c", half);
    EXPECT_EQ(number, 0) << "the next move sets it";
    EXPECT_TRUE(m_rs.MoveNext());
    EXPECT_EQ(number, 2);
    EXPECT_EQ(text, "y");
    EXPECT_EQ(half, 2.5);
    EXPECT_FALSE(m_rs.Move(5));
    EXPECT_EQ(number, 2) << "no row, no change";
}

TEST_F(DbRecordsetTest, MapClassMember_EveryTypeTravelsBothWays) {
    short small = 0;
    int number = 0;
    long large = 0;
    CString text;
    float single = 0;
    double real = 0;
    bool flag = false;
    for (const char* const field : {"s", "i", "l", "t", "f", "d", "y"}) {
        Descr().CreateField(field, false, DbFieldDescr::Long);
    }
    Data().GetRow(1)->SetValue("s", CComVariant(2));
    for (const char* const field : {"i", "l", "t", "f", "d", "y"}) {
        Data().GetRow(1)->SetValue(field, CComVariant(3));
    }
    OnTable().MapClassMember("s", small);
    m_rs.MapClassMember("i", number);
    m_rs.MapClassMember("l", large);
    m_rs.MapClassMember("t", text);
    m_rs.MapClassMember("f", single);
    m_rs.MapClassMember("d", real);
    m_rs.MapClassMember("y", flag);
    EXPECT_TRUE(m_rs.MoveNext());
    EXPECT_EQ(small, 2);
    EXPECT_EQ(number, 3);
    EXPECT_EQ(large, 3);
    EXPECT_EQ(text, "3");
    EXPECT_EQ(single, 3.0F);
    EXPECT_EQ(real, 3.0);
    EXPECT_TRUE(flag);

    m_rs.Edit();
    small = 10;
    number = 11;
    large = 12;
    text = "13";
    single = 14;
    real = 15;
    flag = false;
    m_rs.Update();
    std::vector<CComVariant> stored;
    for (const char* const field : {"s", "i", "l", "t", "f", "d", "y"}) {
        stored.push_back(m_rs.GetFieldValue(field));
    }
    EXPECT_EQ(stored, (std::vector<CComVariant>{Long(10), Long(11), Long(12), Long(13), Long(14), Long(15),
                                                Long(0)}));
}

TEST_F(DbRecordsetTest, MapClassMember_UnknownName_Throws) {
    int number = 0;
    OnTable();
    EXPECT_EQ(ThrownMessage([&] { m_rs.MapClassMember("d", number); }),
              Report(411, "Column 'd' not found in table 't'"));
    EXPECT_NE(ThrownMessage([&] { m_rs.IsFieldNull(&number); }), "");
}

TEST_F(DbRecordsetTest, MapClassMember_AgainForOneVariable_FollowsTheLaterField) {
    double number = 0;
    OnTable().MapClassMember("a", number);
    m_rs.MapClassMember("c", number);
    m_rs.MoveNext();
    EXPECT_EQ(number, 2.5);
}

TEST_F(DbRecordsetTest, MapClassMember_TwoVariablesForOneField_BothFollow) {
    int numbers[2] = {0, 0};
    OnTable().MapClassMember("a", numbers[0]);
    m_rs.MapClassMember("a", numbers[1]);
    m_rs.MoveNext();
    EXPECT_THAT(numbers, ElementsAre(2, 2));
}

TEST_F(DbRecordsetTest, InitFieldExchange_IsCalledByEveryOpenBeforeTheRowIsRead) {
    class Numbers : public DbRecordset {
    public:
        using DbRecordset::DbRecordset;
        void InitFieldExchange() override { MapClassMember("a", m_number); }
        int m_number = 0;
    } rs(m_database.get());
    EXPECT_TRUE(rs.Open("t"));
    EXPECT_EQ(rs.m_number, 1);
    rs.Close();
    rs.SetDatabase(m_database.get());
    rs.m_number = 0;
    EXPECT_TRUE(rs.Open("t"));
    EXPECT_EQ(rs.m_number, 1);
    m_database->CreateTable("bare", DbTableInfo::Table);
    EXPECT_EQ(ThrownMessage([&] { rs.Open("bare"); }), Report(411, "Column 'a' not found in table 'bare'"));
}

TEST_F(DbRecordsetTest, Update_StoresBoundVariablesFirst) {
    int number = 0;
    double half = 0;
    OnTable().MapClassMember("a", number);
    m_rs.MapClassMember("c", half);
    m_rs.MoveNext();
    number = 20;
    half = 20.25;
    m_rs.Edit();
    SetNumber(30);
    m_rs.Update();
    EXPECT_EQ(Number(), 30) << "a value that was set comes later";
    EXPECT_EQ(m_rs.GetFieldValue("c"), CComVariant(20.25));
    EXPECT_EQ(number, 20);
    EXPECT_TRUE(Data().GetRow(1)->GetField(2).IsChanged());
}

TEST_F(DbRecordsetTest, Update_OfANewRow_StoresBoundVariables) {
    CString text;
    OnTable().MapClassMember("b", text);
    m_rs.MoveFirst();
    m_rs.AddNew();
    text = "new";
    m_rs.Update();
    EXPECT_EQ(TextOf(m_rs.GetFieldValue("b")), "new");
    EXPECT_EQ(m_rs.GetRecordCount(), 4);
}

TEST_F(DbRecordsetTest, IsFieldNull_FlagEmptyOrNull) {
    int number = 0;
    CString text;
    OnTable().MapClassMember("a", number);
    m_rs.MapClassMember("b", text);
    EXPECT_FALSE(m_rs.IsFieldNull(&number));
    DbFieldValue& cell = Data().GetRow(0)->GetField(0);
    cell.SetNull(true);
    EXPECT_TRUE(m_rs.IsFieldNull(&number));
    cell.SetNull(false);
    cell.GetVariant() = NullVariant();
    EXPECT_TRUE(m_rs.IsFieldNull(&number));
    cell.GetVariant() = CComVariant();
    EXPECT_TRUE(m_rs.IsFieldNull(&number));
    cell.GetVariant() = CComVariant(0);
    EXPECT_FALSE(m_rs.IsFieldNull(&number));
    Data().GetRow(0)->SetValue("b", CComVariant(""));
    EXPECT_FALSE(m_rs.IsFieldNull(&text)) << "an empty text is a text";
}

TEST_F(DbRecordsetTest, IsFieldNull_OutsideTheRowsOrUnbound_Throws) {
    int number = 0;
    int other = 0;
    OnTable().MapClassMember("a", number);
    EXPECT_EQ(ThrownMessage([&] { m_rs.IsFieldNull(&other); }),
              Report(1371, "IsFieldNull invalid field binding"));
    m_rs.MovePrev();
    EXPECT_EQ(ThrownMessage([&] { m_rs.IsFieldNull(&number); }), Report(1361, "Out of recordset range"));
    m_rs.SetAbsolutePosition(3);
    EXPECT_EQ(ThrownMessage([&] { m_rs.IsFieldNull(&other); }), Report(1361, "Out of recordset range"));
}

TEST_F(DbRecordsetTest, SetFieldNull_SetsTheFlagAndMarksTheCell) {
    int number = 0;
    OnTable().MapClassMember("a", number);
    m_database->Sync();
    m_rs.SetFieldNull(&number);
    const DbFieldValue& cell = Data().GetRow(0)->GetField(0);
    EXPECT_TRUE(cell.IsNull());
    EXPECT_EQ(cell.GetValue(), Long(1)) << "the value stays";
    EXPECT_TRUE(m_database->IsChanged());
    EXPECT_TRUE(m_rs.IsFieldNull(&number));
}

TEST_F(DbRecordsetTest, SetFieldNull_ReadsAsZeroAndOutlivesAnUpdate) {
    int number = 7;
    OnTable().MapClassMember("a", number);
    m_rs.SetFieldNull(&number);
    m_rs.MoveFirst();
    EXPECT_EQ(number, 0);
    m_rs.Edit();
    number = 99;
    m_rs.Update();
    EXPECT_TRUE(m_rs.IsFieldNull(&number)) << "the flag stays when a value is stored";
    EXPECT_EQ(Data().GetRow(0)->GetField(0).GetValue(), Long(99));
}

TEST_F(DbRecordsetTest, Seek_WithoutKeys_FindsTheFirstRowOfTheIndex) {
    OnTable();
    const CString index = BackwardIndex()->GetName();
    EXPECT_TRUE(m_rs.Seek(index, nullptr, 0));
    EXPECT_EQ(m_rs.GetCurrentIndex(), index);
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 0);
    EXPECT_FALSE(m_rs.Seek(index, nullptr)) << "a key for each field is missing";
}

TEST_F(DbRecordsetTest, Seek_PlaceThatOnlyAnOldOrderHas_IsFalseAndLeavesTheCursor) {
    OnTable().SetCurrentIndex(BackwardIndex());
    Data().DeleteRow(2);
    Data().DeleteRow(1);
    m_rs.SetAbsolutePosition(1);
    CComVariant key(1);
    EXPECT_FALSE(m_rs.Seek("back", &key, 1)) << "it stands at place 2 of one row";
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 1);
}

TEST_F(DbRecordsetTest, SetFieldNull_OutsideTheRowsOrUnbound_Throws) {
    int number = 0;
    int other = 0;
    OnTable().MapClassMember("a", number);
    EXPECT_THAT(ThrownMessage([&] { m_rs.SetFieldNull(&other); }),
                testing::EndsWith("\r\nMessage: SetFieldNull invalid field binding"));
    m_rs.MovePrev();
    EXPECT_THAT(ThrownMessage([&] { m_rs.SetFieldNull(&number); }),
                testing::EndsWith("\r\nMessage: SetFieldNull out of recordset range"));
}

TEST_F(DbRecordsetTest, IsFieldNullAndSetFieldNull_LookPastTheIndex) {
    int number = 0;
    OnTable().MapClassMember("a", number);
    m_rs.SetCurrentIndex(BackwardIndex());
    m_rs.MoveFirst();
    EXPECT_EQ(number, 3);
    m_rs.SetFieldNull(&number);
    EXPECT_TRUE(m_rs.IsFieldNull(&number));
    EXPECT_TRUE(Data().GetRow(0)->GetField(0).IsNull());
    EXPECT_FALSE(Data().GetRow(2)->GetField(0).IsNull());
}

// ---- The current index

TEST_F(DbRecordsetTest, SetCurrentIndex_ByName_PutsTheRowsInOrder) {
    AddNumbers(*m_database, "u", {3, 1, 2});
    Descr("u").CreateIndex("ByA", "a");
    EXPECT_TRUE(OnTable("u").SetCurrentIndex("BYA"));
    EXPECT_EQ(m_rs.GetCurrentIndex(), "bya");
    EXPECT_TRUE(m_rs.MoveFirst());
    EXPECT_EQ(Number(), 1) << "not the table's first row";
    EXPECT_TRUE(m_rs.MoveNext());
    EXPECT_EQ(Number(), 2);
    EXPECT_TRUE(m_rs.MoveLast());
    EXPECT_EQ(Number(), 3);
    EXPECT_EQ(m_rs.RemapRowIndex(0), 1U);
    EXPECT_EQ(m_rs.GetCurrentRow(), Data("u").GetRow(0));
    EXPECT_THAT(Numbers("u"), ElementsAre("3", "1", "2")) << "the table keeps its order";
}

TEST_F(DbRecordsetTest, SetCurrentIndex_UnknownName_LeavesNoneCurrent) {
    OnTable().SetCurrentIndex(BackwardIndex());
    EXPECT_FALSE(m_rs.SetCurrentIndex("nosuchindex"));
    EXPECT_EQ(m_rs.GetCurrentIndex(), "");
    EXPECT_TRUE(m_rs.SetCurrentIndex("nosuchindex")) << "none is current already";
}

TEST_F(DbRecordsetTest, SetCurrentIndex_Null_ClearsIt) {
    OnTable().SetCurrentIndex(BackwardIndex());
    EXPECT_TRUE(m_rs.SetCurrentIndex(nullptr));
    EXPECT_EQ(m_rs.GetCurrentIndex(), "");
    EXPECT_EQ(m_rs.RemapRowIndex(0), 0U);
    EXPECT_FALSE(m_rs.SetCurrentIndex(nullptr)) << "none is current, and null has no fields to check";
}

TEST_F(DbRecordsetTest, SetCurrentIndex_WithAnOrder_TakesItAsItIs) {
    EXPECT_TRUE(OnTable().SetCurrentIndex(BackwardIndex()));
    m_rs.MoveFirst();
    EXPECT_EQ(Number(), 3);
}

TEST_F(DbRecordsetTest, SetCurrentIndex_WithoutAnOrder_MakesIt) {
    Descr().CreateIndex("i", "a");
    const Index* const index = Descr().FindIndex("i");
    EXPECT_TRUE(OnTable().SetCurrentIndex(index));
    EXPECT_THAT(index->GetRowOrder(), ElementsAre(0U, 1U, 2U));
}

TEST_F(DbRecordsetTest, SetCurrentIndex_TheSameIndexAgain_MakesTheOrderAnew) {
    const Index* const index = BackwardIndex();
    OnTable().SetCurrentIndex(index);
    EXPECT_TRUE(m_rs.SetCurrentIndex("back")) << "current already";
    EXPECT_THAT(index->GetRowOrder(), ElementsAre(2U, 1U, 0U));
    EXPECT_TRUE(m_rs.SetCurrentIndex(index));
    EXPECT_THAT(index->GetRowOrder(), ElementsAre(0U, 1U, 2U));
}

TEST_F(DbRecordsetTest, SetCurrentIndex_ByName_AlwaysMakesTheOrderAnew) {
    const Index* const index = BackwardIndex();
    EXPECT_TRUE(OnTable().SetCurrentIndex("back"));
    EXPECT_THAT(index->GetRowOrder(), ElementsAre(0U, 1U, 2U));
}

TEST_F(DbRecordsetTest, SetCurrentIndex_UnknownField_IsFalseAndStaysCurrent) {
    Descr().CreateIndex("i", "b");
    OnTable();
    Descr().DeleteField("b");
    EXPECT_FALSE(m_rs.SetCurrentIndex("i"));
    EXPECT_EQ(m_rs.GetCurrentIndex(), "i");
    EXPECT_FALSE(m_rs.MoveFirst()) << "an order without rows";
    EXPECT_TRUE(m_rs.SetCurrentIndex(nullptr));
    EXPECT_TRUE(m_rs.MoveFirst());
}

TEST_F(DbRecordsetTest, SetCurrentIndex_OfEqualRows_KeepsTheOrderOfTheSearch) {
    AddNumbers(*m_database, "u", {2, 1, 2, 1, 2});
    Descr("u").CreateIndex("i", "a");
    OnTable("u").SetCurrentIndex("i");
    std::vector<uint64> fields = {0};
    std::vector<uint64> order;
    for (uint64 i = 0; i < 5; ++i) {
        const uint64 place = Data("u").SpatialIndex(fields, order, Data("u")[i]);
        order.insert(order.begin() + static_cast<std::ptrdiff_t>(place), i);
    }
    EXPECT_EQ(Descr("u").FindIndex("i")->GetRowOrder(), order);
}

TEST_F(DbRecordsetTest, SetCurrentIndex_IndexOfTheCallers) {
    const Index index("mine", "c");
    EXPECT_TRUE(OnTable().SetCurrentIndex(&index));
    EXPECT_EQ(m_rs.GetCurrentIndex(), "mine");
    EXPECT_THAT(index.GetRowOrder(), ElementsAre(0U, 1U, 2U));
}

TEST_F(DbRecordsetTest, SetCurrentIndex_KeepsPositionAndEdit) {
    OnTable().MoveNext();
    m_rs.Edit();
    m_rs.SetCurrentIndex(BackwardIndex());
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 1);
    SetNumber(9);
}

TEST_F(DbRecordsetTest, CurrentIndex_ThatIsDeleted_IsCurrentNoMore) {
    OnTable().SetCurrentIndex(BackwardIndex());
    Descr().DeleteIndex("back");
    EXPECT_EQ(m_rs.GetCurrentIndex(), "");
    m_rs.MoveFirst();
    EXPECT_EQ(Number(), 1);
    {
        const Index index("mine", "a");
        m_rs.SetCurrentIndex(&index);
    }
    EXPECT_TRUE(m_rs.MoveLast());
    EXPECT_EQ(Number(), 3);
}

TEST_F(DbRecordsetTest, CurrentIndex_DoesNotFollowOtherChanges) {
    OnTable().SetCurrentIndex(BackwardIndex());
    Data().AddRow();
    EXPECT_EQ(m_rs.GetRecordCount(), 4);
    EXPECT_FALSE(m_rs.MoveLast()) << "the order has no fourth place";
    EXPECT_EQ(m_rs.GetCurrentRow(), nullptr);
    CComVariant value;
    EXPECT_EQ(ThrownMessage([&] { m_rs.GetFieldValue(0, value); }), Report(1302, "Out of recordset range"));
    Data().DeleteRow(0);
    Data().DeleteRow(0);
    EXPECT_FALSE(m_rs.MoveFirst()) << "the row of the first place is gone";
    EXPECT_FALSE(m_rs.FindNext("a = 77"));
}

// ---- Seek

class DbRecordsetSeek : public DbRecordsetTest {
protected:
    DbRecordsetSeek() {
        DbTableDescr& descr = *AddNumbers(*m_database, "u", {3, 1, 2, 1, 3})->GetDescr();
        descr.CreateIndex("ac", "a,c");
        for (int i = 0; i < 5; ++i) {
            Data("u").GetRow(i)->SetValue("c", CComVariant(double(i)));
        }
        OnTable("u");
    }
};

TEST_F(DbRecordsetSeek, Seek_MovesToTheFirstEqualRowInIndexOrder) {
    CComVariant key(3);
    EXPECT_TRUE(m_rs.Seek("AC", &key, 1));
    EXPECT_EQ(m_rs.GetCurrentIndex(), "ac");
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 3);
    EXPECT_EQ(Number(), 3);
    EXPECT_EQ(m_rs.GetFieldValue("c"), CComVariant(0.0));
    EXPECT_TRUE(m_rs.MoveNext());
    EXPECT_EQ(m_rs.GetFieldValue("c"), CComVariant(4.0));
}

TEST_F(DbRecordsetSeek, Seek_ReadsTheRow) {
    int number = 0;
    m_rs.MapClassMember("a", number);
    CComVariant key(2);
    EXPECT_TRUE(m_rs.Seek("ac", &key, 1));
    EXPECT_EQ(number, 2);
}

TEST_F(DbRecordsetSeek, Seek_WithoutCount_TakesAKeyForEachField) {
    CComVariant keys[] = {CComVariant(1), CComVariant(3.0)};
    EXPECT_TRUE(m_rs.Seek("ac", keys));
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 1);
    keys[1] = CComVariant(2.0);
    EXPECT_FALSE(m_rs.Seek("ac", keys));
}

TEST_F(DbRecordsetSeek, Seek_WithMoreKeysThanFields_IgnoresTheRest) {
    CComVariant keys[] = {CComVariant(1), CComVariant(3.0), CComVariant("more")};
    EXPECT_TRUE(m_rs.Seek("ac", keys, 3));
}

TEST_F(DbRecordsetSeek, Seek_WithoutKeys_MatchesTheFirstRow) {
    CComVariant key;
    EXPECT_TRUE(m_rs.Seek("ac", &key, 0));
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 0);
    EXPECT_EQ(Number(), 1);
    EXPECT_FALSE(m_rs.Seek("ac", nullptr, 1));
}

TEST_F(DbRecordsetSeek, Seek_NoEqualRow_IsFalseAndLeavesTheCursor) {
    m_rs.SetAbsolutePosition(2);
    for (const int number : {0, 7, 9}) {
        CComVariant key(number);
        EXPECT_FALSE(m_rs.Seek("ac", &key, 1)) << number;
        EXPECT_EQ(m_rs.GetAbsolutePosition(), 2);
        EXPECT_EQ(m_rs.GetCurrentIndex(), "ac") << "the index is current all the same";
    }
}

TEST_F(DbRecordsetSeek, Seek_KeyOfAnotherType_EqualsNoNumber) {
    CComVariant key(3.0);
    EXPECT_FALSE(m_rs.Seek("ac", &key, 1));
    key = NullVariant();
    EXPECT_FALSE(m_rs.Seek("ac", &key, 1));
}

TEST_F(DbRecordsetSeek, Seek_UnknownIndex_IsFalseAndLeavesTheCurrentOne) {
    CComVariant key(1);
    m_rs.SetCurrentIndex("ac");
    EXPECT_FALSE(m_rs.Seek("nosuchindex", &key, 1));
    EXPECT_EQ(m_rs.GetCurrentIndex(), "ac");
}

TEST_F(DbRecordsetSeek, Seek_EmptyTable_IsFalse) {
    Descr("empty").CreateIndex("i", "a");
    CComVariant key(1);
    EXPECT_FALSE(OnTable("empty").Seek("i", &key));
}

TEST_F(DbRecordsetSeek, Seek_Text_IgnoresCase) {
    Descr("u").CreateIndex("b", "b");
    CComVariant key("Z");
    EXPECT_TRUE(m_rs.Seek("b", &key));
    EXPECT_EQ(Number(), 3);
}

TEST_F(DbRecordsetSeek, Seek_AmongNulls_FindsWhatIsThere) {
    for (const int row : {0, 2}) {
        Data("u").GetRow(row)->GetField(0).GetVariant() = NullVariant();
    }
    CComVariant key(1);
    EXPECT_TRUE(m_rs.Seek("ac", &key, 1));
    EXPECT_EQ(Number(), 1);
    key = CComVariant(3);
    EXPECT_TRUE(m_rs.Seek("ac", &key, 1));
    EXPECT_EQ(Number(), 3);
    key = NullVariant();
    EXPECT_TRUE(m_rs.Seek("ac", &key, 1));
    EXPECT_EQ(m_rs.GetFieldValue("a").vt, VT_NULL);
}

TEST_F(DbRecordsetSeek, Seek_IndexOverAFieldThatIsGone_IsFalse) {
    Descr("u").DeleteField("c");
    CComVariant key(1);
    EXPECT_FALSE(m_rs.Seek("ac", &key, 1));
}

// ---- Deleted tables and databases

TEST_F(DbRecordsetTest, DeletedTable_ClosesTheCursor) {
    OnTable().SetCurrentIndex(BackwardIndex());
    const uint64 bookmark = m_rs.GetBookmark();
    m_database->DeleteTable("t");
    EXPECT_FALSE(m_rs.SetBookmark(bookmark));
    ExpectClosed(m_rs);
    AddNumbers(*m_database, "t", {7});
    ExpectClosed(m_rs);
    EXPECT_TRUE(m_rs.Open("t"));
    EXPECT_EQ(Number(), 7);
}

TEST_F(DbRecordsetTest, DeletedTable_ClosesCursorsOverItsQueries) {
    ASSERT_TRUE(m_rs.Open("select * from t where a > 1"));
    m_database->DeleteTable("t");
    ExpectClosed(m_rs);
}

TEST_F(DbRecordsetTest, DatabaseGone_ClosesTheCursor) {
    OnTable();
    int number = 0;
    m_rs.MapClassMember("a", number);
    m_rs.AddNew();
    m_database.reset();
    SetNumber(1);
    EXPECT_EQ(ThrownMessage([&] { m_rs.Update(); }),
              Report(990, "Read only recordset (or database), cannot be modified (Update operation)"));
    ExpectClosed(m_rs);
    const std::int32_t open = DbDatabase::m_openDbCount;
    EXPECT_FALSE(m_rs.Open("t"));
    EXPECT_EQ(DbDatabase::m_openDbCount, open) << "the cursor was given one, it makes none of its own";
    m_rs.Close();
}

TEST_F(DbRecordsetTest, DatabasePointedAtAnotherFile_ClosesTheCursor) {
    OnTable();
    m_database->GetSource()->SetFile("", false);
    ExpectClosed(m_rs);
    EXPECT_FALSE(m_rs.Open("t"));
}

TEST_F(DbRecordsetTest, ClearedTable_IsOpenAndEmpty) {
    OnTable().SetCurrentIndex(BackwardIndex());
    m_database->ClearTable("t");
    EXPECT_TRUE(m_rs.IsOpen());
    EXPECT_EQ(m_rs.GetRecordCount(), 0);
    EXPECT_EQ(m_rs.GetFieldCount(), 0U);
    EXPECT_EQ(m_rs.GetCurrentIndex(), "") << "its indexes are gone";
    EXPECT_TRUE(m_rs.IsEOF());
    EXPECT_TRUE(m_rs.CanUpdate());
    EXPECT_FALSE(m_rs.MoveFirst());
    m_rs.AddNew();
    m_rs.Update();
    EXPECT_EQ(m_rs.GetRecordCount(), 1);
}

TEST_F(DbRecordsetTest, RenamedTable_IsOpenAndCannotBeUpdated) {
    OnTable();
    m_database->RenameTable("t", "u");
    EXPECT_TRUE(m_rs.IsOpen());
    EXPECT_TRUE(m_rs.MoveNext());
    EXPECT_EQ(Number(), 2);
    EXPECT_FALSE(m_rs.CanUpdate());
    AddNumbers(*m_database, "t", {7});
    EXPECT_FALSE(m_rs.CanUpdate()) << "the name is another table's";
    EXPECT_EQ(Number(), 2);
}

TEST_F(DbRecordsetTest, DeletedField_IsPassedOverByItsBindings) {
    double half = 0;
    OnTable().MapClassMember("c", half);
    Descr().DeleteField("c");
    EXPECT_TRUE(m_rs.MoveNext());
    EXPECT_EQ(half, 0);
    m_rs.Edit();
    m_rs.Update();
    EXPECT_TRUE(m_rs.IsFieldNull(&half));
    m_rs.SetFieldNull(&half);
    EXPECT_EQ(Data().GetRow(1)->size(), 2U);
}

TEST_F(DbRecordsetTest, RowsDeletedByOthers_LeaveTheCursorBehindThem) {
    OnTable().MoveLast();
    Data().DeleteRow(0);
    EXPECT_TRUE(m_rs.IsEOF());
    EXPECT_EQ(m_rs.GetCurrentRow(), nullptr);
    EXPECT_TRUE(m_rs.MovePrev());
    EXPECT_EQ(Number(), 3);
}

// Binding functions may do anything with the cursor.
DbRecordset* TheCursor = nullptr;
DbDatabase* TheDatabase = nullptr;

TEST_F(DbRecordsetTest, BoundFunction_ThatClosesTheCursor_EndsTheRead) {
    TheCursor = &m_rs;
    int variables[2] = {0, 0};
    OnTable().MapClassMember(
        "a", &variables[0], [](const CComVariant&, void*) { TheCursor->Close(); }, nullptr);
    m_rs.MapClassMember("a", variables[1]);
    EXPECT_FALSE(m_rs.MoveNext());
    EXPECT_FALSE(m_rs.IsOpen());
    EXPECT_EQ(variables[1], 0);
}

TEST_F(DbRecordsetTest, BoundFunction_ThatDeletesTheTable_EndsTheFind) {
    TheDatabase = m_database.get();
    int variable = 0;
    OnTable().MapClassMember(
        "a", &variable, [](const CComVariant&, void*) { TheDatabase->DeleteTable("t"); }, nullptr);
    EXPECT_FALSE(m_rs.FindNext("a > 0"));
    EXPECT_FALSE(m_rs.IsOpen());
}

TEST_F(DbRecordsetTest, BoundFunction_ThatFindsAndFails_LetsTheFindGoOn) {
    TheCursor = &m_rs;
    TheDatabase = m_database.get();
    int variable = 0;
    OnTable().MapClassMember(
        "a", &variable,
        [](const CComVariant& value, void*) {
            if (value.lVal == 2) {
                TheDatabase->GetTableDescr("t")->ClearFilters();
                throw 1;
            }
        },
        nullptr);
    EXPECT_TRUE(m_rs.FindNext("a > 1"));
    EXPECT_EQ(Number(), 3);
}

TEST_F(DbRecordsetTest, BoundFunction_ThatDeletesTheTable_EndsTheUpdate) {
    TheDatabase = m_database.get();
    int variable = 0;
    OnTable().MapClassMember("a", &variable, nullptr,
                             [](CComVariant&, const void*) { TheDatabase->DeleteTable("t"); });
    m_rs.Edit();
    m_rs.SetFieldValue("b", CComVariant("new"));
    m_rs.Update();
    EXPECT_FALSE(m_rs.IsOpen());
}

// ---- Export

class DbRecordsetExport : public DbRecordsetTest {
protected:
    // What an export writes: the first half of the text's bytes.
    static std::string Half(const std::string& text) {
        std::string bytes;
        for (const char unit : text) {
            bytes += unit;
            bytes += '\0';
        }
        return bytes.substr(0, text.size());
    }
    std::string Exported() {
        m_rs.ExportCVS(Utf8(m_folder / "out.csv"));
        return ReadBytes(m_folder / "out.csv");
    }

    TemporaryFolder m_folder;
};

TEST_F(DbRecordsetExport, ExportCVS_WritesTheFirstHalfOfTheText) {
    DbTableInfo* const info = m_database->CreateTable("u", DbTableInfo::Table);
    info->GetDescr()->CreateField("a", false, DbFieldDescr::Long);
    info->GetDescr()->CreateField("b", false, DbFieldDescr::Text);
    info->GetData()->AddRow();
    info->GetData()->GetRow(0)->SetValue("a", CComVariant(1));
    info->GetData()->GetRow(0)->SetValue("b", CComVariant("x"));
    OnTable("u");
    EXPECT_EQ(Exported(), Half("a| b\n1| x\n"));
    EXPECT_EQ(Exported(), std::string("a\0|\0 \0b\0\n\0", 10)) << "and replaces what stood there";
}

TEST_F(DbRecordsetExport, ExportCVS_GoesInTheTablesOrderAndLeavesTheCursor) {
    OnTable().SetCurrentIndex(BackwardIndex());
    m_rs.MoveNext();
    m_rs.Edit();
    EXPECT_EQ(Exported(), Half("a| b| c\n1| x| 1.5\n2| y| 2.5\n3| z| 3.5\n"));
    EXPECT_EQ(m_rs.GetAbsolutePosition(), 1);
    EXPECT_EQ(m_rs.GetCurrentIndex(), "back");
    SetNumber(1);
}

TEST_F(DbRecordsetExport, ExportCVS_LineFeedsBecomeBlanks) {
    OnTable();
    Data().DeleteRow(1);
    Data().DeleteRow(1);
    Data().GetRow(0)->SetValue("b", CComVariant("p\nq\n\nr and more behind it"));
    EXPECT_EQ(Exported(), Half("a| b| c\n1| p q  r and more behind it| 1.5\n"));
}

TEST_F(DbRecordsetExport, ExportCVS_WhatHasNoTextForm_IsLeftOut) {
    OnTable();
    Descr().CreateField("d", false, DbFieldDescr::Binary);
    Data().DeleteRow(2);
    Data().GetRow(0)->GetField(0).GetVariant() = NullVariant();
    Data().GetRow(0)->GetField(1).GetVariant() = CComVariant();
    Data().GetRow(1)->GetField(1).GetVariant() = ByteArray("bytes");
    Data().GetRow(1)->GetField(2).GetVariant() = CComVariant(true);
    EXPECT_EQ(Exported(), Half("a| b| c| d\n| | 1.5| \n2| | -1| \n"));
    Descr().DeleteField("a");
    Descr().DeleteField("b");
    EXPECT_EQ(Exported(), Half("c| d\n1.5| \n-1| \n"));
}

TEST_F(DbRecordsetExport, ExportCVS_EmptyTable_WritesTheNames) {
    OnTable("empty");
    EXPECT_EQ(Exported(), Half("a| b| c\n"));
    m_database->ClearTable("empty");
    EXPECT_EQ(Exported(), "");
}

TEST_F(DbRecordsetExport, ExportCVS_WideText_IsLittleEndian) {
    OnTable("empty");
    Descr("empty").Clear();
    Descr("empty").CreateField(
        "\xE2\x82\xAC"
        "a",
        false, DbFieldDescr::Long);
    EXPECT_EQ(Exported(), std::string("\xAC\x20"
                                      "a",
                                      3))
        << "three characters, three bytes";
}

TEST_F(DbRecordsetExport, ExportCVS_ToAPathThatCannotBeOpened_DoesNothing) {
    OnTable();
    m_rs.ExportCVS(Utf8(m_folder / "none" / "out.csv"));
    m_rs.ExportCVS("");
    EXPECT_THAT(m_folder.Names(), IsEmpty());
    EXPECT_THAT(TakeLog(*m_database), IsEmpty());
}

TEST_F(DbRecordsetExport, ExportCVS_OfAClosedCursor_LeavesTheFile) {
    WriteBytes(m_folder / "out.csv", "kept");
    EXPECT_EQ(Exported(), "kept");
}

}  // namespace
