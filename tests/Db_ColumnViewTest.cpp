#include "Quillet/Db_ColumnView.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "Quillet/IQuillet.h"
#include "Quillet/rows/RowsView.h"
#include "support/OutOfMemory.h"
#include "support/RowHelpers.h"

namespace quillet::test {
namespace {

using State = DbColumnView::State;
using Type = DbColumnView::Type;

// A value and whether a null has the flag.
std::string Show(const CComVariant& value, bool isFlagged) {
    return ShowCell(CellView::Variant(value, isFlagged && value.vt == VT_NULL));
}

// What the rows store now, one line for each.
std::string ShowRows(DbRows& rows, std::size_t fields) {
    const RowsView view(rows);
    std::string text;
    for (uint64 i = 0; i < view.Count(); ++i) {
        for (std::size_t field = 0; field < fields; ++field) {
            const CellView cell =
                view.HasRow(i) ? view.Store().CellInSlot<ColumnStore::Reading::Stored>(view.SlotOf(i), field)
                               : CellView();
            CComVariant value;
            cell.CopyTo(value);
            text += Show(value, cell.IsNull()) + " ";
        }
        text += "\n";
    }
    return text;
}

// The value of a cell by the span of its column's type.
CComVariant SpanValue(const DbColumnView::Block& block, Type type, std::size_t column, std::size_t row) {
    CComVariant value;
    switch (type) {
        case Type::Double:
            return CComVariant(block.Doubles(column)[row]);
        case Type::Float:
            return CComVariant(block.Floats(column)[row]);
        case Type::Long:
            return Long(block.Longs(column)[row]);
        case Type::Short:
            return Short(block.Shorts(column)[row]);
        case Type::Boolean:
            return BooleanBits(block.Booleans(column)[row]);
        case Type::Text:
            return CComVariant(std::string(block.TextsOf(column)[row]));
        case Type::Other:
            break;
    }
    return value;
}

bool IsMissing(const DbColumnView::Block& block, std::size_t column, std::size_t row) {
    const std::span<const std::uint64_t> bits = block.Missing(column);
    return !bits.empty() && (bits[row / 64] >> (row % 64) & 1) != 0;
}

std::string ShowBlock(const DbColumnView& view, const DbColumnView::Block& block, std::size_t row) {
    std::string text;
    for (std::size_t column = 0; column < view.Columns(); ++column) {
        const State state = block.StateOf(column, row);
        const CComVariant value = block.Value(column, row);
        EXPECT_EQ(IsMissing(block, column, row), state != State::Value);
        const CComVariant plain = SpanValue(block, view.TypeOf(column), column, row);
        if (state == State::Value) {
            EXPECT_EQ(Show(plain, false), Show(value, false));
        } else if (view.TypeOf(column) != Type::Other) {
            EXPECT_TRUE(plain.vt == VT_BSTR ? plain.Text().empty() : plain.llVal == 0)
                << "of a missing value";
        }
        text += Show(value, state == State::FlaggedNull) + " ";
    }
    return text + "\n";
}

std::string ShowView(const DbColumnView& view) {
    std::string text;
    uint64 next = 0;
    for (const DbColumnView::Block& block : view.Blocks()) {
        EXPECT_EQ(block.FirstRow(), next);
        EXPECT_LE(block.Rows(), DbColumnView::BlockRows);
        next += block.Rows();
        for (std::size_t row = 0; row < block.Rows(); ++row) {
            text += ShowBlock(view, block, row);
        }
    }
    EXPECT_EQ(view.Rows(), next);
    return text;
}

class Subject {
public:
    explicit Subject(Chance& chance) : m_chance(chance), m_fillings(AllFillings()) {
        for (const DbFieldDescr::eFieldType type :
             {DbFieldDescr::Double, DbFieldDescr::Text, DbFieldDescr::Long}) {
            AddField(type);
        }
    }

    void Step() {
        const uint64 count = m_rows.GetRowsCount();
        const uint64 any = count == 0 ? 0 : m_chance.Below(count);
        switch (m_chance.Below(12)) {
            case 0:
            case 1:
                AddFilledRows(m_chance.Below(700));
                break;
            case 2:
                m_rows.AddRows(m_chance.Below(300), true);
                break;
            case 3:
                for (unsigned left = m_chance.Below(200); left > 0 && m_rows.GetRowsCount() > 0; --left) {
                    m_rows.DeleteRow(m_rows.GetRowsCount() - 1);
                }
                break;
            case 4:
                m_rows.DeleteRow(any);
                break;
            case 5:
                if (count > 0 && m_chance.Below(4) == 0) {
                    m_rows.GetRow(static_cast<int>(any))
                        ->GetField(0)
                        .SetValue(m_chance.Of(m_fillings).m_draw(m_chance));
                }
                break;
            case 6:
            case 7:
                if (count > 0) {
                    RowsView(m_rows).SetCell(any, m_chance.Below(m_descr.size()), CellView::Double(0.5));
                    RowsView(m_rows).SetCell(any, m_chance.Below(m_descr.size()),
                                             CellView::Null(any % 2 == 0));
                }
                break;
            case 8:
                ChangeFields();
                break;
            case 9:
                while (m_chance.Below(8) == 0 && m_rows.GetRowsCount() > 0) {
                    m_rows.DeleteRow(0);
                }
                break;
            case 10:
                while (m_chance.Below(6) == 0 && m_rows.GetRowsCount() > 0) {
                    while (m_rows.GetRowsCount() > 0) {
                        m_rows.DeleteRow(m_rows.GetRowsCount() - 1);
                    }
                }
                break;
            default:
                Bind();
                break;
        }
    }

    DbRows& Rows() { return m_rows; }
    DbRows& Bound() { return m_bound; }
    std::size_t Fields() const { return m_descr.size(); }

private:
    void AddField(DbFieldDescr::eFieldType type) {
        m_descr.CreateField(CString("f" + std::to_string(m_fields++)), false, type);
        m_rows.Update(m_descr.size() - 1, true);
    }

    void ChangeFields() {
        if (m_descr.size() > 1 && m_chance.Below(2) == 0) {
            const unsigned gone = m_chance.Below(m_descr.size());
            m_descr.DeleteField(static_cast<int>(gone));
            m_rows.Update(gone, false);
            return;
        }
        constexpr DbFieldDescr::eFieldType Types[] = {
            DbFieldDescr::Double,  DbFieldDescr::Text,    DbFieldDescr::Long,  DbFieldDescr::Float,
            DbFieldDescr::Boolean, DbFieldDescr::Integer, DbFieldDescr::Binary};
        AddField(m_chance.Of(Types));
    }

    void AddFilledRows(unsigned count) {
        RowsView view(m_rows);
        const uint64 first = m_rows.AddRows(count, false);
        const bool hasOdd = m_chance.Below(8) == 0;
        const unsigned skipped = m_chance.Below(9);
        for (uint64 i = first; i < first + count; ++i) {
            for (std::size_t field = 0; field < m_descr.size(); ++field) {
                if (skipped < 4 && m_chance.Below(skipped + 2) == 0) {
                    continue;
                }
                CComVariant value = m_chance.Below(2) == 0 ? CComVariant(static_cast<double>(i))
                                                           : CComVariant("text " + std::to_string(i));
                if (hasOdd && m_chance.Below(40) == 0) {
                    value = m_chance.Of(m_fillings).m_draw(m_chance);
                } else if (FAILED(value.ChangeType(m_descr.GetField(static_cast<int>(field)).GetType()))) {
                    value.Clear();
                }
                view.SetCell(i, field, CellView::Variant(value));
            }
        }
    }

    void Bind() {
        std::vector<uint64> order;
        const unsigned step = m_chance.Below(3) + 1;
        for (uint64 i = m_chance.Below(3); i < m_rows.GetRowsCount() + 1; i += step) {
            order.push_back(i);
        }
        if (m_chance.Below(2) == 0) {
            std::reverse(order.begin(), order.end());
        }
        m_bound.Bind(&m_rows, order);
    }

    Chance& m_chance;
    std::vector<Filling> m_fillings;
    unsigned m_fields = 0;
    DbTableDescr m_descr{nullptr};
    DbRows m_rows{nullptr, &m_descr};
    DbRows m_bound{nullptr, &m_descr};
};

struct Taken {
    DbColumnView m_view;
    std::string m_seen;
};

class ColumnViews : public testing::TestWithParam<unsigned> {};

TEST_P(ColumnViews, TakenBetweenRandomChanges_ShowTheRowsAndKeepWhatTheyShow) {
    Chance chance(GetParam());
    auto subject = std::make_unique<Subject>(chance);
    std::deque<Taken> taken;
    for (int step = 0; step < 60; ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        for (DbRows* const rows : {&subject->Rows(), &subject->Bound()}) {
            const DbColumnView view(*rows);
            ASSERT_EQ(view.Columns(), subject->Fields());
            const std::string seen = ShowRows(*rows, subject->Fields());
            ASSERT_EQ(ShowView(view), seen);
            if (chance.Below(3) == 0) {
                taken.push_back({view, seen});
            }
        }
        subject->Step();
        for (const Taken& one : taken) {
            ASSERT_EQ(ShowView(one.m_view), one.m_seen);
        }
        while (taken.size() > 3) {
            taken.pop_front();
        }
    }
    subject.reset();
    for (const Taken& one : taken) {
        ASSERT_EQ(ShowView(one.m_view), one.m_seen) << "after the table is gone";
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ColumnViews, testing::Range(1U, 13U));

// A table with a number and a text in so many rows, none of which was made.
class ColumnViewTest : public testing::Test {
protected:
    explicit ColumnViewTest(uint64 rows = 10000) {
        m_descr.CreateField("number", false, DbFieldDescr::Double);
        m_descr.CreateField("text", false, DbFieldDescr::Text);
        m_rows.AddRows(rows, false);
        RowsView view(m_rows);
        for (uint64 i = 0; i < rows; ++i) {
            view.SetCell(i, 0, CellView::Double(static_cast<double>(i)));
            view.SetCell(i, 1, CellView::Text("text " + std::to_string(i)));
        }
    }

    DbTableDescr m_descr{nullptr};
    DbRows m_rows{nullptr, &m_descr};
};

TEST_F(ColumnViewTest, Blocks_OfRowsThatNobodyAskedFor_ShareTheirMemory) {
    const DbColumnView first(m_rows);
    const DbColumnView second(m_rows);
    ASSERT_EQ(first.Blocks().size(), 3U);
    // The last block can take more rows.
    for (std::size_t i = 0; i + 1 < first.Blocks().size(); ++i) {
        EXPECT_EQ(first.Blocks()[i].Doubles(0).data(), second.Blocks()[i].Doubles(0).data());
        EXPECT_EQ(first.Blocks()[i].TextsOf(1).Bytes(), second.Blocks()[i].TextsOf(1).Bytes());
    }
}

TEST_F(ColumnViewTest, Values_OfARowThatWasMade_AreCopied) {
    const DbColumnView before(m_rows);
    m_rows.GetRow(5000)->GetField(0).SetValue(CComVariant(-1.0));
    const DbColumnView after(m_rows);
    EXPECT_EQ(before.Blocks()[1].Doubles(0)[5000 - 4096], 5000);
    EXPECT_EQ(after.Blocks()[1].Doubles(0)[5000 - 4096], -1);
    EXPECT_EQ(before.Blocks()[0].Doubles(0).data(), after.Blocks()[0].Doubles(0).data());
}

TEST_F(ColumnViewTest, Missing_WhereAllCellsHoldValues_HasNoBits) {
    const DbColumnView view(m_rows);
    EXPECT_TRUE(view.Blocks()[0].Missing(0).empty());
    EXPECT_EQ(view.Blocks()[0].StateOf(0, 0), State::Value);
}

TEST_F(ColumnViewTest, Columns_HaveNamesAndTypesOfTheirFields) {
    const DbColumnView view(m_rows);
    m_descr.DeleteField(0);
    ASSERT_EQ(view.Columns(), 2U);
    EXPECT_EQ(view.NameOf(0), CString("number"));
    EXPECT_EQ(view.TypeOf(0), Type::Double);
    EXPECT_EQ(view.NameOf(1), CString("text"));
    EXPECT_EQ(view.TypeOf(1), Type::Text);
}

TEST_F(ColumnViewTest, WhatLiesBeyondIt_IsEmpty) {
    const DbColumnView view(m_rows);
    const DbColumnView::Block& block = view.Blocks()[0];
    EXPECT_EQ(view.NameOf(2), CString());
    EXPECT_EQ(view.TypeOf(2), Type::Other);
    EXPECT_TRUE(block.Doubles(1).empty()) << "a column of texts";
    EXPECT_TRUE(block.Doubles(2).empty());
    EXPECT_EQ(block.TextsOf(0).size(), 0U) << "a column of numbers";
    EXPECT_EQ(block.TextsOf(1)[block.Rows()], "");
    EXPECT_TRUE(block.Missing(2).empty());
    EXPECT_EQ(block.StateOf(0, block.Rows()), State::Empty);
    EXPECT_EQ(block.Value(2, 0).vt, VT_EMPTY);
    EXPECT_EQ(block.Value(0, block.Rows()).vt, VT_EMPTY);
    EXPECT_EQ(DbColumnView().Rows(), 0U);
    EXPECT_EQ(DbColumnView().Columns(), 0U);
    EXPECT_TRUE(DbColumnView().Blocks().empty());
}

TEST_F(ColumnViewTest, AFlagBesideAValue_IsNoPartOfTheView) {
    m_rows.GetRow(0)->GetField(0).SetNull(true);
    const DbColumnView view(m_rows);
    EXPECT_EQ(view.Blocks()[0].StateOf(0, 0), State::Value);
}

TEST(ColumnViewOfATable, ReadsThePendingTextAndOutlivesTheDatabase) {
    DbColumnView view;
    {
        DbDatabase database;
        DbTableInfo* const info = database.CreateTable("T", DbTableInfo::Table);
        info->GetDescr()->CreateField("n", false, DbFieldDescr::Long);
        info->GetData()->SetXmlSource("<table name=\"T\"><row n=\"7\" /><row n=\"-8\" /></table>");
        view = info->GetData()->GetColumns();
    }
    ASSERT_EQ(view.Rows(), 2U);
    EXPECT_EQ(view.Blocks()[0].Longs(0)[0], 7);
    EXPECT_EQ(view.Blocks()[0].Longs(0)[1], -8);
}

// Few rows, so that each of the allocations can fail in turn.
class SmallColumnView : public ColumnViewTest {
protected:
    SmallColumnView() : ColumnViewTest(300) { m_rows.GetRow(7)->GetField(0).SetValue(CComVariant("seven")); }
};

TEST_F(SmallColumnView, OutOfMemory_IsNotTakenAndTheRowsStay) {
    const std::string seen = ShowRows(m_rows, 2);
    SweepAttempts([&](std::size_t failing, Failing which) {
        const Attempt attempt = Try(failing, which, [&] { const DbColumnView view(m_rows); });
        EXPECT_NE(attempt.m_ranOut, attempt.m_isDone);
        return attempt;
    });
    EXPECT_EQ(ShowRows(m_rows, 2), seen);
}

TEST(ColumnViewOutOfMemory, ChangingWhatAViewKeeps_HappensWholeOrNotAtAllAndLeavesTheView) {
    SweepAttempts([](std::size_t failing, Failing which) {
        DbTableDescr descr(nullptr);
        descr.CreateField("number", false, DbFieldDescr::Long);
        DbRows rows(nullptr, &descr);
        rows.AddRows(ColumnBlock::MostSlots, false);
        RowsView cells(rows);
        for (uint64 i = 0; i < cells.Count(); ++i) {
            cells.SetCell(i, 0, CellView::Long(static_cast<LONG>(i)));
        }
        const DbColumnView view(rows);
        const Attempt attempt = Try(failing, which, [&] { cells.SetCell(3, 0, CellView::Long(-3)); });
        EXPECT_EQ(cells.Cell(3, 0).Plain().AsLong(), attempt.m_isDone ? -3 : 3);
        EXPECT_EQ(view.Blocks()[0].Longs(0)[3], 3);
        return attempt;
    });
}

}  // namespace
}  // namespace quillet::test
