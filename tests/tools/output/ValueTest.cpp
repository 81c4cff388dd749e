#include "output/Value.h"

#include <gtest/gtest.h>

#include <limits>

namespace quillet::tool {
namespace {

Value Read(const CComVariant& cell, bool isTextColumn = false) {
    Value value;
    ReadValue(cell, isTextColumn, NumberStyle::Point, value);
    return value;
}

TEST(Value, Read_EveryKind_IsTold) {
    EXPECT_EQ(Read(CComVariant(true)).m_kind, Value::Kind::Boolean);
    EXPECT_EQ(Read(CComVariant(true)).m_text, "true");
    EXPECT_EQ(Read(CComVariant(5)).m_kind, Value::Kind::Number);
    EXPECT_EQ(Read(CComVariant(-0.5)).m_text, "-0.5");
    EXPECT_EQ(Read(CComVariant("x")).m_kind, Value::Kind::Text);
    EXPECT_EQ(Read(CComVariant()).m_kind, Value::Kind::Null);
}

TEST(Value, Read_EmptyText_IsNoValueOutsideTextColumns) {
    EXPECT_EQ(Read(CComVariant("")).m_kind, Value::Kind::Null);
    EXPECT_EQ(Read(CComVariant(""), true).m_kind, Value::Kind::Text);
}

TEST(Value, Read_NumberThatIsNotFinite_IsNoValue) {
    EXPECT_EQ(Read(CComVariant(std::numeric_limits<double>::infinity())).m_kind, Value::Kind::Null);
    EXPECT_EQ(Read(CComVariant(std::numeric_limits<float>::quiet_NaN())).m_kind, Value::Kind::Null);
}

TEST(Value, Read_LongBinary_HasNoLineBreaks) {
    const std::string bytes(100, '\x01');
    CComVariant cell;
    cell.SetBytes(reinterpret_cast<const BYTE*>(bytes.data()), static_cast<ULONG>(bytes.size()), 0);
    const Value value = Read(cell);
    EXPECT_EQ(value.m_kind, Value::Kind::Binary);
    EXPECT_EQ(value.m_text.size(), 136U);
    EXPECT_EQ(value.m_text.find_first_of(" \r\n"), std::string::npos);
}

TEST(Value, Read_ValueOfAnEarlierCell_IsForgotten) {
    Value value;
    ReadValue(CComVariant("long text"), true, NumberStyle::Point, value);
    ReadValue(CComVariant(), true, NumberStyle::Point, value);
    EXPECT_EQ(value.m_text, "");
    ReadValue(CComVariant(7), true, NumberStyle::Point, value);
    EXPECT_EQ(value.m_text, "7");
}

}  // namespace
}  // namespace quillet::tool
