// Failures of a POSIX system to read or write: permissions, and a full disk.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "support/AsOrdinaryUser.h"
#include "support/ReadingTest.h"

namespace {

using namespace quillet::test;
using std::filesystem::perms;
using testing::HasSubstr;

class PosixBadInput : public ReadingTest {
protected:
    void SetUp() override { WriteBytes(File(), SmallCatalog()); }

    void ExpectUntouched() {
        EXPECT_EQ(ReadBytes(File()), SmallCatalog());
        EXPECT_EQ(m_folder.Names().size(), 1U) << "nothing is left beside it";
    }
};

INSTANTIATE_TEST_SUITE_P(, PosixBadInput, testing::Values(Reading::Whole, Reading::Sequential), ReadingName);

TEST_F(PosixBadInput, FileThatMayNotBeRead_CantBeOpened) {
    std::filesystem::permissions(File(), perms::none);
    const AsOrdinaryUser user;
    if (!user.IsBound()) {
        GTEST_SKIP() << "the superuser's rights can't be dropped here";
    }
    EXPECT_THAT(ThrownMessage([&] { DbDatabase database(Path()); }),
                HasSubstr("Invalid source file '" + Path().ToUtf8() + "'"));
}

TEST_P(PosixBadInput, FolderThatTakesNoFile_LeavesTheOldOne) {
    std::filesystem::permissions(File(), perms(0666));
    std::filesystem::permissions(m_folder.Path(), perms(0555));
    {
        const AsOrdinaryUser user;
        if (!user.IsBound()) {
            GTEST_SKIP() << "the superuser's rights can't be dropped here";
        }
        const auto database = OpenGiven();
        database->DeleteTable("Alpha");
        EXPECT_FALSE(database->Save(Path()));
        EXPECT_TRUE(LogHolds(*database, Path().ToUtf8()));
    }
    std::filesystem::permissions(m_folder.Path(), perms(0755));
    ExpectUntouched();
}

// Files can't grow beyond a limit, as on a full disk.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    void (*m_handler)(int);
    rlimit m_before{};
};

TEST_P(PosixBadInput, FullDisk_LeavesTheOldFileAndTheChange) {
    const std::size_t size = SmallCatalog().size();
    for (const rlim_t room : {rlim_t(0), rlim_t(1), rlim_t(size / 2), rlim_t(size - 1)}) {
        WriteBytes(File(), SmallCatalog());
        const auto database = OpenGiven();
        DbTableData* const alpha = database->GetTableData("Alpha");
        ASSERT_EQ(alpha->size(), 2U);
        alpha->AddRows(10);
        bool saved = true;
        {
            const FullDisk full(room);
            saved = database->Save(Path());
        }
        EXPECT_FALSE(saved);
        EXPECT_TRUE(LogHolds(*database, Path().ToUtf8())) << room;
        EXPECT_TRUE(database->IsChanged());
        ExpectUntouched();
        EXPECT_TRUE(database->Save(Path())) << "with room again";
    }
}

TEST_P(PosixBadInput, FullDiskWhenDestroyed_LeavesTheOldFile) {
    auto database = OpenGiven();
    ASSERT_EQ(database->GetTableData("Beta")->size(), 1U);
    database->GetTableData("Beta")->AddRow();
    {
        const FullDisk full(100);
        database.reset();
    }
    ExpectUntouched();
}

// The memory of a process can be opened, but not read at its beginning, where nothing is mapped.
TEST_P(PosixBadInput, AnErrorOfReading_IsToldFromACatalogThatIsNone) {
    std::filesystem::create_symlink("/proc/self/mem", m_folder / "memory.xml");
    const auto database = Open(m_folder / "memory.xml", GetParam());
    database->SetChanged();
    EXPECT_EQ(database->GetTablesCount(), 2);
    EXPECT_THAT(database->LastReadError().ToUtf8(), HasSubstr("Input/output error"));
    if (GetParam() == Reading::Sequential) {
        EXPECT_TRUE(LogHolds(*database, "memory.xml' could not be read: Input/output error"));
        EXPECT_FALSE(LogHolds(*database, "Invalid xml database file format"));
    }
    EXPECT_FALSE(database->Save(CString(Utf8(m_folder / "memory.xml"))));
}

// The descriptor of an open file; -1 if the file is not open.
int DescriptorOf(const std::filesystem::path& path) {
    constexpr int Most = 1024;
    struct stat file {};
    struct stat open {};
    int found = ::stat(path.c_str(), &file) == 0 ? 0 : Most;
    while (found < Most &&
           (::fstat(found, &open) == -1 || open.st_dev != file.st_dev || open.st_ino != file.st_ino)) {
        ++found;
    }
    return found < Most ? found : -1;
}

// The file fails once its structure and its first table are read: the descriptor is made to refer to a
// folder, which gives an error instead of bytes.
TEST_F(PosixBadInput, AnErrorInTheMiddleOfSequentialReading_IsToldAndLosesNoTable) {
    const StaticsGuard statics;
    DbSource::MaxBufferSize = 16;
    const auto database = Open(File(), Reading::Sequential);
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
    const int reading = DescriptorOf(File());
    ASSERT_NE(reading, -1);
    const int folder = ::open(m_folder.Path().c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_NE(::dup2(folder, reading), -1);
    ::close(folder);
    EXPECT_EQ(database->GetTableData("Beta")->size(), 0U);
    EXPECT_TRUE(LogHolds(*database, "given.xml' could not be read: Is a directory"));
    EXPECT_FALSE(LogHolds(*database, "Invalid xml database file format"));
    EXPECT_THAT(database->LastReadError().ToUtf8(), HasSubstr("Is a directory"));
    EXPECT_THAT(database->LastReadError().ToUtf8(), HasSubstr("'Beta', 'Gamma'"));
    database->GetTableData("Alpha")->GetRow(0)->SetValue("count", CString("11"));
    ASSERT_TRUE(database->Save(Path())) << database->LastSaveError();
    EXPECT_EQ(database->LastReadError(), CString());
    const auto saved = Open(File(), Reading::Whole);
    EXPECT_THAT(RowsOf(*saved, "Alpha"), testing::ElementsAre("one 11", "two 2"));
    EXPECT_THAT(RowsOf(*saved, "Beta"), testing::ElementsAre("2.5"));
}

}  // namespace
