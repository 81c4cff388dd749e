#include <gtest/gtest.h>

#include <string>

#include "support/CatalogHelpers.h"
#include "support/RecordHelpers.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;

// A table with one field and one row with the value, as records.
DBACCESS_COLUMN RoundTrip(const CComVariant& value) {
    DbDatabase database;
    DbTableInfo* const info = database.CreateTable("T", DbTableInfo::Table);
    info->GetDescr()->CreateField("f", false, DbFieldDescr::Text);
    info->GetData()->AddRow();
    info->GetData()->GetRow(0)->GetField(0).GetVariant() = value;
    DBACCESS_VECTOR rows;
    database.GetTable("T", rows);
    EXPECT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows.front().size(), 1U);
    EXPECT_EQ(rows.front()[0].m_name, CString("f"));
    return rows.front()[0];
}

TEST(GetTable, Integers_HaveTheCodesOfTheirSize) {
    EXPECT_EQ(RoundTrip(Short(7)).m_type, 3);
    EXPECT_EQ(RoundTrip(Short(7)).m_int, 7);
    EXPECT_EQ(RoundTrip(Long(-7)).m_type, 4);
    EXPECT_EQ(RoundTrip(Long(-7)).m_long, -7);
}

TEST(GetTable, NegativeShort_ComesWithoutItsSign) {
    EXPECT_EQ(RoundTrip(Short(-1)).m_int, 65535);
    CComVariant value("a text in the same place");
    value.SetNumber(SHORT(-2));
    EXPECT_EQ(RoundTrip(value).m_int, 65534);
}

TEST(GetTable, ShortConvertedFromOtherTypes_HasNoBitsBehindIt) {
    for (const CComVariant& given : {CComVariant("-2"), CComVariant(-2.0), Long(-2)}) {
        CComVariant value(given);
        ASSERT_EQ(value.ChangeType(VT_I2), S_OK);
        EXPECT_EQ(RoundTrip(value).m_int, 65534);
    }
}

TEST(GetTable, ShortWithOtherBitsBehindIt_BringsThemAlong) {
    CComVariant value(LONG(0x12345));
    value.vt = VT_I2;
    EXPECT_EQ(RoundTrip(value).m_int, 0x12345);
}

TEST(GetTable, Reals_HaveTheirCodes) {
    EXPECT_EQ(RoundTrip(1.5F).m_type, 6);
    EXPECT_EQ(RoundTrip(1.5F).m_float, 1.5F);
    EXPECT_EQ(RoundTrip(2.5).m_type, 7);
    EXPECT_EQ(RoundTrip(2.5).m_double, 2.5);
}

TEST(GetTable, Text_HasItsCode) {
    EXPECT_EQ(RoundTrip("zażółć").m_type, 10);
    EXPECT_EQ(RoundTrip("zażółć").m_text, CString("zażółć"));
    EXPECT_EQ(RoundTrip("").m_type, 10);
}

TEST(GetTable, Boolean_IsOneWithAllBitsSetAndZeroOtherwise) {
    EXPECT_EQ(RoundTrip(true).m_type, 1);
    EXPECT_EQ(RoundTrip(true).m_bool, 1);
    EXPECT_EQ(RoundTrip(false).m_bool, 0);
    EXPECT_EQ(RoundTrip(BooleanBits(1)).m_bool, 0);
    EXPECT_EQ(RoundTrip(BooleanBits(1)).m_type, 1);
}

TEST(GetTable, Bytes_AsManyAsTheUpperBoundPlusOne) {
    EXPECT_EQ(RoundTrip(ByteArray("abc")).m_type, 9);
    EXPECT_EQ(RoundTrip(ByteArray("abc")).m_binary, BytesOfText("abc"));
    EXPECT_EQ(RoundTrip(ByteArray("")).m_binary, CByteArray());
    EXPECT_EQ(RoundTrip(ByteArray("a", 1)).m_binary, BytesOfText(std::string("a\0", 2)));
}

TEST(GetTable, OtherTypes_HaveNoValueButTheirName) {
    for (const CComVariant& value :
         {CComVariant(), NullVariant(), DateVariant(2.0), CComVariant(std::int64_t(5))}) {
        EXPECT_EQ(RoundTrip(value).m_type, 0);
    }
}

TEST(GetTable, RowWithMoreOrFewerCellsThanFields_IsNamelessMinusOnes) {
    DbDatabase database;
    DbTableInfo* const info = database.CreateTable("T", DbTableInfo::Table);
    info->GetDescr()->CreateField("a", false, DbFieldDescr::Text);
    info->GetDescr()->CreateField("b", false, DbFieldDescr::Text);
    info->GetData()->AddRows(2);
    DbTableRow& row = *info->GetData()->GetRow(0);
    DbFieldValue extra;
    row.push_back(&extra);
    DBACCESS_VECTOR rows;
    database.GetTable(info, rows);
    row.pop_back();
    ASSERT_EQ(rows.size(), 2U);
    ASSERT_EQ(rows[0].size(), 2U);
    for (const DBACCESS_COLUMN& column : rows[0]) {
        EXPECT_EQ(column.m_type, 3);
        EXPECT_EQ(column.m_int, -1);
        EXPECT_EQ(column.m_name, CString());
    }
    EXPECT_EQ(rows[1][1].m_type, 10);
    EXPECT_EQ(rows[1][1].m_name, CString("b"));
}

TEST(GetTable, TableWithoutFields_GivesRecordsWithoutColumns) {
    DbDatabase database;
    database.CreateTable("T", DbTableInfo::Table)->GetData()->AddRows(3);
    DBACCESS_VECTOR rows;
    database.GetTable("T", rows);
    EXPECT_EQ(rows.size(), 3U);
    EXPECT_TRUE(rows[0].empty());
}

TEST(GetTable, ReplacesTheRecords_AndLeavesFlagAndRemarks) {
    DbDatabase database;
    database.CreateTable("T", DbTableInfo::Table);
    DBACCESS_VECTOR rows = TableWithoutRows("x", "y").second;
    rows.m_remarks.emplace_back("remark");
    database.GetTable("T", rows);
    EXPECT_TRUE(rows.empty());
    EXPECT_TRUE(rows.m_noRows);
    EXPECT_EQ(rows.m_remarks.size(), 1U);
}

TEST(GetTable, Name_IgnoresCase) {
    DbDatabase database;
    database.CreateTable("T", DbTableInfo::Table)->GetData()->AddRow();
    DBACCESS_VECTOR rows;
    database.GetTable("t", rows);
    EXPECT_EQ(rows.size(), 1U);
}

TEST(GetTable, UnknownNameOrNull_LeavesTheOutput) {
    DbDatabase database;
    DBACCESS_VECTOR rows = TextTable("", "a", {"kept"}).second;
    database.GetTable("unknown", rows);
    database.GetTable(static_cast<DbTableInfo*>(nullptr), rows);
    DbTableInfo none;
    database.GetTable(&none, rows);
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0][0].m_text, CString("kept"));
}

TEST(GetTable, RowsThatStandInTheFile_AreRead) {
    for (const Reading reading : {Reading::Whole, Reading::Sequential}) {
        const TemporaryFolder folder;
        WriteBytes(folder / "small.xml", SmallCatalog());
        const auto database = Open(folder / "small.xml", reading);
        DBACCESS_VECTOR rows;
        database->GetTable("Alpha", rows);
        ASSERT_EQ(rows.size(), 2U);
        EXPECT_EQ(rows[1].GetString("name"), CString("two"));
        EXPECT_EQ(rows[1].GetLong("count"), 2);
    }
}

TEST(GetTable, Query_IsAnsweredAnew) {
    DbDatabase database;
    database.CopyTableFrom(TextTable("T", "a", {"x", "y"}));
    CString name;
    ASSERT_TRUE(database.Query("select a from T where a = 'x'", name));
    database.GetTableData("T")->GetRow(1)->GetField(0).SetValue("x");
    DBACCESS_VECTOR rows;
    database.GetTable(name, rows);
    EXPECT_EQ(rows.size(), 2U);
}

}  // namespace
