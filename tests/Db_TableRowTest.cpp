#include "Quillet/Db_TableRow.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;
using Fields = std::vector<uint64>;
using Key = std::vector<CComVariant>;
using Strings = std::vector<std::string>;

// A table with the fields n (long), t (text), d (double), f (boolean) and x (bytes).
class RowTest : public testing::Test {
protected:
    RowTest() : m_info(m_database.CreateTable("T", DbTableInfo::Table)) {
        Descr().CreateField("n", true, DbFieldDescr::Long);
        Descr().CreateField("t", false, DbFieldDescr::Text);
        Descr().CreateField("d", false, DbFieldDescr::Double);
        Descr().CreateField("f", false, DbFieldDescr::Boolean);
        Descr().CreateField("x", false, DbFieldDescr::Binary);
        TakeLog(m_database);
    }

    DbTableDescr& Descr() { return *m_info->GetDescr(); }
    DbTableData& Data() { return *m_info->GetData(); }
    DbTableRow& NewRow() { return Data()[Data().AddRow()]; }
    DbTableRow& NewRow(const CComVariant& number, const CComVariant& text = CComVariant("")) {
        DbTableRow& row = NewRow();
        row[uint64(0)].GetVariant() = number;
        row[uint64(1)].GetVariant() = text;
        return row;
    }

    DbDatabase m_database;
    DbTableInfo* m_info;
};

TEST_F(RowTest, Construct_RowOfATable_HasOneCellPerFieldWithItsDefault) {
    DbTableRow& row = NewRow();
    ASSERT_EQ(row.size(), 5U);
    EXPECT_EQ(row.GetDescr(), &Descr());
    for (uint64 i = 0; i < 5; ++i) {
        EXPECT_EQ(row[i].GetType(), Descr()[i].GetType());
        EXPECT_EQ(row[i].GetIndex(), static_cast<int>(i));
        EXPECT_EQ(row[i].GetParent(), &row);
        EXPECT_FALSE(row[i].IsNull());
    }
    EXPECT_EQ(row.GetParent(), Data().GetRows());
}

TEST(DbTableRow, Construct_StandsAlone_HasNoCellsAndNoDescriptor) {
    DbTableRow row(nullptr);
    EXPECT_TRUE(row.empty());
    EXPECT_EQ(row.GetDescr(), nullptr);
    EXPECT_EQ(row.GetSize(), 8U + 8U);
    DbTableDescr descr(nullptr);
    row.SetDescr(&descr);
    EXPECT_EQ(row.GetDescr(), &descr);
}

TEST_F(RowTest, GetSize_CountsTheCellsAndEight) {
    EXPECT_EQ(NewRow().GetSize(), 5 * 22U + 8U + 8U);
}

TEST_F(RowTest, CmpResults_HaveTheirValues) {
    EXPECT_EQ(int(DbTableRow::CmpEqual), 0);
    EXPECT_EQ(int(DbTableRow::CmpLess), 1);
    EXPECT_EQ(int(DbTableRow::CmpGreater), 2);
    EXPECT_EQ(sizeof(DbTableRow::eCmpResult), 4U);
}

TEST_F(RowTest, Brackets_PositionAndName_AreTheSameCell) {
    DbTableRow& row = NewRow();
    const DbTableRow& fixed = row;
    EXPECT_EQ(&row[1], row.at(1));
    EXPECT_EQ(&row["T"], row.at(1));
    EXPECT_EQ(&row["[t]"], row.at(1));
    EXPECT_EQ(&row.GetField(1), row.at(1));
    EXPECT_EQ(&fixed.GetField(1), row.at(1));
    EXPECT_EQ(&fixed[1], row.at(1));
    EXPECT_EQ(&fixed["T"], row.at(1));
    EXPECT_EQ(&fixed["[t]"], row.at(1));
    EXPECT_EQ(&fixed[CString("n")], row.at(0));
    EXPECT_EQ(fixed["none"].GetType(), VT_EMPTY);
}

TEST_F(RowTest, ConstRow_IsReadByFieldName) {
    NewRow(Long(7), CComVariant("seven"));
    const DbTableRow& row = Data()[0];
    EXPECT_EQ(row["n"].GetValue().lVal, 7);
    CString text;
    row["[T]"].ValueToString(text);
    EXPECT_EQ(text, CString("seven"));
    EXPECT_EQ(row[CString("D")].GetType(), VT_R8);
    EXPECT_EQ(row["unknown"].GetType(), VT_EMPTY);
    static_assert(std::is_same_v<decltype(row["n"]), const DbFieldValue&>, "it is read, not written");
}

TEST_F(RowTest, Brackets_WhereThereIsNoCell_AreAnEmptyValueOfNobody) {
    DbTableRow& row = NewRow();
    EXPECT_EQ(row[5].GetType(), VT_EMPTY);
    EXPECT_EQ(row[~uint64(0)].GetType(), VT_EMPTY);
    EXPECT_EQ(row["unknown"].GetType(), VT_EMPTY);
    row[5].SetValue(Long(1));
    row["unknown"].SetValue(Long(1));
    EXPECT_EQ(row[5].GetType(), VT_EMPTY) << "what is written there is lost";
    EXPECT_FALSE(row.IsChanged());
    DbTableRow alone(nullptr);
    EXPECT_EQ(alone["n"].GetType(), VT_EMPTY);
}

TEST_F(RowTest, SetValue_Text_UsesTheStringFormAndMarksTheRow) {
    DbTableRow& row = NewRow();
    row.SetValue("N", CString("42"));
    EXPECT_EQ(row[0].GetValue().vt, VT_I4);
    EXPECT_EQ(row[0].GetValue().lVal, 42);
    EXPECT_TRUE(row.IsChanged());
    EXPECT_FALSE(row[0].IsChanged()) << "the row is marked, not the cell";
    row.SetValue("d", CString(""));
    EXPECT_EQ(row[2].GetType(), VT_BSTR) << "an empty text is no number here";
    row.SetValue("x", CString("QUJD"));
    EXPECT_EQ(ContentOf(row[4].GetValue()), (ArrayContent{0, "ABC"}));
}

TEST_F(RowTest, SetValue_Variant_KeepsTheTypeAndMarksTheCell) {
    DbTableRow& row = NewRow();
    row.SetValue("n", CComVariant("42"));
    EXPECT_EQ(row[0].GetValue().lVal, 42);
    EXPECT_TRUE(row[0].IsChanged());
    row[0].Sync();
    EXPECT_FALSE(row.IsChanged()) << "the cell is marked, not the row";
}

// The types of arguments that a row accepts as a value.
template <typename Value>
concept RowTakes = requires(DbTableRow& row, Value value) {
    row.SetValue("n", value);
};

static_assert(RowTakes<int> && RowTakes<bool> && RowTakes<const char*> && RowTakes<const WCHAR*>);
static_assert(RowTakes<std::string> && RowTakes<std::u16string> && RowTakes<quillet::WideString>);
static_assert(RowTakes<CString> && RowTakes<CComVariant> && RowTakes<signed char> && RowTakes<long double>);
static_assert(!RowTakes<std::nullptr_t>);
static_assert(!RowTakes<char> && !RowTakes<wchar_t> && !RowTakes<char8_t>);
static_assert(!RowTakes<char16_t> && !RowTakes<char32_t>);

// The same for the other members that take a text or a value.
template <typename Value>
concept CellTakes = requires(DbFieldValue& cell, Value value) {
    cell.SetValue(value);
};
template <typename Value>
concept CursorTakes = requires(DbRecordset& cursor, Value value) {
    cursor.SetFieldValue("n", value);
};
template <typename Value>
concept ColumnTakes = requires(DBACCESS_COLUMN& column, Value value) {
    column = value;
};

static_assert(CellTakes<int> && CellTakes<bool> && CellTakes<const char*> && CellTakes<const WCHAR*>);
static_assert(CellTakes<std::string> && CellTakes<std::u16string> && CellTakes<quillet::WideString>);
static_assert(!CellTakes<std::nullptr_t> && !CellTakes<char> && !CellTakes<wchar_t> && !CellTakes<char16_t>);
static_assert(CursorTakes<int> && CursorTakes<bool> && CursorTakes<const char*> && CursorTakes<const WCHAR*>);
static_assert(CursorTakes<std::string> && CursorTakes<std::u16string> && CursorTakes<quillet::WideString>);
static_assert(!CursorTakes<std::nullptr_t> && !CursorTakes<char> && !CursorTakes<wchar_t>);
static_assert(ColumnTakes<int> && ColumnTakes<long> && ColumnTakes<double> && ColumnTakes<bool>);
static_assert(ColumnTakes<const char*> && ColumnTakes<const WCHAR*> && ColumnTakes<std::string> &&
              ColumnTakes<std::u16string> && ColumnTakes<quillet::WideString>);
static_assert(!ColumnTakes<std::nullptr_t> && !ColumnTakes<char> && !ColumnTakes<wchar_t> &&
              !ColumnTakes<char8_t> && !ColumnTakes<char16_t> && !ColumnTakes<char32_t>);

TEST_F(RowTest, SetValue_Zeros_AreNumbersAndNoNullText) {
    DbTableRow& row = NewRow(Long(9));
    const auto number = [&] { return PrintedText(row["n"]); };
    row.SetValue("n", 0);
    EXPECT_EQ(number(), "0");
    EXPECT_EQ(row["n"].GetType(), VT_I4);
    row.SetValue("n", 1);
    row.SetValue("n", 0L);
    EXPECT_EQ(number(), "0");
    row.SetValue("d", 0.0F);
    EXPECT_EQ(PrintedText(row["d"]), "0");
    row.SetValue("t", 0);
    EXPECT_EQ(PrintedText(row["t"]), "0") << "the number, as text";
    row.SetValue("f", true);
    row.SetValue("f", false);
    EXPECT_EQ(PrintedText(row["f"]), "false");
    EXPECT_EQ(row["f"].GetType(), VT_BOOL);
}

template <typename Number>
class EveryNumber : public RowTest {};

using NumberTypes = testing::Types<signed char, unsigned char, short, unsigned short, int, unsigned, long,
                                   unsigned long, long long, unsigned long long, float, double, long double>;
TYPED_TEST_SUITE(EveryNumber, NumberTypes);

TYPED_TEST(EveryNumber, SetValue_StoresThatNumber) {
    DbTableRow& row = this->NewRow();
    for (const char* const field : {"n", "d", "t"}) {
        row.SetValue(field, TypeParam(42));
        EXPECT_EQ(PrintedText(row[field]), "42") << field;
        row.SetValue(field, TypeParam());
        EXPECT_EQ(PrintedText(row[field]), "0") << field;
    }
    row["d"].SetValue(TypeParam(7));
    EXPECT_EQ(row["d"].GetVariant().dblVal, 7.0);
}

TEST_F(RowTest, SetValue_EveryFormOfText_StoresTheText) {
    DbTableRow& row = NewRow();
    const auto expect = [&](const char* what) { EXPECT_EQ(PrintedText(row["t"]), what); };
    row.SetValue("t", "narrow \u0142");
    expect("narrow \u0142");
    row.SetValue("t", OLESTR("wide \u0142"));
    expect("wide \u0142");
    row.SetValue("t", std::string("string"));
    expect("string");
    row.SetValue("t", std::u16string(u"u16 \U0001F600"));
    expect("u16 \U0001F600");
    row.SetValue("t", quillet::WideString(OLESTR("wide string")));
    expect("wide string");
    row.SetValue("t", quillet::WideView(OLESTR("view")));
    expect("view");
    const char* const missing = nullptr;
    row.SetValue("t", missing);
    expect("");
    row.SetValue("n", "12");
    EXPECT_EQ(row["n"].GetVariant().lVal, 12);
    row["t"].SetValue(std::u16string(u"by the cell"));
    expect("by the cell");
    row["t"].SetValue(std::string("and narrow"));
    expect("and narrow");
}

TEST_F(RowTest, SetFieldValue_OfACursor_TakesTheSame) {
    NewRow(Long(9), "x");
    DbRecordset cursor(&m_database);
    ASSERT_TRUE(cursor.Open("T"));
    cursor.Edit();
    cursor.SetFieldValue("n", 0);
    cursor.SetFieldValue("t", std::u16string(u"text"));
    cursor.SetFieldValue("f", false);
    cursor.SetFieldValue(2, 0L);
    cursor.Update();
    EXPECT_EQ(PrintedText(Data()[0]["n"]), "0");
    EXPECT_EQ(PrintedText(Data()[0]["t"]), "text");
    EXPECT_EQ(PrintedText(Data()[0]["f"]), "false");
    EXPECT_EQ(Data()[0][2].GetVariant().llVal, 0) << "as it is, whatever the field's type";
}

TEST_F(RowTest, SetValue_UnknownName_ChangesNothing) {
    DbTableRow& row = NewRow();
    row.SetValue("unknown", CString("1"));
    row.SetValue("unknown", Long(1));
    EXPECT_FALSE(row.IsChanged());
    DbTableRow alone(nullptr);
    alone.SetValue("n", CString("1"));
    alone.SetValue("n", Long(1));
    EXPECT_FALSE(alone.IsChanged());
}

TEST_F(RowTest, SetFieldValuePtr_NewCell_TakesThePlaceAndTheOldOneLives) {
    DbTableRow& row = NewRow(Long(1));
    DbFieldValue* const old = row.at(0);
    auto* const cell = new DbFieldValue(&row, 0);
    cell->GetVariant() = Long(2);
    row.SetFieldValuePtr(0, cell);
    EXPECT_EQ(row[0].GetValue().lVal, 2);
    EXPECT_EQ(old->GetValue().lVal, 1) << "the old cell is not deleted";
    EXPECT_FALSE(row.IsChanged());
}

TEST_F(RowTest, SetFieldValuePtr_NoSuchPosition_HasNoEffect) {
    DbTableRow& row = NewRow();
    DbFieldValue cell;
    row.SetFieldValuePtr(5, &cell);
    row.SetFieldValuePtr(~uint64(0), &cell);
    EXPECT_EQ(row.size(), 5U);
    DbTableRow alone(nullptr);
    alone.SetFieldValuePtr(0, &cell);
    EXPECT_TRUE(alone.empty());
}

TEST_F(RowTest, SetFieldValuePtr_OldCellDeletedByTheCaller_RowDiesQuietly) {
    DbTableRow& row = NewRow(Long(1), "text that stands on the heap");
    for (const uint64 position : {uint64(0), uint64(1)}) {
        const DbFieldValue* const old = row.at(position);
        row.SetFieldValuePtr(position, new DbFieldValue(&row, static_cast<int>(position)));
        delete old;
    }
    EXPECT_EQ(row.GetSize(), 5 * 22U + 8U + 8U);
    row.SetChanged();
    EXPECT_TRUE(Data().IsChanged());
    Data().Clear();
    EXPECT_EQ(Data().size(), 0U);
}

TEST_F(RowTest, SetFieldValuePtr_OldCellNeverDeleted_RowDiesQuietly) {
    DbTableRow& row = NewRow(Long(1), "text that stands on the heap");
    row.SetFieldValuePtr(1, new DbFieldValue(&row, 1));
    Data().DeleteRow(0);
    EXPECT_EQ(Data().size(), 0U);
}

TEST_F(RowTest, SetFieldValuePtr_HeapCellReplaced_IsTheCallersForGood) {
    DbTableRow& row = NewRow();
    auto* const first = new DbFieldValue(&row, 1);
    row.SetFieldValuePtr(1, first);
    row.SetFieldValuePtr(1, new DbFieldValue(&row, 1));
    Data().Clear();
    delete first;
    EXPECT_EQ(Data().size(), 0U);
}

TEST_F(RowTest, SetFieldValuePtr_OneHeapCellAtTwoPositions_IsDeletedOnce) {
    DbTableRow& row = NewRow();
    auto* const cell = new DbFieldValue(&row, 1);
    cell->GetVariant() = CComVariant("text that stands on the heap");
    row.SetFieldValuePtr(0, cell);
    row.SetFieldValuePtr(3, cell);
    EXPECT_EQ(&row[0], &row[3]);
    Data().Clear();
    EXPECT_EQ(Data().size(), 0U);
}

TEST_F(RowTest, SetFieldValuePtr_OneOfTheRowsCellsAtTwoPositions_IsDestroyedOnce) {
    DbTableRow& row = NewRow(Long(1), "text that stands on the heap");
    row.SetFieldValuePtr(0, row.at(1));
    EXPECT_EQ(PrintedText(row[0]), "text that stands on the heap");
    Descr().DeleteField(0);
    EXPECT_NE(row.at(0), nullptr);
    PrintedText(row[0]);
    Data().Clear();
    EXPECT_EQ(Data().size(), 0U);
}

TEST_F(RowTest, SetFieldValuePtr_HeapCellAtTwoPositions_SurvivesTheDeletionOfOneField) {
    DbTableRow& row = NewRow();
    auto* const cell = new DbFieldValue(&row, 1);
    cell->GetVariant() = CComVariant("text that stands on the heap");
    row.SetFieldValuePtr(0, cell);
    row.SetFieldValuePtr(1, cell);
    EXPECT_TRUE(Descr().DeleteField(0));
    PrintedText(row[0]);
    row[0].SetValue("written again");
    Data().Clear();
    EXPECT_EQ(Data().size(), 0U);
}

TEST_F(RowTest, SetFieldValuePtr_Null_ReadsAsNoCell) {
    DbTableRow& row = NewRow();
    row.SetFieldValuePtr(0, nullptr);
    EXPECT_EQ(row[0].GetType(), VT_EMPTY);
    row.SetValue("n", CString("1"));
    EXPECT_EQ(row[0].GetType(), VT_EMPTY);
    SaveTarget target;
    row.Save(target.Automation(), target.Element());
    EXPECT_TRUE(Descr().DeleteField(0));
    row.SetFieldValuePtr(0, nullptr);
    Data().Clear();
    EXPECT_EQ(Data().size(), 0U);
}

TEST_F(RowTest, SetFieldValuePtr_CellOfAnotherParentThatDies_RowWorksOn) {
    DbTableRow& row = NewRow();
    auto parent = std::make_unique<DbItem>();
    auto* const cell = new DbFieldValue(parent.get(), 0);
    row.SetFieldValuePtr(0, cell);
    parent.reset();
    row[0].SetValue(Long(5));
    EXPECT_EQ(PrintedText(row[0]), "5");
    EXPECT_FALSE(row.IsChanged()) << "the cell is no child of the row";
}

TEST_F(RowTest, DeleteCell_ByItsPointer_LeavesAnEmptyCellInItsPlace) {
    DbTableRow& row = NewRow(Long(1), "text that stands on the heap");
    delete row.at(1);
    EXPECT_EQ(row.size(), 5U);
    EXPECT_EQ(row[1].GetType(), VT_EMPTY);
    Data().Clear();
    EXPECT_EQ(Data().size(), 0U);
}

TEST_F(RowTest, DeleteCell_ThroughTheItem_WorksAlike) {
    DbTableRow& row = NewRow(Long(1), "text that stands on the heap");
    const DbItem* const item = row.at(1);
    delete item;
    Data().Clear();
    EXPECT_EQ(Data().size(), 0U);
}

TEST_F(RowTest, CellWithChildrenOfItsOwn_DiesWithTheRowAndLeavesThemAlive) {
    DbTableRow& row = NewRow(Long(1));
    DbItem child(row.at(0));
    Data().Clear();
    EXPECT_EQ(child.LiveParent(), nullptr);
    child.SetChanged();
    EXPECT_TRUE(child.IsChanged());
}

TEST_F(RowTest, RowWithChildrenBesidesItsCells_LeavesThemAlive) {
    DbTableRow& row = NewRow(Long(1));
    std::vector<std::unique_ptr<DbItem>> children;
    for (int i = 0; i < 10; ++i) {
        children.push_back(std::make_unique<DbItem>(&row));
    }
    children[3].reset();
    Data().Clear();
    EXPECT_EQ(children[0]->LiveParent(), nullptr);
}

TEST_F(RowTest, CopyOfACell_OutlivesTheRow) {
    DbTableRow& row = NewRow(Long(1), "text that stands on the heap");
    DbFieldValue copy(row[1]);
    Data().Clear();
    EXPECT_EQ(PrintedText(copy), "text that stands on the heap");
    copy.SetValue("other");
    EXPECT_EQ(PrintedText(copy), "other");
}

TEST_F(RowTest, RowUseAfterTheDescriptorDied_TouchesNothingFreed) {
    auto descr = std::make_unique<DbTableDescr>(nullptr);
    descr->CreateField("a", false, DbFieldDescr::Text);
    DbTableData data(nullptr, descr.get());
    data.AddRow();
    descr.reset();
    EXPECT_EQ(data[0].size(), 1U);
    data[0]["a"].SetValue("x");
    data[0].SetValue("a", CString("x"));
    data[0].Evaluate();
    SaveTarget target;
    data[0].Save(target.Automation(), target.Element());
    EXPECT_EQ(data.size(), 1U);
}

TEST_F(RowTest, Compare_NoDifference_IsTrue) {
    DbTableRow& left = NewRow(Long(1), "Abc");
    DbTableRow& right = NewRow(Long(1), "ABC");
    Fields both = {0, 1};
    Fields none;
    EXPECT_TRUE(left.Compare(both, right));
    EXPECT_TRUE(right.Compare(both, left));
    EXPECT_TRUE(left.Compare(none, right));
}

TEST_F(RowTest, Compare_FirstDifference_DecidesByGreater) {
    DbTableRow& low = NewRow(Long(1), "z");
    DbTableRow& high = NewRow(Long(2), "a");
    Fields numberFirst = {0, 1};
    Fields textFirst = {1, 0};
    EXPECT_FALSE(low.Compare(numberFirst, high));
    EXPECT_TRUE(high.Compare(numberFirst, low));
    EXPECT_TRUE(low.Compare(textFirst, high));
    EXPECT_FALSE(high.Compare(textFirst, low));
}

bool SameType(const CComVariant& left, const CComVariant& right) {
    return left.vt == right.vt;
}

int g_calls = 0;
bool CountUntilText(const CComVariant& left, const CComVariant&) {
    ++g_calls;
    return left.vt != VT_BSTR;
}

TEST_F(RowTest, CompareWithFunction_HoldsForEveryField_IsTrue) {
    DbTableRow& left = NewRow(Long(1), "a");
    DbTableRow& right = NewRow(Long(2), "b");
    Fields positions = {0, 1};
    std::vector<CString> names = Names({"N", "[t]"});
    EXPECT_TRUE(left.Compare(positions, SameType, right));
    EXPECT_TRUE(left.Compare(names, SameType, right));
    right[1].GetVariant() = Long(1);
    EXPECT_FALSE(left.Compare(positions, SameType, right));
    EXPECT_FALSE(left.Compare(names, SameType, right));
}

TEST_F(RowTest, CompareWithFunction_FirstFalse_StopsTheWalk) {
    DbTableRow& row = NewRow();
    Fields positions = {0, 1, 2, 3};
    g_calls = 0;
    EXPECT_FALSE(row.Compare(positions, CountUntilText, row));
    EXPECT_EQ(g_calls, 2);
}

TEST_F(RowTest, CompareWithFunction_UnknownField_ComparesEmptyValues) {
    DbTableRow& row = NewRow();
    Fields positions = {99};
    std::vector<CString> names = Names({"unknown"});
    EXPECT_TRUE(row.Compare(positions, SameType, row));
    EXPECT_TRUE(row.Compare(names, SameType, row));
    DbTableRow alone(nullptr);
    EXPECT_TRUE(alone.Compare(names, SameType, row));
}

TEST_F(RowTest, CompareEx_Numbers_AreOrderedByValue) {
    DbTableRow& low = NewRow(Long(-1));
    DbTableRow& high = NewRow(Long(10));
    EXPECT_EQ(low.CompareEx(Fields{0}, high), DbTableRow::CmpLess);
    EXPECT_EQ(high.CompareEx(Fields{0}, low), DbTableRow::CmpGreater);
    EXPECT_EQ(low.CompareEx(Fields{0}, low), DbTableRow::CmpEqual);
    EXPECT_EQ(low.CompareEx(Fields{}, high), DbTableRow::CmpEqual);
}

TEST_F(RowTest, CompareEx_Texts_AreEqualWithoutRegardToCase) {
    DbTableRow& left = NewRow(Long(1), "Abc");
    DbTableRow& right = NewRow(Long(1), "ABC");
    EXPECT_EQ(left.CompareEx(Fields{1}, right), DbTableRow::CmpEqual);
    EXPECT_EQ(NewRow(Long(1), "\u0142").CompareEx(Fields{1}, NewRow(Long(1), "\u0141")),
              DbTableRow::CmpEqual);
}

TEST_F(RowTest, CompareEx_Texts_AreOrdered) {
    DbTableRow& a = NewRow(Long(1), "a");
    DbTableRow& b = NewRow(Long(1), "B");
    EXPECT_EQ(a.CompareEx(Fields{1}, b), DbTableRow::CmpLess);
    EXPECT_EQ(b.CompareEx(Fields{1}, a), DbTableRow::CmpGreater);
}

TEST_F(RowTest, CompareEx_FirstEqualSecondDiffers_GoesOn) {
    DbTableRow& left = NewRow(Long(1), "a");
    DbTableRow& right = NewRow(Long(1), "b");
    EXPECT_EQ(left.CompareEx(Fields{0, 1}, right), DbTableRow::CmpLess);
    EXPECT_EQ(right.CompareEx(Fields{0, 1}, left), DbTableRow::CmpGreater);
}

TEST_F(RowTest, CompareEx_NumbersOfDifferentTypes_AreNeverEqual) {
    DbTableRow& left = NewRow(Long(1));
    DbTableRow& right = NewRow(1.0);
    EXPECT_EQ(left.CompareEx(Fields{0}, right), DbTableRow::CmpLess);
    EXPECT_EQ(right.CompareEx(Fields{0}, left), DbTableRow::CmpLess);
}

TEST_F(RowTest, CompareEx_TextAgainstANumber_DependsOnTheSide) {
    DbTableRow& text = NewRow("5");
    DbTableRow& number = NewRow(Long(5));
    EXPECT_EQ(text.CompareEx(Fields{0}, number), DbTableRow::CmpEqual) << "the text decides how to compare";
    EXPECT_EQ(number.CompareEx(Fields{0}, text), DbTableRow::CmpLess);
    EXPECT_EQ(NewRow("6").CompareEx(Fields{0}, number), DbTableRow::CmpGreater)
        << "texts stand above numbers";
}

TEST_F(RowTest, CompareEx_TwoNulls_AreEqual) {
    DbTableRow& left = NewRow(NullVariant());
    DbTableRow& right = NewRow(NullVariant());
    EXPECT_EQ(left.CompareEx(Fields{0}, right), DbTableRow::CmpEqual);
    EXPECT_EQ(left.CompareEx(Fields{0}, NewRow(Long(1))), DbTableRow::CmpLess)
        << "null is greater than nothing";
    EXPECT_EQ(NewRow(Long(1)).CompareEx(Fields{0}, left), DbTableRow::CmpLess);
    EXPECT_EQ(NewRow("a").CompareEx(Fields{0}, left), DbTableRow::CmpLess);
}

TEST_F(RowTest, CompareEx_EmptyVariant_ComparesAsThePlatformSays) {
    DbTableRow& empty = NewRow(CComVariant());
    EXPECT_EQ(empty.CompareEx(Fields{0}, NewRow(CComVariant())), DbTableRow::CmpEqual);
    EXPECT_EQ(empty.CompareEx(Fields{0}, NewRow(Long(-1))), DbTableRow::CmpGreater) << "as zero";
    EXPECT_EQ(empty.CompareEx(Fields{0}, NewRow(Long(1))), DbTableRow::CmpLess);
    EXPECT_EQ(empty.CompareEx(Fields{0}, NewRow(Long(0))), DbTableRow::CmpLess)
        << "not equal for the types differ, and not greater";
    EXPECT_EQ(NewRow("").CompareEx(Fields{0}, empty), DbTableRow::CmpEqual) << "as an empty text";
}

TEST_F(RowTest, CompareEx_ByteArrays_AreNeverEqualAndNeverGreater) {
    DbTableRow& row = NewRow(ByteArray("a"));
    EXPECT_EQ(row.CompareEx(Fields{0}, row), DbTableRow::CmpLess);
}

TEST_F(RowTest, CompareEx_NullFlag_DoesNotMatter) {
    DbTableRow& left = NewRow(Long(1));
    DbTableRow& right = NewRow(Long(1));
    left[0].SetNull(true);
    EXPECT_EQ(left.CompareEx(Fields{0}, right), DbTableRow::CmpEqual);
}

TEST_F(RowTest, CompareEx_UnknownFields_AreEqual) {
    EXPECT_EQ(NewRow().CompareEx(Fields{99, ~uint64(0)}, NewRow()), DbTableRow::CmpEqual);
}

TEST_F(RowTest, CompareExWithKey_KeyStandsOnTheLeft) {
    DbTableRow& row = NewRow(Long(5), "m");
    EXPECT_EQ(DbTableRow::CompareEx(Fields{0}, Key{Long(4)}, row), DbTableRow::CmpLess);
    EXPECT_EQ(DbTableRow::CompareEx(Fields{0}, Key{Long(6)}, row), DbTableRow::CmpGreater);
    EXPECT_EQ(DbTableRow::CompareEx(Fields{0}, Key{Long(5)}, row), DbTableRow::CmpEqual);
    EXPECT_EQ(DbTableRow::CompareEx(Fields{1, 0}, Key{CComVariant("M"), Long(9)}, row),
              DbTableRow::CmpGreater)
        << "key value k belongs to the k-th listed field";
}

TEST_F(RowTest, CompareExWithShortKey_EqualsAnythingInTheRest) {
    DbTableRow& row = NewRow(Long(5), "m");
    EXPECT_EQ(DbTableRow::CompareEx(Fields{0, 1}, Key{Long(5)}, row), DbTableRow::CmpEqual);
    EXPECT_EQ(DbTableRow::CompareEx(Fields{0, 1}, Key{}, row), DbTableRow::CmpEqual);
}

TEST_F(RowTest, CompareExWithKeyPointer_CountIsNotConsulted) {
    DbTableRow& row = NewRow(Long(5), "m");
    const CComVariant key[] = {Long(5), CComVariant("z")};
    for (const int count : {-1, 0, 1, 2, 99}) {
        EXPECT_EQ(DbTableRow::CompareEx(Fields{0, 1}, key, count, row), DbTableRow::CmpGreater) << count;
    }
}

TEST_F(RowTest, CompareExWithKeyPointer_Null_ComparesNothing) {
    DbTableRow& row = NewRow(Long(5));
    EXPECT_EQ(DbTableRow::CompareEx(Fields{0}, static_cast<const CComVariant*>(nullptr), 1, row),
              DbTableRow::CmpEqual);
}

TEST_F(RowTest, Save_Row_WritesOneAttributePerCellUnderSafeNames) {
    Descr()[1].SetName("t t/x");
    DbTableRow& row = NewRow(Long(-5), "<a & \"b\">\t\r\n'");
    row[2].GetVariant() = 2.0;
    row[3].GetVariant() = BooleanBits(VARIANT_TRUE);
    row[4].GetVariant() = ByteArray("ABCD");
    SaveTarget target;
    EXPECT_TRUE(row.Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(),
              "<row n=\"-5\" t_t_S_x=\"&lt;a &amp; &quot;b&quot;&gt;&#9;&#13;&#10;'\" d=\"2\" f=\"true\" "
              "x=\"QUJDRA==\" />\n");
}

TEST_F(RowTest, Save_DefaultBinaryCell_IsOneZeroPastTheArray) {
    SaveTarget target;
    EXPECT_TRUE(NewRow().Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(), "<row n=\"0\" t=\"\" d=\"0\" f=\"false\" x=\"AAA=\" />\n");
}

TEST_F(RowTest, Save_NullFlagAndValuesWithoutText_WriteEmptyOrTheValue) {
    DbTableRow& row = NewRow(NullVariant());
    row[1].SetNull(true);
    row[1].GetVariant() = CComVariant("kept");
    row[2].GetVariant() = CComVariant();
    row[3].GetVariant() = DateVariant(1);
    row[4].GetVariant() = CComVariant("text in a byte cell");
    SaveTarget target;
    EXPECT_TRUE(row.Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(), "<row n=\"\" t=\"kept\" d=\"\" f=\"\" x=\"text in a byte cell\" />\n");
}

TEST_F(RowTest, Save_RowWithoutCells_IsAnEmptyElement) {
    DbTableRow row(nullptr);
    SaveTarget target;
    EXPECT_TRUE(row.Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(), "<row />\n");
}

TEST_F(RowTest, Save_TextThatXmlCannotCarry_IsRefusedAndLogged) {
    for (const CString& text : {Units({1}), Units({'a', 0x1F, 'b'}), Units({0xD800}), Units({0xDC00, 0xD800}),
                                Units({0xFFFE}), Units({'x', 0xFFFF})}) {
        DbTableRow& row = NewRow(Long(1), text);
        SaveTarget target;
        EXPECT_FALSE(row.Save(target.Automation(), target.Element()));
        EXPECT_EQ(target.Content(), "");
        EXPECT_EQ(TakeLog(m_database),
                  (Strings{"Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), t, 1"}));
    }
}

TEST_F(RowTest, Save_EmbeddedZero_IsRefused) {
    DbTableRow& row = NewRow(Long(1), Units({'a', 0, 'b'}));
    SaveTarget target;
    EXPECT_FALSE(row.Save(target.Automation(), target.Element()));
}

TEST_F(RowTest, Save_SafeNameThatIsNoXmlName_IsRefusedAtThatField) {
    for (const char* name : {"1a", "", "-a", "a&b", "a\"b", "a=b", "a,b", "[a]", "a'b", "\u00D7", "a$"}) {
        Descr()[2].SetName(name);
        SaveTarget target;
        EXPECT_FALSE(NewRow().Save(target.Automation(), target.Element())) << name;
        const std::string quoted = "'" + std::string(name) + "'";
        EXPECT_EQ(TakeLog(m_database),
                  (Strings{"Table 'T' can't be saved: the field " + quoted + " would be saved as " + quoted +
                               ", which is no name in XML",
                           "Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), " +
                               std::string(name) + ", 2"}));
        EXPECT_EQ(target.Content(), "") << name;
    }
}

TEST_F(RowTest, Save_NamesThatXmlAllows_AreWritten) {
    for (const char* name : {"_", ":", "a.b-c_1", "\u017C\u00F3\u0142w", "\u540D", "a\u00B7"}) {
        Descr()[2].SetName(name);
        SaveTarget target;
        EXPECT_TRUE(NewRow().Save(target.Automation(), target.Element())) << name;
    }
}

TEST_F(RowTest, Save_SafeNameSharedByTwoFields_IsRefusedAtTheSecond) {
    Descr()[1].SetName("a b");
    Descr()[3].SetName("a_b");
    SaveTarget target;
    EXPECT_FALSE(NewRow().Save(target.Automation(), target.Element()));
    EXPECT_EQ(TakeLog(m_database),
              (Strings{"Table 'T' can't be saved: the fields 'a b' and 'a_b' would both be saved as 'a_b'",
                       "Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), a_b, 3"}));
}

TEST_F(RowTest, Save_SharedSafeNameAfterGoodRows_IsRefusedToo) {
    SaveTarget target;
    EXPECT_TRUE(NewRow().Save(target.Automation(), target.Element()));
    Descr()[1].SetName("n");
    EXPECT_FALSE(NewRow().Save(target.Automation(), target.Element()));
    Descr()[1].SetName("t");
    EXPECT_TRUE(NewRow().Save(target.Automation(), target.Element()));
    Descr()[4].SetName("t");
    EXPECT_FALSE(NewRow().Save(target.Automation(), target.Element()));
    Descr()[4].SetName("T");
    EXPECT_TRUE(NewRow().Save(target.Automation(), target.Element())) << "XML names know case";
}

TEST_F(RowTest, Save_SafeNameWithALoneSurrogate_IsRefused) {
    Descr()[2].SetName(Units({'a', 0xD800}));
    SaveTarget target;
    EXPECT_FALSE(NewRow().Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(), "");
}

TEST_F(RowTest, Save_FailedRow_LeavesTheGoodOnesWhole) {
    SaveTarget target;
    EXPECT_TRUE(NewRow(Long(1)).Save(target.Automation(), target.Element()));
    const std::string good = target.Content();
    EXPECT_FALSE(NewRow(Long(2), Units({2})).Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(), good);
    EXPECT_TRUE(NewRow(Long(1)).Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(), good + good);
}

TEST_F(RowTest, Save_WithoutDocumentOrParent_IsRefusedAndLogged) {
    SaveTarget target;
    DbTableRow& row = NewRow();
    EXPECT_FALSE(row.Save(nullptr, target.Element()));
    EXPECT_FALSE(row.Save(target.Automation(), nullptr));
    EXPECT_FALSE(row.Save(nullptr, nullptr));
    EXPECT_EQ(TakeLog(m_database).size(), 3U);
}

TEST_F(RowTest, Save_RowWithoutADatabase_FailsSilently) {
    DbTableDescr descr(nullptr);
    descr.CreateField("1", false, DbFieldDescr::Text);
    DbTableData data(nullptr, &descr);
    data.AddRow();
    SaveTarget target;
    EXPECT_FALSE(data[0].Save(target.Automation(), target.Element()));
}

TEST_F(RowTest, Save_RowWithoutADescriptor_IsFalse) {
    DbTableRow& row = NewRow();
    row.SetDescr(nullptr);
    SaveTarget target;
    EXPECT_FALSE(row.Save(target.Automation(), target.Element()));
}

TEST_F(RowTest, Save_ParentThatHoldsNoChildren_IsFalse) {
    SaveTarget target;
    const auto element = ElementOf("<t>text</t>");
    const auto document = InvokeByName(element.Get(), "ownerDocument").Object();
    const auto text = InvokeByName(element.Get(), "firstChild").Object();
    EXPECT_FALSE(NewRow().Save(document.Get(), text.Get()));
    EXPECT_EQ(InvokeByName(element.Get(), "xml").Text(), "<t>\ntext\n</t>\n");
}

TEST_F(RowTest, Load_Attributes_AreTakenByPosition) {
    DbTableRow& row = NewRow();
    EXPECT_TRUE(row.Load(ElementOf("<anything a='7' n='x' c='1,5' d='true' e='QUJD'/>").Get()));
    EXPECT_EQ(row[0].GetValue().lVal, 7);
    EXPECT_EQ(TextOf(row[1].GetValue()), "x");
    EXPECT_EQ(row[2].GetValue().dblVal, 1.5) << "the converter understands either separator";
    EXPECT_EQ(row[3].GetValue().boolVal, VARIANT_TRUE);
    EXPECT_EQ(ContentOf(row[4].GetValue()), (ArrayContent{0, "ABC"}));
    EXPECT_FALSE(row.IsChanged());
}

TEST_F(RowTest, Load_EmptyTexts_FollowTheConverters) {
    DbTableRow& row = NewRow();
    EXPECT_TRUE(row.Load(ElementOf("<row n='' t='' d='' f='' x=''/>").Get()));
    EXPECT_EQ(row[0].GetType(), VT_BSTR);
    EXPECT_EQ(row[2].GetType(), VT_R8);
    EXPECT_EQ(row[3].GetType(), VT_BSTR);
    EXPECT_EQ(ContentOf(row[4].GetValue()), (ArrayContent{0, ""}));
}

TEST_F(RowTest, Load_FewerAttributes_LeaveTheRest) {
    DbTableRow& row = NewRow(Long(1), "kept");
    EXPECT_TRUE(row.Load(ElementOf("<row n='2'/>").Get()));
    EXPECT_EQ(row[0].GetValue().lVal, 2);
    EXPECT_EQ(TextOf(row[1].GetValue()), "kept");
}

TEST_F(RowTest, Load_MoreAttributes_AreLeftOut) {
    DbTableRow& row = NewRow();
    EXPECT_TRUE(row.Load(ElementOf("<row a='1' b='2' c='3' d='0' e='' f='6' g='7'/>").Get()));
    EXPECT_EQ(row.size(), 5U);
}

TEST_F(RowTest, Load_WhatIsNoElement_IsFalse) {
    DbTableRow& row = NewRow();
    EXPECT_FALSE(row.Load(nullptr));
    const auto element = ElementOf("<t>text</t>");
    EXPECT_FALSE(row.Load(InvokeByName(element.Get(), "firstChild").Object().Get()));
    EXPECT_FALSE(row.Load(InvokeByName(element.Get(), "attributes").Object().Get()));
    EXPECT_FALSE(row.Load(InvokeByName(element.Get(), "ownerDocument").Object().Get()));
}

TEST_F(RowTest, Load_RowWithoutDescriptorOrCells_IsSoft) {
    DbTableRow row(nullptr);
    row.Load(ElementOf("<row a='1'/>").Get());
    EXPECT_TRUE(row.empty());
    row.SetDescr(&Descr());
    EXPECT_TRUE(row.Load(ElementOf("<row a='1'/>").Get()));
    EXPECT_TRUE(row.empty());
}

TEST_F(RowTest, SaveAndLoad_EveryText_ComesBack) {
    for (const CString& text :
         {CString(" edge "), CString("\t\r\n"), CString("<![CDATA[x]]>&amp;&#10;"),
          CString("\U0001F600\u017C\uFFFD"), CString("\"'"), CString("\u0085\u2028"), CString("")}) {
        DbTableRow& row = NewRow(Long(1), text);
        SaveTarget target;
        ASSERT_TRUE(row.Save(target.Automation(), target.Element())) << text;
        DbTableRow& read = NewRow();
        EXPECT_TRUE(read.Load(ElementOf(target.Content()).Get()));
        EXPECT_EQ(TextOf(read[1].GetValue()), text.ToUtf8());
    }
}

TEST_F(RowTest, SaveAndLoad_ThroughTheSameDocument_ComesBack) {
    SaveTarget target;
    ASSERT_TRUE(NewRow(Long(5), "<&>").Save(target.Automation(), target.Element()));
    DbTableRow& read = NewRow();
    EXPECT_TRUE(read.Load(InvokeByName(target.Element(), "firstChild").Object().Get()));
    EXPECT_EQ(read[0].GetValue().lVal, 5);
    EXPECT_EQ(TextOf(read[1].GetValue()), "<&>");
}

}  // namespace
