// Rows that are made when somebody asks for them behave like rows that are all made at once.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Quillet/rows/ColumnStore.h"
#include "Quillet/rows/NewCells.h"
#include "Quillet/rows/RowsView.h"
#include "support/RowHelpers.h"

namespace quillet::test {
namespace {

std::string ShowValues(DbRows& rows) {
    const RowsView view(rows);
    std::string text;
    for (uint64 i = 0; i < view.Count(); ++i) {
        if (!view.HasRow(i)) {
            text += "no row\n";
            continue;
        }
        for (std::size_t field = 0; field < view.Width(i); ++field) {
            text += ShowCell(view.Cell(i, field)) + " ";
        }
        text += "\n";
    }
    return text;
}

// The items above the rows, without making any.
std::string ShowItems(DbRows& rows) {
    return std::to_string(rows.GetChangeId()) + (rows.IsChanged() ? " changed " : " ") +
           std::to_string(rows.GetSize()) + " " + std::to_string(rows.CalcSize()) + "\n";
}

// Makes every row and shows what only objects tell.
std::string ShowObjects(DbRows& rows, const void* parent, const void* boundParent) {
    std::string text;
    for (uint64 i = 0; i < rows.GetRowsCount(); ++i) {
        DbTableRow* const row = rows.GetRow(static_cast<int>(i));
        if (row == nullptr) {
            continue;
        }
        const DbItem* const above = row->GetParent();
        text += above == parent ? "own " : above == boundParent ? "bound " : "other ";
        text += std::to_string(row->GetChangeId()) + (row->IsChanged() ? "*" : "");
        for (DbFieldValue* const cell : *row) {
            text += " " + std::to_string(cell->GetIndex()) + "/" + std::to_string(cell->GetChangeId()) +
                    (cell->IsChanged() ? "*" : "") + (cell->GetParent() == row ? "" : "!");
        }
        text += "\n";
    }
    return text;
}

// A table without a database, and rows bound to it.
struct Table {
    explicit Table(bool makesAll) : m_makesAll(makesAll) {
        m_descr.CreateField("d", false, DbFieldDescr::Double);
        m_descr.CreateField("t", false, DbFieldDescr::Text);
        m_descr.CreateField("n", false, DbFieldDescr::Long);
    }

    DbTableRow* Row(unsigned choice) {
        const uint64 count = m_rows.GetRowsCount();
        return count == 0 ? nullptr : m_rows.GetRow(static_cast<int>(choice % count));
    }

    void MakeAll() {
        for (uint64 i = 0; m_makesAll && i < m_rows.GetRowsCount(); ++i) {
            m_rows.GetRow(static_cast<int>(i));
        }
    }

    bool m_makesAll;
    DbTableDescr m_descr{nullptr};
    DbRows m_rows{nullptr, &m_descr};
    DbRows m_bound{nullptr, &m_descr};
};

using Step = std::function<void(Table&)>;

CComVariant AnyValue(Chance& chance) {
    static const std::vector<Filling> fillings = AllFillings();
    return chance.Of(fillings).m_draw(chance);
}

CComVariant UsualValue(Chance& chance, unsigned field) {
    switch (field % 3) {
        case 0:
            return CComVariant(chance.Below(1000) / 8.0);
        case 1:
            return CComVariant(chance.Text({'a', 'B', 0xE9, 0x4E2D, ' '}, 8));
        default:
            return Long(static_cast<LONG>(chance.Below(100)));
    }
}

Step FillLastRow(Chance& chance) {
    std::vector<CComVariant> values;
    for (unsigned field = 0; field < 3; ++field) {
        values.push_back(chance.Below(6) == 0 ? AnyValue(chance) : UsualValue(chance, field));
    }
    return [values](Table& table) {
        RowsView view(table.m_rows);
        table.m_rows.AddRow(false);
        for (std::size_t field = 0; field < values.size(); ++field) {
            view.SetCell(view.Count() - 1, field, CellView::Variant(values[field]));
        }
    };
}

Step ChangeFields(Chance& chance) {
    const unsigned place = chance.Below(4);
    if (chance.Below(2) == 0) {
        return [place](Table& table) {
            if (table.m_descr.size() > 1) {
                const int field = static_cast<int>(place % table.m_descr.size());
                table.m_descr.DeleteField(field);
                table.m_rows.Update(static_cast<uint64>(field), false);
            }
        };
    }
    constexpr DbFieldDescr::eFieldType Types[] = {DbFieldDescr::Double, DbFieldDescr::Text,
                                                  DbFieldDescr::Long, DbFieldDescr::Binary,
                                                  DbFieldDescr::Boolean};
    const DbFieldDescr::eFieldType type = chance.Of(Types);
    const std::string name = "f" + std::to_string(chance.Below(1U << 30));
    return [type, name](Table& table) {
        if (table.m_descr.CreateField(CString(name), false, type)) {
            table.m_rows.Update(table.m_descr.size() - 1, true);
        }
    };
}

Step ChangeARow(Chance& chance) {
    const unsigned which = chance.Below(1000);
    const unsigned field = chance.Below(3);
    const CComVariant value = AnyValue(chance);
    switch (chance.Below(6)) {
        case 0:
            return [=](Table& table) {
                if (DbTableRow* const row = table.Row(which)) {
                    row->GetField(field).SetValue(value);
                }
            };
        case 1:
            return [=](Table& table) {
                if (DbTableRow* const row = table.Row(which)) {
                    row->GetField(field).GetVariant() = value;
                    row->GetField(field).SetNull(true);
                }
            };
        case 2:
            return [=](Table& table) {
                DbTableRow* const row = table.Row(which);
                if (row != nullptr && field < row->size()) {
                    auto* const cell = new CountedCell(row);
                    cell->GetVariant() = value;
                    delete row->at(field);
                    row->SetFieldValuePtr(field, cell);
                }
            };
        case 3:
            return [=](Table& table) {
                if (DbTableRow* const row = table.Row(which)) {
                    row->push_back(new DbFieldValue(row, 7));
                }
            };
        case 4:
            return [=](Table& table) {
                if (DbTableRow* const row = table.Row(which)) {
                    row->SetChanged();
                }
            };
        default:
            return [=](Table& table) {
                DbTableRow* const row = table.Row(which);
                if (row != nullptr && !row->empty()) {
                    row->Sync();
                    row->back()->SetChanged();
                }
            };
    }
}

Step ChangeBoundRows(Chance& chance) {
    const unsigned which = chance.Below(1000);
    switch (chance.Below(4)) {
        case 0:
            return [which](Table& table) {
                std::vector<uint64> order;
                for (uint64 i = which % 3; i < table.m_rows.GetRowsCount(); i += 2) {
                    order.push_back(i);
                }
                table.m_bound.Bind(&table.m_rows, order);
            };
        case 1:
            return [](Table& table) { table.m_bound.AddRow(true); };
        case 2:
            return [which](Table& table) {
                const uint64 count = table.m_bound.GetRowsCount();
                table.m_bound.DeleteRow(count == 0 ? 0 : which % count);
            };
        default:
            return [which](Table& table) {
                const uint64 count = table.m_bound.GetRowsCount();
                DbTableRow* const row =
                    count == 0 ? nullptr : table.m_bound.GetRow(static_cast<int>(which % count));
                if (row != nullptr && !row->empty()) {
                    row->front()->SetValue(Long(1));
                }
            };
    }
}

Step AnyStep(Chance& chance) {
    const unsigned which = chance.Below(1000);
    switch (chance.Below(16)) {
        case 0:
        case 1:
            return [](Table& table) { table.m_rows.AddRow(true); };
        case 2:
            return [which](Table& table) { table.m_rows.AddRows(which % 40, which % 2 == 0); };
        case 3:
        case 4:
        case 5:
            return FillLastRow(chance);
        case 6:
        case 7:
        case 8:
            return [which](Table& table) {
                const uint64 count = table.m_rows.GetRowsCount();
                table.m_rows.DeleteRow(count == 0 ? 0 : which % count);
            };
        case 9:
            return [which](Table& table) { table.Row(which); };
        case 10:
            return [](Table& table) { table.m_rows.Sync(); };
        case 11:
            return [which](Table&) { DbItem::m_changeCounter -= static_cast<std::int32_t>(which % 50); };
        case 12:
            return ChangeFields(chance);
        case 13:
            return ChangeBoundRows(chance);
        default:
            return ChangeARow(chance);
    }
}

class RowsOnDemand : public testing::TestWithParam<unsigned> {
protected:
    void SetUp() override { m_counter = DbItem::m_changeCounter; }
    void TearDown() override { DbItem::m_changeCounter = std::max(m_counter, DbItem::m_changeCounter); }

    // Both tables see the same stamps.
    static void Do(const Step& step, Table& lazy, Table& made) {
        const std::int32_t counter = DbItem::m_changeCounter;
        step(lazy);
        const std::int32_t after = DbItem::m_changeCounter;
        DbItem::m_changeCounter = counter;
        step(made);
        ASSERT_EQ(DbItem::m_changeCounter, after);
        made.MakeAll();
    }

    std::int32_t m_counter = 0;
};

TEST_P(RowsOnDemand, RandomSteps_ShowWhatRowsMadeAtOnceShow) {
    Chance chance(GetParam());
    Table lazy(false);
    Table made(true);
    for (int step = 0; step < 400; ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        ASSERT_NO_FATAL_FAILURE(Do(AnyStep(chance), lazy, made));
        ASSERT_EQ(ShowItems(lazy.m_rows), ShowItems(made.m_rows));
        ASSERT_EQ(ShowItems(lazy.m_bound), ShowItems(made.m_bound));
        if (step % 7 == 0) {
            ASSERT_EQ(ShowValues(lazy.m_rows), ShowValues(made.m_rows));
            ASSERT_EQ(ShowValues(lazy.m_bound), ShowValues(made.m_bound));
        }
    }
    ASSERT_EQ(ShowValues(lazy.m_rows), ShowValues(made.m_rows));
    ASSERT_EQ(ShowValues(lazy.m_bound), ShowValues(made.m_bound));
    ASSERT_EQ(ShowObjects(lazy.m_rows, &lazy.m_rows, &lazy.m_bound),
              ShowObjects(made.m_rows, &made.m_rows, &made.m_bound));
    ASSERT_EQ(ShowItems(lazy.m_rows), ShowItems(made.m_rows));
}

INSTANTIATE_TEST_SUITE_P(Seeds, RowsOnDemand, testing::Range(1U, 41U));

TEST(RowsOnDemandMemory, RowsOfSeveralBlocks_KeepTheirPlaces) {
    Table table(false);
    constexpr uint64 Rows = 3 * ColumnBlock::MostSlots + 5;
    table.m_rows.AddRows(Rows, false);
    RowsView view(table.m_rows);
    for (uint64 i = 0; i < Rows; ++i) {
        view.SetCell(i, 2, CellView::Long(static_cast<LONG>(i)));
    }
    for (const uint64 gone : {Rows - 1, uint64{ColumnBlock::MostSlots}, uint64{0}}) {
        table.m_rows.DeleteRow(gone);
    }
    table.m_rows.AddRow(false);
    ASSERT_EQ(view.Count(), Rows - 2);
    EXPECT_EQ(view.Cell(0, 2).AsLong(), 1);
    EXPECT_EQ(view.Cell(ColumnBlock::MostSlots - 2, 2).AsLong(), LONG{ColumnBlock::MostSlots} - 1);
    EXPECT_EQ(view.Cell(ColumnBlock::MostSlots - 1, 2).AsLong(), LONG{ColumnBlock::MostSlots} + 1);
    EXPECT_EQ(view.Cell(Rows - 4, 2).AsLong(), static_cast<LONG>(Rows) - 2);
    EXPECT_EQ(view.Cell(Rows - 3, 2).Type(), VT_EMPTY);
    EXPECT_EQ(view.MadeRow(0), nullptr);
}

TEST(RowsOnDemandMemory, MostRowsDeleted_TheOthersKeepTheirValuesAndObjects) {
    Table table(false);
    constexpr LONG Rows = 2 * LONG{ColumnBlock::MostSlots};
    constexpr LONG Kept = 50;
    table.m_rows.AddRows(uint64{Rows}, false);
    RowsView view(table.m_rows);
    for (LONG i = 0; i < Rows; ++i) {
        const auto position = static_cast<uint64>(i);
        const std::string text = "text " + std::to_string(i);
        view.SetCell(position, 1, CellView::Text(text));
        view.SetCell(position, 2, CellView::Long(i));
    }
    DbTableRow* const made = table.m_rows.GetRow(int{Kept});
    for (LONG i = Rows - 1; i >= 0; --i) {
        if (i % Kept != 0) {
            table.m_rows.DeleteRow(static_cast<uint64>(i));
        }
    }
    ASSERT_EQ(view.Count(), uint64{(Rows + Kept - 1) / Kept});
    EXPECT_EQ(table.m_rows.GetRow(1), made);
    CComVariant scratch;
    for (uint64 i = 0; i < view.Count(); ++i) {
        const LONG number = static_cast<LONG>(i) * Kept;
        ASSERT_EQ(view.Cell(i, 0).Type(), VT_EMPTY);
        ASSERT_EQ(TextOf(view.Cell(i, 1).In(scratch)), "text " + std::to_string(number));
        ASSERT_EQ(view.Cell(i, 2).In(scratch).lVal, number);
    }
}

TEST(RowsOnDemandMemory, RowsThatComeAndGoBesideOnesThatStay_TakeNoMoreAndMore) {
    Table table(false);
    ColumnStore store(table.m_rows, table.m_descr.LifeToken());
    constexpr std::size_t Temporary = 1000;
    for (std::size_t round = 1; round <= 300; ++round) {
        store.Append(Temporary + 1, table.m_rows, table.m_descr.LifeToken(), true);
        for (std::size_t i = 0; i < Temporary; ++i) {
            store.Delete(store.Size() - 2);
        }
        ASSERT_EQ(store.Size(), round);
        ASSERT_LE(store.SlotsInUse(), std::size_t{ColumnBlock::MostSlots} + 64 * round);
    }
}

// A field whose default value is another one each time.
class CountingField : public DbFieldDescr {
public:
    CComVariant& GetVariant() override {
        m_value = test::Long(++m_count);
        return m_value;
    }

private:
    CComVariant m_value;
    LONG m_count = 0;
};

TEST(RowsOnDemandDefaults, OfAHostsField_AreAskedForRowByRow) {
    DbTableDescr descr(nullptr);
    auto* const field = new CountingField;
    field->SetType(VT_I4);
    descr.push_back(field);
    DbRows rows(nullptr, &descr);
    const LONG first = (*rows.GetRow(static_cast<int>(rows.AddRow(true))))[uint64(0)].GetValue().lVal;
    rows.AddRows(2, true);
    EXPECT_EQ((*rows.GetRow(1))[uint64(0)].GetValue().lVal, first + 1);
    EXPECT_EQ((*rows.GetRow(2))[uint64(0)].GetValue().lVal, first + 2);
}

TEST(RowsOnDemandOwner, IsGone_EveryoneWhoShowsTheRowsChangesTheirCells) {
    Table table(false);
    auto lender = std::make_unique<DbRows>(nullptr, &table.m_descr);
    lender->AddRows(3, true);
    std::vector<uint64> order = {0, 1, 2};
    DbRows other(nullptr, &table.m_descr);
    table.m_bound.Bind(lender.get(), order);
    other.Bind(lender.get(), order);
    lender.reset();
    table.m_descr.CreateField("new", false, DbFieldDescr::Long);
    NewCells first(table.m_bound, 3);
    NewCells second(other, 3);
    first.Insert();
    second.Insert();
    EXPECT_EQ(other.GetRow(0)->size(), 5U) << "a cell from each";
}

TEST(RowsOnDemandSave, OfBoundRows_NamesTheFieldsOfTheRowsOwner) {
    DbTableDescr own(nullptr);
    DbTableDescr shown(nullptr);
    for (DbTableDescr* const descr : {&own, &shown}) {
        descr->CreateField("a", false, DbFieldDescr::Long);
        descr->CreateField("b", false, DbFieldDescr::Long);
    }
    DbTableData data(nullptr, &own);
    DbTableData view(nullptr, &shown);
    data.AddRow();
    RowsView(*data.GetRows()).SetCell(0, 1, CellView::Long(7));
    std::vector<uint64> order = {0};
    view.Bind(data.GetRows(), order);
    own.DeleteField(0);
    data.Update(0, false);
    SaveTarget target;
    EXPECT_TRUE(view.Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(), "<row b=\"7\" />\n");
}

}  // namespace
}  // namespace quillet::test
