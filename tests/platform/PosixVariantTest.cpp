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

TEST(PosixVariant, ChangeType_TypeWithoutSupport_IsABadType) {
    ExpectFailure(I4(1), VT_CY, DISP_E_BADVARTYPE);
    ExpectFailure(I4(1), VT_DECIMAL, DISP_E_BADVARTYPE);
    ExpectFailure(I4(1), 0x1000 | VT_I4, DISP_E_BADVARTYPE);
}

TEST(PosixVariant, ChangeType_NullReference_IsAnInvalidArgument) {
    ScopedVariant source;
    source->vt = VT_BYREF | VT_I4;
    source->plVal = nullptr;
    ScopedVariant target(I4(4711));
    EXPECT_EQ(VariantChangeTypeEx(&target, &source, English, 0, VT_BSTR), E_INVALIDARG);
    EXPECT_EQ(Describe(*target), Describe(I4(4711)));
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

TEST(PosixVariant, ChangeType_NotANumber_HasNoIntegerAndNoDate) {
    constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();
    ExpectFailure(R8(NotANumber), VT_I4, DISP_E_OVERFLOW);
    ExpectFailure(R8(NotANumber), VT_UI8, DISP_E_OVERFLOW);
    ExpectFailure(R8(NotANumber), VT_DATE, DISP_E_OVERFLOW);
    ExpectFailure(Date(NotANumber), VT_BSTR, E_INVALIDARG);
    ExpectChange(R8(NotANumber), English, Text(u"-1.#IND"));
}

TEST(PosixVariant, ChangeType_TextOfTheLargestAndTheSmallestNumber_IsRead) {
    ExpectChange(Text(u"1.7976931348623157E308"), English, R8(std::numeric_limits<double>::max()));
    ExpectFailure(Text(u"1.7976931348623159E308"), VT_R8, DISP_E_OVERFLOW);
    ExpectChange(Text(u"1E308"), English, R8(1e308));
    ExpectChange(Text(u"4.94E-324"), English, R8(std::numeric_limits<double>::denorm_min()));
    ExpectChange(Text(u"1E-45"), English, R4(static_cast<double>(std::numeric_limits<float>::denorm_min())));
}

TEST(PosixVariant, ChangeType_TextTooSmallForAReal_IsZero) {
    ExpectChange(Text(u"1E-400"), English, R8(0));
    ExpectChange(Text(u"1E-99999999999999999999"), English, R8(0));
    ExpectChange(Text(u"1E-60"), English, R4(0));
    ExpectChange(Text(u"-1E-60"), English, R4(-0.0));
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

TEST(PosixVariant, ChangeType_HexadecimalTextWithAllBits_IsMinusOne) {
    ExpectChange(Text(u"&HFFFFFFFF"), English, R8(-1));
    ExpectChange(Text(u"&HFFFFFFFFFFFFFFFF"), English, Whole(VT_I8, -1));
    ExpectChange(Text(u"&O1777777777777777777777"), English, Whole(VT_UI8, -1));
}

TEST(PosixVariant, ChangeType_HexadecimalTextWithASign_IsRefused) {
    for (const OLECHAR* text : {u"-&H1", u"+&H1", u"&H1-", u"(&H1)", u"$&H1"}) {
        ExpectFailure(Text(text), VT_I4, DISP_E_TYPEMISMATCH);
    }
}

TEST(PosixVariant, ChangeType_SpacesAsGroupSeparators_AreOfAnyKind) {
    for (const OLECHAR* text : {u"1 234", u"1\u00A0234", u"1\u202F234"}) {
        ExpectChange(Text(text), French, I4(1234));
    }
}

TEST(PosixVariant, ChangeType_MarksRepeatedBehindANumber_AreRefused) {
    for (const OLECHAR* text : {u"5--", u"5++", u"5$$", u"(5))", u"(5-", u"-(5", u"5-,", u"1E1,000"}) {
        ExpectFailure(Text(text), VT_R8, DISP_E_TYPEMISMATCH);
    }
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

}  // namespace
}  // namespace quillet::test
