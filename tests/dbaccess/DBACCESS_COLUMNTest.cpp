#include "Quillet/dbaccess/DBACCESS_COLUMN.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "Quillet/odbc/CDBVariant.h"

namespace {

constexpr double NoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr float NoFloat = std::numeric_limits<float>::quiet_NaN();

CByteArray Bytes(BYTE byte) {
    return {&byte, 1};
}

template <typename Value>
DBACCESS_COLUMN Column(const Value& value, const CString& name = "") {
    DBACCESS_COLUMN column(name);
    column = value;
    return column;
}

DBACCESS_COLUMN Sixteen(std::int16_t number) {
    CDBVariant value;
    value.SetShort(number);
    return DBACCESS_COLUMN().Set(value);
}

// A value in every slot.
DBACCESS_COLUMN Full() {
    DBACCESS_COLUMN column("full");
    column = 2L;
    column = 3.5;
    column = 4.5F;
    column = "five";
    column = 6;
    column = Bytes(7);
    column.m_int = 8;
    return column;
}

// The other slots are those of Full.
void ExpectOthersKept(const DBACCESS_COLUMN& column, std::int32_t code) {
    EXPECT_EQ(column.m_type, code);
    EXPECT_EQ(column.m_name, CString("full"));
    EXPECT_TRUE(code == DBACCESS_COLUMN::Long || column.m_long == 2);
    EXPECT_TRUE(code == DBACCESS_COLUMN::Double || column.m_double == 3.5);
    EXPECT_TRUE(code == DBACCESS_COLUMN::Float || column.m_float == 4.5F);
    EXPECT_TRUE(code == DBACCESS_COLUMN::Text || column.m_text == CString("five"));
    EXPECT_TRUE(code == DBACCESS_COLUMN::Boolean || column.m_bool == 6);
    EXPECT_TRUE(code == DBACCESS_COLUMN::Binary || column.m_binary == Bytes(7));
    EXPECT_TRUE(code == DBACCESS_COLUMN::Integer || column.m_int == 8);
}

TEST(DBACCESS_COLUMN, Construct_Default_HasZerosEverywhere) {
    const DBACCESS_COLUMN column;
    EXPECT_EQ(column.m_type, 0);
    EXPECT_EQ(column.m_long, 0);
    EXPECT_EQ(column.m_double, 0.0);
    EXPECT_EQ(column.m_int, 0);
    EXPECT_EQ(column.m_float, 0.0F);
    EXPECT_EQ(column.m_bool, 0);
    EXPECT_TRUE(column.m_text.IsEmpty());
    EXPECT_TRUE(column.m_name.IsEmpty());
    EXPECT_TRUE(column.m_binary.IsEmpty());
}

TEST(DBACCESS_COLUMN, Construct_FromName_HasThatNameAndZeros) {
    EXPECT_EQ(DBACCESS_COLUMN(OLESTR("Width")).m_name, CString("Width"));
    EXPECT_EQ(DBACCESS_COLUMN("Width").m_type, 0);
}

TEST(DBACCESS_COLUMN, Copy_TakesEveryFieldWithNameAndBytes) {
    const DBACCESS_COLUMN full = Full();
    const DBACCESS_COLUMN copy = full;
    DBACCESS_COLUMN assigned("other");
    assigned = full;
    for (const DBACCESS_COLUMN& column : {copy, assigned}) {
        EXPECT_EQ(column, full);
        EXPECT_EQ(column.m_binary, full.m_binary);
        ExpectOthersKept(column, DBACCESS_COLUMN::Binary);
    }
}

TEST(DBACCESS_COLUMN, SIZE_Is80) {
    EXPECT_EQ(DBACCESS_COLUMN::SIZE(), 80);
}

TEST(DBACCESS_COLUMN, Assign_SetsTheCodeAndOneSlot_TheOthersAndTheNameStay) {
    DBACCESS_COLUMN column = Full();
    EXPECT_EQ(&(column = CString("text")), &column);
    ExpectOthersKept(column, 10);
    EXPECT_EQ(column.m_text, CString("text"));

    column = Full();
    column = Bytes(9);
    ExpectOthersKept(column, 9);
    EXPECT_EQ(column.m_binary, Bytes(9));

    column = Full();
    column = -5L;
    ExpectOthersKept(column, 4);
    EXPECT_EQ(column.m_long, -5);

    column = Full();
    column = 0.25F;
    ExpectOthersKept(column, 6);
    EXPECT_EQ(column.m_float, 0.25F);

    column = Full();
    column = 0.125;
    ExpectOthersKept(column, 7);
    EXPECT_EQ(column.m_double, 0.125);

    column = Full();
    column = true;
    ExpectOthersKept(column, 1);
    EXPECT_EQ(column.m_bool, 1);
    column = false;
    EXPECT_EQ(column.m_bool, 0);
}

TEST(DBACCESS_COLUMN, Assign_Int_GivesTheCodeOfABooleanAndKeepsTheNumber) {
    DBACCESS_COLUMN column;
    column = 5;
    EXPECT_EQ(column.m_type, 1);
    EXPECT_EQ(column.m_bool, 5);
    EXPECT_EQ(column.m_int, 0);
    EXPECT_EQ(column.m_long, 0);
}

TEST(DBACCESS_COLUMN, Assign_Long_GivesItsOwnCodeOnEverySystem) {
    EXPECT_EQ(Column(5L).m_type, 4);
    EXPECT_EQ(Column(static_cast<long>(INT32_MIN)).m_long, INT32_MIN);
}

TEST(DBACCESS_COLUMN, Assign_Literals_AreTexts) {
    DBACCESS_COLUMN column;
    column = "five";
    EXPECT_EQ(column.m_type, 10);
    column = OLESTR("six");
    EXPECT_EQ(column.m_text, CString("six"));
    EXPECT_EQ(column.m_type, 10);
    EXPECT_EQ(column.m_bool, 0);
    column = static_cast<const WCHAR*>(nullptr);
    EXPECT_EQ(column.m_text, CString());
}

DBACCESS_COLUMN SetOnFull(const CDBVariant& value) {
    DBACCESS_COLUMN column = Full();
    EXPECT_EQ(&column.Set(value), &column);
    return column;
}

TEST(DBACCESS_COLUMN, Set_Null_IsEmptyText) {
    const DBACCESS_COLUMN column = SetOnFull({});
    ExpectOthersKept(column, 10);
    EXPECT_EQ(column.m_text, CString());
}

TEST(DBACCESS_COLUMN, Set_Bool_TakesAllBitsOfTheValue) {
    CDBVariant value;
    value.SetBool(1);
    ExpectOthersKept(SetOnFull(value), 1);
    EXPECT_EQ(SetOnFull(value).m_bool, 1);
    value.SetBool(-1);
    EXPECT_EQ(SetOnFull(value).m_bool, -1);
}

TEST(DBACCESS_COLUMN, Set_Short_ExtendsTheSign) {
    CDBVariant value;
    value.SetShort(-2);
    ExpectOthersKept(SetOnFull(value), 3);
    EXPECT_EQ(SetOnFull(value).m_int, -2);
}

TEST(DBACCESS_COLUMN, Set_Long_TakesTheValue) {
    CDBVariant value;
    value.SetLong(INT32_MIN);
    ExpectOthersKept(SetOnFull(value), 4);
    EXPECT_EQ(SetOnFull(value).m_long, INT32_MIN);
}

TEST(DBACCESS_COLUMN, Set_Single_HasTheCodeOneAboveItsType) {
    CDBVariant value;
    value.SetSingle(0.5F);
    ExpectOthersKept(SetOnFull(value), 6);
    EXPECT_EQ(SetOnFull(value).m_float, 0.5F);
}

TEST(DBACCESS_COLUMN, Set_Double_HasTheCodeOneAboveItsType) {
    CDBVariant value;
    value.SetDouble(-0.5);
    ExpectOthersKept(SetOnFull(value), 7);
    EXPECT_EQ(SetOnFull(value).m_double, -0.5);
}

TEST(DBACCESS_COLUMN, Set_StringsOfAllKinds_AreTexts) {
    CDBVariant value;
    value.SetString("narrow");
    ExpectOthersKept(SetOnFull(value), 10);
    EXPECT_EQ(SetOnFull(value).m_text, CString("narrow"));
    value.SetAsciiString("ascii");
    EXPECT_EQ(SetOnFull(value).m_text, CString("ascii"));
    EXPECT_EQ(SetOnFull(value).m_type, 10);
    value.SetWideString(OLESTR("wide \x017c"));
    EXPECT_EQ(SetOnFull(value).m_text, CString("wide ż"));
    EXPECT_EQ(SetOnFull(value).m_type, 10);
}

TEST(DBACCESS_COLUMN, Set_StringWithoutAnObject_IsEmptyText) {
    for (const CDBVariant::eType type :
         {CDBVariant::String, CDBVariant::AsciiString, CDBVariant::WideString}) {
        const DBACCESS_COLUMN column = SetOnFull(CDBVariant(type));
        ExpectOthersKept(column, 10);
        EXPECT_EQ(column.m_text, CString());
    }
}

TEST(DBACCESS_COLUMN, Set_Binary_CopiesTheBytes) {
    CDBVariant value;
    value.SetBinary(Bytes(200));
    ExpectOthersKept(SetOnFull(value), 9);
    EXPECT_EQ(SetOnFull(value).m_binary, Bytes(200));
}

TEST(DBACCESS_COLUMN, Set_BinaryWithoutAnObject_ChangesNothing) {
    DBACCESS_COLUMN column("full");
    column = Full();
    column = 6;
    column.Set(CDBVariant(CDBVariant::Binary));
    ExpectOthersKept(column, 1);
    EXPECT_EQ(column.m_bool, 6);
    EXPECT_EQ(column.m_binary, Bytes(7));
}

TEST(DBACCESS_COLUMN, Set_DateUnsignedCharAndUnknownTypes_GiveNoValueAndChangeNoSlot) {
    CDBVariant date;
    date.SetDate({});
    CDBVariant byte;
    byte.SetUnsignedChar(9);
    for (const CDBVariant& value : {date, byte, CDBVariant(static_cast<CDBVariant::eType>(12))}) {
        const DBACCESS_COLUMN column = SetOnFull(value);
        ExpectOthersKept(column, 0);
        EXPECT_EQ(column.m_text, CString("five"));
        EXPECT_EQ(column.m_binary, Bytes(7));
        EXPECT_EQ(column.m_bool, 6);
    }
}

TEST(DBACCESS_COLUMN, Equal_ComparesTheSlotOfItsOwnCode_WhateverTheOthersCode) {
    EXPECT_TRUE(Column(true).equal(Column(1, "other")));
    EXPECT_FALSE(Column(true).equal(Column(2)));
    EXPECT_TRUE(Sixteen(7).equal(Sixteen(7)));
    EXPECT_FALSE(Sixteen(7).equal(Column(7)));
    EXPECT_TRUE(Column(7L).equal(Column(7L)));
    EXPECT_FALSE(Column(7L).equal(Column(7.0)));
    EXPECT_TRUE(Column(0L).equal(Column(7.0)));
    EXPECT_TRUE(Column(1.5F).equal(Column(1.5F)));
    EXPECT_FALSE(Column(1.5F).equal(Column(1.5)));
    EXPECT_TRUE(Column(1.5).equal(Column(1.5)));
    EXPECT_TRUE(Column("a").equal(Column("a", "other")));
    EXPECT_FALSE(Column("a").equal(Column("A")));
}

TEST(DBACCESS_COLUMN, Equal_WithWhatIsNoNumber_IsFalse) {
    EXPECT_FALSE(Column(NoNumber).equal(Column(NoNumber)));
    EXPECT_FALSE(Column(1.0).equal(Column(NoNumber)));
    EXPECT_FALSE(Column(NoFloat).equal(Column(NoFloat)));
    EXPECT_FALSE(Column(NoFloat).equal(Column(1.0F)));
}

TEST(DBACCESS_COLUMN, Equal_TwoBinariesOrTwoWithoutAValue_IsFalse) {
    EXPECT_FALSE(Column(Bytes(1)).equal(Column(Bytes(1))));
    EXPECT_FALSE(DBACCESS_COLUMN().equal(DBACCESS_COLUMN()));
}

TEST(DBACCESS_COLUMN, OperatorEqual_LooksAtEverySlotTheCodeAndTheName) {
    const DBACCESS_COLUMN full = Full();
    DBACCESS_COLUMN other = full;
    EXPECT_TRUE(full == other);
    EXPECT_FALSE(full != other);
    const auto differs = [&](auto change) {
        DBACCESS_COLUMN changed = full;
        change(changed);
        return full != changed && !(full == changed);
    };
    EXPECT_TRUE(differs([](DBACCESS_COLUMN& column) { column.m_long = 0; }));
    EXPECT_TRUE(differs([](DBACCESS_COLUMN& column) { column.m_int = 0; }));
    EXPECT_TRUE(differs([](DBACCESS_COLUMN& column) { column.m_float = 0; }));
    EXPECT_TRUE(differs([](DBACCESS_COLUMN& column) { column.m_double = 0; }));
    EXPECT_TRUE(differs([](DBACCESS_COLUMN& column) { column.m_text = "Five"; }));
    EXPECT_TRUE(differs([](DBACCESS_COLUMN& column) { column.m_bool = 0; }));
    EXPECT_TRUE(differs([](DBACCESS_COLUMN& column) { column.m_type = 0; }));
    EXPECT_TRUE(differs([](DBACCESS_COLUMN& column) { column.m_name = "Full"; }));
}

TEST(DBACCESS_COLUMN, OperatorEqual_DifferentBytes_AreEqual) {
    EXPECT_TRUE(Column(Bytes(1)) == Column(Bytes(2)));
}

TEST(DBACCESS_COLUMN, OperatorEqual_WhatIsNoNumberInAnySlot_IsNotEvenItself) {
    DBACCESS_COLUMN column = Column(NoFloat);
    column = 5;
    EXPECT_FALSE(column == DBACCESS_COLUMN(column));
    EXPECT_TRUE(column != DBACCESS_COLUMN(column));
}

TEST(DBACCESS_COLUMN, Less_ComparesTheSlotOfItsOwnCode) {
    EXPECT_TRUE(Column(-1) < Column(0));
    EXPECT_FALSE(Column(0) < Column(-1));
    EXPECT_TRUE(Sixteen(-1) < Sixteen(0));
    EXPECT_FALSE(Sixteen(0) < Sixteen(0));
    EXPECT_TRUE(Column(-1L) < Column(1L));
    EXPECT_TRUE(Column(-1L) < Column(0.0));
    EXPECT_TRUE(Column(1.0F) < Column(1.5F));
    EXPECT_TRUE(Column(1.0) < Column(1.5));
    EXPECT_TRUE(Column("B") < Column("a"));
    EXPECT_FALSE(Column("a") < Column("B"));
}

TEST(DBACCESS_COLUMN, Less_BinariesWithoutAValueAndNoNumbers_IsFalse) {
    EXPECT_FALSE(Column(Bytes(1)) < Column(Bytes(2)));
    EXPECT_FALSE(DBACCESS_COLUMN() < Column(1));
    EXPECT_FALSE(Column(NoNumber) < Column(1.0));
    EXPECT_FALSE(Column(1.0) < Column(NoNumber));
    EXPECT_FALSE(Column(NoFloat) < Column(1.0F));
}

TEST(DBACCESS_COLUMN, Greater_IsNeitherEqualNorLess) {
    EXPECT_TRUE(Column(2L) > Column(1L));
    EXPECT_FALSE(Column(1L) > Column(2L));
    EXPECT_FALSE(Column(1L) > Column(1L));
}

TEST(DBACCESS_COLUMN, Greater_OneValueAndDifferentNames_IsTrueBothWays) {
    EXPECT_TRUE(Column(1L, "a") > Column(1L, "b"));
    EXPECT_TRUE(Column(1L, "b") > Column(1L, "a"));
}

TEST(DBACCESS_COLUMN, Greater_OneValueAndAnotherStaleSlot_IsTrueBothWays) {
    DBACCESS_COLUMN stale = Column(9.0);
    stale = 1L;
    EXPECT_TRUE(stale > Column(1L));
    EXPECT_TRUE(Column(1L) > stale);
}

}  // namespace
