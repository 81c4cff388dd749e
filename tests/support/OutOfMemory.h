// Steps that happen completely or not at all, whichever allocation fails.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <ostream>
#include <string>
#include <utility>

#include "Quillet/base/CException.h"
#include "support/AllocationPlan.h"

namespace quillet::test {

struct Attempt {
    // Whether an allocation failed, and whether the step still completed.
    bool m_ranOut = false;
    bool m_isDone = false;
};

// Runs the step with a failing allocation.
template <typename Step>
Attempt Try(std::size_t failing, Failing which, const Step& step, Callers whose = Callers::All) {
    Attempt attempt;
    AllocationPlan plan(failing, which, whose);
    try {
        step();
        attempt.m_isDone = true;
    } catch (const std::bad_alloc&) {
    } catch (CException* exception) {
        exception->Delete();
    }
    plan.Disarm();
    attempt.m_ranOut = plan.HasFailed();
    return attempt;
}

// Calls run(failing, which) for every allocation of the step, which fails first alone and then with all later
// ones. run makes an attempt, checks its result and returns the attempt. No run may leak memory.
template <typename Run>
void SweepAttempts(const Run& run) {
    // These create what is created once per process.
    run(0, Failing::Once);
    run(1, Failing::Once);
    for (const Failing which : {Failing::Once, Failing::FromThereOn}) {
        const std::size_t failures = SweepAllocations([&](std::size_t failing) {
            SCOPED_TRACE(std::string("allocation ") + std::to_string(failing) +
                         (which == Failing::Once ? " fails" : " and all later ones fail"));
            const std::ptrdiff_t before = LiveBlocks();
            const Attempt attempt = run(failing, which);
            EXPECT_LE(LiveBlocks() - before, 0);
            return attempt.m_ranOut && !testing::Test::HasFailure();
        });
        EXPECT_GT(failures, 0U);
    }
}

// make() returns a pointer to a subject, change() does the step, and show() returns the visible state of the
// subject as text. Whichever allocation of the step fails: if the step throws, the subject is unchanged, and
// the step succeeds when it is repeated; if it returns, the result is the same as with enough memory.
template <typename Make, typename Change, typename Show>
void ExpectWholeOrNotAtAll(const Make& make, const Change& change, const Show& show) {
    std::string before;
    std::string after;
    {
        const auto subject = make();
        before = show(*subject);
        change(*subject);
        after = show(*subject);
    }
    SweepAttempts([&](std::size_t failing, Failing which) {
        const auto subject = make();
        const Attempt attempt = Try(failing, which, [&] { change(*subject); });
        EXPECT_EQ(show(*subject), attempt.m_isDone ? after : before);
        if (!attempt.m_isDone) {
            change(*subject);
            EXPECT_EQ(show(*subject), after);
        }
        return attempt;
    });
}

// A parameter of tests of such steps.
template <typename Subject>
struct Step {
    using Action = std::function<void(Subject&)>;

    Step(const char* name, Action change)
        : Step(
              name, [](Subject&) {}, std::move(change)) {}
    Step(const char* name, Action prepare, Action change)
        : m_name(name), m_prepare(std::move(prepare)), m_change(std::move(change)) {}

    const char* m_name;
    // Prepares the subject for the step.
    Action m_prepare;
    Action m_change;
};

template <typename Subject>
void PrintTo(const Step<Subject>& step, std::ostream* out) {
    *out << step.m_name;
}

// The same for a parameter; make() returns an unprepared subject.
template <typename Subject, typename Make, typename Show>
void ExpectStepWholeOrNotAtAll(const Step<Subject>& step, const Make& make, const Show& show) {
    const auto prepared = [&] {
        auto subject = make();
        step.m_prepare(*subject);
        return subject;
    };
    ExpectWholeOrNotAtAll(prepared, step.m_change, show);
}

// Runs an action that must not need memory.
template <typename Action>
void ExpectNoAllocation(const Action& action) {
    AllocationPlan plan(1, Failing::FromThereOn);
    action();
    plan.Disarm();
    EXPECT_FALSE(plan.HasFailed());
}

}  // namespace quillet::test
