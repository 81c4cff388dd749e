// Whole catalogs out of memory: opened, read, queried, changed and saved.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <string>

#include "support/CatalogHelpers.h"
#include "support/LongPaths.h"
#include "support/OutOfMemory.h"

namespace {

using namespace quillet::test;

std::string Dumped(const std::filesystem::path& path, Reading reading) {
    const auto database = Open(path, reading);
    return Dump(*database);
}

class CatalogOutOfMemory : public testing::TestWithParam<Reading> {
protected:
    CatalogOutOfMemory() {
        WriteBytes(Path(), SmallCatalog());
        m_expected = Dumped(Path(), GetParam());
        EXPECT_EQ(Bytes(), SmallCatalog());
    }

    std::filesystem::path Path() const { return m_folder / "small.xml"; }
    std::string Bytes() const { return ReadBytes(Path()); }
    std::unique_ptr<DbDatabase> Opened() const { return Open(Path(), GetParam()); }

    TemporaryFolder m_folder;
    // The whole catalog as text.
    std::string m_expected;
};

INSTANTIATE_TEST_SUITE_P(Readings, CatalogOutOfMemory, testing::Values(Reading::Whole, Reading::Sequential),
                         ReadingName);

// Reads every table without creating text about it.
void ReadTables(DbDatabase& database) {
    for (int i = 0; i < database.GetTablesCount(); ++i) {
        database.GetTableData(static_cast<std::size_t>(i))->GetRows();
    }
}

TEST_P(CatalogOutOfMemory, LookedAt_TheFileStaysAsItIs_AndASecondLookSeesAll) {
    SweepAttempts([&](std::size_t failing, Failing which) {
        auto database = Opened();
        const Attempt attempt = Try(failing, which, [&] { ReadTables(*database); });
        if (!attempt.m_isDone) {
            EXPECT_FALSE(database->IsChanged());
        }
        EXPECT_EQ(Dump(*database), m_expected);
        database.reset();
        EXPECT_EQ(Bytes(), SmallCatalog());
        return attempt;
    });
}

TEST_P(CatalogOutOfMemory, LookedAtOnce_TheFileStaysAsItIs) {
    SweepAttempts([&](std::size_t failing, Failing which) {
        auto database = Opened();
        const Attempt attempt = Try(failing, which, [&] { ReadTables(*database); });
        database.reset();
        EXPECT_EQ(Bytes(), SmallCatalog());
        return attempt;
    });
}

TEST_P(CatalogOutOfMemory, Changed_ACellHasItsOldOrItsNewValue) {
    const auto make = [&] {
        // The earlier database saved itself when it was destroyed.
        WriteBytes(Path(), SmallCatalog());
        return Opened();
    };
    const auto change = [](DbDatabase& database) {
        DbTableData& rows = *database.GetTableData("Alpha");
        // If the text of the rows can't be read, there are no rows, and nothing is thrown.
        if (!rows.ParseXmlData()) {
            throw std::bad_alloc();
        }
        rows[0].SetValue("name", "a name that takes memory of its own");
    };
    ExpectWholeOrNotAtAll(make, change, [](DbDatabase& database) { return Dump(database); });
}

TEST_P(CatalogOutOfMemory, Saved_TheFileIsTheOldOrTheNewOne) {
    const auto changed = [&] {
        auto database = Opened();
        (*database->GetTableData("Alpha"))[0].SetValue("name", "a name that takes memory of its own");
        return database;
    };
    std::string expected;
    {
        const auto database = changed();
        EXPECT_TRUE(database->Save(CString(Utf8(Path()))));
        expected = Bytes();
    }
    SweepAttempts([&](std::size_t failing, Failing which) {
        WriteBytes(Path(), SmallCatalog());
        auto database = changed();
        bool saved = false;
        const CString path(Utf8(Path()));
        const Attempt attempt = Try(failing, which, [&] { saved = database->Save(path); });
        EXPECT_TRUE(attempt.m_isDone);
        EXPECT_EQ(Bytes(), saved ? expected : SmallCatalog());
        EXPECT_TRUE(database->Save(path));
        EXPECT_EQ(Bytes(), expected);
        EXPECT_EQ(m_folder.Names().size(), 1U);
        return attempt;
    });
}

TEST_P(CatalogOutOfMemory, SavedAtTheEnd_TheFileIsTheOldOrTheNewOne) {
    std::string expected;
    const auto changed = [&] {
        WriteBytes(Path(), SmallCatalog());
        auto database = Opened();
        (*database->GetTableData("Alpha"))[0].SetValue("name", "a name that takes memory of its own");
        return database;
    };
    changed().reset();
    expected = Bytes();
    EXPECT_NE(expected, SmallCatalog());
    SweepAttempts([&](std::size_t failing, Failing which) {
        auto database = changed();
        const Attempt attempt = Try(failing, which, [&] { database.reset(); });
        EXPECT_TRUE(attempt.m_isDone);
        EXPECT_TRUE(Bytes() == expected || (attempt.m_ranOut && Bytes() == SmallCatalog()));
        EXPECT_EQ(m_folder.Names().size(), 1U);
        return attempt;
    });
}

TEST_P(CatalogOutOfMemory, Asked_AQueryAnswersInFullOrThrows) {
    const std::pair<const char*, Strings> queries[] = {
        {"select * from Alpha where count > 1", {"two 2"}},
        {"select name from Alpha where count > 0 order by name desc", {"two", "one"}},
        {"select distinct count from Alpha order by count", {"1", "2"}},
    };
    for (const auto& [sql, rows] : queries) {
        SCOPED_TRACE(sql);
        Strings reference;
        {
            const auto database = Opened();
            CString name;
            ASSERT_TRUE(database->Query(sql, name));
            reference = RowsOf(*database, name);
        }
        EXPECT_EQ(reference, rows);
        SweepAttempts([&, query = CString(sql)](std::size_t failing, Failing which) {
            const auto database = Opened();
            ReadTables(*database);
            CString name;
            bool answered = false;
            const Attempt attempt = Try(failing, which, [&] { answered = database->Query(query, name); });
            EXPECT_EQ(answered, attempt.m_isDone);
            name = CString();
            EXPECT_TRUE(database->Query(query, name));
            EXPECT_EQ(RowsOf(*database, name), reference);
            return attempt;
        });
    }
}

class DatabaseStepOutOfMemory : public testing::TestWithParam<Step<DbDatabase>> {};

std::unique_ptr<DbDatabase> MadeDatabase() {
    auto database = std::make_unique<DbDatabase>();
    for (const char* name : {"First", "Second"}) {
        database->CreateTable(name, DbTableInfo::Table);
        database->GetTableDescr(name)->CreateField("name", false, DbFieldDescr::Text);
        DbTableData& data = *database->GetTableData(name);
        data[data.AddRow()].SetValue("name", "a name that takes memory of its own");
    }
    CString answer;
    EXPECT_TRUE(database->Query("select * from First", answer));
    return database;
}

TEST_P(DatabaseStepOutOfMemory, HappensWholeOrNotAtAll) {
    ExpectStepWholeOrNotAtAll(GetParam(), MadeDatabase, Dump);
}

INSTANTIATE_TEST_SUITE_P(
    Steps, DatabaseStepOutOfMemory,
    testing::Values(
        Step<DbDatabase>{
            "CreateTable",
            [](DbDatabase& database) { database.CreateTable("A third table", DbTableInfo::Table); }},
        Step<DbDatabase>{"RenameTable",
                         [](DbDatabase& database) { database.RenameTable("Second", "A longer name"); }},
        Step<DbDatabase>{"DeleteTable", [](DbDatabase& database) { database.DeleteTable("First"); }},
        Step<DbDatabase>{"ClearTable", [](DbDatabase& database) { database.ClearTable("Second"); }}));

}  // namespace
