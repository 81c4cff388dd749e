// Steps that happen whole or not at all, whichever allocation fails.
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
    // Whether an allocation failed, and whether the step came to its end all the same.
    bool m_ranOut = false;
    bool m_isDone = false;
};

// Calls the step with an allocation failing.
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

// Calls run(failing, which), which makes an attempt and judges it, for every allocation of the step, first
// failing alone and then with all later ones. It returns the attempt. No run may keep memory.
template <typename Run>
void SweepAttempts(const Run& run) {
    // What is made once in a process is made before.
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

// make() gives a pointer to a subject, change() does the step, and show() gives what can be seen of the
// subject as text. Whichever allocation of the step fails: where it throws, the subject looks as before, and
// takes the step a second time; where it returns, the subject looks as with memory enough.
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

// One parameter of a test of such steps.
template <typename Subject>
struct Step {
    using Action = std::function<void(Subject&)>;

    Step(const char* name, Action change)
        : Step(
              name, [](Subject&) {}, std::move(change)) {}
    Step(const char* name, Action prepare, Action change)
        : m_name(name), m_prepare(std::move(prepare)), m_change(std::move(change)) {}

    const char* m_name;
    // Makes the subject ready for the step.
    Action m_prepare;
    Action m_change;
};

template <typename Subject>
void PrintTo(const Step<Subject>& step, std::ostream* out) {
    *out << step.m_name;
}

// The same for a parameter, where make() gives a subject that is not prepared yet.
template <typename Subject, typename Make, typename Show>
void ExpectStepWholeOrNotAtAll(const Step<Subject>& step, const Make& make, const Show& show) {
    const auto prepared = [&] {
        auto subject = make();
        step.m_prepare(*subject);
        return subject;
    };
    ExpectWholeOrNotAtAll(prepared, step.m_change, show);
}

// Takes a step that must not need memory.
template <typename Action>
void ExpectNoAllocation(const Action& action) {
    AllocationPlan plan(1, Failing::FromThereOn);
    action();
    plan.Disarm();
    EXPECT_FALSE(plan.HasFailed());
}

}  // namespace quillet::test
