// Programs that change one catalog at the same time.
#include <gmock/gmock.h>

#include <chrono>
#include <thread>

#include "Quillet/platform/FileLock.h"
#include "input/Catalog.h"
#include "support/ToolTest.h"

namespace {

using quillet::platform::FileLock;
using quillet::test::RunResult;
using quillet::test::TemporaryFolder;
using quillet::tool::Catalog;
using testing::HasSubstr;
using testing::StartsWith;

class Writers : public quillet::test::ToolTest {
protected:
    Writers() : m_file(CopyExample("materials.xml")) {}

    static std::unique_ptr<FileLock> Lock(const std::string& path) {
        FileLock::Refusal refusal;
        auto lock = FileLock::Take(path, std::chrono::milliseconds(0), refusal);
        EXPECT_NE(lock, nullptr) << refusal.m_why;
        return lock;
    }

    // How a refused command names this process.
    static std::string Holder(const std::string& path) {
        FileLock::Refusal refusal;
        EXPECT_EQ(FileLock::Take(path, std::chrono::milliseconds(0), refusal), nullptr);
        return refusal.m_holder ? "process " + std::to_string(*refusal.m_holder) : "another program";
    }

    // Every command that changes the catalog.
    std::vector<std::vector<std::string>> Commands() const {
        return {{"set", m_file, "header", "title=Mine"},
                {"import", m_file, "Mine", Write("mine.csv", "name,G\nA,1\n")},
                {"rename", m_file, "Timber", "Wood"},
                {"drop", m_file, "Steel"}};
    }

    // Runs commands at the same time, each with its own streams. The streams' files stay until all are done:
    // a program may inherit the open files of another one that is started with it.
    static std::vector<RunResult> RunAtOnce(const std::vector<std::vector<std::string>>& commands) {
        std::vector<RunResult> results(commands.size());
        const std::vector<TemporaryFolder> streams(commands.size());
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < commands.size(); ++i) {
            threads.emplace_back([&results, &commands, &streams, i] {
                results[i] = quillet::test::RunProgram(commands[i], streams[i]);
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        return results;
    }

    // The error of saving the catalog; empty on success.
    static std::string SaveComplaint(Catalog& catalog) {
        try {
            catalog.Save();
            return {};
        } catch (const quillet::tool::Failure& failure) {
            return failure.what();
        }
    }

    const std::string m_file;
};

TEST_F(Writers, NoWait_CatalogThatSomebodyChanges_FailsAtOnceAndSaysWhoHasIt) {
    const std::string before = Read("materials.xml");
    const auto lock = Lock(m_file);
    for (std::vector<std::string> command : Commands()) {
        command.push_back("--no-wait");
        EXPECT_EQ(Failure(command), m_file + ": locked by " + Holder(m_file)) << command.front();
    }
    EXPECT_EQ(Read("materials.xml"), before);
}

TEST_F(Writers, Wait_CatalogIsLetGo_GoesOn) {
    auto lock = Lock(m_file);
    std::thread holder([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        lock.reset();
    });
    EXPECT_EQ(Output({"set", m_file, "header", "title=Mine"}), m_file + ": 1 value set in header\n");
    holder.join();
    EXPECT_THAT(Output({"info", m_file}), HasSubstr("Mine"));
}

TEST_F(Writers, Wait_CatalogIsHeldOn_FailsAfterFiveSeconds) {
    const auto lock = Lock(m_file);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Failure({"drop", m_file, "Steel"}),
              m_file + ": locked by " + Holder(m_file) + ", still after five seconds");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(Writers, ReadingCommands_LockedCatalog_TakeNoNoticeOfIt) {
    const auto lock = Lock(m_file);
    Output({"info", m_file});
    Output({"fields", m_file, "Steel"});
    Output({"show", m_file, "Steel", "--sequential"});
    Output({"query", m_file, "select * from Steel"});
    Output({"find", m_file, "Steel", "E > 0"});
    Output({"check", m_file});
    Output({"export", m_file, "Steel", Path("steel.csv")});
}

TEST_F(Writers, Commands_AtOnce_AllTakeEffect) {
    for (const RunResult& result : RunAtOnce(Commands())) {
        EXPECT_EQ(result.m_status, 0) << result.m_errors;
        EXPECT_EQ(result.m_errors, "");
    }
    const std::string info = Output({"info", m_file});
    EXPECT_THAT(info, HasSubstr("title         Mine"));
    EXPECT_THAT(info, HasSubstr("Wood"));
    EXPECT_THAT(info, testing::Not(HasSubstr("Steel")));
    EXPECT_THAT(Output({"export", m_file, "Mine", "-"}), HasSubstr("A,1"));
    EXPECT_EQ(Output({"check", m_file}), m_file + ": ok\n");
    for (const std::filesystem::path& name : m_folder.Names()) {
        EXPECT_THAT(quillet::test::Utf8(name), testing::Not(HasSubstr(".quillet-")));
    }
}

TEST_F(Writers, New_TwoAtOnce_OneWins) {
    const std::string file = Path("new.xml");
    const std::vector<RunResult> results =
        RunAtOnce({{"new", file, "--header", "title=One"}, {"new", file, "--header", "title=Other"}});
    ASSERT_EQ(results[0].m_status + results[1].m_status, 1) << results[0].m_errors << results[1].m_errors;
    const bool isFirst = results[0].m_status == 0;
    EXPECT_THAT(Read("new.xml"), HasSubstr(isFirst ? "One" : "Other"));
    EXPECT_THAT(Complaint(results[isFirst ? 1 : 0].m_errors), StartsWith(file + ": "));
}

TEST_F(Writers, New_FileThatIsMadeMeanwhile_IsNotOverwritten) {
    Catalog catalog = Catalog::Create(Path("new.xml"), {});
    Write("new.xml", "mine");
    EXPECT_EQ(SaveComplaint(catalog), Path("new.xml") + ": not saved: somebody else made it meanwhile");
    EXPECT_EQ(Read("new.xml"), "mine");
}

TEST_F(Writers, Save_CatalogThatAnEditorChanged_IsRefusedAndLeavesIt) {
    Catalog catalog = Catalog::OpenForEditing(m_file, {});
    const std::string theirs = Read("materials.xml") + "<!-- theirs -->\n";
    Write("materials.xml", theirs);
    EXPECT_EQ(SaveComplaint(catalog), m_file + ": not saved: somebody else changed it meanwhile");
    EXPECT_EQ(Read("materials.xml"), theirs);
}

TEST_F(Writers, Save_CatalogThatOnlyItsBytesTellFromWhatWasRead_IsRefused) {
    // Set in the same way as below, because some libraries' times are less precise than the file system's.
    const auto time = std::filesystem::last_write_time(m_folder / "materials.xml");
    std::filesystem::last_write_time(m_folder / "materials.xml", time);
    Catalog catalog = Catalog::OpenForEditing(m_file, {});
    std::string theirs = Read("materials.xml");
    theirs[theirs.find("title=") + 7] ^= 1;
    Write("materials.xml", theirs);
    std::filesystem::last_write_time(m_folder / "materials.xml", time);
    EXPECT_EQ(SaveComplaint(catalog), m_file + ": not saved: somebody else changed it meanwhile");
    EXPECT_EQ(Read("materials.xml"), theirs);
}

TEST_F(Writers, Save_ASecondTime_GoesOnFromTheFirst) {
    Catalog catalog = Catalog::OpenForEditing(m_file, {});
    for (int round = 0; round < 3; ++round) {
        catalog.Database().CreateTable(("Table " + std::to_string(round)).c_str(), DbTableInfo::Table);
        EXPECT_EQ(SaveComplaint(catalog), "");
    }
    EXPECT_THAT(Read("materials.xml"), HasSubstr("Table 2"));
}

TEST_F(Writers, OpenForEditing_CatalogIsGone_LetsItGo) {
    {
        const Catalog catalog = Catalog::OpenForEditing(m_file, {});
        Holder(m_file);
    }
    EXPECT_NE(Lock(m_file), nullptr);
}

}  // namespace
