// The harness finds what it promises to find: each case has a small program with one defect, which
// shows only if one of its calls fails.
#include "CallKinds.h"
#include "Campaign.h"
#include "ImportSlots.h"
#include "Injection.h"
#include "StartedThings.h"

#include <windows.h>

#include <oleauto.h>
#include <process.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace vqrx::test::anomaly {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Steps = std::function<void(RunNotes&)>;

/// A scenario whose product is one function.
class FunctionScenario : public Scenario {
public:
    FunctionScenario(RunNotes& notes, Steps steps)
        : notes_(notes)
        , steps_(std::move(steps))
    {
    }
    void Run() override
    {
        notes_.Begin("the only step");
        const OfTheProduct mark;
        steps_(notes_);
    }
    void Verify() override {}
    void Finish() override {}

private:
    RunNotes& notes_;
    Steps steps_;
};

/// Tries every call of these steps. @return the findings; nothing in the process of the runs
std::optional<CampaignReport> Try(const Steps& steps, std::uint32_t deadlineMs = 20000)
{
    CampaignOptions options;
    options.everything = true;
    options.deadlineMs = deadlineMs;
    return TryEachCall(
        [&](RunNotes& notes) { return std::make_unique<FunctionScenario>(notes, steps); }, options);
}

TEST(AnomalyHarness, Steps_that_handle_each_failure_give_no_finding_and_each_call_is_tried)
{
    const auto report = Try([](RunNotes& notes) {
        if (const HANDLE first =
                CreateFileA("CON_", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
            first != INVALID_HANDLE_VALUE) {
            CloseHandle(first);
        }
        if (const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr)) {
            CloseHandle(event);
        }
        if (const BSTR text = SysAllocString(L"text")) {
            SysFreeString(text);
        } else {
            notes.Saw("no text");
        }
        try {
            delete new int(1);
        } catch (const std::bad_alloc&) {
            notes.Saw("no memory");
        }
    });
    if (report) {
        EXPECT_THAT(report->findings, IsEmpty());
        EXPECT_EQ(4U, report->calls);
        EXPECT_EQ(4U, report->paths);
        EXPECT_EQ(4U, report->tried);
        EXPECT_EQ(0U, report->missed);
    }
}

TEST(AnomalyHarness, Handle_that_stays_open_after_a_failure_is_found)
{
    const auto report = Try([](RunNotes&) {
        const HANDLE first = CreateEventA(nullptr, TRUE, FALSE, nullptr);
        const HANDLE second = CreateEventA(nullptr, TRUE, FALSE, nullptr);
        if (second != nullptr) {
            CloseHandle(second);
            CloseHandle(first);
        }
    });
    if (report) {
        EXPECT_THAT(report->findings,
                    ElementsAre(AllOf(HasSubstr("1 x handle not given back, from CreateEventA"),
                                      HasSubstr("after the failure of call 1 of CreateEventA"))));
    }
}

TEST(AnomalyHarness, Memory_that_stays_allocated_after_a_failure_is_found)
{
    const auto report = Try([](RunNotes& notes) {
        auto* const kept = new int(1);
        if (const BSTR text = SysAllocString(L"text")) {
            SysFreeString(text);
            delete kept;
        } else {
            notes.Saw("no text");
        }
    });
    if (report) {
        ASSERT_EQ(2U, report->findings.size()); // the other one: nobody catches std::bad_alloc
        EXPECT_THAT(report->findings,
                    testing::Contains(HasSubstr("1 x block of memory not given back")));
    }
}

TEST(AnomalyHarness, Failure_without_a_trace_is_found)
{
    const auto report = Try([](RunNotes&) {
        if (const BSTR text = SysAllocString(L"text")) {
            SysFreeString(text);
        }
    });
    if (report) {
        EXPECT_THAT(report->findings,
                    ElementsAre(HasSubstr("the failure is neither in the log nor in a result")));
    }
}

TEST(AnomalyHarness, Crash_is_found_with_its_place_and_the_other_calls_are_tried_all_the_same)
{
    const auto report = Try([](RunNotes& notes) {
        auto* const memory = static_cast<volatile char*>(std::malloc(10));
        memory[0] = 'x';
        std::free(const_cast<char*>(memory));
        if (const BSTR text = SysAllocString(L"text")) {
            SysFreeString(text);
        } else {
            notes.Saw("no text");
        }
    });
    if (report) {
        EXPECT_THAT(report->findings,
                    ElementsAre(AllOf(HasSubstr("the process crashes with exception 0xc0000005"),
                                      HasSubstr("after the failure of call 1 of malloc"))));
        EXPECT_EQ(2U, report->tried);
    }
}

TEST(AnomalyHarness, Wait_that_never_ends_is_found_with_the_step_and_the_places_of_the_threads)
{
    const auto report = Try(
        [](RunNotes&) {
            const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
            SetEvent(event);
            while (WaitForSingleObject(event, INFINITE) != WAIT_OBJECT_0) {
                Sleep(1);
            }
            CloseHandle(event);
        },
        2000);
    if (report) {
        EXPECT_THAT(report->findings,
                    ElementsAre(AllOf(HasSubstr("the process hangs; the step: the only step"),
                                      HasSubstr("FunctionScenario::Run"),
                                      HasSubstr("after the failure of call 1 of CreateEventA"))));
    }
}

TEST(AnomalyHarness, Thread_that_outlives_its_owner_is_found)
{
    const auto report = Try([](RunNotes&) {
        const auto thread = reinterpret_cast<HANDLE>(_beginthreadex(
            nullptr, 0,
            [](void*) -> unsigned {
                Sleep(50);
                return 0;
            },
            nullptr, 0, nullptr));
        WaitForSingleObject(thread, INFINITE);
        CloseHandle(thread);
    });
    if (report) {
        EXPECT_THAT(report->findings,
                    testing::Contains(AllOf(HasSubstr("has a thread that runs on after the owner"),
                                            HasSubstr("call 1 of WaitForSingleObject"))));
    }
}

TEST(AnomalyHarness, Memory_for_the_own_variables_of_a_thread_is_left_out)
{
    const auto report = Try([](RunNotes& notes) {
        const auto thread = reinterpret_cast<HANDLE>(_beginthreadex(
            nullptr, 0,
            [](void*) -> unsigned {
                thread_local volatile int ofThread = 1; // the first look at it allocates
                return static_cast<unsigned>(ofThread);
            },
            nullptr, 0, nullptr));
        if (thread == nullptr) {
            notes.Saw("no thread");
            return;
        }
        while (WaitForSingleObject(thread, INFINITE) == WAIT_FAILED) {
            Sleep(1);
        }
        CloseHandle(thread);
    });
    if (report) {
        EXPECT_THAT(report->findings, IsEmpty());
        EXPECT_EQ(2U, report->calls); // the thread and the wait
    }
}

TEST(AnomalyHarness, Fault_of_the_undisturbed_steps_is_found)
{
    const auto report = Try([](RunNotes& notes) { notes.Broke("a promise"); });
    if (report) {
        ASSERT_FALSE(report->findings.empty());
        EXPECT_EQ("without a failed call: a promise", report->findings[0]);
    }
}

TEST(AnomalyHarness, Import_that_no_table_knows_is_found)
{
    const std::vector<ImportSlot> imports = {{"a.dll", "CreateEventA", nullptr},
                                             {"a.dll", "Sleep", nullptr},
                                             {"a.dll", "CreatePipe", nullptr},
                                             {"b.dll", "NewFunction", nullptr}};
    EXPECT_THAT(UnknownImports(imports), ElementsAre("b.dll:NewFunction"));
}

TEST(AnomalyHarness, Each_import_is_in_exactly_one_table)
{
    for (const ImportSlot& import : ImportSlots()) {
        const int tables = (KindOf(import.function) != nullptr ? 1 : 0) +
                           (WhySure(import.function) != nullptr ? 1 : 0) +
                           (IsOfTheTest(import.function) ? 1 : 0);
        EXPECT_EQ(1, tables) << import.function;
    }
    EXPECT_FALSE(HasDelayedImports());
}

TEST(StartedThings, Process_that_is_noted_late_is_waited_for)
{
    EXPECT_FALSE(WaitForRunningProcess(0));
    std::thread starter([] {
        Sleep(50);
        NoteStartedProcess(GetCurrentProcess());
    });
    EXPECT_TRUE(WaitForRunningProcess(60000));
    starter.join();
    ForgetStarted();
    EXPECT_THAT(RunningProcesses(), IsEmpty());
}

} // namespace
} // namespace vqrx::test::anomaly
