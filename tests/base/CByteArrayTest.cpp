#include "Quillet/base/CByteArray.h"

#include <gtest/gtest.h>

namespace {

CByteArray Bytes() {
    constexpr BYTE Content[] = {1, 0, 255};
    return {Content, 3};
}

TEST(CByteArray, Construct_Default_IsEmpty) {
    const CByteArray bytes;
    EXPECT_TRUE(bytes.IsEmpty());
    EXPECT_EQ(bytes.GetSize(), 0);
}

TEST(CByteArray, Construct_FromBytes_CopiesThemWithZeros) {
    const CByteArray bytes = Bytes();
    EXPECT_EQ(bytes.GetSize(), 3);
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EQ(bytes[1], 0);
    EXPECT_EQ(bytes.GetAt(2), 255);
}

TEST(CByteArray, Construct_FromNull_IsEmpty) {
    EXPECT_TRUE(CByteArray(nullptr, 4).IsEmpty());
}

TEST(CByteArray, SetSize_CutsAndFillsUpWithZeros) {
    CByteArray bytes = Bytes();
    bytes.SetSize(1);
    bytes.SetSize(2);
    EXPECT_EQ(bytes.GetSize(), 2);
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EQ(bytes[1], 0);
    bytes.SetSize(-1);
    EXPECT_TRUE(bytes.IsEmpty());
}

TEST(CByteArray, Position_OutOfRange_ReadsZeroAndTakesNothing) {
    CByteArray bytes = Bytes();
    bytes.SetAt(3, 7);
    bytes.SetAt(-1, 7);
    EXPECT_EQ(bytes, Bytes());
    EXPECT_EQ(bytes[3], 0);
    EXPECT_EQ(bytes[-1], 0);
}

TEST(CByteArray, Add_SetAt_RemoveAll) {
    CByteArray bytes = Bytes();
    bytes.Add(9);
    bytes.SetAt(0, 8);
    EXPECT_EQ(bytes.GetSize(), 4);
    EXPECT_EQ(bytes.GetData()[0], 8);
    EXPECT_EQ(bytes[3], 9);
    bytes.RemoveAll();
    EXPECT_TRUE(bytes.IsEmpty());
}

TEST(CByteArray, Copy_HasBytesOfItsOwn) {
    CByteArray bytes = Bytes();
    const CByteArray copy = bytes;
    bytes.SetAt(0, 2);
    EXPECT_EQ(copy, Bytes());
    EXPECT_NE(copy, bytes);
}

}  // namespace
