// Analysing a text of four times as many parts takes four times the memory, counted over all allocations.
// Copying the rest of the text, or of a list, for each part would take sixteen times.
#include <gtest/gtest.h>

#include <cstddef>
#include <ostream>
#include <string>

#include "Quillet/IQuillet.h"
#include "support/AllocationPlan.h"

namespace quillet::test {
namespace {

struct Text {
    const char* m_name;
    const char* m_begin;
    const char* m_part;
    const char* m_end = "";
    // Whether the text can be answered.
    bool m_isQuery = true;

    CString Of(int count) const {
        std::string text = m_begin;
        for (int i = 0; i < count; ++i) {
            text += m_part;
        }
        return CString(text + m_end);
    }
    friend std::ostream& operator<<(std::ostream& stream, const Text& text) { return stream << text.m_name; }
};

struct Memory {
    std::size_t m_allocations = 0;
    std::size_t m_bytes = 0;
};

// Buffers that double when they are full grow in proportion too: the counts differ by a power of two.
constexpr int Few = 256;
constexpr int Times = 4;
constexpr std::size_t AtLeast = 3;
constexpr std::size_t AtMost = 5;

void ExpectProportional(const Memory& few, const Memory& many) {
    EXPECT_LT(many.m_allocations, AtMost * few.m_allocations);
    EXPECT_GT(many.m_bytes, AtLeast * few.m_bytes);
    EXPECT_LT(many.m_bytes, AtMost * few.m_bytes);
}

class QueryGrowthTest : public testing::Test {
protected:
    QueryGrowthTest() {
        DbTableInfo* const info = m_database.CreateTable("parts", DbTableInfo::Table);
        info->GetDescr()->CreateField("number", false, DbFieldDescr::Long);
        info->GetDescr()->CreateField("name", false, DbFieldDescr::Text);
        info->GetData()->AddRow();
        info->GetData()->GetRow(0)->SetValue("number", 1L);
    }

    template <typename Step>
    static Memory MemoryOf(const Step& step) {
        AllocationPlan plan;
        step();
        plan.Disarm();
        return {plan.Counted(), plan.CountedBytes()};
    }

    DbDatabase m_database;
};

class QueryTextGrowthTest : public QueryGrowthTest, public testing::WithParamInterface<Text> {};

TEST_P(QueryTextGrowthTest, AnalyzeSQL_TakesMemoryInProportionToTheText) {
    const auto analyse = [this](int count) {
        const CString sql = GetParam().Of(count);
        m_database.ClearLog();
        parser::QueryAnalysisParams params;
        bool isAnalysed = false;
        const Memory memory = MemoryOf([&] { isAnalysed = m_database.AnalyzeSQL(sql, &params); });
        EXPECT_EQ(isAnalysed, GetParam().m_isQuery);
        EXPECT_GE(params.tokens.size(), static_cast<std::size_t>(count));
        return memory;
    };
    ExpectProportional(analyse(Few), analyse(Times * Few));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, QueryTextGrowthTest,
    testing::Values(Text{"Conditions", "select name from parts where number = 1", " or number = 1"},
                    Text{"ConditionsWithoutBlanks", "select name from parts where number=1", " or number<>1"},
                    Text{"QuotedTexts", "select name from parts where number = 1", " and name='A (b)'"},
                    Text{"NamesInBrackets", "select name from parts where number = 1", " or [number] = 1"},
                    Text{"UnknownNames", "select name from parts where number = 1", " or absent = 1", "",
                         false},
                    Text{"Groups", "select name from parts where number = 1", " or (not number = 1)"},
                    Text{"OpenBrackets", "select name from parts where ", "(", "number = 1"},
                    Text{"SelectedFields", "select name", ", number", " from parts"},
                    Text{"Tables", "select name from parts", ", parts"},
                    Text{"OrderNames", "select name from parts order by name", ", number"}),
    [](const auto& text) { return std::string(text.param.m_name); });

TEST_F(QueryGrowthTest, Query_LineFeeds_TakeMemoryInProportion) {
    const Text text = {"", "select name from parts where", "\n", "number = 1"};
    const auto ask = [&](int count) {
        const CString sql = text.Of(count);
        m_database.ClearLog();
        CString name;
        bool isAnswered = false;
        const Memory memory = MemoryOf([&] { isAnswered = m_database.Query(sql, name); });
        EXPECT_TRUE(isAnswered);
        return memory;
    };
    ExpectProportional(ask(16 * Few), ask(Times * 16 * Few));
}

TEST_F(QueryGrowthTest, FindFirst_TakesMemoryInProportionToTheCondition) {
    const Text text = {"", "number = 1", " or number = 1"};
    DbRecordset cursor(&m_database);
    ASSERT_TRUE(cursor.Open("parts"));
    const auto find = [&](int count) {
        const CString condition = DbRecordset::Condition(text.Of(count));
        m_database.ClearLog();
        bool isFound = false;
        const Memory memory = MemoryOf([&] { isFound = cursor.FindFirst(condition); });
        EXPECT_TRUE(isFound);
        return memory;
    };
    ExpectProportional(find(Few), find(Times * Few));
}

}  // namespace
}  // namespace quillet::test
