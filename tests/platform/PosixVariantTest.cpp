// Rules of this port where other implementations may differ in detail: rare types, spaces as separators,
// numbers at the edge of their range, and cases that a script cannot tell apart.
#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <string>

#include "VariantValues.h"
#include "platform/Automation.h"

namespace quillet::test {
namespace {

HRESULT Change(const Value& source, VARTYPE type, LCID locale, std::string& description) {
    ScopedVariant value(source);
    const HRESULT result = VariantChangeTypeEx(&value, &value, locale, 0, type);
    description = Describe(*value);
    return result;
}

void ExpectChange(const Value& source, LCID locale, const Value& expected) {
    std::string description;
    EXPECT_EQ(Change(source, expected.type, locale, description), S_OK) << Describe(source);
    EXPECT_EQ(description, Describe(expected));
}

void ExpectFailure(const Value& source, VARTYPE type, HRESULT expected, LCID locale = English) {
    std::string description;
    EXPECT_EQ(Change(source, type, locale, description), expected) << Describe(source);
    EXPECT_EQ(description, Describe(source));
}

HRESULT Compare(const Value& left, const Value& right) {
    ScopedVariant leftVariant(left);
    ScopedVariant rightVariant(right);
    return VarCmp(&leftVariant, &rightVariant, English, 0);
}

TEST(PosixVariant, ChangeType_ToEmptyOrNull_IsForTheirOwnOnly) {
    ExpectFailure(I4(1), VT_EMPTY, DISP_E_TYPEMISMATCH);
    ExpectFailure(I4(1), VT_NULL, DISP_E_TYPEMISMATCH);
    ExpectFailure(Empty(), VT_NULL, DISP_E_TYPEMISMATCH);
    ExpectFailure(Null(), VT_EMPTY, DISP_E_TYPEMISMATCH);
}

TEST(PosixVariant, ChangeType_TypeWithoutSupport_IsABadType) {
    ExpectFailure(I4(1), VT_CY, DISP_E_BADVARTYPE);
    ExpectFailure(I4(1), VT_DECIMAL, DISP_E_BADVARTYPE);
    ExpectFailure(I4(1), VT_BYREF | VT_I4, DISP_E_BADVARTYPE);
    ExpectFailure(I4(1), VT_ARRAY | VT_I4, DISP_E_BADVARTYPE);
}

TEST(PosixVariant, ChangeType_NullReference_IsAnInvalidArgument) {
    ScopedVariant source;
    source->vt = VT_BYREF | VT_I4;
    source->plVal = nullptr;
    ScopedVariant target(I4(4711));
    EXPECT_EQ(VariantChangeTypeEx(&target, &source, English, 0, VT_BSTR), E_INVALIDARG);
    EXPECT_EQ(Describe(*target), Describe(I4(4711)));
}

TEST(PosixVariant, ChangeType_ReferenceToAReference_IsFollowedOnce) {
    LONG number = 42;
    ScopedVariant inner;
    inner->vt = VT_BYREF | VT_I4;
    inner->plVal = &number;
    ScopedVariant outer;
    outer->vt = VT_BYREF | VT_VARIANT;
    outer->pvarVal = &inner;
    ScopedVariant target;
    EXPECT_EQ(VariantChangeTypeEx(&target, &outer, English, 0, VT_I4), S_OK);
    EXPECT_EQ(Describe(*target), Describe(I4(42)));

    ScopedVariant outermost;
    outermost->vt = VT_BYREF | VT_VARIANT;
    outermost->pvarVal = &outer;
    EXPECT_EQ(VariantChangeTypeEx(&target, &outermost, English, 0, VT_I4), DISP_E_BADVARTYPE);
}

TEST(PosixVariant, ChangeType_ByteArrayAndText_DoNotMix) {
    ScopedVariant array;
    array->vt = VT_ARRAY | VT_UI1;
    array->parray = SafeArrayCreateVector(VT_UI1, 0, 2);
    ScopedVariant text(Text(OLESTR("ab")));
    EXPECT_EQ(VariantChangeTypeEx(&array, &array, English, 0, VT_BSTR), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(VariantChangeTypeEx(&text, &text, English, 0, VT_ARRAY | VT_UI1), DISP_E_TYPEMISMATCH);
}

TEST(PosixVariant, ChangeType_TargetHoldsAnArrayInAccess_IsRefused) {
    ScopedVariant target;
    target->vt = VT_ARRAY | VT_UI1;
    target->parray = SafeArrayCreateVector(VT_UI1, 0, 1);
    void* data = nullptr;
    ASSERT_EQ(SafeArrayAccessData(target->parray, &data), S_OK);
    ScopedVariant source(I4(1));
    EXPECT_EQ(VariantChangeTypeEx(&target, &source, English, 0, VT_BSTR), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(target->vt, VT_ARRAY | VT_UI1);
    SafeArrayUnaccessData(target->parray);
}

TEST(PosixVariant, SafeArrayCreate_OtherThanBytesInOneDimension_GivesNull) {
    SAFEARRAYBOUND bounds[2] = {{1, 0}, {1, 0}};
    EXPECT_EQ(SafeArrayCreate(VT_I4, 1, bounds), nullptr);
    EXPECT_EQ(SafeArrayCreate(VT_UI1, 2, bounds), nullptr);
    EXPECT_EQ(SafeArrayCreateVector(VT_BSTR, 0, 1), nullptr);
}

TEST(PosixVariant, ChangeType_RealsAtTheEdge_RoundBeforeTheRangeIsChecked) {
    ExpectChange(R8(2147483647.4), English, I4(2147483647));
    ExpectFailure(R8(2147483647.5), VT_I4, DISP_E_OVERFLOW);
    ExpectChange(R8(-2147483648.5), English, I4(-2147483648LL));
    ExpectChange(R8(-0.5), English, Whole(VT_UI4, 0));
    ExpectChange(R8(-9223372036854775808.0), English, Whole(VT_I8, std::numeric_limits<long long>::min()));
    ExpectFailure(R8(9223372036854775808.0), VT_I8, DISP_E_OVERFLOW);
    ExpectChange(R8(9223372036854775808.0), English, Whole(VT_UI8, std::numeric_limits<long long>::min()));
    ExpectFailure(R8(18446744073709551616.0), VT_UI8, DISP_E_OVERFLOW);
}

TEST(PosixVariant, ChangeType_NotANumberOrInfinite_HasNoInteger) {
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    ExpectFailure(R8(Infinity), VT_I4, DISP_E_OVERFLOW);
    ExpectFailure(R8(std::numeric_limits<double>::quiet_NaN()), VT_I8, DISP_E_OVERFLOW);
    ExpectFailure(R8(Infinity), VT_R4, DISP_E_OVERFLOW);
    ExpectChange(R8(Infinity), English, Text(u"1.#INF"));
    ExpectChange(R8(-Infinity), English, Text(u"-1.#INF"));
    ExpectChange(R8(std::numeric_limits<double>::quiet_NaN()), English, Text(u"-1.#IND"));
}

TEST(PosixVariant, ChangeType_NegativeZeroToText_IsZero) {
    ExpectChange(R8(-0.0), English, Text(u"0"));
    ExpectChange(R4(-0.0), English, Text(u"0"));
}

TEST(PosixVariant, ChangeType_SubnormalToText_HasFifteenDigits) {
    ExpectChange(R8(std::numeric_limits<double>::denorm_min()), English, Text(u"4.94065645841247E-324"));
}

TEST(PosixVariant, ChangeType_TextTooSmallForAReal_IsZero) {
    ExpectChange(Text(u"1E-400"), English, R8(0));
    ExpectChange(Text(u"1E-99999999999999999999"), English, R8(0));
    ExpectChange(Text(u"1E-60"), English, R4(0));
    ExpectFailure(Text(u"1E99999999999999999999"), VT_R8, DISP_E_OVERFLOW);
    ExpectChange(Text(u"0E99999999999999999999"), English, R8(0));
}

TEST(PosixVariant, ChangeType_VeryLongText_IsRoundedOnce) {
    // Half way between two doubles, but for the last of a thousand digits.
    const std::u16string halfWay = u"9007199254740993" + std::u16string(u".") + std::u16string(1000, u'0');
    ExpectChange(Text(halfWay.c_str()), English, R8(9007199254740992.0));
    ExpectChange(Text((halfWay + u"1").c_str()), English, R8(9007199254740994.0));
    const std::u16string manyDigits(2000, u'9');
    ExpectFailure(Text(manyDigits.c_str()), VT_R8, DISP_E_OVERFLOW);
    ExpectChange(Text((manyDigits + u"E-1999").c_str()), English, R8(10));
    ExpectChange(Text((u"2.5" + std::u16string(1000, u'0') + u"1").c_str()), English, I4(3));
    ExpectChange(Text((std::u16string(1000, u'0') + u"7").c_str()), English, I4(7));
}

TEST(PosixVariant, ChangeType_HexadecimalText_IsTheBitsOfTheResult) {
    ExpectChange(Text(u"&HFFFF"), English, Whole(VT_I2, -1));
    ExpectChange(Text(u"&HFFFF"), English, I4(65535));
    ExpectChange(Text(u"&HFFFFFFFF"), English, I4(-1));
    ExpectChange(Text(u"&HFFFFFFFFFFFFFFFF"), English, Whole(VT_I8, -1));
    ExpectChange(Text(u" &HFF "), English, R8(255));
    ExpectChange(Text(u"&O1777777777777777777777"), English, Whole(VT_UI8, -1));
    ExpectFailure(Text(u"&H10000"), VT_I2, DISP_E_OVERFLOW);
    ExpectFailure(Text(u"&H10000000000000000"), VT_I8, DISP_E_OVERFLOW);
    ExpectFailure(Text(u"&H"), VT_I4, DISP_E_TYPEMISMATCH);
    ExpectFailure(Text(u"&HG"), VT_I4, DISP_E_TYPEMISMATCH);
    ExpectFailure(Text(u"&O8"), VT_I4, DISP_E_TYPEMISMATCH);
    ExpectFailure(Text(u"&X1"), VT_I4, DISP_E_TYPEMISMATCH);
    ExpectFailure(Text(u"-&H1"), VT_I4, DISP_E_TYPEMISMATCH);
}

TEST(PosixVariant, ChangeType_Currency_StandsOnEitherSideOnce) {
    ExpectChange(Text(u"5 \u20AC"), German, I4(5));
    ExpectChange(Text(u"-\u20AC5"), German, I4(-5));
    ExpectChange(Text(u"(\u20AC 5,50)"), German, R8(-5.5));
    ExpectFailure(Text(u"$5$"), VT_I4, DISP_E_TYPEMISMATCH);
    ExpectFailure(Text(u"$5"), VT_I4, DISP_E_TYPEMISMATCH, German);
}

TEST(PosixVariant, ChangeType_SpacesAsGroupSeparators_AreOfAnyKind) {
    ExpectChange(Text(u"1 234 567,5"), French, R8(1234567.5));
    ExpectChange(Text(u"1\u00A0234"), French, I4(1234));
    ExpectChange(Text(u"1\u202F234"), French, I4(1234));
    ExpectFailure(Text(u"1 234"), VT_I4, DISP_E_TYPEMISMATCH);
}

TEST(PosixVariant, ChangeType_MisplacedSigns_AreRefused) {
    for (const OLECHAR* text : {u"+-5", u"-5-", u"(-5)", u"-(5)", u"(5)-", u"((5))", u"1E", u"1E+", u"E5",
                                u".", u",5", u"5,", u"1,.5", u"5 5", u"& H1", u"0x10", u"1e5.5"}) {
        ExpectFailure(Text(text), VT_R8, DISP_E_TYPEMISMATCH);
    }
}

TEST(PosixVariant, ChangeType_DateOutOfRangeToText_IsRefused) {
    ExpectFailure(Date(3000000), VT_BSTR, E_INVALIDARG);
    ExpectFailure(Date(std::numeric_limits<double>::quiet_NaN()), VT_BSTR, E_INVALIDARG);
    ExpectChange(Date(2958465.0 + 86399.6 / 86400.0), English, Text(u"12/31/9999 11:59:59 PM"));
    ExpectChange(Date(-657434), English, Text(u"1/1/0100"));
}

TEST(PosixVariant, ChangeType_DateJustBeforeMidnight_RoundsToTheNextDay) {
    ExpectChange(Date(37623.0 + 86399.9 / 86400.0), English, Text(u"1/3/2003"));
}

TEST(PosixVariant, ChangeType_DateTexts_ReadBackInManyLocales) {
    constexpr LCID Locales[] = {0x0409, 0x0809, 0x0407, 0x040C, 0x0C0C, 0x0410, 0x0415, 0x041D,
                                0x0406, 0x040B, 0x040E, 0x0427, 0x0402, 0x0405, 0x0408, 0x041E,
                                0x0439, 0x041F, 0x0411, 0x0412, 0x0804, 0x0404, 0x0419};
    for (const LCID locale : Locales) {
        for (const double serial :
             {37623.0, 37623.0 + 57906.0 / 86400.0, 44196.0 + 600.0 / 86400.0, 0.75, -1.25}) {
            SCOPED_TRACE("locale " + std::to_string(locale) + " date " + std::to_string(serial));
            ScopedVariant value(Date(serial));
            ASSERT_EQ(VariantChangeTypeEx(&value, &value, locale, 0, VT_BSTR), S_OK);
            SCOPED_TRACE(Describe(*value));
            ASSERT_EQ(VariantChangeTypeEx(&value, &value, locale, 0, VT_DATE), S_OK);
            EXPECT_NEAR(value->date, serial, 1e-9);
        }
    }
}

TEST(PosixVariant, ChangeType_DateText_HasOptionalParts) {
    ExpectChange(Text(u" 2003-01-02T06:00:00 "), English, Date(37623.25));
    ExpectChange(Text(u"1/2/2003 6:00"), English, Date(37623.25));
    ExpectChange(Text(u"1/2/2003 6 pm"), English, Date(37623.75));
    ExpectChange(Text(u"1/2/03"), English, Date(37623));
    ExpectChange(Text(u"1/2/1903"), English, Date(1098.0));
    ExpectChange(Text(u"12:00:00 AM"), English, Date(0));
    for (const OLECHAR* text : {u"1/2", u"1/2/2003 x", u"2003-13-01", u"2003-02-29", u"1/2/2003 24:00",
                                u"13:00 PM", u"6:60", u"6:00:60", u"6", u"1/2/2003/4", u"12345/1/1", u":"}) {
        ExpectFailure(Text(text), VT_DATE, DISP_E_TYPEMISMATCH);
    }
}

TEST(PosixVariant, VarCmp_TypesWithoutAnOrder_AreBadTypes) {
    for (const VARTYPE type : {VT_I1, VT_UI2, VT_UI4, VT_UI8, VT_UINT}) {
        EXPECT_EQ(Compare(Whole(type, 1), I4(1)), DISP_E_BADVARTYPE);
        EXPECT_EQ(Compare(I4(1), Whole(type, 1)), DISP_E_BADVARTYPE);
        EXPECT_EQ(Compare(Empty(), Whole(type, 0)), DISP_E_BADVARTYPE);
    }
}

TEST(PosixVariant, VarCmp_TextAgainstBoolOrDate_IsGreater) {
    EXPECT_EQ(Compare(Text(u"False"), Bool(true)), VARCMP_GT);
    EXPECT_EQ(Compare(Date(1), Text(u"")), VARCMP_LT);
}

TEST(PosixVariant, VarCmp_FloatAgainstDouble_IsExact) {
    EXPECT_EQ(Compare(R4(0.1), R8(0.1)), VARCMP_GT);
    EXPECT_EQ(Compare(Whole(VT_INT, 3), R4(3)), VARCMP_EQ);
}

TEST(PosixVariant, VarCmp_Reference_ComparesWhatItRefersTo) {
    DOUBLE number = 2.5;
    ScopedVariant reference;
    reference->vt = VT_BYREF | VT_R8;
    reference->pdblVal = &number;
    ScopedVariant two(I4(2));
    EXPECT_EQ(VarCmp(&reference, &two, English, 0), VARCMP_GT);
    EXPECT_EQ(VarCmp(&two, &reference, English, 0), VARCMP_LT);
}

TEST(PosixVariant, VarCmp_ComposedAndDecomposedLetters_AreEqual) {
    EXPECT_EQ(Compare(Text(u"\u00E9"), Text(u"e\u0301")), VARCMP_EQ);
}

}  // namespace
}  // namespace quillet::test
