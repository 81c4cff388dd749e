#include "support/AllocationPlan.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "Quillet/IQuillet.h"

namespace {

using quillet::test::AllocationPlan;
using quillet::test::Failing;
using quillet::test::LiveBlocks;
using quillet::test::SweepAllocations;

// Blocks that the compiler can't optimise away.
void* volatile s_block = nullptr;

bool Allocates() {
    s_block = std::malloc(10);
    const bool allocated = s_block != nullptr;
    std::free(s_block);
    return allocated;
}

// Which of a number of allocations succeed, as digits.
std::string Successes(std::size_t failing, Failing which, int count) {
    std::string digits(static_cast<std::size_t>(count), '0');
    const AllocationPlan plan(failing, which);
    for (char& digit : digits) {
        digit = Allocates() ? '1' : '0';
    }
    return digits;
}

TEST(AllocationPlanTest, Once_FailsTheNamedAllocationOnly) {
    EXPECT_EQ(Successes(1, Failing::Once, 4), "0111");
    EXPECT_EQ(Successes(3, Failing::Once, 4), "1101");
}

TEST(AllocationPlanTest, FromThereOn_FailsTheNamedAllocationAndAllLater) {
    EXPECT_EQ(Successes(1, Failing::FromThereOn, 4), "0000");
    EXPECT_EQ(Successes(3, Failing::FromThereOn, 4), "1100");
}

TEST(AllocationPlanTest, ANumberThatIsNotReached_FailsNothing) {
    AllocationPlan plan(5);
    Allocates();
    plan.Disarm();
    EXPECT_FALSE(plan.HasFailed());
    EXPECT_EQ(plan.Counted(), 1U);
    EXPECT_EQ(plan.CountedBytes(), 10U);
}

TEST(AllocationPlanTest, WithoutAPlan_OrDisarmed_NothingFailsOrIsCounted) {
    EXPECT_TRUE(Allocates());
    { const AllocationPlan plan(1, Failing::FromThereOn); }
    EXPECT_TRUE(Allocates());
    AllocationPlan plan(2, Failing::FromThereOn);
    const bool first = Allocates();
    plan.Disarm();
    EXPECT_TRUE(first);
    EXPECT_TRUE(Allocates());
    EXPECT_FALSE(plan.HasFailed());
    EXPECT_EQ(plan.Counted(), 1U);
}

TEST(AllocationPlanTest, EveryWayToAllocate_Fails) {
    void* volatile block = std::malloc(10);
    AllocationPlan plan(1, Failing::FromThereOn);
    s_block = std::malloc(10);
    const bool mallocFailed = s_block == nullptr;
    s_block = std::calloc(2, 5);
    const bool callocFailed = s_block == nullptr;
    // A failing realloc leaves the block as it is.
    void* volatile moved = std::realloc(block, 100);
    const bool reallocFailed = moved == nullptr;
    s_block = ::operator new(10, std::nothrow);
    const bool newFailed = s_block == nullptr;
    plan.Disarm();
    std::free(block);
    EXPECT_TRUE(mallocFailed && callocFailed && reallocFailed && newFailed);
    // A non-throwing new may call one that throws, and exceptions take memory.
    EXPECT_GE(plan.Counted(), 4U);
}

TEST(AllocationPlanTest, AFailingNew_ThrowsBadAlloc) {
    bool caught = false;
    {
        const AllocationPlan plan(1);
        try {
            s_block = ::operator new(10);
        } catch (const std::bad_alloc&) {
            caught = true;
        }
    }
    EXPECT_TRUE(caught);
}

TEST(AllocationPlanTest, AllocationsInsideTheLibrary_AreCountedAndFail) {
    const CString text("a text that is too long to do without memory of its own");
    std::size_t counted = 0;
    {
        const AllocationPlan plan;
        const CString longer = text + text;
        counted = plan.Counted();
    }
    EXPECT_GT(counted, 0U);
    bool caught = false;
    {
        const AllocationPlan plan(1);
        try {
            const CString longer = text + text;
        } catch (const std::bad_alloc&) {
            caught = true;
        }
    }
    EXPECT_TRUE(caught);
}

TEST(AllocationPlanTest, StringsAndArraysOfTheAutomationTypes_AreCountedAndFail) {
    AllocationPlan plan(1, Failing::FromThereOn);
    const BSTR text = SysAllocString(OLESTR("text"));
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, 4);
    plan.Disarm();
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(array, nullptr);
    EXPECT_EQ(plan.Counted(), 2U);
}

TEST(AllocationPlanTest, OtherThreads_AreLeftAlone) {
    std::atomic<bool> isArmed = false;
    bool allocated = false;
    std::thread other([&] {
        while (!isArmed) {
        }
        allocated = Allocates();
    });
    AllocationPlan plan(1, Failing::FromThereOn);
    isArmed = true;
    other.join();
    plan.Disarm();
    EXPECT_TRUE(allocated);
    EXPECT_EQ(plan.Counted(), 0U);
}

TEST(AllocationPlanTest, LiveBlocks_RiseAndFallWithWhatIsHeld) {
    { const AllocationPlan plan; }
    const std::ptrdiff_t before = LiveBlocks();
    auto held = std::make_unique<std::vector<int>>(1000);
    const std::ptrdiff_t with = LiveBlocks();
    held.reset();
    const std::ptrdiff_t after = LiveBlocks();
    EXPECT_EQ(with - before, 2);
    EXPECT_EQ(after - before, 0);
}

TEST(AllocationPlanTest, ASweep_FailsEachAllocationOnceAndEnds) {
    std::vector<std::string> runs;
    const std::size_t failures = SweepAllocations([&](std::size_t failing) {
        runs.push_back(Successes(failing, Failing::Once, 3));
        return runs.back().find('0') != std::string::npos;
    });
    EXPECT_EQ(failures, 3U);
    EXPECT_EQ(runs, (std::vector<std::string>{"011", "101", "110", "111"}));
}

}  // namespace
