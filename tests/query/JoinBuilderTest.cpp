#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Quillet/values/Comparison.h"
#include "support/CatalogHelpers.h"
#include "support/RowHelpers.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;
using quillet::CComVariant;
using quillet::CString;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

// Profiles: name (text), steel (text), h (long), with the rows
//   IPE100 s235 100 | HEA120 S355 114 | IPE200 S235 200 | X null 5
// Steels: grade (text), fy (double), h (long), with the rows
//   S235 235 100 | S275 275 150 | s235 240 200 | null 0 300
class DbJoinTest : public testing::Test {
protected:
    DbJoinTest() {
        DbTableInfo* const profiles = m_database.CreateTable("Profiles", DbTableInfo::Table);
        profiles->GetDescr()->CreateField("name", true, DbFieldDescr::Text);
        profiles->GetDescr()->CreateField("steel", false, DbFieldDescr::Text);
        profiles->GetDescr()->CreateField("h", false, DbFieldDescr::Long);
        Add(profiles, {CComVariant("IPE100"), CComVariant("s235"), Long(100)});
        Add(profiles, {CComVariant("HEA120"), CComVariant("S355"), Long(114)});
        Add(profiles, {CComVariant("IPE200"), CComVariant("S235"), Long(200)});
        Add(profiles, {CComVariant("X"), NullVariant(), Long(5)});
        DbTableInfo* const steels = m_database.CreateTable("Steels", DbTableInfo::Table);
        steels->GetDescr()->CreateField("grade", true, DbFieldDescr::Text);
        steels->GetDescr()->CreateField("fy", false, DbFieldDescr::Double);
        steels->GetDescr()->CreateField("h", false, DbFieldDescr::Long);
        Add(steels, {CComVariant("S235"), CComVariant(235.0), Long(100)});
        Add(steels, {CComVariant("S275"), CComVariant(275.0), Long(150)});
        Add(steels, {CComVariant("s235"), CComVariant(240.0), Long(200)});
        Add(steels, {NullVariant(), CComVariant(0.0), Long(300)});
        m_database.Sync();
        TakeLog(m_database);
    }

    static void Add(DbTableInfo* table, const std::vector<CComVariant>& values) {
        DbTableRow& row = (*table->GetData())[table->GetData()->AddRow()];
        for (std::size_t i = 0; i < values.size(); ++i) {
            row[i].GetVariant() = values[i];
        }
    }

    CString Inner(const CString& left, const CString& op, const CString& right) {
        return m_database.inner_join("Profiles", "Steels", left, op, right);
    }
    Strings Rows(const CString& table) { return RowsOf(m_database, table); }
    Strings InnerRows(const CString& left, const CString& op, const CString& right) {
        return Rows(Inner(left, op, right));
    }
    DbTableInfo& Info(const CString& name) { return *m_database.GetTableInfo(name); }

    StaticsGuard m_statics;
    DbDatabase m_database;
};

TEST_F(DbJoinTest, Inner_HoldsEveryPairInTheOrderOfTheTables) {
    EXPECT_THAT(InnerRows("steel", "=", "grade"),
                ElementsAre("IPE100 s235 100 S235 235 100", "IPE100 s235 100 s235 240 200",
                            "IPE200 S235 200 S235 235 100", "IPE200 S235 200 s235 240 200", "X  5  0 300"));
}

TEST_F(DbJoinTest, Right_AddsTheRowsOfTheSecondThatMatchNone) {
    const CString name = m_database.right_join("Profiles", "Steels", "h", "=", "h");
    EXPECT_THAT(Rows(name), ElementsAre("IPE100 s235 100 S235 235 100", "IPE200 S235 200 s235 240 200",
                                        "   S275 275 150", "    0 300"));
    const DbTableRow& unmatched = *m_database.GetTableData(name)->GetRow(2);
    for (uint64 field = 0; field < 3; ++field) {
        EXPECT_EQ(unmatched.GetField(field).GetType(), VT_NULL);
        EXPECT_TRUE(unmatched.GetField(field).IsNull());
    }
    EXPECT_FALSE(unmatched.GetField(3).IsNull());
}

TEST_F(DbJoinTest, Left_DoesNothing) {
    EXPECT_EQ(m_database.left_join("Profiles", "Steels", "h", "=", "h"), "");
    EXPECT_EQ(m_database.GetTablesCount(), 2);
    EXPECT_THAT(TakeLog(m_database), IsEmpty());
}

TEST_F(DbJoinTest, Names_AreMadeOfTheArguments) {
    EXPECT_EQ(m_database.inner_join("profiles", "STEELS", "Steel", "==", "grade"),
              "profiles INNER JOIN STEELS ON Steel == grade");
    EXPECT_EQ(m_database.right_join("Profiles", "Steels", "h", "<=", "h"),
              "Profiles RIGHT JOIN Steels ON h <= h");
    EXPECT_EQ(m_database.inner_join("[Profiles]", "[Steels]", "[h]", "=", "h"),
              "Profiles INNER JOIN Steels ON [h] = h");
}

TEST_F(DbJoinTest, Answer_IsAQueryThatStandsOnTheFirstTableAndHasItsNameAsText) {
    const CString name = Inner("h", "=", "h");
    const DbTableInfo& info = Info(name);
    EXPECT_EQ(info.GetType(), DbTableInfo::Query);
    EXPECT_EQ(info.GetName(), name);
    EXPECT_EQ(info.GetSql(), name);
    EXPECT_EQ(info.GetRelated(), &Info("Profiles"));
    EXPECT_TRUE(info.IsJoin());
    EXPECT_TRUE(info.IsQuerySync());
    EXPECT_FALSE(m_database.IsChanged()) << "an answer is no change of the catalog";
    EXPECT_FALSE(Info("Profiles").IsJoin());
}

TEST_F(DbJoinTest, Fields_OfTheFirstThenOfTheSecond_ATakenNameWithItsTable) {
    const CString name = Inner("h", "=", "h");
    EXPECT_THAT(FieldNames(m_database, name), ElementsAre("name", "steel", "h", "grade", "fy", "Steels.h"));
    const DbTableDescr& descr = *m_database.GetTableDescr(name);
    EXPECT_EQ(descr.GetField("fy").GetType(), VT_R8);
    EXPECT_TRUE(descr.GetField("grade").IsKey());
}

TEST_F(DbJoinTest, Fields_OfATableWithItself) {
    const CString name = m_database.inner_join("Steels", "Steels", "h", "<", "h");
    EXPECT_THAT(FieldNames(m_database, name),
                ElementsAre("grade", "fy", "h", "Steels.grade", "Steels.fy", "Steels.h"));
    EXPECT_THAT(Rows(name), SizeIs(6));
}

TEST_F(DbJoinTest, Fields_WhereTheLongerNameIsTakenToo) {
    Info("Profiles").GetDescr()->CreateField("Steels.h", false, DbFieldDescr::Long);
    EXPECT_THAT(FieldNames(m_database, Inner("h", "=", "h")),
                ElementsAre("name", "steel", "h", "Steels.h", "grade", "fy", "Steels.Steels.h"));
}

TEST_F(DbJoinTest, Label_IsNoFieldOfTheAnswerAndTheTablesKeepTheirs) {
    EXPECT_EQ(m_database.GetTableDescr(Inner("h", "=", "h"))->GetFieldIndex("LABEL"), -1);
    Info("Profiles").GetDescr()->CreateField("LABEL", false, DbFieldDescr::Text);
    m_database.GetTableData("Profiles")->GetRow(0)->SetValue("LABEL", CComVariant("mine"));
    const CString name = Inner("h", "=", "h");
    EXPECT_EQ(m_database.GetTableDescr("Profiles")->GetFieldIndex("LABEL"), 3);
    EXPECT_EQ(Rows("Profiles").front(), "IPE100 s235 100 mine");
    EXPECT_EQ(Rows(name).front(), "IPE100 s235 100 mine S235 235 100");
}

TEST_F(DbJoinTest, Sources_StayUnchanged) {
    const std::string before = Dump(m_database);
    const CString name = Inner("h", "<", "h");
    EXPECT_FALSE(m_database.IsChanged());
    m_database.DeleteTable(name);
    EXPECT_EQ(Dump(m_database), before);
}

// ---- Comparisons

TEST_F(DbJoinTest, Operators_HaveTheFirstTableOnTheirLeft) {
    EXPECT_THAT(InnerRows("h", "<", "h"), SizeIs(3 + 3 + 1 + 4));
    EXPECT_THAT(InnerRows("h", "<=", "h"), SizeIs(4 + 3 + 2 + 4));
    EXPECT_THAT(InnerRows("h", ">", "h"), SizeIs(0 + 1 + 2 + 0));
    EXPECT_THAT(InnerRows("h", ">=", "h"), SizeIs(1 + 1 + 3 + 0));
    EXPECT_THAT(InnerRows("h", "=", "h"), SizeIs(2));
    EXPECT_THAT(InnerRows("h", "==", "h"), SizeIs(2));
    EXPECT_THAT(InnerRows("h", "!=", "h"), SizeIs(16 - 2));
    EXPECT_THAT(InnerRows("h", "<>", "h"), SizeIs(16 - 2));
}

TEST_F(DbJoinTest, Operators_OfTexts_IgnoreCaseForEqualityAlone) {
    EXPECT_THAT(InnerRows("steel", "!=", "grade"), SizeIs(2 + 4 + 2 + 3));
    // s235 < S235, as texts are ordered.
    EXPECT_THAT(InnerRows("steel", "<", "grade"), Contains("IPE100 s235 100 S235 235 100"));
    EXPECT_THAT(InnerRows("steel", "<", "grade"), Not(Contains("IPE200 S235 200 s235 240 200")));
}

TEST_F(DbJoinTest, Condition_ThatCantBe_IsALineAndNothingElse) {
    const struct {
        const char* m_left;
        const char* m_operator;
        const char* m_right;
    } conditions[] = {{"h", "like", "h"}, {"h", "", "h"}, {"h", "=", "fy"}, {"steel", "=", "h"}};
    for (const auto& condition : conditions) {
        EXPECT_EQ(Inner(condition.m_left, condition.m_operator, condition.m_right), "");
        EXPECT_THAT(TakeLog(m_database),
                    ElementsAre(std::string("SQL Analyze - invalid condition '") + condition.m_left + " " +
                                condition.m_operator + " " + condition.m_right + "'"));
    }
    EXPECT_EQ(m_database.GetTablesCount(), 2);
}

TEST_F(DbJoinTest, UnknownTablesAndFields_AreALineAndNothingElse) {
    EXPECT_EQ(m_database.inner_join("Nowhere", "Steels", "h", "=", "h"), "");
    EXPECT_THAT(TakeLog(m_database), ElementsAre("SQL Analyze - no table 'Nowhere' found"));
    EXPECT_EQ(m_database.right_join("Profiles", "Nowhere", "h", "=", "h"), "");
    EXPECT_THAT(TakeLog(m_database), ElementsAre("SQL Analyze - no table 'Nowhere' found"));
    EXPECT_EQ(Inner("fy", "=", "fy"), "") << "of the second table only";
    EXPECT_THAT(TakeLog(m_database), ElementsAre("SQL Analyze - no 'fy' field found in 'Profiles' table"));
    EXPECT_EQ(Inner("steel", "=", "steel"), "") << "of the first table only";
    EXPECT_THAT(TakeLog(m_database), ElementsAre("SQL Analyze - no 'steel' field found in 'Steels' table"));
    EXPECT_EQ(m_database.inner_join("", "", "", "", ""), "");
    EXPECT_EQ(m_database.GetTablesCount(), 2);
}

// ---- Changes of the answer and its sources

TEST_F(DbJoinTest, CalledAgain_FillsTheSameTable) {
    const CString name = Inner("h", "=", "h");
    DbTableInfo* const info = &Info(name);
    m_database.GetTableData("Profiles")->GetRow(1)->SetValue("h", Long(150));
    EXPECT_FALSE(info->IsQuerySync());
    EXPECT_THAT(Rows(name), SizeIs(2)) << "left as it is when its data is asked for";
    EXPECT_EQ(Inner("h", "=", "h"), name);
    EXPECT_EQ(&Info(name), info);
    EXPECT_TRUE(info->IsQuerySync());
    EXPECT_THAT(Rows(name), ElementsAre("IPE100 s235 100 S235 235 100", "HEA120 S355 150 S275 275 150",
                                        "IPE200 S235 200 s235 240 200"));
    EXPECT_THAT(FieldNames(m_database, name), SizeIs(6));
    EXPECT_EQ(m_database.GetTablesCount(), 3);
}

TEST_F(DbJoinTest, CalledAgain_UnderAnotherCase_FillsTheSameTable) {
    const CString name = Inner("h", "=", "h");
    EXPECT_EQ(m_database.inner_join("PROFILES", "steels", "H", "=", "H"),
              "PROFILES INNER JOIN steels ON H = H");
    EXPECT_EQ(m_database.GetTablesCount(), 3);
    EXPECT_EQ(Info(name).GetName(), name);
}

TEST_F(DbJoinTest, Renamed_IsLeftAsItIs) {
    m_database.RenameTable(Inner("h", "=", "h"), "Pairs");
    m_database.GetTableData("Profiles")->GetRow(1)->SetValue("h", Long(150));
    TakeLog(m_database);
    EXPECT_THAT(Rows("Pairs"), SizeIs(2));
    EXPECT_THAT(TakeLog(m_database), IsEmpty());
    EXPECT_EQ(Inner("h", "=", "h"), "Profiles INNER JOIN Steels ON h = h");
    EXPECT_EQ(m_database.GetTablesCount(), 4);
}

TEST_F(DbJoinTest, RowsAreCopies) {
    const CString name = Inner("h", "=", "h");
    m_database.GetTableData(name)->GetRow(0)->SetValue("name", CComVariant("other"));
    EXPECT_EQ(Rows("Profiles").front(), "IPE100 s235 100");
    m_database.DeleteTable("Steels");
    EXPECT_EQ(Rows(name).front(), "other s235 100 S235 235 100");
}

TEST_F(DbJoinTest, GoesWithTheFirstTable) {
    const CString name = Inner("h", "=", "h");
    m_database.DeleteTable("Profiles");
    EXPECT_FALSE(m_database.IsTable(name));
    EXPECT_EQ(m_database.GetTablesCount(), 1);
}

TEST_F(DbJoinTest, IsSearchedByQueries) {
    const CString name = Inner("h", "=", "h");
    CString answer;
    ASSERT_TRUE(m_database.Query("select name, Steels.h from [" + name + "] where fy > 236", answer))
        << m_database.GetErrorLog();
    EXPECT_THAT(Rows(answer), ElementsAre("IPE200 200"));
    EXPECT_EQ(Info(answer).GetRelated(), &Info(name));
    // It is followed once it is refilled.
    m_database.GetTableData("Steels")->GetRow(0)->SetValue("fy", CComVariant(300.0));
    EXPECT_THAT(Rows(answer), ElementsAre("IPE200 200"));
    Inner("h", "=", "h");
    EXPECT_THAT(Rows(answer), ElementsAre("IPE100 100", "IPE200 200"));
    CString same;
    EXPECT_TRUE(m_database.Query(name, same));
    EXPECT_EQ(same, name);
}

TEST_F(DbJoinTest, QueriesOverQueriesOverIt_AreNotAskedAgainForChangesOfItsTables) {
    const CString name = Inner("h", "=", "h");
    CString lower;
    CString upper;
    ASSERT_TRUE(m_database.Query("select name, fy from [" + name + "] where fy > 0", lower));
    ASSERT_TRUE(m_database.Query("select name from " + lower + " where fy > 236", upper));
    m_database.GetTableData("Profiles")->GetRow(1)->SetValue("h", Long(150));
    const std::int32_t asked = DbDatabase::m_queriesCount;
    EXPECT_THAT(Rows(upper), ElementsAre("IPE200"));
    EXPECT_EQ(DbDatabase::m_queriesCount, asked);
    EXPECT_TRUE(Info(upper).IsQuerySync());
    Inner("h", "=", "h");
    EXPECT_THAT(Rows(upper), ElementsAre("HEA120", "IPE200"));
}

TEST_F(DbJoinTest, Saving_LeavesItAsItIs) {
    TemporaryFolder folder;
    const CString name = Inner("h", "=", "h");
    m_database.GetTableData("Profiles")->GetRow(1)->SetValue("h", Long(150));
    m_database.Save(CString(Utf8(folder / "joined.xml")));
    EXPECT_THAT(Rows(name), SizeIs(2));
}

TEST_F(DbJoinTest, IsGoneThroughByACursor) {
    DbRecordset cursor(&m_database);
    ASSERT_TRUE(cursor.Open(Inner("h", "=", "h")));
    EXPECT_FALSE(cursor.CanUpdate()) << "its rows are copies";
    EXPECT_TRUE(cursor.FindFirst("fy > 236"));
    EXPECT_EQ(cursor.GetFieldValue("name"), CComVariant("IPE200"));
}

TEST_F(DbJoinTest, OfQueries_AnswersThemAgainFirst) {
    CString tall;
    ASSERT_TRUE(m_database.Query("select * from profiles where h > 110", tall));
    const CString name = m_database.inner_join(tall, "Steels", "h", "=", "h");
    EXPECT_THAT(Rows(name), ElementsAre("IPE200 S235 200 s235 240 200"));
    m_database.GetTableData("Profiles")->GetRow(3)->SetValue("h", Long(300));
    m_database.inner_join(tall, "Steels", "h", "=", "h");
    EXPECT_THAT(Rows(name), ElementsAre("IPE200 S235 200 s235 240 200", "X  300  0 300"));
}

TEST_F(DbJoinTest, OfAQueryWhoseFieldsAreOthersNow_FindsThemAnew) {
    CString tall;
    ASSERT_TRUE(m_database.Query("select * from profiles where h > 110", tall));
    m_database.GetTableDescr("Profiles")->DeleteField("steel");
    EXPECT_THAT(Rows(m_database.inner_join(tall, "Steels", "h", "=", "h")),
                ElementsAre("IPE200 200 s235 240 200"));
}

TEST_F(DbJoinTest, OfJoins) {
    const CString pairs = Inner("h", "=", "h");
    const CString name = m_database.inner_join(pairs, "Steels", "fy", "=", "fy");
    EXPECT_EQ(name, pairs + " INNER JOIN Steels ON fy = fy");
    EXPECT_THAT(FieldNames(m_database, name), ElementsAre("name", "steel", "h", "grade", "fy", "Steels.h",
                                                          "Steels.grade", "Steels.fy", "Steels.Steels.h"));
    EXPECT_THAT(Rows(name), SizeIs(2));
    m_database.DeleteTable("Profiles");
    EXPECT_EQ(m_database.GetTablesCount(), 1);
}

TEST_F(DbJoinTest, NameThatATableHas_IsALineAndHarmsNothing) {
    DbTableInfo* const taken =
        m_database.CreateTable("Profiles INNER JOIN Steels ON h = h", DbTableInfo::Table);
    taken->GetDescr()->CreateField("mine", false, DbFieldDescr::Long);
    TakeLog(m_database);
    EXPECT_EQ(Inner("h", "=", "h"), "");
    EXPECT_THAT(TakeLog(m_database), ElementsAre("Table 'Profiles INNER JOIN Steels ON h = h' already in "
                                                 "database, a join can't be put in it"));
    EXPECT_EQ(taken->GetDescr()->size(), 1U);
}

TEST_F(DbJoinTest, OfAQueryThatStandsOnTheAnswer_IsRefused) {
    const CString name = Inner("h", "=", "h");
    CString over;
    ASSERT_TRUE(m_database.Query("select * from [" + name + "] where h > 110", over));
    for (const char* table : {"Profiles", "Steels"}) {
        m_database.RenameTable(table, "Old");
        m_database.RenameTable(over, table);
        TakeLog(m_database);
        EXPECT_EQ(Inner("h", "=", "h"), "");
        EXPECT_THAT(TakeLog(m_database), ElementsAre("Query '" + name.ToUtf8() + "' stands on itself"));
        EXPECT_THAT(Rows(table), SizeIs(1));
        m_database.RenameTable(table, over);
        m_database.RenameTable("Old", table);
    }
    EXPECT_EQ(Inner("h", "=", "h"), name);
}

TEST_F(DbJoinTest, EmptyTables) {
    m_database.CreateTable("None", DbTableInfo::Table)
        ->GetDescr()
        ->CreateField("h", false, DbFieldDescr::Long);
    EXPECT_THAT(Rows(m_database.inner_join("Profiles", "None", "h", "=", "h")), IsEmpty());
    EXPECT_THAT(Rows(m_database.inner_join("None", "Profiles", "h", "!=", "h")), IsEmpty());
    EXPECT_THAT(Rows(m_database.right_join("Profiles", "None", "h", "=", "h")), IsEmpty());
    EXPECT_THAT(Rows(m_database.right_join("None", "Profiles", "h", "=", "h")), SizeIs(4));
}

TEST_F(DbJoinTest, IsNotSaved) {
    Inner("h", "=", "h");
    TemporaryFolder folder;
    m_database.Create(CString(Utf8(folder / "joined.xml")));
    ASSERT_TRUE(m_database.Save(CString(Utf8(folder / "joined.xml"))));
    EXPECT_EQ(ReadBytes(folder / "joined.xml").find("JOIN"), std::string::npos);
}

TEST(DbJoinOfFilesTest, ReadsTheRowsOfBothTables) {
    TemporaryFolder folder;
    CatalogParts parts;
    parts.m_bodyStructure =
        TableXml("Alpha", FieldXml("name", TextType)) + TableXml("Beta", FieldXml("label", TextType));
    parts.m_bodyData = TableXml("Alpha", "<row name=\"one\" />\n<row name=\"two\" />\n") +
                       TableXml("Beta", "<row label=\"TWO\" />\n");
    WriteBytes(folder / "small.xml", parts.Xml());
    for (const Reading reading : {Reading::Whole, Reading::Sequential}) {
        const auto database = Open(folder / "small.xml", reading);
        const CString name = database->inner_join("alpha", "beta", "name", "=", "label");
        EXPECT_EQ(name, "alpha INNER JOIN beta ON name = label");
        EXPECT_THAT(RowsOf(*database, name), ElementsAre("two TWO"));
    }
}

// ---- Equality by classes of values gives the same result as comparing every pair

class DbJoinOf : public testing::TestWithParam<Filling> {
protected:
    static DbTableInfo* Table(DbDatabase& database, const CString& name, DbFieldDescr::eFieldType type,
                              std::size_t rows, Chance& chance) {
        DbTableInfo* const table = database.CreateTable(name, DbTableInfo::Table);
        table->GetDescr()->CreateField("n", false, DbFieldDescr::Long);
        table->GetDescr()->CreateField("v", false, type);
        for (std::size_t i = 0; i < rows; ++i) {
            DbTableRow& row = (*table->GetData())[table->GetData()->AddRow()];
            row[0].GetVariant() = Long(static_cast<LONG>(i));
            row[1].GetVariant() = GetParam().m_draw(chance);
        }
        return table;
    }

    static Strings EveryPair(DbTableInfo& first, DbTableInfo& second, const CString& op, bool texts) {
        const quillet::Comparison comparison = quillet::ComparisonOf(op, texts);
        Strings pairs;
        std::vector<bool> isMatched(second.GetData()->size());
        for (uint64 i = 0; i < first.GetData()->size(); ++i) {
            for (uint64 k = 0; k < second.GetData()->size(); ++k) {
                if (comparison((*first.GetData())[i][1].GetVariant(),
                               (*second.GetData())[k][1].GetVariant())) {
                    pairs.push_back(std::to_string(i) + " " + std::to_string(k));
                    isMatched[k] = true;
                }
            }
        }
        for (std::size_t k = 0; k < isMatched.size(); ++k) {
            if (!isMatched[k]) {
                pairs.push_back(" " + std::to_string(k));
            }
        }
        return pairs;
    }

    static Strings PairsOf(DbDatabase& database, const CString& name) {
        Strings pairs;
        DbTableData& data = *database.GetTableData(name);
        for (uint64 i = 0; i < data.size(); ++i) {
            pairs.push_back(CellText(data[i][0]) + " " + CellText(data[i][2]));
        }
        return pairs;
    }
};

INSTANTIATE_TEST_SUITE_P(, DbJoinOf, testing::ValuesIn(AllFillings()), FillingName);

TEST_P(DbJoinOf, Equality_FindsThePairsThatComparingEachFinds) {
    constexpr std::size_t Rounds = 15;
    constexpr std::size_t MostRows = 40;
    Chance chance(20261121);
    for (std::size_t round = 0; round < Rounds; ++round) {
        for (const DbFieldDescr::eFieldType type :
             {DbFieldDescr::Text, DbFieldDescr::Double, DbFieldDescr::Boolean, DbFieldDescr::Binary}) {
            DbDatabase database;
            DbTableInfo* const first = Table(database, "A", type, chance.Below(MostRows), chance);
            DbTableInfo* const second = Table(database, "B", type, chance.Below(MostRows), chance);
            for (const char* op : {"=", "==", "!=", "<="}) {
                const CString name = database.right_join("A", "B", "v", op, "v");
                ASSERT_EQ(PairsOf(database, name), EveryPair(*first, *second, op, type == DbFieldDescr::Text))
                    << op << " round " << round;
            }
        }
    }
}

}  // namespace
