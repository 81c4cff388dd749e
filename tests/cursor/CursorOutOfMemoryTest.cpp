// Cursors out of memory.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Quillet/IQuillet.h"
#include "support/CatalogHelpers.h"
#include "support/OutOfMemory.h"
#include "support/SteelTable.h"

namespace {

using namespace quillet::test;

// A table, a cursor at its second row, and variables of a program that follow the fields.
class Subject {
public:
    Subject() : m_database(SteelDatabase()), m_cursor(std::make_unique<DbRecordset>(m_database.get())) {
        EXPECT_TRUE(m_cursor->Open("Steel"));
        m_cursor->MapClassMember("name", m_name);
        m_cursor->MapClassMember("n", m_number);
        EXPECT_TRUE(m_cursor->Move(1));
    }

    DbRecordset& Cursor() { return *m_cursor; }
    DbDatabase& Database() { return *m_database; }
    CString& Name() { return m_name; }
    int& Number() { return m_number; }

    std::string Text() {
        return Dump(*m_database) + "at " + std::to_string(m_cursor->GetAbsolutePosition()) + " of " +
               std::to_string(m_cursor->GetRecordCount()) + " by " + m_cursor->GetCurrentIndex().ToUtf8();
    }

private:
    std::unique_ptr<DbDatabase> m_database;
    std::unique_ptr<DbRecordset> m_cursor;
    CString m_name;
    int m_number = 0;
};

class CursorOutOfMemory : public testing::TestWithParam<Step<Subject>> {};

TEST_P(CursorOutOfMemory, StepHappensWholeOrNotAtAll) {
    ExpectStepWholeOrNotAtAll(
        GetParam(), [] { return std::make_unique<Subject>(); },
        [](Subject& subject) { return subject.Text(); });
}

void BindNewValues(Subject& subject) {
    subject.Name() = "another name that takes memory of its own";
    subject.Number() = 77;
}

INSTANTIATE_TEST_SUITE_P(
    Steps, CursorOutOfMemory,
    testing::Values(Step<Subject>{"UpdateOfARow",
                                  [](Subject& subject) {
                                      subject.Cursor().Edit();
                                      BindNewValues(subject);
                                  },
                                  [](Subject& subject) { subject.Cursor().Update(); }},
                    Step<Subject>{"UpdateByAnIndex",
                                  [](Subject& subject) {
                                      EXPECT_TRUE(subject.Cursor().SetCurrentIndex("by number"));
                                      subject.Cursor().Edit();
                                      BindNewValues(subject);
                                  },
                                  [](Subject& subject) { subject.Cursor().Update(); }},
                    Step<Subject>{"UpdateOfANewRow",
                                  [](Subject& subject) {
                                      subject.Cursor().AddNew();
                                      BindNewValues(subject);
                                      subject.Cursor().SetFieldValue("n", CComVariant(5));
                                  },
                                  [](Subject& subject) { subject.Cursor().Update(); }},
                    Step<Subject>{"UpdateOfValues",
                                  [](Subject& subject) {
                                      subject.Cursor().Edit();
                                      subject.Cursor().SetFieldValue(
                                          "name", CComVariant("a value that takes memory of its own"));
                                      subject.Cursor().SetFieldValue("n", CComVariant(5));
                                  },
                                  [](Subject& subject) { subject.Cursor().Update(); }},
                    Step<Subject>{"OpenTheSameTable", [](Subject&) {},
                                  [](Subject& subject) { subject.Cursor().Open("Steel"); }},
                    Step<Subject>{"SetFieldValue", [](Subject& subject) { subject.Cursor().Edit(); },
                                  [](Subject& subject) {
                                      subject.Cursor().SetFieldValue(
                                          "name", CComVariant("a value that takes memory of its own"));
                                  }}));

TEST(RecordsetOutOfMemory, BookmarksStandForWhatTheyStoodFor) {
    SweepAttempts([](std::size_t failing, Failing which) {
        Subject subject;
        const uint64 first = subject.Cursor().GetBookmark();
        subject.Cursor().MoveNext();
        uint64 second = 0;
        const Attempt attempt = Try(failing, which, [&] { second = subject.Cursor().GetBookmark(); });
        EXPECT_TRUE(subject.Cursor().SetBookmark(first));
        EXPECT_EQ(subject.Cursor().GetAbsolutePosition(), 1);
        EXPECT_EQ(subject.Cursor().IsBookmark(second), attempt.m_isDone);
        return attempt;
    });
}

TEST(RecordsetOutOfMemory, AnIndexIsBuiltOrThrown) {
    SweepAttempts([](std::size_t failing, Failing which) {
        Subject subject;
        bool isSet = false;
        const Attempt attempt =
            Try(failing, which, [&] { isSet = subject.Cursor().SetCurrentIndex("by number"); });
        EXPECT_EQ(isSet, attempt.m_isDone);
        subject.Cursor().SetCurrentIndex(static_cast<const DbTableDescr::DbIndex*>(nullptr));
        EXPECT_TRUE(subject.Cursor().SetCurrentIndex("by number"));
        EXPECT_TRUE(subject.Cursor().MoveFirst());
        EXPECT_EQ(subject.Cursor().RemapRowIndex(0), 4U);
        return attempt;
    });
}

TEST(RecordsetOutOfMemory, DeletingARowTakesNone) {
    Subject subject;
    ExpectNoAllocation([&] { subject.Cursor().Delete(); });
    EXPECT_EQ(subject.Cursor().GetRecordCount(), 4);
}

TEST(RecordsetOutOfMemory, ACursorGoesWithoutMemory) {
    auto subject = std::make_unique<Subject>();
    EXPECT_TRUE(Try(1, Failing::FromThereOn, [&] { subject.reset(); }).m_isDone);
}

TEST(RecordsetOutOfMemory, AFindFindsTheRow_OrNoneAndThrows) {
    SweepAttempts([](std::size_t failing, Failing which) {
        Subject subject;
        bool found = false;
        const Attempt attempt =
            Try(failing, which, [&] { found = subject.Cursor().FindFirst("  n = 8 and name <> 'x'"); });
        if (attempt.m_isDone && found) {
            EXPECT_EQ(subject.Cursor().GetAbsolutePosition(), 2);
        }
        EXPECT_TRUE(subject.Cursor().FindFirst("  n = 8 and name <> 'x'"));
        EXPECT_EQ(subject.Cursor().GetAbsolutePosition(), 2);
        return attempt;
    });
}

}  // namespace
