#include "Quillet/Db_Filter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Quillet/clv/clause.h"
#include "Quillet/platform/NumberText.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;

const char* const Operators[] = {"<", "<=", "=", "==", ">=", ">", "!=", "<>"};

// A structure with a field or two of each type, and a row whose cells the tests fill.
class DbFilterTest : public testing::Test {
protected:
    DbFilterTest() {
        m_descr.CreateField("name", true, DbFieldDescr::Text);
        m_descr.CreateField("title", false, DbFieldDescr::Text);
        m_descr.CreateField("weight", false, DbFieldDescr::Double);
        m_descr.CreateField("area", false, DbFieldDescr::Double);
        m_descr.CreateField("ratio", false, DbFieldDescr::Float);
        m_descr.CreateField("count", false, DbFieldDescr::Long);
        m_descr.CreateField("limit", false, DbFieldDescr::Long);
        m_descr.CreateField("rolled", false, DbFieldDescr::Boolean);
        m_descr.CreateField("bytes", false, DbFieldDescr::Binary);
        m_descr.CreateField("more bytes", false, DbFieldDescr::Binary);
        m_descr.CreateField("nothing", false, DbFieldDescr::Empty);
        m_descr.CreateField("nothing else", false, DbFieldDescr::Empty);
        m_rows.AddRow(true);
    }

    DbTableRow& Row() { return *m_rows.GetRow(0); }

    void Set(const char* field, const CComVariant& value) { Row()[field].GetVariant() = value; }

    bool Refused(const char* left, const char* op, const CString& right) {
        return m_descr.AddFilter(left, op, right) == nullptr;
    }

    // Whether the row meets the condition.
    bool Holds(const char* left, const char* op, const CString& right) {
        DbFilter* const filter = m_descr.AddFilter(left, op, right);
        EXPECT_NE(filter, nullptr) << left << " " << op << " " << right;
        if (filter == nullptr) {
            return false;
        }
        filter->Evaluate(Row());
        return filter->value();
    }

    DbTableDescr m_descr{nullptr};
    DbRows m_rows{nullptr, &m_descr};
};

TEST_F(DbFilterTest, Construct_ComparesNothing) {
    DbFilter filter;
    EXPECT_FALSE(filter.value());
    EXPECT_STREQ(filter.string(), "exp");
    EXPECT_EQ(filter.type(), clv::element::et_expr);
    filter.Evaluate(Row());
    EXPECT_FALSE(filter.value());
    filter.EvalRefOpRef(Row());
    filter.EvalRefOpVal(Row());
    filter.EvalValOpRef(Row());
    EXPECT_FALSE(filter.value());
}

TEST_F(DbFilterTest, AddFilter_IsFalseBeforeTheFirstRow) {
    Set("count", Long(1));
    const DbFilter* const filter = m_descr.AddFilter("count", "=", "1");
    ASSERT_NE(filter, nullptr);
    EXPECT_FALSE(filter->value());
}

TEST_F(DbFilterTest, Text_EqualityIgnoresCase) {
    for (const char* text : {"abc", "Abc", "ABC"}) {
        Set("name", text);
        EXPECT_TRUE(Holds("name", "=", "'ABC'")) << text;
        EXPECT_TRUE(Holds("name", "==", "'ABC'")) << text;
        EXPECT_FALSE(Holds("name", "!=", "'ABC'")) << text;
        EXPECT_FALSE(Holds("name", "<>", "'ABC'")) << text;
    }
    Set("name", "abcd");
    EXPECT_FALSE(Holds("name", "=", "'ABC'"));
    EXPECT_TRUE(Holds("name", "!=", "'ABC'"));
    Set("name", "\u0141");
    EXPECT_TRUE(Holds("name", "=", "'\u0142'"));
}

TEST_F(DbFilterTest, Text_OrderIsLinguisticAndKnowsCase) {
    Set("name", "b");
    EXPECT_TRUE(Holds("name", ">", "'A'"));
    EXPECT_TRUE(Holds("name", "<", "'C'"));
    EXPECT_TRUE(Holds("name", "<", "'B'")) << "lower stands before upper";
    EXPECT_FALSE(Holds("name", ">=", "'B'")) << "the equality in it knows case";
    EXPECT_TRUE(Holds("name", "=", "'B'"));
    EXPECT_TRUE(Holds("name", "<=", "'b'"));
}

TEST_F(DbFilterTest, Text_LiteralThatLooksLikeANumber_StaysAText) {
    Set("name", "10");
    EXPECT_TRUE(Holds("name", "<", "9")) << "digit by digit";
    EXPECT_TRUE(Holds("name", "=", "10"));
    EXPECT_FALSE(Holds("name", "=", "10.0"));
    Set("name", "1,5");
    EXPECT_TRUE(Holds("name", "=", "1,5")) << "separators are for floats";
    EXPECT_FALSE(Holds("name", "=", "1.5"));
}

TEST_F(DbFilterTest, Real_EitherDecimalSeparatorIsUnderstood) {
    Set("weight", CComVariant(1.75));
    Set("ratio", CComVariant(1.75F));
    for (const char* field : {"weight", "ratio"}) {
        for (const char* literal : {"1.5", "1,5"}) {
            EXPECT_TRUE(Holds(field, ">", literal)) << literal;
            EXPECT_FALSE(Holds(field, "<", literal)) << literal;
        }
        for (const char* literal : {"1.75", "1,75", "'1.75'", "\"1,75\"", " 1.75 "}) {
            EXPECT_TRUE(Holds(field, "=", literal)) << literal;
            EXPECT_FALSE(Holds(field, "!=", literal)) << literal;
        }
    }
}

TEST_F(DbFilterTest, Real_LiteralWithBothSeparators_IsRefused) {
    EXPECT_TRUE(Refused("weight", "=", "1.234,5"));
    EXPECT_TRUE(Refused("weight", "=", "1,234.5"));
}

TEST_F(DbFilterTest, Real_LiteralForAFloat_IsRoundedToAFloat) {
    Set("ratio", CComVariant(0.1F));
    EXPECT_TRUE(Holds("ratio", "=", "0.1"));
}

TEST_F(DbFilterTest, Long_LiteralIsConvertedAndRounded) {
    Set("count", Long(2));
    EXPECT_TRUE(Holds("count", "=", "2"));
    EXPECT_TRUE(Holds("count", "=", " +2 "));
    EXPECT_TRUE(Holds("count", "<", "3"));
    const std::string separator = Units({quillet::platform::DecimalSeparator()}).ToUtf8();
    EXPECT_TRUE(Holds("count", "=", CString("2" + separator + "4")));
    Set("count", Long(-1));
    EXPECT_TRUE(Holds("count", "<", "0"));
}

TEST_F(DbFilterTest, Long_LiteralWithTheUsersDecimalComma_IsRounded) {
    if (quillet::platform::DecimalSeparator() != ',') {
        GTEST_SKIP() << "the user's numbers have no decimal comma";
    }
    Set("count", Long(2));
    EXPECT_TRUE(Holds("count", "=", "2,4"));
    EXPECT_TRUE(Holds("count", "<", "2,6"));
}

TEST_F(DbFilterTest, Boolean_TrueIsLessThanFalse) {
    Set("rolled", CComVariant(true));
    EXPECT_TRUE(Holds("rolled", "=", "true"));
    EXPECT_TRUE(Holds("rolled", "=", "'True'"));
    EXPECT_TRUE(Holds("rolled", "=", "1"));
    EXPECT_TRUE(Holds("rolled", "<", "false"));
    EXPECT_FALSE(Holds("rolled", "=", "0"));
}

TEST_F(DbFilterTest, LiteralThatIsNoValueOfTheType_IsRefused) {
    for (const char* field : {"weight", "ratio", "count", "rolled"}) {
        for (const char* literal : {"abc", "", "''", "'", "1 x"}) {
            EXPECT_TRUE(Refused(field, "=", literal)) << field << " = " << literal;
            EXPECT_TRUE(Refused(literal, "=", field)) << literal << " = " << field;
        }
    }
    EXPECT_TRUE(Refused("count", "=", "3000000000")) << "out of range";
    EXPECT_FALSE(Refused("bytes", "=", "abc")) << "a text can be taken as bytes";
    EXPECT_FALSE(Holds("bytes", "=", "abc")) << "which equal nothing";
    EXPECT_TRUE(Refused("nothing", "=", "abc")) << "a field without type";
    EXPECT_TRUE(Refused("nothing", "=", ""));
}

TEST_F(DbFilterTest, Literal_OnTheLeft_ComparesTheOtherWayRound) {
    Set("weight", CComVariant(2.0));
    EXPECT_TRUE(Holds("1,5", "<", "weight"));
    EXPECT_TRUE(Holds("1.5", "<=", "weight"));
    EXPECT_FALSE(Holds("1.5", ">", "weight"));
    EXPECT_TRUE(Holds("2", "=", "weight"));
    EXPECT_TRUE(Holds("2", ">=", "weight"));
    EXPECT_TRUE(Holds("3", "<>", "weight"));
    Set("name", "abc");
    EXPECT_TRUE(Holds("'ABC'", "=", "name"));
    EXPECT_FALSE(Holds("'ABC'", "!=", "name"));
}

TEST_F(DbFilterTest, TwoFields_OfOneType_AreComparedInEachRow) {
    Set("count", Long(1));
    Set("limit", Long(2));
    EXPECT_TRUE(Holds("count", "<", "limit"));
    EXPECT_FALSE(Holds("limit", "<", "count"));
    EXPECT_FALSE(Holds("count", "=", "limit"));
    EXPECT_TRUE(Holds("count", "=", "count"));
    Set("name", "abc");
    Set("title", "ABC");
    EXPECT_TRUE(Holds("name", "=", "title"));
    EXPECT_FALSE(Holds("name", "!=", "title"));
    EXPECT_TRUE(Holds("name", "<", "title"));
}

TEST_F(DbFilterTest, TwoFields_OfTwoTypesOrNone_AreRefused) {
    EXPECT_TRUE(Refused("count", "<", "weight"));
    EXPECT_TRUE(Refused("weight", "<", "ratio"));
    EXPECT_TRUE(Refused("name", "=", "count"));
    EXPECT_TRUE(Refused("nothing", "=", "nothing else"));
    EXPECT_TRUE(Refused("nothing", "=", "name"));
    EXPECT_TRUE(Refused("name", "=", "nothing"));
}

TEST_F(DbFilterTest, TwoFields_OfBytes_HaveNoOrderAndAreNeverEqual) {
    Set("bytes", ByteArray("a"));
    Set("more bytes", ByteArray("a"));
    for (const char* op : {"<", "<=", "=", ">=", ">"}) {
        EXPECT_FALSE(Holds("bytes", op, "more bytes")) << op;
    }
    EXPECT_TRUE(Holds("bytes", "!=", "more bytes"));
}

TEST_F(DbFilterTest, NoField_OnEitherSide_IsRefused) {
    EXPECT_TRUE(Refused("'x'", "=", "'y'"));
    EXPECT_TRUE(Refused("", "=", ""));
    EXPECT_TRUE(Refused("'name'", "=", "abc")) << "a name in quotes is a text";
}

TEST_F(DbFilterTest, FieldNames_AreFoundInAnyCaseAndInBrackets) {
    Set("name", "abc");
    EXPECT_TRUE(Holds("NAME", "=", "abc"));
    EXPECT_TRUE(Holds("[Name]", "=", "abc"));
    EXPECT_TRUE(Holds("abc", "=", "[name]"));
    Set("name", "title");
    Set("title", "x");
    EXPECT_FALSE(Holds("name", "=", "title")) << "a field before it is a literal";
    EXPECT_TRUE(Holds("name", "=", "'title'"));
}

TEST_F(DbFilterTest, Quotes_OneAtEachEndIsDropped) {
    const auto isReadAs = [&](const char* text, const char* literal) {
        Set("name", text);
        return Holds("name", "=", literal) && Holds(literal, "=", "name");
    };
    EXPECT_TRUE(isReadAs("x", "'x'"));
    EXPECT_TRUE(isReadAs("x", "\"x\""));
    EXPECT_TRUE(isReadAs("x", "\uFF91x\uFF91"));
    EXPECT_TRUE(isReadAs("x", "x"));
    EXPECT_TRUE(isReadAs(" x", "' x'")) << "blanks are text";
    EXPECT_TRUE(isReadAs("it's", "'it's'")) << "only at the ends";
    EXPECT_TRUE(isReadAs("'x'", "''x''")) << "only one";
}

TEST_F(DbFilterTest, Quotes_TheEndsAreIndependent) {
    const auto isReadAs = [&](const char* text, const char* literal) {
        Set("name", text);
        return Holds("name", "=", literal) && Holds(literal, "=", "name");
    };
    EXPECT_TRUE(isReadAs("x", "'x\""));
    EXPECT_TRUE(isReadAs("x", "\uFF91x'"));
    EXPECT_TRUE(isReadAs("x", "'x"));
    EXPECT_TRUE(isReadAs("x", "x'"));
    EXPECT_TRUE(isReadAs("x' ", "'x' "));
    EXPECT_TRUE(isReadAs("", "'")) << "a quote mark alone";
    EXPECT_TRUE(isReadAs("", "''"));
    EXPECT_TRUE(isReadAs("", "'\""));
    EXPECT_TRUE(isReadAs("'", "'''"));
}

TEST_F(DbFilterTest, UnknownOperator_IsRefused) {
    for (const char* op : {"", "like", "===", "=<", "!", "< ", " <", "=!", "><", "AND"}) {
        EXPECT_TRUE(Refused("count", op, "1")) << op;
        EXPECT_TRUE(Refused("count", op, "limit")) << op;
    }
}

TEST_F(DbFilterTest, Refusal_AddsNothing) {
    // Counts calls, which shows the number of filters.
    struct Counter : DbFilter {
        explicit Counter(int& asked) : m_asked(asked) {}
        void Evaluate(const DbTableRow&) override { ++m_asked; }
        int& m_asked;
    };
    int asked = 0;
    m_descr.AppendFilter(std::make_unique<Counter>(asked));
    EXPECT_TRUE(Refused("weight", "=", "abc"));
    EXPECT_TRUE(Refused("x", "=", "y"));
    EXPECT_TRUE(Refused("count", "like", "1"));
    EXPECT_TRUE(Refused("count", "=", "weight"));
    m_descr.Evaluate(Row());
    EXPECT_EQ(asked, 1);
    const DbFilter* const filter = m_descr.AddFilter("count", "=", "0");
    m_descr.Evaluate(Row());
    EXPECT_EQ(asked, 2);
    EXPECT_TRUE(filter->value());
}

TEST_F(DbFilterTest, Numbers_EachOperator) {
    const auto met = [&](LONG cell) {
        Set("count", Long(cell));
        std::string operators;
        for (const char* op : Operators) {
            if (Holds("count", op, "5")) {
                operators += std::string(operators.empty() ? "" : " ") + op;
            }
        }
        return operators;
    };
    EXPECT_EQ(met(4), "< <= != <>");
    EXPECT_EQ(met(5), "<= = == >=");
    EXPECT_EQ(met(6), ">= > != <>");
}

TEST_F(DbFilterTest, Null_OnBothSides_IsEqualAndHasNoOrder) {
    for (const auto& [left, right] : {std::pair("count", "limit"), std::pair("name", "title")}) {
        Set(left, NullVariant());
        Set(right, NullVariant());
        for (const char* op : {"=", "==", "<=", ">="}) {
            EXPECT_TRUE(Holds(left, op, right)) << left << op;
        }
        for (const char* op : {"<", ">", "!=", "<>"}) {
            EXPECT_FALSE(Holds(left, op, right)) << left << op;
        }
    }
}

TEST_F(DbFilterTest, Null_OnOneSide_IsOnlyUnequal) {
    Set("count", NullVariant());
    Set("name", NullVariant());
    Set("title", "");
    for (const auto& [left, right] :
         {std::pair("count", "0"), std::pair("0", "count"), std::pair("count", "limit"),
          std::pair("limit", "count"), std::pair("name", "''"), std::pair("name", "title"),
          std::pair("title", "name")}) {
        for (const char* op : {"<", "<=", "=", "==", ">=", ">"}) {
            EXPECT_FALSE(Holds(left, op, right)) << left << op << right;
        }
        EXPECT_TRUE(Holds(left, "!=", right)) << left << right;
        EXPECT_TRUE(Holds(left, "<>", right)) << left << right;
    }
}

TEST_F(DbFilterTest, CellOfAnotherType_IsNeverEqualButHasAnOrder) {
    Set("count", CComVariant(5.0));
    EXPECT_FALSE(Holds("count", "=", "5"));
    EXPECT_TRUE(Holds("count", "!=", "5"));
    EXPECT_FALSE(Holds("count", "<=", "5"));
    EXPECT_FALSE(Holds("count", ">=", "5"));
    EXPECT_TRUE(Holds("count", "<=", "6"));
    EXPECT_TRUE(Holds("count", ">", "4"));
}

TEST_F(DbFilterTest, Equality_IsChosenByTheFieldsAndInequalityByTheValueOnTheLeft) {
    Set("count", "ABC");
    Set("limit", "abc");
    EXPECT_FALSE(Holds("count", "=", "limit")) << "no text field, so case counts";
    EXPECT_FALSE(Holds("count", "!=", "limit")) << "a text on the left, so case does not";
    Set("name", Long(5));
    Set("title", "5");
    EXPECT_TRUE(Holds("name", "=", "title")) << "text fields, so both are turned into text";
    EXPECT_TRUE(Holds("name", "!=", "title")) << "no text on the left, so types count";
    EXPECT_TRUE(Holds("title", "=", "name"));
    EXPECT_FALSE(Holds("title", "!=", "name")) << "a text on the left";
}

TEST_F(DbFilterTest, UnsignedAndOneByteIntegers_AreComparedAsNumbers) {
    const auto areOrdered = [&](auto less, auto greater) {
        Set("count", CComVariant(less));
        Set("limit", CComVariant(greater));
        return Holds("count", "<", "limit") && Holds("count", "<=", "limit") &&
               Holds("limit", ">", "count") && Holds("limit", ">=", "count") &&
               Holds("count", "!=", "limit") && !Holds("count", "=", "limit") &&
               Holds("count", "=", "count") && Holds("count", "<=", "count") && !Holds("count", "<", "count");
    };
    EXPECT_TRUE(areOrdered(std::int8_t(-1), std::int8_t(1)));
    EXPECT_TRUE(areOrdered(std::uint16_t(1), std::uint16_t(0xFFFF)));
    EXPECT_TRUE(areOrdered(std::uint32_t(1), std::uint32_t(0xFFFFFFFF)));
    EXPECT_TRUE(areOrdered(std::uint64_t(1), ~std::uint64_t(0)));
}

TEST_F(DbFilterTest, Evaluate_RowAfterRow_KeepsTheLastResult) {
    DbTableRow& second = *m_rows.GetRow(static_cast<int>(m_rows.AddRow(true)));
    second["count"].GetVariant() = Long(9);
    DbFilter* const filter = m_descr.AddFilter("count", ">", "5");
    ASSERT_NE(filter, nullptr);
    filter->Evaluate(second);
    EXPECT_TRUE(filter->value());
    filter->Evaluate(Row());
    EXPECT_FALSE(filter->value());
    second.Evaluate();
    EXPECT_TRUE(filter->value());
}

TEST_F(DbFilterTest, Evaluate_RowWithTooFewFields_IsFalse) {
    const DbTableRow noCells(nullptr);
    for (const auto& [left, right] :
         {std::pair("count", "0"), std::pair("0", "count"), std::pair("count", "limit")}) {
        for (const char* op : Operators) {
            DbFilter* const filter = m_descr.AddFilter(left, op, right);
            ASSERT_NE(filter, nullptr);
            filter->Evaluate(Row());
            filter->Evaluate(noCells);
            EXPECT_FALSE(filter->value()) << left << op << right;
        }
    }
}

TEST_F(DbFilterTest, Evaluate_AfterFieldsWereDeleted_TakesWhatStandsAtThePosition) {
    const auto deleteField = [&](int position) {
        m_descr.DeleteField(position);
        m_rows.Update(static_cast<uint64>(position), false);
    };
    const DbFilter* const moved = m_descr.AddFilter("count", "=", "1");
    const DbFilter* const last = m_descr.AddFilter("more bytes", "!=", "bytes");
    Set("limit", Long(1));
    deleteField(m_descr.GetFieldIndex("count"));
    m_descr.Evaluate(Row());
    EXPECT_TRUE(moved->value()) << "limit moved up";
    EXPECT_TRUE(last->value());
    while (!m_descr.empty()) {
        deleteField(0);
    }
    m_descr.Evaluate(Row());
    EXPECT_FALSE(moved->value());
    EXPECT_FALSE(last->value());
}

TEST_F(DbFilterTest, EvalMethods_TakeTheSidesThatTheyName) {
    Set("count", Long(1));
    Set("limit", Long(2));
    DbFilter* const fields = m_descr.AddFilter("count", "<", "limit");
    fields->EvalRefOpRef(Row());
    EXPECT_TRUE(fields->value());
    DbFilter* const literalRight = m_descr.AddFilter("count", "<", "2");
    literalRight->EvalRefOpVal(Row());
    EXPECT_TRUE(literalRight->value());
    literalRight->EvalValOpRef(Row());
    EXPECT_FALSE(literalRight->value()) << "no field on the right";
    DbFilter* const literalLeft = m_descr.AddFilter("2", ">", "count");
    literalLeft->EvalValOpRef(Row());
    EXPECT_TRUE(literalLeft->value());
    literalLeft->EvalRefOpRef(Row());
    EXPECT_FALSE(literalLeft->value()) << "no field on the left";
}

TEST_F(DbFilterTest, Copy_OutlivesTheOriginal) {
    Set("name", "abc");
    DbFilter* const filter = m_descr.AddFilter("name", "=", "'ABC'");
    filter->Evaluate(Row());
    DbFilter copy(*filter);
    DbFilter assigned;
    assigned = *filter;
    m_descr.ClearFilters();
    EXPECT_TRUE(copy.value());
    Set("name", "other");
    copy.Evaluate(Row());
    EXPECT_FALSE(copy.value());
    EXPECT_TRUE(assigned.value());
    Set("name", "Abc");
    assigned.Evaluate(Row());
    EXPECT_TRUE(assigned.value());
}

TEST_F(DbFilterTest, Clause_OverFilters_SelectsRows) {
    clv::clause clause;
    clause.expr(m_descr.AddFilter("count", ">", "2"));
    clause.and_();
    clause.expr(m_descr.AddFilter("name", "=", "'odd'"));
    for (LONG number = 0; number < 8; ++number) {
        DbTableRow& row = *m_rows.GetRow(static_cast<int>(m_rows.AddRow(true)));
        row["count"].GetVariant() = Long(number);
        row["name"].GetVariant() = CComVariant(number % 2 == 0 ? "even" : "Odd");
    }
    std::vector<LONG> hits;
    for (uint64 i = 0; i < m_rows.GetRowsCount(); ++i) {
        DbTableRow& row = *m_rows.GetRow(static_cast<int>(i));
        row.Evaluate();
        if (clause.evaluate()) {
            hits.push_back(row["count"].GetValue().lVal);
        }
    }
    EXPECT_EQ(hits, (std::vector<LONG>{3, 5, 7}));
}

// The documented rules, without any shortcuts.
class PlainRules {
public:
    static bool Hold(const CComVariant& left, const std::string& op, const CComVariant& right, bool texts) {
        if (op == "<" || op == "<=") {
            return Ordered(left, right, VARCMP_LT) || (op == "<=" && Equal(left, right));
        }
        if (op == ">" || op == ">=") {
            return Ordered(left, right, VARCMP_GT) || (op == ">=" && Equal(left, right));
        }
        if (op == "=" || op == "==") {
            return texts ? EqualTexts(left, right) : Equal(left, right);
        }
        return !(left.vt == VT_BSTR ? EqualTexts(left, right) : Equal(left, right));
    }

private:
    static bool AreNull(const CComVariant& left, const CComVariant& right) {
        return left.vt == VT_NULL && right.vt == VT_NULL;
    }
    static HRESULT ByPlatform(CComVariant left, CComVariant right) {
        return VarCmp(&left, &right, LOCALE_USER_DEFAULT, 0);
    }
    static bool Ordered(const CComVariant& left, const CComVariant& right, HRESULT wanted) {
        return !AreNull(left, right) && ByPlatform(left, right) == wanted;
    }
    static bool Equal(const CComVariant& left, const CComVariant& right) {
        return AreNull(left, right) || (left.vt == right.vt && ByPlatform(left, right) == VARCMP_EQ);
    }
    static bool EqualTexts(CComVariant left, CComVariant right) {
        return AreNull(left, right) ||
               (SUCCEEDED(left.ChangeType(VT_BSTR)) && SUCCEEDED(right.ChangeType(VT_BSTR)) &&
                CString(left.Text()).CompareNoCase(CString(right.Text())) == 0);
    }
};

TEST_F(DbFilterTest, EveryOperator_OnEveryPairOfValues_FollowsThePlainRules) {
    const std::vector<CComVariant> values = {
        CComVariant(),
        NullVariant(),
        Short(-1),
        Short(5),
        Long(-1),
        Long(0),
        Long(5),
        Long(std::numeric_limits<LONG>::max()),
        CComVariant(5.0F),
        CComVariant(-0.0F),
        CComVariant(0.1F),
        CComVariant(std::numeric_limits<float>::quiet_NaN()),
        CComVariant(5.0),
        CComVariant(0.0),
        CComVariant(-0.0),
        CComVariant(0.1),
        CComVariant(std::numeric_limits<double>::infinity()),
        CComVariant(std::numeric_limits<double>::quiet_NaN()),
        CComVariant(true),
        CComVariant(false),
        BooleanBits(1),
        CComVariant("5"),
        CComVariant("-1"),
        CComVariant(""),
        CComVariant("abc"),
        CComVariant("ABC"),
        CComVariant("abcd"),
        CComVariant("\u00C9t\u00E9"),
        CComVariant("\u00E9T\u00C9"),
        DateVariant(5),
        ByteArray("abc"),
        CComVariant(std::uint8_t(5)),
        CComVariant(std::int64_t(5)),
    };
    for (const auto& [leftField, rightField, texts] :
         {std::tuple("count", "limit", false), std::tuple("name", "title", true)}) {
        for (const char* op : Operators) {
            DbFilter* const filter = m_descr.AddFilter(leftField, op, rightField);
            ASSERT_NE(filter, nullptr);
            for (std::size_t left = 0; left < values.size(); ++left) {
                for (std::size_t right = 0; right < values.size(); ++right) {
                    Set(leftField, values[left]);
                    Set(rightField, values[right]);
                    filter->Evaluate(Row());
                    EXPECT_EQ(filter->value(), PlainRules::Hold(values[left], op, values[right], texts))
                        << leftField << ": value " << left << " " << op << " value " << right;
                }
            }
        }
    }
}

}  // namespace
