#include "Quillet/Db_FieldValue.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "Quillet/platform/NumberText.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;

DbFieldDescr FieldOf(unsigned short variantType) {
    DbFieldDescr field;
    field.SetType(variantType);
    return field;
}

DbFieldValue ValueOf(const CComVariant& content) {
    DbFieldValue value;
    value.GetVariant() = content;
    return value;
}

std::string WithSeparator(const std::string& wholePart, const std::string& fraction) {
    return wholePart + Units({quillet::platform::DecimalSeparator()}).ToUtf8() + fraction;
}

TEST(DbFieldValue, Construct_FreeStanding_IsEmptyWithIndexMinusOne) {
    const DbFieldValue value;
    EXPECT_EQ(value.GetIndex(), -1);
    EXPECT_EQ(value.GetType(), VT_EMPTY);
    EXPECT_FALSE(value.IsNull());
}

TEST(DbFieldValue, Construct_WithParent_RegistersAndKeepsTheIndex) {
    DbItem parent;
    DbFieldValue value(&parent, 3);
    EXPECT_EQ(value.GetIndex(), 3);
    EXPECT_EQ(value.GetParent(), &parent);
    EXPECT_EQ(parent.GetSize(), 22U + 8U);
    EXPECT_FALSE(value.IsChanged());
}

TEST(DbFieldValue, Copy_OfAValue_DuplicatesTextAndArray) {
    DbFieldValue text = ValueOf("abc");
    DbFieldValue textCopy(text);
    text.GetVariant().SetText(CString("changed").View());
    EXPECT_EQ(TextOf(textCopy.GetValue()), "abc");
    DbFieldValue bytes = ValueOf(ByteArray("abc"));
    const DbFieldValue bytesCopy(bytes);
    bytes.GetVariant().Clear();
    EXPECT_EQ(ContentOf(bytesCopy.GetValue()), (ArrayContent{0, "abc"}));
}

TEST(DbFieldValue, Copy_OfAValue_TakesIndexNullFlagAndParentWithoutRegistering) {
    DbItem parent;
    DbFieldValue value(&parent, 3);
    value.SetNull(true);
    DbFieldValue copy(value);
    EXPECT_EQ(copy.GetIndex(), 3);
    EXPECT_TRUE(copy.IsNull());
    EXPECT_EQ(copy.GetParent(), &parent);
    EXPECT_EQ(parent.GetSize(), 22U + 8U);
}

TEST(DbFieldValue, Assign_OfAValue_KeepsIndexParentAndStamps) {
    DbItem parent;
    DbFieldValue target(&parent, 3);
    DbFieldValue source = ValueOf("abc");
    source.SetNull(true);
    source.SetChanged();
    target = source;
    EXPECT_EQ(TextOf(target.GetValue()), "abc");
    EXPECT_TRUE(target.IsNull());
    EXPECT_EQ(target.GetIndex(), 3);
    EXPECT_EQ(target.GetParent(), &parent);
    EXPECT_FALSE(target.IsChanged());
    DbFieldValue& alias = target;
    target = alias;
    EXPECT_EQ(TextOf(target.GetValue()), "abc");
}

TEST(DbFieldValue, GetVariant_ConstAndNot_AreTheStoredValue) {
    DbFieldValue value;
    value.GetVariant() = Long(5);
    const DbFieldValue& fixed = value;
    EXPECT_EQ(&fixed.GetVariant(), &value.GetVariant());
    EXPECT_EQ(&fixed.GetValue(), &value.GetVariant());
    EXPECT_EQ(value.GetType(), VT_I4);
    EXPECT_FALSE(value.IsChanged());
}

TEST(DbFieldValue, SetValue_TextIntoALongCell_StoresTheNumber) {
    DbFieldValue value = ValueOf(Long(0));
    value.SetValue("42");
    EXPECT_EQ(value.GetType(), VT_I4);
    EXPECT_EQ(value.GetValue().lVal, 42);
    EXPECT_TRUE(value.IsChanged());
}

TEST(DbFieldValue, SetValue_ConversionThatFails_KeepsTheValueAsItCame) {
    DbFieldValue value = ValueOf(Long(0));
    value.SetValue("abc");
    EXPECT_EQ(TextOf(value.GetValue()), "abc");
    EXPECT_TRUE(value.IsChanged());
    value.SetValue(Long(1));
    EXPECT_EQ(TextOf(value.GetValue()), "1") << "the cell has become a text";
}

TEST(DbFieldValue, SetValue_NullIntoALongCell_IsNull) {
    DbFieldValue value = ValueOf(Long(7));
    value.SetValue(NullVariant());
    EXPECT_EQ(value.GetType(), VT_NULL);
    EXPECT_FALSE(value.IsNull()) << "the flag is another thing";
}

TEST(DbFieldValue, SetValue_EmptyCell_TakesTheTypeOfWhatCame) {
    DbFieldValue value;
    value.SetValue(1.5);
    EXPECT_EQ(value.GetType(), VT_R8);
    EXPECT_EQ(value.GetValue().dblVal, 1.5);
}

TEST(DbFieldValue, SetValue_ReferenceIntoAnEmptyCell_KeepsNoPointerToTheCallersMemory) {
    LONG number = 5;
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = VT_BYREF | VT_I4;
    reference.plVal = &number;
    DbFieldValue value;
    value.SetValue(CComVariant(reference));
    EXPECT_EQ(value.GetType() & VT_BYREF, 0);
}

TEST(DbFieldValue, SetValue_ReferenceIntoATypedCell_IsRead) {
    LONG number = 5;
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = VT_BYREF | VT_I4;
    reference.plVal = &number;
    DbFieldValue value = ValueOf(Long(0));
    value.SetValue(CComVariant(reference));
    EXPECT_EQ(value.GetType(), VT_I4);
    EXPECT_EQ(value.GetValue().lVal, 5);
}

TEST(DbFieldValue, SetValue_NumbersIntoATextCell_BecomeText) {
    DbFieldValue value = ValueOf("");
    value.SetValue(Long(-12));
    EXPECT_EQ(TextOf(value.GetValue()), "-12");
}

TEST(DbFieldValue, SetValue_Itself_KeepsTheValue) {
    DbFieldValue value = ValueOf("abc");
    value.SetValue(value.GetValue());
    EXPECT_EQ(TextOf(value.GetValue()), "abc");
}

TEST(DbFieldValue, SetValue_NullFlag_IsNotTouched) {
    DbFieldValue value = ValueOf(Long(0));
    value.SetNull(true);
    value.SetValue(Long(1));
    EXPECT_TRUE(value.IsNull());
}

TEST(DbFieldValue, SetNull_IsAFlagAlone) {
    DbFieldValue value = ValueOf(Long(9));
    value.SetNull(true);
    EXPECT_TRUE(value.IsNull());
    EXPECT_EQ(value.GetValue().lVal, 9);
    EXPECT_FALSE(value.IsChanged());
    value.SetNull(false);
    EXPECT_FALSE(value.IsNull());
}

TEST(DbFieldValue, ValueToString_Integers_AreDecimal) {
    EXPECT_EQ(PrintedText(ValueOf(Short(-32768))), "-32768");
    EXPECT_EQ(PrintedText(ValueOf(Long(0))), "0");
    EXPECT_EQ(PrintedText(ValueOf(Long(2147483647))), "2147483647");
    EXPECT_EQ(PrintedText(ValueOf(Long(std::numeric_limits<LONG>::min()))), "-2147483648");
}

TEST(DbFieldValue, ValueToString_Floats_HaveSevenDigits) {
    EXPECT_EQ(PrintedText(ValueOf(1.5F)), WithSeparator("1", "5"));
    EXPECT_EQ(PrintedText(ValueOf(0.1F)), WithSeparator("0", "1"));
    EXPECT_EQ(PrintedText(ValueOf(1.0F / 3.0F)), WithSeparator("0", "3333333"));
    EXPECT_EQ(PrintedText(ValueOf(100.0F)), "100");
}

TEST(DbFieldValue, ValueToString_Doubles_HaveFifteenDigitsAndNoTrailingZeros) {
    EXPECT_EQ(PrintedText(ValueOf(2.0)), "2");
    EXPECT_EQ(PrintedText(ValueOf(-0.25)), WithSeparator("-0", "25"));
    EXPECT_EQ(PrintedText(ValueOf(0.1 + 0.2)), WithSeparator("0", "3"));
    EXPECT_EQ(PrintedText(ValueOf(1.0 / 3.0)), WithSeparator("0", "333333333333333"));
    EXPECT_EQ(PrintedText(ValueOf(1e15)), "1E+15");
    EXPECT_EQ(PrintedText(ValueOf(1e-5)), "1E-05");
}

TEST(DbFieldValue, ValueToString_Text_IsTheTextItself) {
    EXPECT_EQ(PrintedText(ValueOf(" <a & \"b\"> \u017C\n")), " <a & \"b\"> \u017C\n");
    EXPECT_EQ(PrintedText(ValueOf("")), "");
    CString out;
    ValueOf(Units({'a', 0xD800, 'b'})).ValueToString(out);
    EXPECT_EQ(out, Units({'a', 0xD800, 'b'})) << "no unit is replaced";
}

TEST(DbFieldValue, ValueToString_Boolean_IsTrueOnlyForAllBitsSet) {
    EXPECT_EQ(PrintedText(ValueOf(BooleanBits(VARIANT_TRUE))), "true");
    EXPECT_EQ(PrintedText(ValueOf(BooleanBits(VARIANT_FALSE))), "false");
    EXPECT_EQ(PrintedText(ValueOf(BooleanBits(1))), "false");
    EXPECT_EQ(PrintedText(ValueOf(BooleanBits(-2))), "false");
}

TEST(DbFieldValue, ValueToString_Bytes_AreBase64) {
    EXPECT_EQ(PrintedText(ValueOf(ByteArray("ABCD"))), "QUJDRA==");
    EXPECT_EQ(PrintedText(ValueOf(ByteArray(""))), "");
}

TEST(DbFieldValue, ValueToString_DefaultOfABinaryField_ReadsOneZeroPastTheArray) {
    EXPECT_EQ(PrintedText(FieldOf(ByteArrayType)), "AAA=");
}

TEST(DbFieldValue, ValueToString_EveryOtherType_IsEmpty) {
    EXPECT_EQ(PrintedText(DbFieldValue()), "");
    EXPECT_EQ(PrintedText(ValueOf(NullVariant())), "");
    EXPECT_EQ(PrintedText(ValueOf(DateVariant(1.5))), "");
    EXPECT_EQ(PrintedText(ValueOf(CComVariant(std::int64_t(5)))), "");
    EXPECT_EQ(PrintedText(ValueOf(CComVariant(std::uint8_t(5)))), "");
}

TEST(DbFieldValue, ValueToString_NullFlag_DoesNotMatter) {
    DbFieldValue value = ValueOf(Long(5));
    value.SetNull(true);
    EXPECT_EQ(PrintedText(value), "5");
}

TEST(DbFieldValue, ValueFromWideText_UsesTheFieldsConverter) {
    DbFieldValue value;
    const CString one("1,5");
    value.ValueFromString(FieldOf(VT_R8), one.GetString());
    EXPECT_EQ(value.GetValue().dblVal, 1.5);
    const CString none("");
    value.ValueFromString(FieldOf(VT_R8), none.GetString());
    EXPECT_EQ(value.GetType(), VT_R8);
    EXPECT_EQ(value.GetValue().dblVal, 0.0);
    EXPECT_FALSE(value.IsChanged());
}

TEST(DbFieldValue, ValueFromWideText_Null_CountsAsEmpty) {
    DbFieldValue value;
    const WCHAR* const nothing = nullptr;
    value.ValueFromString(FieldOf(VT_BSTR), nothing);
    EXPECT_EQ(TextOf(value.GetValue()), "");
    value.ValueFromString(FieldOf(VT_R4), nothing);
    EXPECT_EQ(value.GetType(), VT_R4);
}

TEST(DbFieldValue, ValueFromWideText_ItsOwnText_IsReadBeforeItIsReplaced) {
    DbFieldValue value = ValueOf("its own text, long enough to stand on the heap");
    const WCHAR* const own = value.GetValue().bstrVal;
    value.ValueFromString(FieldOf(VT_BSTR), own);
    EXPECT_EQ(TextOf(value.GetValue()), "its own text, long enough to stand on the heap");
}

TEST(DbFieldValue, ValueFromWideText_ItsOwnTextThatIsNoNumber_StaysAText) {
    DbFieldValue value = ValueOf("no number");
    const WCHAR* const own = value.GetValue().bstrVal;
    value.ValueFromString(FieldOf(VT_I4), own);
    EXPECT_EQ(TextOf(value.GetValue()), "no number");
}

TEST(DbFieldValue, ValueFromString_Number_IsConvertedByThePlatform) {
    DbFieldValue value;
    value.ValueFromString(FieldOf(VT_I4), CString("42"));
    EXPECT_EQ(value.GetType(), VT_I4);
    EXPECT_EQ(value.GetValue().lVal, 42);
    value.ValueFromString(FieldOf(VT_BOOL), CString("true"));
    EXPECT_EQ(value.GetValue().boolVal, VARIANT_TRUE);
    EXPECT_FALSE(value.IsChanged());
}

TEST(DbFieldValue, ValueFromString_EmptyTextOnANumber_StaysAnEmptyText) {
    const unsigned short types[] = {VT_I4, VT_R4, VT_R8, VT_BOOL};
    for (const unsigned short type : types) {
        DbFieldValue value = ValueOf(Long(5));
        value.ValueFromString(FieldOf(type), CString());
        EXPECT_EQ(value.GetType(), VT_BSTR) << type;
        EXPECT_EQ(TextOf(value.GetValue()), "") << type;
    }
}

TEST(DbFieldValue, ValueFromString_ForeignDecimalSeparator_IsNotNormalised) {
    const bool point = quillet::platform::DecimalSeparator() == '.';
    DbFieldValue value;
    value.ValueFromString(FieldOf(VT_R8), CString(point ? "1,5" : "1.5"));
    EXPECT_FALSE(value.GetType() == VT_R8 && value.GetValue().dblVal == 1.5);
}

TEST(DbFieldValue, ValueFromString_Text_IsCopied) {
    DbFieldValue value;
    value.ValueFromString(FieldOf(VT_BSTR), CString(" 12 "));
    EXPECT_EQ(TextOf(value.GetValue()), " 12 ");
}

TEST(DbFieldValue, ValueFromString_Bytes_AreDecodedFromLowerBoundZero) {
    DbFieldValue value;
    value.ValueFromString(FieldOf(ByteArrayType), CString("QUJD\r\n RA=="));
    EXPECT_EQ(ContentOf(value.GetValue()), (ArrayContent{0, "ABCD"}));
    value.ValueFromString(FieldOf(ByteArrayType), CString(""));
    EXPECT_EQ(ContentOf(value.GetValue()), (ArrayContent{0, ""}));
}

TEST(DbFieldValue, ValueFromString_FieldWithoutType_KeepsTheText) {
    DbFieldValue value;
    value.ValueFromString(DbFieldDescr(), CString("12"));
    EXPECT_EQ(TextOf(value.GetValue()), "12");
}

TEST(DbFieldValue, ValueFromString_BothForms_LeaveTheNullFlag) {
    DbFieldValue value;
    value.SetNull(true);
    const CString text("1");
    value.ValueFromString(FieldOf(VT_I4), text);
    value.ValueFromString(FieldOf(VT_I4), text.GetString());
    EXPECT_TRUE(value.IsNull());
}

TEST(DbFieldValue, GetSize_TextCountsItsUnits_OthersTwentyFour) {
    EXPECT_EQ(DbFieldValue().GetSize(), 8U + 5U + 24U);
    EXPECT_EQ(ValueOf(Long(1)).GetSize(), 8U + 5U + 24U);
    EXPECT_EQ(ValueOf(ByteArray("abc")).GetSize(), 8U + 5U + 24U);
    EXPECT_EQ(ValueOf("").GetSize(), 8U + 5U);
    EXPECT_EQ(ValueOf("a\U0001F600").GetSize(), 8U + 5U + 2U * 3U);
}

TEST(DbFieldValue, Destroy_ThroughTheItem_FreesTheValue) {
    DbItem parent;
    DbItem* const item = new DbFieldValue(&parent, 0);
    delete item;
    EXPECT_EQ(parent.GetSize(), 8U);
}

TEST(DbFieldValue, Destroy_NullPointer_IsNothing) {
    std::vector<DbFieldValue*> cells(3, nullptr);
    for (const DbFieldValue* const cell : cells) {
        delete cell;
    }
    SUCCEED() << "deleting null does nothing";
}

TEST(DbFieldValue, AppendValueText_AppendsWhatValueToStringGives) {
    std::string text = "x";
    for (const CComVariant& content :
         {Long(5), CComVariant("\u017C"), BooleanBits(-1), ByteArray("ABC"), CComVariant()}) {
        const std::string before = text;
        quillet::AppendValueText(content, text);
        EXPECT_EQ(text, before + PrintedText(ValueOf(content)));
    }
}

}  // namespace
