#include "Quillet/Db_Rows.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/Seed.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;
using Order = std::vector<uint64>;
using Numbers = std::vector<LONG>;

constexpr LONG NoRow = -1;

// The numbers in the first cells of the visible rows.
Numbers Visible(DbRows& rows) {
    Numbers numbers;
    for (uint64 i = 0; i < rows.GetRowsCount(); ++i) {
        DbTableRow* const row = rows.GetRow(static_cast<int>(i));
        numbers.push_back(row == nullptr ? NoRow : (*row)[uint64(0)].GetValue().lVal);
    }
    return numbers;
}

void AddNumbers(DbRows& rows, LONG first, LONG count) {
    for (LONG number = first; number < first + count; ++number) {
        const uint64 position = rows.AddRow(true);
        (*rows.GetRow(static_cast<int>(position)))[uint64(0)].GetVariant() = Long(number);
    }
}

// Rows of a structure with the fields n (long) and t (text), without a database.
class RowsTest : public testing::Test {
protected:
    RowsTest() {
        m_descr.CreateField("n", false, DbFieldDescr::Long);
        m_descr.CreateField("t", false, DbFieldDescr::Text);
    }

    DbTableDescr m_descr{nullptr};
    DbRows m_rows{nullptr, &m_descr};
};

TEST_F(RowsTest, Construct_IsEmptyAndUnbound) {
    EXPECT_EQ(m_rows.GetRowsCount(), 0U);
    EXPECT_FALSE(m_rows.IsBinded());
    EXPECT_EQ(m_rows.GetLastRow(), nullptr);
    EXPECT_EQ(m_rows.GetRow(0), nullptr);
    EXPECT_FALSE(m_rows.IsChanged());
    EXPECT_EQ(m_rows.GetSize(), 8U);
}

TEST_F(RowsTest, Construct_WithoutDescriptor_AddsRowsWithoutCells) {
    DbRows rows(nullptr, nullptr);
    EXPECT_EQ(rows.AddRow(true), 0U);
    EXPECT_EQ(rows.AddRows(3, false), 1U);
    EXPECT_TRUE(rows.GetRow(0)->empty());
    rows.Update(0, false);
    rows.DeleteRow(0);
    EXPECT_EQ(rows.GetRowsCount(), 3U);
}

TEST_F(RowsTest, AddRow_WithInitialValues_CopiesTheDefaults) {
    m_descr[0].GetVariant() = Long(7);
    EXPECT_EQ(m_rows.AddRow(true), 0U);
    DbTableRow& row = *m_rows.GetRow(0);
    ASSERT_EQ(row.size(), 2U);
    EXPECT_EQ(row[0].GetValue().lVal, 7);
    EXPECT_EQ(row[1].GetType(), VT_BSTR);
    EXPECT_EQ(row.GetParent(), &m_rows);
    EXPECT_EQ(row.GetDescr(), &m_descr);
}

TEST_F(RowsTest, AddRow_WithoutInitialValues_HasEmptyCells) {
    EXPECT_EQ(m_rows.AddRow(false), 0U);
    DbTableRow& row = *m_rows.GetRow(0);
    ASSERT_EQ(row.size(), 2U);
    EXPECT_EQ(row[0].GetType(), VT_EMPTY);
    EXPECT_EQ(row[1].GetType(), VT_EMPTY);
    EXPECT_EQ(row[1].GetIndex(), 1);
    EXPECT_EQ(row[1].GetParent(), &row);
}

TEST_F(RowsTest, AddRow_Repeatedly_CountsUp) {
    EXPECT_EQ(m_rows.AddRow(true), 0U);
    EXPECT_EQ(m_rows.AddRow(true), 1U);
    EXPECT_EQ(m_rows.GetRowsCount(), 2U);
    EXPECT_EQ(m_rows.GetLastRow(), m_rows.GetRow(1));
    EXPECT_EQ(m_rows.GetSize(), 2 * 22U + 8U);
}

TEST_F(RowsTest, AddRow_StampsTheRows) {
    const std::int32_t before = DbItem::m_changeCounter;
    m_rows.AddRow(true);
    EXPECT_TRUE(m_rows.IsChanged());
    EXPECT_GT(m_rows.GetChangeId(), before);
    m_rows.Sync();
    m_rows.AddRows(2, false);
    EXPECT_TRUE(m_rows.IsChanged());
}

TEST_F(RowsTest, AddRows_GivesThePositionOfTheFirst) {
    EXPECT_EQ(m_rows.AddRows(3, true), 0U);
    EXPECT_EQ(m_rows.AddRows(2, true), 3U);
    EXPECT_EQ(m_rows.AddRows(0, true), 5U);
    EXPECT_EQ(m_rows.GetRowsCount(), 5U);
}

TEST_F(RowsTest, AddRows_None_StampsNothing) {
    m_rows.AddRows(0, true);
    EXPECT_FALSE(m_rows.IsChanged());
}

TEST_F(RowsTest, GetRow_OutOfRange_IsNull) {
    m_rows.AddRows(2, true);
    EXPECT_EQ(m_rows.GetRow(2), nullptr);
    EXPECT_EQ(m_rows.GetRow(-1), nullptr);
    EXPECT_EQ(m_rows.GetRow(2147483647), nullptr);
}

TEST_F(RowsTest, DeleteRow_OneOfFour_RenumbersTheOthers) {
    AddNumbers(m_rows, 0, 4);
    m_rows.DeleteRow(1);
    EXPECT_EQ(Visible(m_rows), (Numbers{0, 2, 3}));
    EXPECT_EQ(m_rows.GetSize(), 3 * 22U + 8U);
}

TEST_F(RowsTest, DeleteRow_FirstAndLast_LeaveTheMiddle) {
    AddNumbers(m_rows, 0, 3);
    m_rows.DeleteRow(2);
    m_rows.DeleteRow(0);
    EXPECT_EQ(Visible(m_rows), (Numbers{1}));
    m_rows.DeleteRow(0);
    EXPECT_EQ(m_rows.GetLastRow(), nullptr);
}

TEST_F(RowsTest, DeleteRow_OutOfRange_IsIgnored) {
    AddNumbers(m_rows, 0, 2);
    m_rows.Sync();
    m_rows.DeleteRow(2);
    m_rows.DeleteRow(~uint64(0));
    EXPECT_EQ(Visible(m_rows), (Numbers{0, 1}));
    EXPECT_FALSE(m_rows.IsChanged());
}

TEST_F(RowsTest, DeleteRow_PositionBeyondThirtyTwoBits_IsIgnored) {
    AddNumbers(m_rows, 0, 2);
    m_rows.DeleteRow(uint64(1) << 32);
    m_rows.DeleteRow((uint64(1) << 32) + 1);
    EXPECT_EQ(Visible(m_rows), (Numbers{0, 1}));
}

TEST_F(RowsTest, DeleteRow_StampsTheRows) {
    AddNumbers(m_rows, 0, 2);
    m_rows.Sync();
    m_rows.DeleteRow(0);
    EXPECT_TRUE(m_rows.IsChanged());
}

TEST_F(RowsTest, DeleteRow_ThenAddRow_ReusesNothingOfTheOldRow) {
    AddNumbers(m_rows, 0, 3);
    m_rows.GetRow(1)->SetValue("t", CString("old text that stands on the heap"));
    m_rows.GetRow(1)->SetChanged();
    m_rows.Sync();
    m_rows.DeleteRow(1);
    m_rows.Sync();
    const uint64 position = m_rows.AddRow(false);
    DbTableRow& row = *m_rows.GetRow(static_cast<int>(position));
    EXPECT_EQ(row[0].GetType(), VT_EMPTY);
    EXPECT_EQ(row[1].GetType(), VT_EMPTY);
    EXPECT_FALSE(row.IsChanged());
    EXPECT_EQ(row.GetChangeId(), 0);
    EXPECT_EQ(row.GetParent(), &m_rows);
}

TEST_F(RowsTest, AddAndDelete_RandomSequence_MatchesAPlainList) {
    std::mt19937 random(quillet::test::Seed(20250201));
    Numbers expected;
    LONG next = 0;
    for (int step = 0; step < 3000; ++step) {
        if (expected.empty() || random() % 5 < 3) {
            AddNumbers(m_rows, next, 1);
            m_rows.GetLastRow()->SetValue("t", CString(std::string(random() % 40, 'x')));
            expected.push_back(next++);
        } else {
            const std::size_t position = random() % expected.size();
            m_rows.DeleteRow(position);
            expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(position));
        }
        if (step % 100 == 0) {
            ASSERT_EQ(Visible(m_rows), expected);
        }
    }
    EXPECT_EQ(Visible(m_rows), expected);
}

TEST_F(RowsTest, Update_FieldAdded_InsertsTheDefaultIntoEveryRow) {
    AddNumbers(m_rows, 0, 2);
    m_descr.CreateField("d", false, DbFieldDescr::Double);
    m_rows.Update(2, true);
    for (int i = 0; i < 2; ++i) {
        DbTableRow& row = *m_rows.GetRow(i);
        ASSERT_EQ(row.size(), 3U);
        EXPECT_EQ(row[2].GetType(), VT_R8);
        EXPECT_EQ(row[2].GetIndex(), 2);
        EXPECT_EQ(row[2].GetParent(), &row);
    }
}

TEST_F(RowsTest, Update_FieldAddedInTheMiddle_ShiftsTheCellsButNotTheirNumbers) {
    AddNumbers(m_rows, 5, 1);
    m_rows.Update(0, true);
    DbTableRow& row = *m_rows.GetRow(0);
    ASSERT_EQ(row.size(), 3U);
    EXPECT_EQ(row[1].GetValue().lVal, 5);
    EXPECT_EQ(row[0].GetIndex(), 0);
    EXPECT_EQ(row[1].GetIndex(), 0);
    EXPECT_EQ(row[2].GetIndex(), 1);
}

TEST_F(RowsTest, Update_FieldRemoved_TakesTheCellOut) {
    AddNumbers(m_rows, 5, 2);
    m_rows.Update(0, false);
    EXPECT_EQ(m_rows.GetRow(1)->size(), 1U);
    EXPECT_EQ((*m_rows.GetRow(1))[uint64(0)].GetIndex(), 1);
}

TEST_F(RowsTest, Update_PositionOutOfRange_IsSoft) {
    AddNumbers(m_rows, 5, 1);
    m_rows.Update(99, false);
    EXPECT_EQ(m_rows.GetRow(0)->size(), 2U);
    m_rows.Update(99, true);
    EXPECT_EQ(m_rows.GetRow(0)->size(), 3U);
    EXPECT_EQ((*m_rows.GetRow(0))[uint64(2)].GetType(), VT_EMPTY);
}

TEST_F(RowsTest, Bind_ShowsTheOthersRowsInTheGivenOrder) {
    AddNumbers(m_rows, 0, 4);
    DbRows view(nullptr, &m_descr);
    Order order = {3, 1, 1};
    view.Bind(&m_rows, order);
    EXPECT_TRUE(view.IsBinded());
    EXPECT_EQ(Visible(view), (Numbers{3, 1, 1}));
    EXPECT_EQ(view.GetRow(0), m_rows.GetRow(3));
    EXPECT_EQ(view.GetLastRow(), m_rows.GetRow(1));
    EXPECT_FALSE(m_rows.IsBinded());
}

TEST_F(RowsTest, Bind_RowsOfItsOwn_AreDropped) {
    AddNumbers(m_rows, 0, 2);
    DbRows view(nullptr, &m_descr);
    AddNumbers(view, 100, 3);
    Order order = {0};
    view.Bind(&m_rows, order);
    EXPECT_EQ(Visible(view), (Numbers{0}));
    EXPECT_EQ(view.GetSize(), 8U) << "the dropped rows are no children any more";
}

TEST_F(RowsTest, Bind_TheOrder_IsACopy) {
    AddNumbers(m_rows, 0, 2);
    DbRows view(nullptr, &m_descr);
    Order order = {1};
    view.Bind(&m_rows, order);
    order.clear();
    EXPECT_EQ(Visible(view), (Numbers{1}));
}

TEST_F(RowsTest, Bind_EntriesThatPointAtNothing_ReadAsNoRow) {
    AddNumbers(m_rows, 0, 2);
    DbRows view(nullptr, &m_descr);
    Order order = {7, 1, ~uint64(0)};
    view.Bind(&m_rows, order);
    EXPECT_EQ(view.GetRowsCount(), 3U);
    EXPECT_EQ(Visible(view), (Numbers{NoRow, 1, NoRow}));
    EXPECT_EQ(view.GetLastRow(), nullptr);
}

TEST_F(RowsTest, Bind_AgainToOthers_ShowsTheNewRows) {
    AddNumbers(m_rows, 0, 2);
    DbRows others(nullptr, &m_descr);
    AddNumbers(others, 50, 2);
    DbRows view(nullptr, &m_descr);
    Order order = {1};
    view.Bind(&m_rows, order);
    view.Bind(&others, order);
    EXPECT_EQ(Visible(view), (Numbers{51}));
    AddNumbers(view, 60, 1);
    EXPECT_EQ(Visible(others), (Numbers{50, 51, 60}));
    EXPECT_EQ(Visible(m_rows), (Numbers{0, 1}));
}

TEST_F(RowsTest, Bind_NullOrItself_HasNoEffect) {
    AddNumbers(m_rows, 0, 2);
    Order order = {1};
    m_rows.Bind(nullptr, order);
    m_rows.Bind(&m_rows, order);
    EXPECT_FALSE(m_rows.IsBinded());
    EXPECT_EQ(Visible(m_rows), (Numbers{0, 1}));
}

TEST_F(RowsTest, BoundAddRow_IsVisibleInBoth) {
    AddNumbers(m_rows, 0, 3);
    DbRows view(nullptr, &m_descr);
    Order order = {2};
    view.Bind(&m_rows, order);
    EXPECT_EQ(view.AddRow(true), 1U);
    EXPECT_EQ(view.GetRowsCount(), 2U);
    EXPECT_EQ(m_rows.GetRowsCount(), 4U);
    EXPECT_EQ(view.GetLastRow(), m_rows.GetLastRow());
    EXPECT_EQ(view.GetLastRow()->GetParent(), &m_rows);
}

TEST_F(RowsTest, BoundAddRow_StampsTheRowsBoundTo) {
    DbRows view(nullptr, &m_descr);
    Order order;
    view.Bind(&m_rows, order);
    m_rows.Sync();
    view.AddRow(true);
    EXPECT_TRUE(m_rows.IsChanged());
}

TEST_F(RowsTest, BoundAddRow_StampsTheBoundRowsToo) {
    DbRows view(nullptr, &m_descr);
    Order order;
    view.Bind(&m_rows, order);
    view.Sync();
    view.AddRow(true);
    EXPECT_TRUE(view.IsChanged());
}

TEST_F(RowsTest, AddRowToTheRowsBoundTo_StaysInvisibleInTheView) {
    AddNumbers(m_rows, 0, 1);
    DbRows view(nullptr, &m_descr);
    Order order = {0};
    view.Bind(&m_rows, order);
    AddNumbers(m_rows, 1, 1);
    EXPECT_EQ(Visible(view), (Numbers{0}));
}

TEST_F(RowsTest, BoundDeleteRow_ComparesTheEntriesWithTheVisiblePosition) {
    AddNumbers(m_rows, 0, 4);
    DbRows view(nullptr, &m_descr);
    Order order = {3, 0, 2};
    view.Bind(&m_rows, order);
    view.DeleteRow(0);
    // Storage 3 is deleted. The entry 0 disappears from the view's order 3, 0, 2 and the others are lowered;
    // likewise in the table's order 0, 1, 2, 3.
    EXPECT_EQ(Visible(view), (Numbers{2, 1}));
    EXPECT_EQ(Visible(m_rows), (Numbers{0, 1, 2}));
}

TEST_F(RowsTest, BoundDeleteRow_PositionThatIsNoEntry_OnlyLowersTheOthers) {
    AddNumbers(m_rows, 0, 6);
    DbRows view(nullptr, &m_descr);
    Order order = {5, 4};
    view.Bind(&m_rows, order);
    view.DeleteRow(1);
    // Storage 4 is deleted; the entries 5 and 4 are lowered to 4 and 3, and no entry is 1.
    EXPECT_EQ(view.GetRowsCount(), 2U);
    EXPECT_EQ(Visible(view), (Numbers{5, 3}));
    EXPECT_EQ(Visible(m_rows), (Numbers{0, 1, 2, 3, 5}));
}

TEST_F(RowsTest, BoundDeleteRow_EntryStandsTwice_RemovesBoth) {
    AddNumbers(m_rows, 0, 2);
    DbRows view(nullptr, &m_descr);
    Order order = {0, 0, 1};
    view.Bind(&m_rows, order);
    view.DeleteRow(0);
    EXPECT_EQ(Visible(view), (Numbers{1}));
    EXPECT_EQ(Visible(m_rows), (Numbers{1}));
}

TEST_F(RowsTest, BoundDeleteRow_StampsBoth) {
    AddNumbers(m_rows, 0, 2);
    DbRows view(nullptr, &m_descr);
    Order order = {1};
    view.Bind(&m_rows, order);
    m_rows.Sync();
    view.Sync();
    view.DeleteRow(0);
    EXPECT_TRUE(m_rows.IsChanged());
    EXPECT_TRUE(view.IsChanged());
}

TEST_F(RowsTest, DeleteRowOfTheRowsBoundTo_LeavesTheViewsEntries) {
    AddNumbers(m_rows, 0, 3);
    DbRows view(nullptr, &m_descr);
    Order order = {2, 0};
    view.Bind(&m_rows, order);
    m_rows.DeleteRow(0);
    EXPECT_EQ(view.GetRowsCount(), 2U);
    EXPECT_EQ(Visible(view), (Numbers{NoRow, 1})) << "the entries now point at other rows, or at none";
}

TEST_F(RowsTest, Bound_SourceDiesFirst_TheRowsLiveOn) {
    auto source = std::make_unique<DbRows>(nullptr, &m_descr);
    AddNumbers(*source, 0, 3);
    source->GetRow(1)->SetValue("t", CString("text that stands on the heap"));
    DbRows view(nullptr, &m_descr);
    Order order = {1, 0};
    view.Bind(source.get(), order);
    source.reset();
    EXPECT_EQ(Visible(view), (Numbers{1, 0}));
    EXPECT_EQ(PrintedText((*view.GetRow(0))["t"]), "text that stands on the heap");
    EXPECT_TRUE(view.IsBinded());
    AddNumbers(view, 9, 1);
    view.DeleteRow(0);
    view.GetRow(0)->SetChanged();
    EXPECT_EQ(view.GetRowsCount(), 2U);
}

TEST_F(RowsTest, Bound_ViewDiesFirst_TheSourceKeepsItsRows) {
    AddNumbers(m_rows, 0, 2);
    {
        DbRows view(nullptr, &m_descr);
        Order order = {1};
        view.Bind(&m_rows, order);
        AddNumbers(view, 2, 1);
    }
    EXPECT_EQ(Visible(m_rows), (Numbers{0, 1, 2}));
    m_rows.GetRow(2)->SetChanged();
    EXPECT_TRUE(m_rows.IsChanged());
}

TEST_F(RowsTest, Bound_SourceBindsElsewhere_ViewKeepsTheOldRows) {
    AddNumbers(m_rows, 0, 2);
    DbRows others(nullptr, &m_descr);
    AddNumbers(others, 50, 3);
    DbRows view(nullptr, &m_descr);
    Order both = {0, 1};
    view.Bind(&m_rows, both);
    Order all = {0, 1, 2};
    m_rows.Bind(&others, all);
    EXPECT_EQ(Visible(view), (Numbers{0, 1}));
    EXPECT_EQ(Visible(m_rows), (Numbers{50, 51, 52}));
    AddNumbers(view, 7, 1);
    view.DeleteRow(0);
    EXPECT_EQ(Visible(others), (Numbers{50, 51, 52}));
    EXPECT_EQ(view.GetRowsCount(), 2U);
}

TEST_F(RowsTest, Bound_ToEachOther_DieQuietly) {
    auto first = std::make_unique<DbRows>(nullptr, &m_descr);
    auto second = std::make_unique<DbRows>(nullptr, &m_descr);
    AddNumbers(*first, 0, 2);
    AddNumbers(*second, 10, 2);
    Order order = {1, 0};
    first->Bind(second.get(), order);
    second->Bind(first.get(), order);
    EXPECT_EQ(Visible(*first), (Numbers{11, 10}));
    AddNumbers(*first, 20, 1);
    EXPECT_EQ(second->GetRowsCount(), 3U);
    first->DeleteRow(0);
    second->DeleteRow(0);
    first.reset();
    second->AddRow(true);
    second.reset();
}

TEST_F(RowsTest, Bound_ThroughAnotherView_SharesTheStorage) {
    AddNumbers(m_rows, 0, 3);
    DbRows middle(nullptr, &m_descr);
    Order two = {2, 1};
    middle.Bind(&m_rows, two);
    DbRows upper(nullptr, &m_descr);
    Order storage = {0};
    upper.Bind(&middle, storage);
    EXPECT_EQ(Visible(upper), (Numbers{0})) << "the order counts storage positions";
    AddNumbers(upper, 9, 1);
    EXPECT_EQ(Visible(middle), (Numbers{2, 1, 9}));
    EXPECT_EQ(Visible(m_rows), (Numbers{0, 1, 2})) << "only the rows bound to see the new one";
}

TEST_F(RowsTest, Bound_MiddleViewDies_UpperWorksOn) {
    AddNumbers(m_rows, 0, 3);
    auto middle = std::make_unique<DbRows>(nullptr, &m_descr);
    Order two = {2, 1};
    middle->Bind(&m_rows, two);
    DbRows upper(nullptr, &m_descr);
    Order storage = {0};
    upper.Bind(middle.get(), storage);
    AddNumbers(upper, 9, 1);
    middle.reset();
    EXPECT_EQ(Visible(upper), (Numbers{0, 9}));
    m_rows.SetChanged();
    upper.DeleteRow(1);
    AddNumbers(upper, 10, 1);
    EXPECT_EQ(upper.GetLastRow()->GetDescr(), &m_descr);
}

TEST_F(RowsTest, Bound_SourceAndItsStructureDie_TouchesNothingFreed) {
    auto descr = std::make_unique<DbTableDescr>(nullptr);
    descr->CreateField("n", false, DbFieldDescr::Long);
    auto source = std::make_unique<DbRows>(nullptr, descr.get());
    AddNumbers(*source, 0, 2);
    DbRows view(nullptr, &m_descr);
    Order order = {1, 0};
    view.Bind(source.get(), order);
    source.reset();
    descr.reset();
    EXPECT_EQ(Visible(view), (Numbers{1, 0}));
    DbTableRow& row = *view.GetRow(0);
    row["n"].SetValue(Long(5));
    row.SetValue("n", CString("6"));
    row.Evaluate();
    row.Load(ElementOf("<row n='7'/>").Get());
    SaveTarget target;
    row.Save(target.Automation(), target.Element());
    EXPECT_EQ(view.GetRowsCount(), 2U);
}

TEST_F(RowsTest, RowsUseAfterTheDescriptorDied_TouchesNothingFreed) {
    auto descr = std::make_unique<DbTableDescr>(nullptr);
    descr->CreateField("n", false, DbFieldDescr::Long);
    DbRows rows(nullptr, descr.get());
    AddNumbers(rows, 0, 1);
    descr.reset();
    rows.AddRow(true);
    rows.Update(0, true);
    rows.Update(0, false);
    rows.DeleteRow(0);
    EXPECT_EQ(rows.GetRowsCount(), 1U);
}

TEST_F(RowsTest, Update_WithoutRows_StampsTheRows) {
    const long before = m_rows.GetChangeId();
    m_rows.Update(0, true);
    EXPECT_GT(m_rows.GetChangeId(), before);
}

TEST_F(RowsTest, GetStoragePosition_OfAVisiblePosition) {
    AddNumbers(m_rows, 0, 3);
    DbRows view(nullptr, &m_descr);
    Order order = {2, 0};
    view.Bind(&m_rows, order);
    EXPECT_EQ(view.GetStoragePosition(0), 2U);
    EXPECT_EQ(view.GetStoragePosition(1), 0U);
    EXPECT_EQ(view.GetStoragePosition(7), 7U) << "where there is none";
    EXPECT_EQ(m_rows.GetStoragePosition(1), 1U);
}

TEST_F(RowsTest, GetLender_IsWhoeverSharesTheStorage) {
    DbRows others(nullptr, &m_descr);
    Order order;
    auto source = std::make_unique<DbRows>(nullptr, &m_descr);
    DbRows view(nullptr, &m_descr);
    EXPECT_EQ(view.GetLender(), &view);
    view.Bind(source.get(), order);
    EXPECT_EQ(view.GetLender(), source.get());
    EXPECT_EQ(source->GetLender(), source.get());
    source->Bind(&others, order);
    EXPECT_EQ(view.GetLender(), &view) << "which went on to other rows";
    source.reset();
    EXPECT_EQ(view.GetLender(), &view);
}

TEST_F(RowsTest, Update_BoundRowsOfAnotherStructure_LeaveTheRowsAlone) {
    AddNumbers(m_rows, 0, 2);
    DbTableDescr other(nullptr);
    other.CreateField("only", false, DbFieldDescr::Text);
    DbRows view(nullptr, &other);
    Order order = {0};
    view.Bind(&m_rows, order);
    view.Update(0, false);
    EXPECT_EQ(m_rows.GetRow(0)->size(), 2U);
}

TEST_F(RowsTest, Parent_DiesBeforeTheRows_RowsWorkOn) {
    auto parent = std::make_unique<DbItem>();
    DbRows rows(parent.get(), &m_descr);
    AddNumbers(rows, 0, 1);
    parent.reset();
    AddNumbers(rows, 1, 1);
    rows.DeleteRow(0);
    EXPECT_EQ(Visible(rows), (Numbers{1}));
}

TEST_F(RowsTest, LifeToken_RowIsDeleted_NamesNothing) {
    AddNumbers(m_rows, 0, 3);
    const auto first = m_rows.LifeTokenOf(0);
    const auto second = m_rows.LifeTokenOf(1);
    EXPECT_EQ(*first, m_rows.GetRow(0));
    EXPECT_EQ(m_rows.LifeTokenOf(0), first);
    m_rows.DeleteRow(0);
    EXPECT_EQ(*first, nullptr);
    // The row moved up; its token goes with it.
    EXPECT_EQ(*second, m_rows.GetRow(0));
    // A new row at the same address is another row.
    AddNumbers(m_rows, 3, 1);
    EXPECT_EQ(*first, nullptr);
    EXPECT_EQ(*m_rows.LifeTokenOf(2), m_rows.GetRow(2));
}

TEST_F(RowsTest, LifeToken_WhereThereIsNoRow_IsNull) {
    EXPECT_EQ(m_rows.LifeTokenOf(0), nullptr);
    AddNumbers(m_rows, 0, 1);
    EXPECT_EQ(m_rows.LifeTokenOf(-1), nullptr);
    EXPECT_EQ(m_rows.LifeTokenOf(1), nullptr);
}

TEST_F(RowsTest, LifeToken_OfBoundRows_LivesAsLongAsSomebodySharesTheStorage) {
    auto lender = std::make_unique<DbRows>(nullptr, &m_descr);
    AddNumbers(*lender, 0, 2);
    DbRows view(nullptr, &m_descr);
    Order order = {1};
    view.Bind(lender.get(), order);
    const auto row = view.LifeTokenOf(0);
    EXPECT_EQ(row, lender->LifeTokenOf(1));
    lender.reset();
    EXPECT_EQ(*row, view.GetRow(0));
    view.DeleteRow(0);
    EXPECT_EQ(*row, nullptr);
}

TEST_F(RowsTest, LifeToken_RowsAreDestroyed_NamesNothing) {
    auto rows = std::make_unique<DbRows>(nullptr, &m_descr);
    AddNumbers(*rows, 0, 1);
    const auto row = rows->LifeTokenOf(0);
    EXPECT_EQ(row.use_count(), 1);
    rows.reset();
    EXPECT_EQ(*row, nullptr);
}

TEST_F(RowsTest, FieldChange_TablesThatShareStructureAndRows_AddsOneCell) {
    DbDatabase database;
    DbTableInfo* const table = database.CreateTable("T", DbTableInfo::Table);
    table->GetDescr()->CreateField("n", false, DbFieldDescr::Long);
    table->GetData()->AddRows(2);
    DbTableInfo second("U", DbTableInfo::Table, 0, "", table->GetDescr(), nullptr, nullptr);
    DbTableInfo* const shared = database.CreateTable(&second);
    ASSERT_NE(shared, nullptr);
    Order order = {1, 0};
    shared->GetData()->Bind(table->GetData()->GetRows(), order);
    table->GetDescr()->CreateField("m", false, DbFieldDescr::Long);
    EXPECT_EQ((*table->GetData())[0].size(), 2U);
    table->GetDescr()->DeleteField("m");
    EXPECT_EQ((*table->GetData())[0].size(), 1U);
}

}  // namespace
