// The life of a variant.
#include <gtest/gtest.h>

#include "Quillet/platform/Automation.h"
#include "support/VariantValues.h"

namespace quillet::test {
namespace {

// Counts its references; never deleted.
struct CountedObject : IUnknown {
    ULONG references = 1;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
};

TEST(Variant, Init_AnyContents_IsEmpty) {
    VARIANT value;
    value.vt = VT_BSTR;
    VariantInit(&value);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST(Variant, Clear_Text_IsEmptyAfterwards) {
    VARIANT value = MakeVariant(Text(OLESTR("text")));
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST(Variant, Clear_InterfacePointer_ReleasesItOnce) {
    CountedObject object;
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_UNKNOWN;
    value.punkVal = &object;
    object.AddRef();
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(object.references, 1U);
}

TEST(Variant, Clear_Reference_LeavesWhatItRefersTo) {
    BSTR text = SysAllocString(OLESTR("kept"));
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BYREF | VT_BSTR;
    value.pbstrVal = &text;
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_EQ(SysStringLen(text), 4U);
    SysFreeString(text);
}

TEST(Variant, Clear_ArrayInAccess_IsRefusedAndKept) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, 1);
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_ARRAY | VT_UI1;
    value.parray = array;
    void* data = nullptr;
    ASSERT_EQ(SafeArrayAccessData(array, &data), S_OK);
    EXPECT_EQ(VariantClear(&value), DISP_E_ARRAYISLOCKED);
    // "VariantClear function": the contents are released first, then the type becomes VT_EMPTY, and a locked
    // array is not released. Wine still empties the variant.
    EXPECT_EQ(value.vt, IsWine() ? VARTYPE{VT_EMPTY} : VARTYPE{VT_ARRAY | VT_UI1});
    SafeArrayUnaccessData(array);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(Variant, Clear_TypeThatDoesNotExist_IsRefused) {
    VARIANT value;
    VariantInit(&value);
    value.vt = 15;
    EXPECT_EQ(VariantClear(&value), DISP_E_BADVARTYPE);
}

TEST(Variant, Copy_Text_HasItsOwnString) {
    ScopedVariant source(Text(OLESTR("text")));
    ScopedVariant target(Text(OLESTR("old")));
    ASSERT_EQ(VariantCopy(&target, &source), S_OK);
    EXPECT_NE(target->bstrVal, source->bstrVal);
    EXPECT_EQ(Describe(*target), Describe(Text(OLESTR("text"))));
}

TEST(Variant, Copy_TextWithZeroUnits_KeepsThem) {
    const OLECHAR text[] = {'a', 0, 'b'};
    ScopedVariant source;
    source->vt = VT_BSTR;
    source->bstrVal = SysAllocStringLen(text, 3);
    ScopedVariant target;
    ASSERT_EQ(VariantCopy(&target, &source), S_OK);
    EXPECT_EQ(SysStringLen(target->bstrVal), 3U);
}

TEST(Variant, Copy_ByteArray_HasItsOwnBytes) {
    ScopedVariant source;
    source->vt = VT_ARRAY | VT_UI1;
    source->parray = SafeArrayCreateVector(VT_UI1, 0, 2);
    ScopedVariant target;
    ASSERT_EQ(VariantCopy(&target, &source), S_OK);
    EXPECT_EQ(target->vt, VT_ARRAY | VT_UI1);
    EXPECT_NE(target->parray, source->parray);
}

TEST(Variant, Copy_InterfacePointer_CountsAReference) {
    CountedObject object;
    VARIANT source;
    VariantInit(&source);
    source.vt = VT_UNKNOWN;
    source.punkVal = &object;
    VARIANT target;
    VariantInit(&target);
    ASSERT_EQ(VariantCopy(&target, &source), S_OK);
    EXPECT_EQ(object.references, 2U);
    EXPECT_EQ(target.punkVal, &object);
    VariantClear(&target);
    EXPECT_EQ(object.references, 1U);
}

TEST(Variant, Copy_OntoItself_ChangesNothing) {
    ScopedVariant value(Text(OLESTR("text")));
    const BSTR before = value->bstrVal;
    EXPECT_EQ(VariantCopy(&value, &value), S_OK);
    EXPECT_EQ(value->bstrVal, before);
}

TEST(Variant, Copy_Number_ReplacesATextWithoutALeak) {
    ScopedVariant source(R8(2.5));
    ScopedVariant target(Text(OLESTR("old")));
    ASSERT_EQ(VariantCopy(&target, &source), S_OK);
    EXPECT_EQ(Describe(*target), Describe(R8(2.5)));
}

TEST(Variant, StandardInterfaceIds_AreThePublishedOnes) {
    const GUID unknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    const GUID dispatch = {0x00020400, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    EXPECT_TRUE(IID_IUnknown == unknown);
    EXPECT_TRUE(IID_IDispatch == dispatch);
    EXPECT_TRUE(IID_NULL == GUID{});
}

}  // namespace
}  // namespace quillet::test
