// One-dimensional arrays of bytes.
#include <gtest/gtest.h>

#include <memory>

#include "Quillet/platform/Automation.h"
#include "support/VariantValues.h"

namespace quillet::test {
namespace {

struct Destroy {
    void operator()(SAFEARRAY* array) const { SafeArrayDestroy(array); }
};
using ArrayPtr = std::unique_ptr<SAFEARRAY, Destroy>;

ArrayPtr MakeBytes(ULONG count, LONG lowerBound = 0) {
    return ArrayPtr(SafeArrayCreateVector(VT_UI1, lowerBound, count));
}

BYTE* Access(SAFEARRAY* array) {
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
    return static_cast<BYTE*>(data);
}

TEST(SafeArray, CreateVector_Bytes_AreZeroAndWritable) {
    const ArrayPtr array = MakeBytes(1000);
    ASSERT_NE(array, nullptr);
    BYTE* bytes = Access(array.get());
    for (int at = 0; at < 1000; ++at) {
        ASSERT_EQ(bytes[at], 0);
        bytes[at] = static_cast<BYTE>(at);
    }
    EXPECT_EQ(SafeArrayUnaccessData(array.get()), S_OK);
    EXPECT_EQ(Access(array.get())[999], static_cast<BYTE>(999));
    SafeArrayUnaccessData(array.get());
}

TEST(SafeArray, Create_OneDimension_HasItsBounds) {
    SAFEARRAYBOUND bound = {};
    bound.cElements = 3;
    bound.lLbound = 5;
    const ArrayPtr array(SafeArrayCreate(VT_UI1, 1, &bound));
    ASSERT_NE(array, nullptr);
    LONG lower = 0;
    LONG upper = 0;
    EXPECT_EQ(SafeArrayGetDim(array.get()), 1U);
    EXPECT_EQ(SafeArrayGetLBound(array.get(), 1, &lower), S_OK);
    EXPECT_EQ(SafeArrayGetUBound(array.get(), 1, &upper), S_OK);
    EXPECT_EQ(lower, 5);
    EXPECT_EQ(upper, 7);
}

TEST(SafeArray, CreateVector_NoElements_EndsBeforeItBegins) {
    const ArrayPtr array = MakeBytes(0);
    ASSERT_NE(array, nullptr);
    LONG upper = 0;
    EXPECT_EQ(SafeArrayGetUBound(array.get(), 1, &upper), S_OK);
    EXPECT_EQ(upper, -1);
}

TEST(SafeArray, Create_WithoutDimensions_GivesNull) {
    SAFEARRAYBOUND bound = {};
    EXPECT_EQ(SafeArrayCreate(VT_UI1, 0, &bound), nullptr);
}

TEST(SafeArray, Create_ElementsThatDoNotExist_GivesNull) {
    SAFEARRAYBOUND bound = {};
    for (const VARTYPE type : {VARTYPE{VT_EMPTY}, VARTYPE{VT_NULL}, VARTYPE{15}}) {
        EXPECT_EQ(SafeArrayCreate(type, 1, &bound), nullptr);
        EXPECT_EQ(SafeArrayCreateVector(type, 0, 1), nullptr);
    }
}

TEST(SafeArray, Create_OtherThanBytesInOneDimension_IsForTheSystemsOwnLibrary) {
    SAFEARRAYBOUND bounds[2] = {};
    bounds[0].cElements = 1;
    bounds[1].cElements = 1;
    EXPECT_EQ(ArrayPtr(SafeArrayCreate(VT_I4, 1, bounds)) != nullptr, HasEveryType);
    EXPECT_EQ(ArrayPtr(SafeArrayCreate(VT_UI1, 2, bounds)) != nullptr, HasEveryType);
    EXPECT_EQ(ArrayPtr(SafeArrayCreateVector(VT_BSTR, 0, 1)) != nullptr, HasEveryType);
}

TEST(SafeArray, GetBound_DimensionThatIsNotThere_IsABadIndex) {
    const ArrayPtr array = MakeBytes(2);
    LONG bound = 0;
    EXPECT_EQ(SafeArrayGetLBound(array.get(), 0, &bound), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetLBound(array.get(), 2, &bound), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetUBound(array.get(), 2, &bound), DISP_E_BADINDEX);
}

TEST(SafeArray, Copy_Array_HasItsOwnBytesAndTheSameBounds) {
    const ArrayPtr array = MakeBytes(3, 4);
    Access(array.get())[1] = 7;
    SafeArrayUnaccessData(array.get());

    SAFEARRAY* made = nullptr;
    ASSERT_EQ(SafeArrayCopy(array.get(), &made), S_OK);
    const ArrayPtr copy(made);
    Access(array.get())[1] = 8;
    SafeArrayUnaccessData(array.get());

    LONG lower = 0;
    LONG upper = 0;
    SafeArrayGetLBound(copy.get(), 1, &lower);
    SafeArrayGetUBound(copy.get(), 1, &upper);
    EXPECT_EQ(lower, 4);
    EXPECT_EQ(upper, 6);
    EXPECT_EQ(Access(copy.get())[1], 7);
    SafeArrayUnaccessData(copy.get());
}

TEST(SafeArray, Destroy_WhileAccessed_IsRefused) {
    const ArrayPtr array = MakeBytes(1);
    Access(array.get());
    EXPECT_EQ(SafeArrayDestroy(array.get()), DISP_E_ARRAYISLOCKED);
    SafeArrayUnaccessData(array.get());
}

TEST(SafeArray, UnaccessData_WithoutAccess_IsUnexpected) {
    const ArrayPtr array = MakeBytes(1);
    EXPECT_EQ(SafeArrayUnaccessData(array.get()), E_UNEXPECTED);
}

TEST(SafeArray, NullArray_IsNoArrayButCanBeDestroyed) {
    LONG bound = 0;
    void* data = nullptr;
    EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
    EXPECT_EQ(SafeArrayGetDim(nullptr), 0U);
    EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &bound), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetUBound(nullptr, 1, &bound), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAccessData(nullptr, &data), E_INVALIDARG);
    EXPECT_EQ(SafeArrayUnaccessData(nullptr), E_INVALIDARG);
}

}  // namespace
}  // namespace quillet::test
