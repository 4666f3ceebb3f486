#include "FormerChildren.h"

#include "FakeLog.h"
#include "FakeMachine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

// A supervisor, process 100, ran from the first record of the log until it was killed. Its daemon 0
// is process 12. Then the next supervisor started.
class FormerChildren : public ::testing::Test {
protected:
    using Ids = std::vector<std::uint32_t>;
    FormerChildren()
    {
        log_.Begin();
        startedMs_ = log_.NowMs() - 1000;
        Run(12, 100, log_.NowMs());
        ranAtMs_ = log_.NowMs();
        log_.Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )");
    }

    // Adds a running process and its parent.
    void Run(std::uint32_t processId, std::uint32_t parentId, std::int64_t createdMs)
    {
        machine_.Run(processId, R"(C:\FW\App\a.exe)", createdMs);
        parents_[processId] = parentId;
    }

    // Starts the next supervisor. Returns the ids of the certain children; uncertain_ holds the ids
    // of the others.
    std::vector<std::uint32_t> Find(const std::vector<StartedProcess>& started,
                                    const std::vector<FormerSupervisor>& supervisors = {})
    {
        FakeLog log = log_;
        const Timeline timeline = log.Begin().Timeline();
        ProcessFamily family;
        family.parentOf = [this](std::uint32_t processId) {
            const auto found = parents_.find(processId);
            return found != parents_.end() ? std::optional(found->second) : std::nullopt;
        };
        family.childrenOf = [this](std::uint32_t parentId) {
            std::vector<RunningProgram> children;
            for (const auto& [processId, parent] : parents_) {
                if (parent == parentId) {
                    children.push_back({machine_.processes[processId], {"-x"}});
                }
            }
            return children;
        };
        family.supervisors = supervisors;
        std::vector<std::uint32_t> processes;
        uncertain_.clear();
        for (const FormerChild& child : FindFormerChildren(started, timeline, timeline.runs.back(),
                                                           machine_.Source().facts, family)) {
            (child.certain ? processes : uncertain_).push_back(child.program.facts.processId);
        }
        return processes;
    }

    std::vector<StartedProcess> Daemon0()
    {
        return {{machine_.processes[12], startedMs_, ranAtMs_}};
    }

    FakeLog log_;
    FakeMachine machine_;
    std::map<std::uint32_t, std::uint32_t> parents_; // by process id
    std::int64_t startedMs_ = 0;
    std::int64_t ranAtMs_ = 0; // the last record
    Ids uncertain_;
};

TEST_F(FormerChildren, Process_that_was_started_before_the_last_record_is_certain)
{
    Run(13, 100, ranAtMs_);
    EXPECT_EQ(Find(Daemon0()), Ids{13});
    EXPECT_EQ(uncertain_, Ids{});
}

// A process of another user may have got the id of the dead supervisor, started it, and ended.
TEST_F(FormerChildren, Process_that_was_started_after_the_last_record_is_uncertain)
{
    Run(13, 100, ranAtMs_ + 1);
    EXPECT_EQ(Find(Daemon0()), Ids{});
    EXPECT_EQ(uncertain_, Ids{13});
}

TEST_F(FormerChildren, Known_end_of_the_supervisor_makes_what_was_started_just_before_certain)
{
    const std::int64_t endedMs = ranAtMs_ + 500;
    Run(13, 100, endedMs);
    Run(14, 100, endedMs + 1);
    EXPECT_EQ(Find(Daemon0(), {{100, startedMs_, endedMs}}), Ids{13});
    EXPECT_EQ(uncertain_, Ids{14});
}

TEST_F(FormerChildren, Between_two_supervisors_with_one_id_nothing_is_certain)
{
    Run(13, 100, ranAtMs_ + 100);
    const FormerSupervisor later{100, ranAtMs_ + 200, ranAtMs_ + 300};
    EXPECT_EQ(Find(Daemon0(), {later}), Ids{});
    EXPECT_EQ(uncertain_, Ids{13});
}

TEST_F(FormerChildren, Process_whose_record_was_overwritten_is_found)
{
    Run(13, 100, startedMs_ + 1);
    EXPECT_EQ(Find(Daemon0()), Ids{13});
}

TEST_F(FormerChildren, Process_that_is_older_than_the_supervisor_is_no_child)
{
    Run(13, 100, startedMs_ - 1);
    EXPECT_EQ(Find(Daemon0()), Ids{});
}

TEST_F(FormerChildren, Process_that_was_created_after_the_next_supervisor_began_is_no_child)
{
    Run(13, 100, log_.NowMs() + 60000);
    EXPECT_EQ(Find(Daemon0()), Ids{});
}

TEST_F(FormerChildren, Process_of_another_parent_is_no_child)
{
    Run(13, 101, log_.NowMs());
    EXPECT_EQ(Find(Daemon0()), Ids{});
}

TEST_F(FormerChildren, Children_of_a_parent_that_still_runs_are_left_out)
{
    Run(13, 100, log_.NowMs());
    Run(100, 4, startedMs_ - 100);
    EXPECT_EQ(Find(Daemon0()), Ids{});
}

TEST_F(FormerChildren, If_another_process_has_the_id_of_the_supervisor_its_children_are_left_out)
{
    const std::int64_t killedMs = log_.NowMs();
    Run(13, 100, ranAtMs_);
    Run(100, 4, killedMs);
    Run(14, 100, killedMs + 10);
    EXPECT_EQ(Find(Daemon0()), Ids{13});
}

TEST_F(FormerChildren, Process_that_the_log_names_is_left_out)
{
    Run(13, 100, log_.NowMs());
    log_.Add(2, R"(Start DaemonId(1) PId(13) : C:\FW\App\a.exe )");
    EXPECT_EQ(Find(Daemon0()), Ids{});
}

TEST_F(FormerChildren, Process_with_the_id_of_an_earlier_daemon_is_found)
{
    log_.Add(2, R"(Start DaemonId(1) PId(13) : C:\FW\App\a.exe )")
        .Add(0, "Exception caught in : Unknown (0x1)")
        .Add(1, R"(Start DaemonId(1) PId(15) : C:\FW\App\a.exe )");
    ranAtMs_ = log_.NowMs();
    Run(13, 100, ranAtMs_);
    EXPECT_EQ(Find(Daemon0()), Ids{13});
}

TEST_F(FormerChildren, Supervisor_that_the_caller_knows_needs_no_daemon_in_the_log)
{
    Run(13, 100, log_.NowMs());
    EXPECT_EQ(Find({}), Ids{});
    EXPECT_EQ(Find({}, {{100, startedMs_, log_.NowMs()}}), Ids{13});
}

TEST_F(FormerChildren, Command_of_a_process_is_its_path_and_its_arguments)
{
    EXPECT_EQ(CommandOf({machine_.processes[12], {"-x", "two words"}}),
              R"(C:\FW\App\a.exe -x two words)");
}

} // namespace
} // namespace vqrx::test
