// Structures and rows out of memory: every step happens completely or not at all.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Quillet/IQuillet.h"
#include "support/CatalogHelpers.h"
#include "support/OutOfMemory.h"
#include "support/SteelTable.h"

namespace {

using namespace quillet::test;

// A table, an index by name, and rows that are bound to some of the table's.
class Subject {
public:
    Subject() : m_database(SteelDatabase()) {
        Descr().CreateIndex("an index by name", "name");
        m_bound = std::make_unique<DbRows>(nullptr, &Descr());
        std::vector<uint64> order = {3, 1};
        m_bound->Bind(Data().GetRows(), order);
    }

    DbDatabase& Database() { return *m_database; }
    DbTableDescr& Descr() { return *m_database->GetTableDescr("Steel"); }
    DbTableData& Data() { return *m_database->GetTableData("Steel"); }
    DbRows& Bound() { return *m_bound; }

    std::string Text() {
        std::string text = Dump(*m_database);
        text += "bound";
        for (uint64 i = 0; i < m_bound->GetRowsCount(); ++i) {
            const DbTableRow* const row = m_bound->GetRow(static_cast<int>(i));
            text += " " + (row == nullptr ? "no row" : CellText(row->GetField(0)));
        }
        for (const char* name : {"an index by name", "second"}) {
            const DbTableDescr::DbIndex* const index = Descr().FindIndex(name);
            text += std::string(" ") + name + (index == nullptr ? ": none" : ":");
            for (std::size_t i = 0; index != nullptr && i < index->GetFieldIndexes().size(); ++i) {
                text += " " + std::to_string(index->GetFieldIndexes()[i]);
            }
        }
        return text;
    }

private:
    std::unique_ptr<DbDatabase> m_database;
    std::unique_ptr<DbRows> m_bound;
};

class TableOutOfMemory : public testing::TestWithParam<Step<Subject>> {};

TEST_P(TableOutOfMemory, StepHappensWholeOrNotAtAll) {
    ExpectStepWholeOrNotAtAll(
        GetParam(), [] { return std::make_unique<Subject>(); },
        [](Subject& subject) { return subject.Text(); });
}

INSTANTIATE_TEST_SUITE_P(
    Steps, TableOutOfMemory,
    testing::Values(
        Step<Subject>{
            "CreateField",
            [](Subject& subject) { subject.Descr().CreateField("a new field", true, DbFieldDescr::Text); }},
        Step<Subject>{
            "CreateFieldOfBytes",
            [](Subject& subject) { subject.Descr().CreateField("blob", false, DbFieldDescr::Binary); }},
        Step<Subject>{"AppendField",
                      [](Subject& subject) {
                          DbFieldDescr field;
                          field.SetName("NAME");
                          field.SetType(VT_BSTR);
                          subject.Descr().AppendField(field);
                      }},
        Step<Subject>{"DeleteFieldByName", [](Subject& subject) { subject.Descr().DeleteField("h"); }},
        Step<Subject>{"DeleteLastField", [](Subject& subject) { subject.Descr().DeleteField(4); }},
        Step<Subject>{"CreateIndex",
                      [](Subject& subject) { subject.Descr().CreateIndex("second", "n,h,[name]"); }},
        Step<Subject>{"CreateIndexWithoutFields",
                      [](Subject& subject) { subject.Descr().CreateIndex("second"); }},
        Step<Subject>{"CreateIndexOfATakenName",
                      [](Subject& subject) { subject.Descr().CreateIndex("An Index by Name", "n"); }},
        Step<Subject>{"DeleteIndex",
                      [](Subject& subject) { subject.Descr().DeleteIndex("an index by name"); }},
        Step<Subject>{"AddRow", [](Subject& subject) { subject.Data().AddRow(); }},
        Step<Subject>{"AddRows", [](Subject& subject) { subject.Data().AddRows(7); }},
        Step<Subject>{"AddRowToBoundRows", [](Subject& subject) { subject.Bound().AddRow(true); }},
        Step<Subject>{"AddRowsToBoundRows", [](Subject& subject) { subject.Bound().AddRows(3, true); }},
        Step<Subject>{"SetText",
                      [](Subject& subject) {
                          subject.Data()[2].SetValue("name", "another text that takes memory of its own");
                      }},
        Step<Subject>{"SetTextOfNumber", [](Subject& subject) { subject.Data()[2].SetValue("h", "12.25"); }},
        Step<Subject>{"SetTextOfBoolean", [](Subject& subject) { subject.Data()[2].SetValue("ok", "True"); }},
        Step<Subject>{"SetTextOfBytes",
                      [](Subject& subject) { subject.Data()[2].SetValue("bytes", "QUJDREVGRw=="); }},
        Step<Subject>{"SetTextThatIsNoNumber",
                      [](Subject& subject) { subject.Data()[2].SetValue("h", "a text that is no number"); }},
        Step<Subject>{"SetValue",
                      [](Subject& subject) {
                          subject.Data()[2].SetValue("name",
                                                     CComVariant("a value that takes memory of its own"));
                      }},
        Step<Subject>{"SetValueOfAnotherType",
                      [](Subject& subject) { subject.Data()[2].SetValue("name", CComVariant(2.5)); }},
        Step<Subject>{"SetName",
                      [](Subject& subject) { subject.Descr().at(1)->SetName("a (long) name for a height"); }},
        Step<Subject>{"SetType", [](Subject& subject) { subject.Descr().at(1)->SetType(VT_ARRAY | VT_UI1); }},
        Step<Subject>{"AssignField",
                      [](Subject& subject) {
                          DbFieldDescr field;
                          field.SetName("a name that takes memory of its own");
                          field.SetType(VT_BSTR);
                          *subject.Descr().at(1) = field;
                      }},
        Step<Subject>{
            "AssignCell",
            [](Subject& subject) { subject.Data()[0].GetField(0) = subject.Data()[1].GetField(0); }},
        Step<Subject>{"Bind",
                      [](Subject& subject) {
                          std::vector<uint64> order = {4, 3, 2, 1, 0};
                          subject.Bound().Bind(subject.Data().GetRows(), order);
                      }},
        Step<Subject>{"ClearData", [](Subject& subject) { subject.Data().Clear(); }},
        Step<Subject>{"ClearTable", [](Subject& subject) { subject.Database().ClearTable("steel"); }}));

TEST(RowsOutOfMemory, DeletingARow_TakesNone) {
    Subject subject;
    ExpectNoAllocation([&] { subject.Data().DeleteRow(1); });
    EXPECT_EQ(subject.Data().size(), 4U);
}

// An index of the host stays the host's if the structure could not take it over.
TEST(IndexOutOfMemory, AnIndexOfTheHost_IsDeletedOnce) {
    for (const char* name : {"second", "an index by name"}) {
        SweepAttempts([&](std::size_t failing, Failing which) {
            Subject subject;
            auto index = std::make_unique<DbTableDescr::DbIndex>("of the host", "n,h");
            const std::shared_ptr<DbTableDescr::DbIndex*> life = index->LifeToken();
            const Attempt attempt = Try(failing, which, [&] {
                if (subject.Descr().CreateIndex(name, index.get())) {
                    static_cast<void>(index.release());
                }
            });
            EXPECT_EQ(index == nullptr, attempt.m_isDone);
            // It does not get a name that is taken.
            EXPECT_EQ(*life == nullptr, attempt.m_isDone && std::string(name) != "second");
            return attempt;
        });
    }
}

// Items that could not be created have no parent.
TEST(ItemOutOfMemory, AnItemThatWasNotMade_IsNoChild) {
    SweepAttempts([](std::size_t failing, Failing which) {
        DbItem parent;
        const uint64 alone = parent.CalcSize();
        std::unique_ptr<DbFieldDescr> made;
        const Attempt attempt = Try(failing, which, [&] {
            auto field = std::make_unique<DbFieldDescr>(&parent, 0);
            field->SetName("a name that takes memory of its own");
            made = std::move(field);
        });
        EXPECT_EQ(parent.CalcSize() == alone, made == nullptr);
        return attempt;
    });
}

TEST(ItemOutOfMemory, AnAssignedItem_HasTheChildrenOfBeforeOrOfTheOther) {
    SweepAttempts([](std::size_t failing, Failing which) {
        DbItem from;
        DbItem first(&from);
        DbItem second(&from);
        DbItem to;
        DbItem own(&to);
        const uint64 before = to.CalcSize();
        const Attempt attempt = Try(failing, which, [&] { to = from; });
        EXPECT_EQ(to.CalcSize(), attempt.m_isDone ? from.CalcSize() : before);
        EXPECT_EQ(own.LiveParent() == nullptr, attempt.m_isDone);
        return attempt;
    });
}

// A database can be destroyed without memory.
TEST(DatabaseOutOfMemory, GoesWithoutMemory) {
    auto subject = std::make_unique<Subject>();
    EXPECT_TRUE(Try(1, Failing::FromThereOn, [&] { subject.reset(); }).m_isDone);
}

TEST(DatabaseOutOfMemory, OneThatCouldNotBeMade_IsNotCounted) {
    const std::int32_t before = DbDatabase::m_openDbCount;
    SweepAttempts([&](std::size_t failing, Failing which) {
        std::unique_ptr<DbDatabase> database;
        const Attempt attempt = Try(failing, which, [&] {
            database = std::make_unique<DbDatabase>("a path of a file that is not there");
        });
        EXPECT_EQ(DbDatabase::m_openDbCount, before + (attempt.m_isDone ? 1 : 0));
        return attempt;
    });
    EXPECT_EQ(DbDatabase::m_openDbCount, before);
}

}  // namespace
