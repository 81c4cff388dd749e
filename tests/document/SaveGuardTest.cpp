// A database that does not overwrite what others have changed.
#include "Quillet/document/SaveGuard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/CatalogHelpers.h"

namespace {

using namespace quillet::test;
using testing::HasSubstr;

class SaveGuardTest : public testing::Test {
protected:
    void SetUp() override { WriteBytes(m_folder / "small.xml", SmallCatalog()); }

    static void Change(DbDatabase& database, const char* value) {
        database.GetTableData("Alpha")->GetRow(1)->SetValue("name", CString(value));
    }

    std::string Bytes() const { return ReadBytes(m_folder / "small.xml"); }
    CString Path(const std::string& name) const { return CString(Utf8(m_folder / name)); }

    TemporaryFolder m_folder;
};

class SaveGuardReading : public SaveGuardTest, public testing::WithParamInterface<Reading> {
protected:
    // Guarded before it is read.
    std::unique_ptr<DbDatabase> OpenGuarded() const {
        auto database = Open(m_folder / "small.xml", GetParam());
        database->RefuseForeignChanges(true);
        return database;
    }
};

INSTANTIATE_TEST_SUITE_P(, SaveGuardReading, testing::Values(Reading::Whole, Reading::Sequential),
                         ReadingName);

TEST_P(SaveGuardReading, Save_FileThatNobodyTouched_IsSavedAgainAndAgain) {
    const auto database = OpenGuarded();
    for (const char* value : {"one", "two", "three"}) {
        Change(*database, value);
        EXPECT_TRUE(database->Save(database->GetName()));
        EXPECT_THAT(Bytes(), HasSubstr(value));
    }
}

TEST_P(SaveGuardReading, Save_FileThatSomebodyChanged_IsFalseWithALineAndLeavesIt) {
    const auto database = OpenGuarded();
    Change(*database, "mine");
    WriteBytes(m_folder / "small.xml", "theirs");
    EXPECT_FALSE(database->Save(database->GetName()));
    EXPECT_EQ(TakeLog(*database).back(), "File '" + database->GetName().ToUtf8() +
                                             "' could not be written: somebody else changed it meanwhile");
    EXPECT_EQ(Bytes(), "theirs");
    EXPECT_TRUE(database->IsChanged());
    EXPECT_TRUE(database->Save(Path("other.xml"))) << "another file is no matter";
    EXPECT_EQ(m_folder.Names().size(), 2U);
}

TEST_P(SaveGuardReading, Save_FileThatSomebodyReplacedOrRemoved_IsFalse) {
    const auto database = OpenGuarded();
    Change(*database, "mine");
    WriteBytes(m_folder / "theirs.xml", SmallCatalog());
    std::error_code error;
    std::filesystem::rename(m_folder / "theirs.xml", m_folder / "small.xml", error);
    if (error) {
        database->Sync();
        GTEST_SKIP() << "a file that is being read can't be replaced here";
    }
    EXPECT_FALSE(database->Save(database->GetName()));
    EXPECT_FALSE(database->Save(CString(Utf8(m_folder.Path()) + "/./small.xml"))) << "by another path too";
    EXPECT_EQ(Bytes(), SmallCatalog());
    std::filesystem::remove(m_folder / "small.xml");
    EXPECT_FALSE(database->Save(database->GetName()));
    EXPECT_TRUE(m_folder.Names().empty());
}

TEST_P(SaveGuardReading, Save_ByAnotherPathAfterTheFileWasRemoved_IsFalse) {
    const auto database = OpenGuarded();
    Change(*database, "mine");
    database->LoadTables();
    database->GetSource()->Release();
    std::filesystem::create_directory(m_folder / "below");
    std::filesystem::remove(m_folder / "small.xml");
    for (const char* path : {"/./small.xml", "/below/../small.xml", "/small.xml"}) {
        EXPECT_FALSE(database->Save(CString(Utf8(m_folder.Path()) + path))) << path;
        EXPECT_THAT(TakeLog(*database).back(), HasSubstr("somebody else removed it meanwhile"));
        EXPECT_FALSE(std::filesystem::exists(m_folder / "small.xml"));
    }
    EXPECT_TRUE(database->Save(Path("below/small.xml"))) << "another file is no matter";
    database->Sync();
}

TEST_P(SaveGuardReading, Destroy_FileThatSomebodyChanged_LeavesIt) {
    {
        const auto database = OpenGuarded();
        Change(*database, "mine");
        WriteBytes(m_folder / "small.xml", "theirs");
    }
    EXPECT_EQ(Bytes(), "theirs");
}

TEST_P(SaveGuardReading, Save_AfterTheGuardWasLifted_OverwritesIt) {
    const auto database = OpenGuarded();
    Change(*database, "mine");
    WriteBytes(m_folder / "small.xml", "theirs");
    database->RefuseForeignChanges(false);
    EXPECT_TRUE(database->Save(database->GetName()));
    EXPECT_THAT(Bytes(), HasSubstr("mine"));
}

TEST_P(SaveGuardReading, Save_UnlessAHostAsks_OverwritesForeignChanges) {
    const auto database = Open(m_folder / "small.xml", GetParam());
    Change(*database, "mine");
    WriteBytes(m_folder / "small.xml", "theirs");
    EXPECT_TRUE(database->Save(database->GetName()));
    EXPECT_THAT(Bytes(), HasSubstr("mine"));
}

TEST_F(SaveGuardTest, Create_OfTwoDatabasesForOneNewFile_OneIsSaved) {
    DbDatabase first;
    DbDatabase second;
    for (DbDatabase* database : {&first, &second}) {
        database->Create(Path("new.xml"));
        database->RefuseForeignChanges(true);
    }
    EXPECT_TRUE(first.Save(Path("new.xml")));
    const std::string saved = ReadBytes(m_folder / "new.xml");
    EXPECT_FALSE(second.Save(Path("new.xml")));
    EXPECT_THAT(TakeLog(second).back(), HasSubstr("somebody else made it meanwhile"));
    EXPECT_EQ(ReadBytes(m_folder / "new.xml"), saved);
    EXPECT_TRUE(first.Save(Path("new.xml")));
    first.Sync();
    second.Sync();
}

TEST_F(SaveGuardTest, Save_ByAnotherPathToAFileThatSomebodyMade_IsFalse) {
    DbDatabase database;
    database.Create(Path("new.xml"));
    database.RefuseForeignChanges(true);
    EXPECT_TRUE(database.Save(CString(Utf8(m_folder.Path()) + "/./new.xml")));
    WriteBytes(m_folder / "new.xml", "theirs");
    EXPECT_FALSE(database.Save(Path("new.xml")));
    EXPECT_EQ(ReadBytes(m_folder / "new.xml"), "theirs");
    database.Sync();
}

TEST_F(SaveGuardTest, RefuseForeignChangesOf_AnotherPath_GuardsThat) {
    DbDatabase database(Path("small.xml"));
    database.RefuseForeignChangesOf(Path("copy.xml"));
    EXPECT_TRUE(database.Save(Path("copy.xml")));
    EXPECT_TRUE(database.Save(Path("copy.xml")));
    WriteBytes(m_folder / "copy.xml", "theirs");
    EXPECT_FALSE(database.Save(Path("copy.xml")));
    EXPECT_EQ(ReadBytes(m_folder / "copy.xml"), "theirs");
}

}  // namespace
