#include "Quillet/Db_TableInfo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "support/CatalogHelpers.h"
#include "support/Seed.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;

DbTableInfo Query(DbTableInfo* related) {
    return DbTableInfo("q", DbTableInfo::Query, 0, "select * from t", nullptr, nullptr, related);
}

// A table with one cell, and its entry.
class TableEntry : public testing::Test {
protected:
    TableEntry() : m_table("T", DbTableInfo::Table, 3, "", &m_descr, &m_data, nullptr) {
        m_descr.CreateField("a", false, DbFieldDescr::Long);
        m_data.AddRow();
    }

    DbTableDescr m_descr{nullptr};
    DbTableData m_data{nullptr, &m_descr};
    DbTableInfo m_table;
};

TEST(DbTableInfo, Construct_Default_IsNothing) {
    const DbTableInfo info;
    EXPECT_EQ(info.GetType(), DbTableInfo::None);
    EXPECT_EQ(info.GetIndex(), 0U);
    EXPECT_TRUE(info.GetSql().IsEmpty());
    EXPECT_TRUE(info.GetName().IsEmpty());
    EXPECT_EQ(info.GetDescr(), nullptr);
    EXPECT_EQ(info.GetData(), nullptr);
    EXPECT_EQ(info.GetRelated(), nullptr);
    EXPECT_EQ(info.GetSyncStamp(), 0);
    EXPECT_TRUE(info.IsQuerySync());
}

TEST(DbTableInfo, EnumeratorValues_AreThoseOfTheAutomationInterface) {
    EXPECT_EQ(int(DbTableInfo::None), 0);
    EXPECT_EQ(int(DbTableInfo::Table), 1);
    EXPECT_EQ(int(DbTableInfo::Query), 2);
    EXPECT_EQ(sizeof(DbTableInfo::eType), 4U);
}

TEST_F(TableEntry, Construct_WithArguments_StoresThem) {
    DbTableInfo query("Name", DbTableInfo::Query, 7, "select", &m_descr, &m_data, &m_table);
    EXPECT_EQ(query.GetName().ToUtf8(), "Name");
    EXPECT_EQ(query.GetType(), DbTableInfo::Query);
    EXPECT_EQ(query.GetIndex(), 7U);
    EXPECT_EQ(query.GetSql().ToUtf8(), "select");
    EXPECT_EQ(query.GetDescr(), &m_descr);
    EXPECT_EQ(query.GetData(), &m_data);
    EXPECT_EQ(query.GetRelated(), &m_table);
    EXPECT_EQ(query.GetSyncStamp(), 0);
}

TEST_F(TableEntry, CopyAndAssign_ShareThePointers) {
    m_table.SetSyncStamp(5);
    const DbTableInfo copy(m_table);
    DbTableInfo assigned;
    assigned = m_table;
    for (const DbTableInfo* info : std::initializer_list<const DbTableInfo*>{&copy, &assigned}) {
        EXPECT_EQ(info->GetName(), m_table.GetName());
        EXPECT_EQ(info->GetType(), DbTableInfo::Table);
        EXPECT_EQ(info->GetIndex(), 3U);
        EXPECT_EQ(info->GetDescr(), &m_descr);
        EXPECT_EQ(info->GetData(), &m_data);
        EXPECT_EQ(info->GetSyncStamp(), 5);
    }
}

TEST(DbTableInfo, Destroy_OwnsNothing) {
    auto descr = std::make_unique<DbTableDescr>(nullptr);
    auto data = std::make_unique<DbTableData>(nullptr, descr.get());
    { const DbTableInfo info("T", DbTableInfo::Table, 0, "", descr.get(), data.get(), nullptr); }
    EXPECT_EQ(data->AddRow(), 0U);
    auto info =
        std::make_unique<DbTableInfo>("T", DbTableInfo::Table, 0, "", descr.get(), data.get(), nullptr);
    data.reset();
    descr.reset();
    info.reset();
}

TEST_F(TableEntry, IsRelatedWith_Table_IsNever) {
    DbTableInfo other("U", DbTableInfo::Table, 0, "", nullptr, nullptr, &m_table);
    EXPECT_FALSE(m_table.IsRelatedWith(&m_table));
    EXPECT_FALSE(m_table.IsRelatedWith(nullptr));
    EXPECT_FALSE(other.IsRelatedWith(&m_table)) << "only queries are related";
}

TEST_F(TableEntry, IsRelatedWith_QueryOverAQuery_KnowsBothBases) {
    DbTableInfo lower = Query(&m_table);
    DbTableInfo upper = Query(&lower);
    DbTableInfo stranger("U", DbTableInfo::Table, 0, "", nullptr, nullptr, nullptr);
    EXPECT_TRUE(lower.IsRelatedWith(&m_table));
    EXPECT_TRUE(upper.IsRelatedWith(&lower));
    EXPECT_TRUE(upper.IsRelatedWith(&m_table));
    EXPECT_FALSE(upper.IsRelatedWith(&upper));
    EXPECT_FALSE(lower.IsRelatedWith(&upper));
    EXPECT_FALSE(upper.IsRelatedWith(&stranger));
}

TEST_F(TableEntry, IsRelatedWith_QueryWithoutABase_IsRelatedWithNothing) {
    DbTableInfo query = Query(nullptr);
    EXPECT_FALSE(query.IsRelatedWith(&m_table));
    EXPECT_FALSE(query.IsRelatedWith(nullptr));
    EXPECT_TRUE(query.IsQuerySync());
}

TEST_F(TableEntry, IsQuerySync_Table_IsAlways) {
    m_data.SetChanged();
    EXPECT_TRUE(m_table.IsQuerySync());
    m_table.SetSyncStamp(-1);
    EXPECT_TRUE(m_table.IsQuerySync());
}

TEST_F(TableEntry, IsQuerySync_StampOfTheTablesData_DecidesExactly) {
    DbTableInfo query = Query(&m_table);
    EXPECT_FALSE(query.IsQuerySync());
    query.SetSyncStamp(m_data.GetChangeId());
    EXPECT_TRUE(query.IsQuerySync());
    query.SetSyncStamp(m_data.GetChangeId() + 1);
    EXPECT_FALSE(query.IsQuerySync()) << "a later stamp is as wrong as an earlier one";
}

TEST_F(TableEntry, IsQuerySync_AnyLaterEditOfTheTable_EndsIt) {
    DbTableInfo query = Query(&m_table);
    const auto stamp = [&] { query.SetSyncStamp(m_data.GetChangeId()); };
    stamp();
    m_data[0][uint64(0)].SetValue(Long(5));
    EXPECT_FALSE(query.IsQuerySync()) << "a cell";
    stamp();
    m_data[0].SetValue("a", CString("6"));
    EXPECT_FALSE(query.IsQuerySync()) << "a text into a cell";
    stamp();
    m_data.AddRow();
    EXPECT_FALSE(query.IsQuerySync()) << "an added row";
    stamp();
    m_data.DeleteRow(0);
    EXPECT_FALSE(query.IsQuerySync()) << "a deleted row";
    stamp();
    m_data.Clear();
    EXPECT_FALSE(query.IsQuerySync()) << "a cleared table";
    stamp();
    m_data.Sync();
    EXPECT_TRUE(query.IsQuerySync()) << "being in step with the file is another thing";
}

TEST_F(TableEntry, IsQuerySync_RowDeletedThatHeldTheLatestStamp_IsSeen) {
    m_data.AddRow();
    m_data[1][uint64(0)].SetValue(Long(5));
    DbTableInfo query = Query(&m_table);
    query.SetSyncStamp(m_data.GetChangeId());
    m_data.DeleteRow(1);
    EXPECT_FALSE(query.IsQuerySync());
}

TEST_F(TableEntry, IsQuerySync_CellReplacedByAnOlderOne_IsSeen) {
    DbTableRow& row = m_data[0];
    DbFieldValue* const cell = &row[uint64(0)];
    auto* const younger = new DbFieldValue(&row, 0);
    younger->SetValue(Long(5));
    row.SetFieldValuePtr(0, younger);
    DbTableInfo query = Query(&m_table);
    query.SetSyncStamp(m_data.GetChangeId());
    EXPECT_TRUE(query.IsQuerySync());
    row.SetFieldValuePtr(0, cell);
    delete younger;
    EXPECT_LT(m_data.GetChangeId(), query.GetSyncStamp());
    EXPECT_FALSE(query.IsQuerySync());
}

TEST_F(TableEntry, IsQuerySync_CounterThatTheHostSetsBack_HidesNoEdit) {
    const StaticsGuard statics;
    m_data[0].SetValue("a", Long(1));
    DbTableInfo query = Query(&m_table);
    query.SetSyncStamp(m_data.GetChangeId());
    EXPECT_TRUE(query.IsQuerySync());
    const std::int32_t counter = DbItem::m_changeCounter;
    m_data[0].SetValue("a", Long(2));
    DbItem::m_changeCounter = counter;
    EXPECT_FALSE(query.IsQuerySync());
    m_data.AddRow();
    query.SetSyncStamp(m_data.GetChangeId());
    EXPECT_TRUE(query.IsQuerySync());
}

TEST_F(TableEntry, IsQuerySync_BoundElsewhere_IsSeen) {
    DbTableData other(nullptr, &m_descr);
    other.AddRow();
    m_data[0].SetValue("a", Long(2));
    m_data[0].SetChanged();
    DbTableInfo query = Query(&m_table);
    query.SetSyncStamp(m_data.GetChangeId());
    EXPECT_TRUE(query.IsQuerySync());
    std::vector<uint64> order = {0};
    m_data.Bind(other.GetRows(), order);
    EXPECT_EQ(query.IsQuerySync(), query.GetSyncStamp() == m_data.GetChangeId());
    EXPECT_FALSE(query.IsQuerySync());
}

// An item that the test creates and destroys.
class LooseItem : public DbItem {
public:
    using DbItem::DbItem;
};

TEST_F(TableEntry, IsQuerySync_AfterAnything_ComparesWithGetChangeId) {
    const StaticsGuard statics;
    std::mt19937 random(quillet::test::Seed(7));
    const auto below = [&](std::size_t count) { return random() % count; };
    DbTableData lender(nullptr, &m_descr);
    lender.AddRows(3);
    DbTableInfo query = Query(&m_table);
    std::vector<std::unique_ptr<LooseItem>> loose;
    constexpr int Steps = 20000;
    constexpr int Kinds = 14;
    for (int step = 0; step < Steps; ++step) {
        DbRows& rows = *m_data.GetRows();
        DbTableRow* const row = rows.GetRow(static_cast<int>(below(rows.GetRowsCount() + 1)));
        DbTableData& any = below(2) == 0 ? m_data : lender;
        const auto kind = below(Kinds);
        if (kind == 0) {
            any.AddRow();
        } else if (kind == 1) {
            any.DeleteRow(below(any.size() + 1));
        } else if (kind == 2) {
            m_descr.CreateField("b", false, DbFieldDescr::Long);
            any.Update(1, true);
        } else if (kind == 3 && m_descr.DeleteField("b")) {
            any.Update(1, false);
        } else if (kind == 4 && below(20) == 0) {
            any.Clear();
        } else if (kind == 5 && below(20) == 0) {
            std::vector<uint64> order = {1, 0, 2};
            m_data.Bind(lender.GetRows(), order);
        } else if (kind == 6) {
            DbItem::m_changeCounter -= static_cast<std::int32_t>(below(4));
        } else if (kind == 7 && !loose.empty()) {
            loose.erase(loose.begin() + static_cast<std::ptrdiff_t>(below(loose.size())));
        } else if (row == nullptr) {
            m_data.SetChanged();
        } else if (kind == 8) {
            (*row)[uint64(0)].SetValue(Long(1));
        } else if (kind == 9) {
            row->SetChanged();
        } else if (kind == 10 && !row->empty()) {
            DbFieldValue* const old = &(*row)[uint64(0)];
            row->SetFieldValuePtr(0, new DbFieldValue(row, 0));
            delete old;
        } else if (kind == 11) {
            loose.push_back(std::make_unique<LooseItem>(below(2) == 0 ? row : nullptr));
            loose.back()->SetChanged();
        } else if (kind == 12 && !loose.empty()) {
            *loose[below(loose.size())] = LooseItem(row);
        } else if (kind == 13 && loose.size() > 1) {
            auto child = std::make_unique<LooseItem>(loose.front().get());
            child->SetChanged();
            child.swap(loose.back());
        }
        ASSERT_EQ(query.IsQuerySync(), query.GetSyncStamp() == m_data.GetChangeId())
            << "step " << step << ", kind " << kind;
        if (below(2) == 0) {
            query.SetSyncStamp(m_data.GetChangeId());
            ASSERT_TRUE(query.IsQuerySync()) << "step " << step << ", kind " << kind;
        }
    }
}

TEST_F(TableEntry, IsQuerySync_QueryOverAQuery_GivesTheLowerOnesAnswer) {
    DbTableInfo lower = Query(&m_table);
    DbTableInfo upper = Query(&lower);
    upper.SetSyncStamp(m_data.GetChangeId());
    EXPECT_FALSE(upper.IsQuerySync()) << "its own stamp does not count";
    upper.SetSyncStamp(0);
    lower.SetSyncStamp(m_data.GetChangeId());
    EXPECT_TRUE(upper.IsQuerySync());
}

TEST_F(TableEntry, Clear_EmptiesStructureAndContentsAndKeepsTheEntry) {
    m_data.SetXmlSource("<table name='T'/>");
    m_table.Clear();
    EXPECT_TRUE(m_descr.empty());
    EXPECT_EQ(m_data.size(), 0U);
    EXPECT_EQ(m_table.GetDescr(), &m_descr);
    EXPECT_EQ(m_table.GetData(), &m_data);
    EXPECT_EQ(m_table.GetName().ToUtf8(), "T");
    EXPECT_EQ(m_table.GetType(), DbTableInfo::Table);
    EXPECT_EQ(m_table.GetIndex(), 3U);
}

TEST(DbTableInfo, Clear_WithoutPointers_IsNothing) {
    DbTableInfo info;
    info.Clear();
    EXPECT_EQ(info.GetData(), nullptr);
}

}  // namespace
