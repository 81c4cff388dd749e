#include "Quillet/cursor/TextExport.h"

#include <gtest/gtest.h>

#include "support/TestHelpers.h"

namespace {

using quillet::CString;

TEST(TextExport, ExportedText_NamesAndRows_WithBarsBetween) {
    DbTableDescr descr(nullptr);
    descr.CreateField("a", false, DbFieldDescr::Long);
    descr.CreateField("b", false, DbFieldDescr::Text);
    DbTableData data(nullptr, &descr);
    EXPECT_EQ(CString(quillet::ExportedText(descr, data)), "a| b\n");
    data.AddRows(2);
    data.GetRow(1)->SetValue("a", CComVariant(7));
    data.GetRow(1)->SetValue("b", CComVariant("x\ny"));
    EXPECT_EQ(CString(quillet::ExportedText(descr, data)), "a| b\n0| \n7| x y\n");
}

TEST(TextExport, ExportedText_BytesAndNulls_AreLeftOut) {
    DbTableDescr descr(nullptr);
    descr.CreateField("a", false, DbFieldDescr::Binary);
    descr.CreateField("b", false, DbFieldDescr::Text);
    DbTableData data(nullptr, &descr);
    data.AddRow();
    data.GetRow(0)->GetField(0).GetVariant() = quillet::test::ByteArray("AB");
    data.GetRow(0)->GetField(1).GetVariant() = quillet::test::NullVariant();
    EXPECT_EQ(CString(quillet::ExportedText(descr, data)), "a| b\n| \n");
}

TEST(TextExport, FirstHalf_HasAByteForEachCharacter) {
    EXPECT_EQ(quillet::FirstHalf(OLESTR("")), "");
    EXPECT_EQ(quillet::FirstHalf(OLESTR("a")), "a");
    EXPECT_EQ(quillet::FirstHalf(OLESTR("abc")), std::string("a\0b", 3));
    EXPECT_EQ(quillet::FirstHalf(OLESTR("\u0142x")), "\x42\x01");
}

}  // namespace
