// Daemons that the log does not name, or that never had a process.
#include "Reattachment.h"

#include "ReattachmentFixture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

TEST_F(Reattachment, Command_that_could_never_be_started_is_told_apart_from_a_lost_one)
{
    log_.Begin();
    Start(0, 12, "x");
    log_.Add(1, R"(Unable to start C:\stopped.exe )"); // the stop leaves no record
    for (int second = 0; second < 16; ++second) {
        log_.Add(2, "something else");
    }
    log_.Add(1, R"(Unable to start C:\no.exe )").End().Begin();
    EXPECT_EQ(PlanNow(),
              (Lines{"0/12 attach", "-/- never ran: its supervisor could never start it"}));
    Attach(0, 12, "x");
    log_.Add(1, R"(Unable to start C:\no.exe )"); // a client launched it again
    EXPECT_EQ(PlanNow(), Lines{"0/12 already 0"});
}

TEST_F(Reattachment, Command_that_could_never_be_started_and_runs_now_is_left_out)
{
    log_.Begin().Add(1, R"(Unable to start C:\FW\App\a.exe x )").End().Begin();
    EXPECT_EQ(PlanNow(), Lines{"-/- never ran: its supervisor could never start it"});
    Start(3, 15, "x");
    EXPECT_EQ(PlanNow(), Lines{"-/- already 3"});
}

TEST_F(Reattachment,
       Process_that_the_log_does_not_name_is_attached_if_the_former_supervisor_started_it)
{
    log_.Begin();
    machine_.Run(13, R"(C:\FW\App\b.exe)", log_.NowMs());
    Start(0, 12, "x");
    log_.Begin();
    family_.parentOf = [](std::uint32_t) { return 100; };
    family_.childrenOf = [this](std::uint32_t parent) {
        return std::vector<RunningProgram>{{machine_.processes[parent == 100 ? 13 : 0], {"-y"}}};
    };
    EXPECT_EQ(PlanNow(), (Lines{"0/12 attach", "-/13 attach"}));
    const ListedProcess listed{5,   13,   machine_.processes[13].createdMs, R"(C:\FW\App\b.exe)",
                               "b", false};
    EXPECT_EQ(PlanNow({listed}), (Lines{"0/12 attach", "5/13 attach"}));
    log_.Add(2, R"(Attach DaemonId(0) PId(13) : C:\FW\App\b.exe -y )");
    EXPECT_EQ(PlanNow(), Lines{"0/12 attach"});
}

// Windows may have given the id of the ended supervisor to a process of another user.
TEST_F(Reattachment, Process_that_may_have_been_started_after_the_supervisors_end_is_not_attached)
{
    log_.Begin();
    Start(0, 12, "x");
    machine_.Run(13, R"(C:\Users\guest\evil.exe)", log_.NowMs() - 1);
    log_.Add(2, "something else").Begin(); // perhaps a record of the next supervisor
    family_.parentOf = [](std::uint32_t) { return 100; };
    family_.childrenOf = [this](std::uint32_t parent) {
        return std::vector<RunningProgram>{{machine_.processes[parent == 100 ? 13 : 0], {}}};
    };
    EXPECT_EQ(PlanNow(), (Lines{"0/12 attach", "-/13 uncertain"}));
}

} // namespace
} // namespace vqrx::test
