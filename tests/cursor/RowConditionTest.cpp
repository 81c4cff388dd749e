#include "Quillet/cursor/RowCondition.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "support/TestHelpers.h"

namespace {

using quillet::RowCondition;
using quillet::test::TakeLog;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class RowConditionTest : public testing::Test {
protected:
    RowConditionTest() {
        const DbTableInfo* const info = m_database.CreateTable("t", DbTableInfo::Table);
        info->GetDescr()->CreateField("a", false, DbFieldDescr::Long);
        info->GetDescr()->CreateField("b c", false, DbFieldDescr::Text);
        info->GetData()->AddRow();
        TakeLog(m_database);
    }

    DbRows& Rows() { return *m_database.GetTableData("t")->GetRows(); }
    DbTableRow& Row() { return *Rows().GetRow(0); }
    const DbTableDescr& Structure() { return *m_database.GetTableDescr("t"); }
    bool Read(RowCondition& condition, const CString& text) {
        return condition.Read(m_database, "T", Structure(), text);
    }
    // Nothing if the text is not a condition.
    std::optional<bool> Holds(const CString& text) {
        RowCondition condition;
        return Read(condition, text) ? std::optional(condition.Holds(Rows(), 0)) : std::nullopt;
    }

    DbDatabase m_database;
};

TEST_F(RowConditionTest, Holds_FollowsTheRow) {
    RowCondition condition;
    ASSERT_TRUE(Read(condition, "a > 5"));
    EXPECT_FALSE(condition.Holds(Rows(), 0));
    Row().SetValue("a", CComVariant(6));
    EXPECT_TRUE(condition.Holds(Rows(), 0));
}

TEST_F(RowConditionTest, Read_TakesTheSyntaxOfAQuery) {
    Row().SetValue("a", CComVariant(6));
    Row().SetValue("b c", CComVariant("Big Text"));
    EXPECT_EQ(Holds("a = 6 AND [B C] = 'big text'"), true);
    EXPECT_EQ(Holds("a = 6\r\nand\na < 9"), true);
    EXPECT_EQ(Holds("a = 5 or 6 <= a"), true);
    EXPECT_EQ(Holds("not a = 6"), false);
    EXPECT_EQ(Holds("  (a=6 or a=5) and a !=5"), true);
    EXPECT_EQ(Holds(""), true);
}

TEST_F(RowConditionTest, Read_WhatIsNoCondition_IsFalseAndTheLogSaysWhy) {
    EXPECT_EQ(Holds("a"), std::nullopt);
    EXPECT_THAT(TakeLog(m_database),
                ElementsAre("SQL Analyze - query 'a'", "SQL Analyze - invalid condintion 'a'",
                            "SQL Analyze - failed"));
    EXPECT_EQ(Holds("a = text"), std::nullopt);
    EXPECT_THAT(TakeLog(m_database), Contains("SQL Analyze - invalid condition 'a = text'"));
}

TEST_F(RowConditionTest, Read_UnknownTable_IsFalse) {
    RowCondition condition;
    EXPECT_FALSE(condition.Read(m_database, "u", Structure(), "a = 1"));
    EXPECT_THAT(TakeLog(m_database), Contains("SQL Analyze - no table 'u' found"));
}

TEST_F(RowConditionTest, Read_NameOfAnotherTable_IsUnknownToConditionsOnly) {
    const DbTableDescr other(nullptr);
    RowCondition condition;
    EXPECT_FALSE(condition.Read(m_database, "t", other, "a = 0"));
    EXPECT_THAT(TakeLog(m_database), ElementsAre("SQL Analyze - query 'a = 0'",
                                                 "SQL Analyze - no table 't' found", "SQL Analyze - failed"));
    EXPECT_TRUE(RowCondition().Read(m_database, "t", other, ""));
    EXPECT_TRUE(RowCondition().Read(m_database, "u", other, " "));
}

TEST_F(RowConditionTest, Read_LeavesNoFilterBehind) {
    DbFilter* const filter = m_database.GetTableDescr("t")->AddFilter("a", "=", "1");
    {
        RowCondition condition;
        ASSERT_TRUE(Read(condition, "a = 1 or a = 2"));
        m_database.GetTableDescr("t")->ClearFilters();
        EXPECT_FALSE(condition.Holds(Rows(), 0)) << "its filters are its own";
    }
    EXPECT_THAT(m_database.GetTableDescr("t")->TakeFilters({filter}), IsEmpty());
}

TEST_F(RowConditionTest, Holds_OutlivesTheTable) {
    RowCondition condition;
    ASSERT_TRUE(Read(condition, "a = 0"));
    DbTableDescr descr(nullptr);
    descr.CreateField("a", false, DbFieldDescr::Long);
    DbTableData data(nullptr, &descr);
    data.AddRow();
    m_database.DeleteTable("t");
    EXPECT_TRUE(condition.Holds(*data.GetRows(), 0)) << "fields are known by their positions";
}

}  // namespace
