#include "Quillet/base/CComVariant.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <utility>

#include "support/DispatchStub.h"
#include "support/Seed.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;

// Counts its references; deletes nothing.
class CountedObject final : public DispatchStub {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_references; }

    ULONG m_references = 0;
};

template <typename Number>
VARTYPE TypeOf(Number number) {
    return CComVariant(number).vt;
}

TEST(CComVariant, Construct_Default_IsEmpty) {
    const CComVariant value;
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_FALSE(value.OwnsMemory());
}

TEST(CComVariant, Construct_Numbers_TakeTheSizeAndSignOfTheirType) {
    EXPECT_EQ(TypeOf(true), VT_BOOL);
    EXPECT_EQ(TypeOf(std::int8_t(1)), VT_I1);
    EXPECT_EQ(TypeOf(std::uint8_t(1)), VT_UI1);
    EXPECT_EQ(TypeOf(std::int16_t(1)), VT_I2);
    EXPECT_EQ(TypeOf(std::uint16_t(1)), VT_UI2);
    EXPECT_EQ(TypeOf(std::int32_t(1)), VT_I4);
    EXPECT_EQ(TypeOf(std::uint32_t(1)), VT_UI4);
    EXPECT_EQ(TypeOf(std::int64_t(1)), VT_I8);
    EXPECT_EQ(TypeOf(std::uint64_t(1)), VT_UI8);
    EXPECT_EQ(TypeOf(1.0F), VT_R4);
    EXPECT_EQ(TypeOf(1.0), VT_R8);
}

TEST(CComVariant, Construct_Numbers_KeepTheirValue) {
    EXPECT_EQ(CComVariant(true).boolVal, VARIANT_TRUE);
    EXPECT_EQ(CComVariant(false).boolVal, VARIANT_FALSE);
    EXPECT_EQ(CComVariant(std::int8_t(-7)).cVal, -7);
    EXPECT_EQ(CComVariant(std::int16_t(-7)).iVal, -7);
    EXPECT_EQ(CComVariant(std::int32_t(-7)).lVal, -7);
    EXPECT_EQ(CComVariant(std::numeric_limits<std::int64_t>::min()).llVal,
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(CComVariant(~std::uint64_t(0)).ullVal, ~std::uint64_t(0));
    EXPECT_EQ(CComVariant(1.5F).fltVal, 1.5F);
    EXPECT_EQ(CComVariant(-1.5).dblVal, -1.5);
}

TEST(CComVariant, Construct_Texts_AreStrings) {
    EXPECT_EQ(TextOf(CComVariant("\u017C")), "\u017C");
    EXPECT_EQ(TextOf(CComVariant(CString("\u017C"))), "\u017C");
    EXPECT_EQ(TextOf(CComVariant(OLESTR("wide"))), "wide");
    EXPECT_EQ(TextOf(CComVariant(static_cast<const char*>(nullptr))), "");
    EXPECT_EQ(TextOf(CComVariant(static_cast<const WCHAR*>(nullptr))), "");
    EXPECT_TRUE(CComVariant("").OwnsMemory());
}

TEST(CComVariant, Construct_TextWithAZero_KeepsIt) {
    const CComVariant value(Units({'a', 0, 'b'}));
    EXPECT_EQ(value.Text().size(), 3U);
}

TEST(CComVariant, Construct_Interface_IsCounted) {
    CountedObject object;
    {
        const CComVariant value(&object);
        EXPECT_EQ(value.vt, VT_DISPATCH);
        EXPECT_EQ(object.m_references, 1U);
        const CComVariant copy(value);
        EXPECT_EQ(object.m_references, 2U);
    }
    EXPECT_EQ(object.m_references, 0U);
    const CComVariant nothing(static_cast<IDispatch*>(nullptr));
    EXPECT_EQ(nothing.vt, VT_DISPATCH);
}

TEST(CComVariant, Copy_IsDeep) {
    CComVariant text("abc");
    const CComVariant copy(text);
    EXPECT_NE(copy.bstrVal, text.bstrVal);
    text.bstrVal[0] = 'x';
    EXPECT_EQ(TextOf(copy), "abc");
    CComVariant bytes = ByteArray("abc", 2);
    const CComVariant bytesCopy(static_cast<const VARIANT&>(bytes));
    bytes.Clear();
    EXPECT_EQ(ContentOf(bytesCopy), (ArrayContent{2, "abc"}));
}

TEST(CComVariant, Copy_OfARawVariant_LeavesItItsOwn) {
    VARIANT raw;
    VariantInit(&raw);
    raw.vt = VT_BSTR;
    raw.bstrVal = SysAllocString(OLESTR("abc"));
    { const CComVariant copy(raw); }
    EXPECT_EQ(SysStringLen(raw.bstrVal), 3U);
    VariantClear(&raw);
}

TEST(CComVariant, Copy_OfANullString_IsAnEmptyText) {
    VARIANT raw;
    VariantInit(&raw);
    raw.vt = VT_BSTR;
    raw.bstrVal = nullptr;
    const CComVariant copy(raw);
    EXPECT_EQ(TextOf(copy), "");
}

TEST(CComVariant, Move_LeavesTheSourceEmpty) {
    CComVariant text("abc");
    const CComVariant moved(std::move(text));
    EXPECT_EQ(TextOf(moved), "abc");
    EXPECT_EQ(text.vt, VT_EMPTY);
    CComVariant target("old");
    CComVariant source("new");
    target = std::move(source);
    EXPECT_EQ(TextOf(target), "new");
    EXPECT_EQ(source.vt, VT_EMPTY);
}

TEST(CComVariant, Assign_ReplacesTheValue) {
    CountedObject object;
    CComVariant value(&object);
    value = CComVariant("abc");
    EXPECT_EQ(object.m_references, 0U);
    const CComVariant number(5);
    value = number;
    EXPECT_EQ(value.lVal, 5);
    EXPECT_EQ(value.vt, VT_I4);
}

TEST(CComVariant, Assign_Itself_KeepsTheValue) {
    CComVariant text("abc");
    CComVariant& alias = text;
    text = alias;
    EXPECT_EQ(TextOf(text), "abc");
    text = std::move(alias);
    EXPECT_EQ(TextOf(text), "abc");
}

TEST(CComVariant, Clear_EveryType_IsEmptyThen) {
    for (CComVariant value : {CComVariant(1), CComVariant("abc"), ByteArray("abc"), NullVariant(),
                              CComVariant(true), CComVariant(std::uint64_t(1)), DateVariant(1)}) {
        EXPECT_TRUE(SUCCEEDED(value.Clear()));
        EXPECT_EQ(value.vt, VT_EMPTY);
    }
}

TEST(CComVariant, ChangeType_InPlace_OrLeftAsItWas) {
    CComVariant value("42");
    EXPECT_TRUE(SUCCEEDED(value.ChangeType(VT_I4)));
    EXPECT_EQ(value.lVal, 42);
    EXPECT_TRUE(SUCCEEDED(value.ChangeType(VT_I4)));
    CComVariant text("abc");
    EXPECT_TRUE(FAILED(text.ChangeType(VT_I4)));
    EXPECT_EQ(TextOf(text), "abc");
    CComVariant nothing = NullVariant();
    EXPECT_TRUE(FAILED(nothing.ChangeType(VT_I4)));
    EXPECT_EQ(nothing.vt, VT_NULL);
}

TEST(CComVariant, Text_OfWhatIsNoString_IsEmpty) {
    EXPECT_TRUE(CComVariant(5).Text().empty());
    EXPECT_TRUE(CComVariant().Text().empty());
    EXPECT_TRUE(ByteArray("abc").Text().empty());
}

TEST(CComVariant, SetText_ReplacesAnyValue) {
    CComVariant value = ByteArray("abc");
    value.SetText(CString("text").View());
    EXPECT_EQ(TextOf(value), "text");
    value.SetText({});
    EXPECT_EQ(value.vt, VT_BSTR);
    EXPECT_EQ(TextOf(value), "");
}

TEST(CComVariant, SetText_PartOfItsOwnText_IsReadBeforeItIsReplaced) {
    CComVariant value("a text that is long enough to stand on the heap");
    value.SetText(value.Text().substr(2, 4));
    EXPECT_EQ(TextOf(value), "text");
}

TEST(CComVariant, SetBytes_KeepsBytesAndLowerBound) {
    EXPECT_EQ(ContentOf(ByteArray("abc", 1)), (ArrayContent{1, "abc"}));
    EXPECT_EQ(ContentOf(ByteArray("", 0)), (ArrayContent{0, ""}));
    CComVariant value("text");
    value.SetBytes(nullptr, 0, 5);
    EXPECT_EQ(ContentOf(value), (ArrayContent{5, ""}));
}

TEST(CComVariant, SetBytes_ItsOwnBytes_AreReadBeforeTheyAreReplaced) {
    CComVariant value = ByteArray("abcdef");
    void* data = nullptr;
    ASSERT_TRUE(SUCCEEDED(SafeArrayAccessData(value.parray, &data)));
    SafeArrayUnaccessData(value.parray);
    value.SetBytes(static_cast<const BYTE*>(data) + 1, 3, 0);
    EXPECT_EQ(ContentOf(value), (ArrayContent{0, "bcd"}));
}

TEST(CComVariant, SetNumber_ReplacesAnyValue) {
    CComVariant value("text");
    value.SetNumber(5);
    EXPECT_EQ(value.vt, VT_I4);
    EXPECT_EQ(value.lVal, 5);
    value.SetNumber(0.5F);
    EXPECT_EQ(value.fltVal, 0.5F);
}

TEST(CComVariant, Equality_SameTypeAndValue) {
    EXPECT_EQ(CComVariant(5), CComVariant(5));
    EXPECT_NE(CComVariant(5), CComVariant(6));
    EXPECT_EQ(CComVariant("abc"), CComVariant("abc"));
    EXPECT_NE(CComVariant("abc"), CComVariant("ABC")) << "case counts";
    EXPECT_EQ(CComVariant(true), CComVariant(true));
    EXPECT_EQ(CComVariant(), CComVariant());
}

TEST(CComVariant, Equality_DifferentTypes_AreNeverEqual) {
    EXPECT_NE(CComVariant(5), CComVariant(std::int16_t(5)));
    EXPECT_NE(CComVariant(5), CComVariant(5.0));
    EXPECT_NE(CComVariant(5), CComVariant("5"));
    EXPECT_NE(CComVariant(), CComVariant(0));
    EXPECT_NE(CComVariant(), CComVariant(""));
}

TEST(CComVariant, Equality_TwoNulls_AreEqual) {
    EXPECT_EQ(NullVariant(), NullVariant());
    EXPECT_NE(NullVariant(), CComVariant());
    EXPECT_NE(NullVariant(), CComVariant(0));
}

TEST(CComVariant, Equality_ByteArrays_AreNeverEqual) {
    const CComVariant bytes = ByteArray("abc");
    EXPECT_NE(bytes, bytes);
}

TEST(CComVariant, Equality_UnsignedAndOneByteIntegers_ByValue) {
    EXPECT_EQ(CComVariant(std::int8_t(-1)), CComVariant(std::int8_t(-1)));
    EXPECT_EQ(CComVariant(std::uint16_t(7)), CComVariant(std::uint16_t(7)));
    EXPECT_EQ(CComVariant(std::uint32_t(7)), CComVariant(std::uint32_t(7)));
    EXPECT_EQ(CComVariant(~std::uint64_t(0)), CComVariant(~std::uint64_t(0)));
    EXPECT_NE(CComVariant(std::uint32_t(7)), CComVariant(std::uint32_t(8)));
    EXPECT_NE(CComVariant(std::uint32_t(7)), CComVariant(7));
}

TEST(CComVariant, Order_NumbersOfAnyTypes_ByValue) {
    EXPECT_LT(CComVariant(1), CComVariant(2));
    EXPECT_LT(CComVariant(1), CComVariant(1.5));
    EXPECT_GT(CComVariant(2.5F), CComVariant(std::int16_t(2)));
    EXPECT_FALSE(CComVariant(1) < CComVariant(1.0));
    EXPECT_FALSE(CComVariant(1) > CComVariant(1.0));
    EXPECT_LT(CComVariant(true), CComVariant(false)) << "true is minus one";
}

TEST(CComVariant, Order_UnsignedAndOneByteIntegers_ByValue) {
    EXPECT_LT(CComVariant(std::int8_t(-1)), CComVariant(std::int8_t(1)));
    EXPECT_LT(CComVariant(std::uint16_t(1)), CComVariant(std::uint16_t(0xFFFF)));
    EXPECT_LT(CComVariant(std::uint32_t(1)), CComVariant(std::uint32_t(0xFFFFFFFF)));
    EXPECT_LT(CComVariant(std::uint64_t(1)), CComVariant(~std::uint64_t(0)));
    EXPECT_GT(CComVariant(~std::uint64_t(0)), CComVariant(std::uint64_t(1)));
}

TEST(CComVariant, Order_RandomNumbers_IsThePlatforms) {
    std::mt19937_64 random(quillet::test::Seed(20250401));
    for (int round = 0; round < 100000; ++round) {
        // Any bits: numbers of every size, infinities and NaN; often two of the same value.
        CComVariant left(static_cast<LONGLONG>(random()));
        CComVariant right(random() % 4 == 0 ? left.llVal : static_cast<LONGLONG>(random()));
        for (const int type : {VT_I2, VT_I4, VT_R4, VT_R8, VT_BOOL}) {
            left.vt = right.vt = static_cast<VARTYPE>(type);
            ASSERT_EQ(quillet::Order(left, right), VarCmp(&left, &right, LOCALE_USER_DEFAULT, 0))
                << "type " << type << ", bits " << left.llVal << " and " << right.llVal;
        }
    }
}

TEST(CComVariant, Order_NullOrTypesWithoutOne_SaysSo) {
    EXPECT_EQ(quillet::Order(NullVariant(), CComVariant(1)), HRESULT{VARCMP_NULL});
    EXPECT_EQ(quillet::Order(NullVariant(), NullVariant()), HRESULT{VARCMP_NULL});
    EXPECT_TRUE(FAILED(quillet::Order(ByteArray("a"), ByteArray("a"))));
    EXPECT_TRUE(FAILED(quillet::Order(CComVariant(std::uint32_t(1)), CComVariant(1))));
}

TEST(CComVariant, Order_Texts_AreLinguistic) {
    EXPECT_LT(CComVariant("a"), CComVariant("b"));
    EXPECT_LT(CComVariant("a"), CComVariant("B"));
    EXPECT_LT(CComVariant("A"), CComVariant("b"));
    EXPECT_LT(CComVariant("a"), CComVariant("A")) << "lower stands before upper";
    EXPECT_LT(CComVariant("z"), CComVariant("za"));
    EXPECT_LT(CComVariant(""), CComVariant("a"));
}

TEST(CComVariant, Order_TextAgainstNumber_TextIsGreater) {
    EXPECT_GT(CComVariant("0"), CComVariant(99));
    EXPECT_LT(CComVariant(99), CComVariant("0"));
}

TEST(CComVariant, Order_WithANull_IsNeitherLessNorGreater) {
    EXPECT_FALSE(NullVariant() < CComVariant(1));
    EXPECT_FALSE(NullVariant() > CComVariant(1));
    EXPECT_FALSE(CComVariant(1) < NullVariant());
    EXPECT_FALSE(NullVariant() < NullVariant());
    EXPECT_FALSE(NullVariant() > NullVariant());
}

TEST(CComVariant, Order_ByteArrays_HaveNone) {
    EXPECT_FALSE(ByteArray("a") < ByteArray("b"));
    EXPECT_FALSE(ByteArray("a") > ByteArray("b"));
    EXPECT_FALSE(ByteArray("a") < CComVariant(1));
}

TEST(CComVariant, EqualIgnoringCase_TextOnTheLeft_ComparesAsText) {
    EXPECT_TRUE(quillet::EqualIgnoringCase("Abc", "aBC"));
    EXPECT_TRUE(quillet::EqualIgnoringCase("\u0141", "\u0142"));
    EXPECT_FALSE(quillet::EqualIgnoringCase("abc", "abcd"));
    EXPECT_TRUE(quillet::EqualIgnoringCase("5", CComVariant(5)));
    EXPECT_TRUE(quillet::EqualIgnoringCase("", CComVariant()));
    EXPECT_FALSE(quillet::EqualIgnoringCase("", NullVariant()));
    EXPECT_FALSE(quillet::EqualIgnoringCase("abc", ByteArray("abc")));
}

TEST(CComVariant, EqualIgnoringCase_OtherTypesOnTheLeft_AreEqualByTypeAndValue) {
    EXPECT_FALSE(quillet::EqualIgnoringCase(CComVariant(5), "5"));
    EXPECT_FALSE(quillet::EqualIgnoringCase(CComVariant(), ""));
    EXPECT_TRUE(quillet::EqualIgnoringCase(CComVariant(5), CComVariant(5)));
    EXPECT_TRUE(quillet::EqualIgnoringCase(NullVariant(), NullVariant()));
}

TEST(CComVariant, Dereferenced_ReferenceToNothing_IsEmpty) {
    for (const VARTYPE type : {VT_VARIANT, VT_BSTR, VT_I2, VT_I4, VT_R8, VT_BOOL}) {
        CComVariant reference;
        reference.vt = static_cast<VARTYPE>(VT_BYREF | type);
        reference.byref = nullptr;
        EXPECT_EQ(quillet::Dereferenced(reference).vt, VT_EMPTY) << type;
    }
}

TEST(CComPtr, LifeOfAPointer_CountsItsReferences) {
    CountedObject object;
    {
        CComPtr<IDispatch> first(&object);
        EXPECT_EQ(object.m_references, 1U);
        CComPtr<IDispatch> second = first;
        EXPECT_EQ(object.m_references, 2U);
        const CComPtr<IDispatch> third(std::move(second));
        EXPECT_EQ(object.m_references, 2U);
        EXPECT_FALSE(second);
        EXPECT_EQ(third.Get(), &object);
        first = CComPtr<IDispatch>();
        EXPECT_EQ(object.m_references, 1U);
    }
    EXPECT_EQ(object.m_references, 0U);
}

TEST(CComPtr, Assign_Itself_KeepsTheReference) {
    CountedObject object;
    CComPtr<IDispatch> pointer(&object);
    CComPtr<IDispatch>& alias = pointer;
    pointer = alias;
    EXPECT_EQ(object.m_references, 1U);
    EXPECT_EQ(pointer.Get(), &object);
}

TEST(CComPtr, Attach_TakesOverTheCallersReference) {
    CountedObject object;
    CountedObject other;
    object.AddRef();
    {
        CComPtr<IDispatch> pointer(&other);
        pointer.Attach(&object);
        EXPECT_EQ(other.m_references, 0U);
        EXPECT_EQ(object.m_references, 1U);
    }
    EXPECT_EQ(object.m_references, 0U);
}

}  // namespace
