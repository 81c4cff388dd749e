#include "Quillet/odbc/CDBVariant.h"

#include <gtest/gtest.h>

namespace {

TEST(CDBVariant, Types_HaveTheNumbersOfOdbcVariants) {
    EXPECT_EQ(CDBVariant().GetType(), 0U);
    EXPECT_EQ(CDBVariant::Bool, 1U);
    EXPECT_EQ(CDBVariant::UnsignedChar, 2U);
    EXPECT_EQ(CDBVariant::Short, 3U);
    EXPECT_EQ(CDBVariant::Long, 4U);
    EXPECT_EQ(CDBVariant::Single, 5U);
    EXPECT_EQ(CDBVariant::Double, 6U);
    EXPECT_EQ(CDBVariant::Date, 7U);
    EXPECT_EQ(CDBVariant::String, 8U);
    EXPECT_EQ(CDBVariant::Binary, 9U);
    EXPECT_EQ(CDBVariant::AsciiString, 10U);
    EXPECT_EQ(CDBVariant::WideString, 11U);
}

TEST(CDBVariant, Integers_KeepTheirTypeAndSign) {
    CDBVariant value;
    value.SetBool(1);
    EXPECT_EQ(value.GetType(), CDBVariant::Bool);
    EXPECT_EQ(value.GetInteger(), 1);
    value.SetUnsignedChar(255);
    EXPECT_EQ(value.GetType(), CDBVariant::UnsignedChar);
    EXPECT_EQ(value.GetInteger(), 255);
    value.SetShort(-32768);
    EXPECT_EQ(value.GetType(), CDBVariant::Short);
    EXPECT_EQ(value.GetInteger(), -32768);
    value.SetLong(INT32_MIN);
    EXPECT_EQ(value.GetType(), CDBVariant::Long);
    EXPECT_EQ(value.GetInteger(), INT32_MIN);
}

TEST(CDBVariant, Reals_KeepTheirType) {
    CDBVariant value;
    value.SetSingle(0.5F);
    EXPECT_EQ(value.GetType(), CDBVariant::Single);
    EXPECT_EQ(value.GetSingle(), 0.5F);
    value.SetDouble(-2.5);
    EXPECT_EQ(value.GetType(), CDBVariant::Double);
    EXPECT_EQ(value.GetDouble(), -2.5);
    EXPECT_EQ(value.GetSingle(), 0.0F);
}

TEST(CDBVariant, Date_KeepsItsParts) {
    quillet::DbTimestamp date;
    date.m_year = 2003;
    date.m_month = 12;
    CDBVariant value;
    value.SetDate(date);
    EXPECT_EQ(value.GetType(), CDBVariant::Date);
    EXPECT_EQ(value.GetDate(), date);
}

TEST(CDBVariant, Objects_AreThoseOfTheirTypeOnly) {
    CDBVariant value;
    value.SetString("a");
    EXPECT_EQ(*value.GetString(), CString("a"));
    EXPECT_EQ(value.GetAsciiString(), nullptr);
    EXPECT_EQ(value.GetBinary(), nullptr);
    value.SetWideString("b");
    EXPECT_EQ(value.GetType(), CDBVariant::WideString);
    EXPECT_EQ(*value.GetString(), CString("b"));
    value.SetAsciiString("c");
    EXPECT_EQ(value.GetString(), nullptr);
    EXPECT_EQ(*value.GetAsciiString(), "c");
    value.SetBinary(CByteArray());
    EXPECT_EQ(value.GetAsciiString(), nullptr);
    EXPECT_TRUE(value.GetBinary()->IsEmpty());
}

TEST(CDBVariant, SetZero_GivesTheTypeWithoutAnObject) {
    CDBVariant value;
    value.SetString("a");
    value.SetZero(CDBVariant::String);
    EXPECT_EQ(value.GetType(), CDBVariant::String);
    EXPECT_EQ(value.GetString(), nullptr);
    value.SetDouble(2.5);
    value.SetZero(CDBVariant::Double);
    EXPECT_EQ(value.GetDouble(), 0.0);
    EXPECT_EQ(CDBVariant(CDBVariant::Binary).GetBinary(), nullptr);
}

TEST(CDBVariant, Clear_GivesNull) {
    CDBVariant value;
    value.SetLong(7);
    EXPECT_FALSE(value.IsNull());
    value.Clear();
    EXPECT_TRUE(value.IsNull());
    EXPECT_EQ(value.GetInteger(), 0);
}

}  // namespace
