// The commands with every allocation failing once: none crashes, loses a file, or falsely reports success.
#include <gmock/gmock.h>

#include <cstdio>
#include <filesystem>

#include "Run.h"
#include "support/AllocationPlan.h"
#include "support/TemporaryFolder.h"

namespace quillet::tool {
namespace {

using test::AllocationPlan;
using test::SweepAllocations;

constexpr const char* OutOfMemoryLine = "quillet: out of memory\n";

struct Outcome {
    int m_status = 0;
    std::string m_output;
    std::string m_errors;
    // The bytes of the catalog afterwards.
    std::string m_catalog;
    bool m_hasFailed = false;

    bool IsLike(const Outcome& other) const {
        return m_status == other.m_status && m_output == other.m_output && m_errors == other.m_errors &&
               m_catalog == other.m_catalog;
    }
};

class OutOfMemory : public testing::Test {
protected:
    void SetUp() override {
        test::WriteBytes(m_folder / "in.csv", "name,h [mm]\nIPE 80,80\nIPE 100,100\n");
        ASSERT_EQ(Run({"new", Path("small.xml"), "--header", "title=Small"}).m_status, 0);
        ASSERT_EQ(Run({"import", Path("small.xml"), "IPE", Path("in.csv")}).m_status, 0);
        m_before = Catalog();
        m_names = m_folder.Names();
    }

    std::string Path(const char* name) const { return test::Utf8(m_folder / name); }
    std::string Catalog() const { return test::ReadBytes(m_folder / "small.xml"); }

    // Runs a command in this process. Without a number, no allocation fails.
    Outcome Run(const std::vector<std::string>& arguments, std::size_t failing = 0) const {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        Outcome outcome;
        {
            AllocationPlan plan(failing, test::Failing::Once, test::Callers::Ours);
            outcome.m_status = RunCommandLine(arguments);
            plan.Disarm();
            outcome.m_hasFailed = plan.HasFailed();
        }
        std::fflush(stdout);
        outcome.m_output = testing::internal::GetCapturedStdout();
        outcome.m_errors = testing::internal::GetCapturedStderr();
        outcome.m_catalog = Catalog();
        return outcome;
    }

    // A command completes, or fails with a line and leaves the catalog as it was.
    void Sweep(const std::vector<std::string>& arguments) {
        const Outcome right = Run(arguments);
        ASSERT_EQ(right.m_status, 0) << right.m_errors;
        std::size_t lines = 0;
        SweepAllocations([&](std::size_t failing) {
            test::WriteBytes(m_folder / "small.xml", m_before);
            const Outcome outcome = Run(arguments, failing);
            if (outcome.m_status == 0) {
                EXPECT_TRUE(outcome.IsLike(right)) << failing << ": " << outcome.m_output << outcome.m_errors;
            } else {
                EXPECT_EQ(outcome.m_status, 1) << failing;
                EXPECT_EQ(outcome.m_errors, OutOfMemoryLine) << failing;
                EXPECT_EQ(outcome.m_catalog, m_before) << failing;
                ++lines;
            }
            EXPECT_EQ(m_folder.Names(), m_names) << failing;
            return outcome.m_hasFailed && !HasFailure();
        });
        EXPECT_GT(lines, 100U);
    }

    const test::TemporaryFolder m_folder;
    std::string m_before;
    std::vector<std::filesystem::path> m_names;
};

TEST_F(OutOfMemory, Help_WithAnyAllocationFailing_IsPrintedOrFails) {
    Sweep({"--help"});
}

TEST_F(OutOfMemory, Set_WithAnyAllocationFailing_IsDoneOrLeavesTheCatalog) {
    Sweep({"set", Path("small.xml"), "header", "title=Changed"});
}

TEST_F(OutOfMemory, Import_WithAnyAllocationFailing_IsDoneOrLeavesTheCatalog) {
    Sweep({"import", Path("small.xml"), "Mine", Path("in.csv")});
}

TEST_F(OutOfMemory, Show_WithAnyAllocationFailing_ShowsTheRowsOrFails) {
    Sweep({"show", Path("small.xml"), "IPE"});
}

TEST_F(OutOfMemory, Query_WithAnyAllocationFailing_ShowsTheRowsOrFails) {
    Sweep({"query", Path("small.xml"),
           "select name, h_mm from IPE where h_mm > 90 or name = 'ipe 80' order by name"});
}

}  // namespace
}  // namespace quillet::tool
