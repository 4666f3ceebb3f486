#pragma once

#include "FakeLog.h"
#include "FakeMachine.h"
#include "Reattachment.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::test {

using namespace client::v0;

/// Plans the hand-over from supervisors that a log shows, on a machine that the test invents.
class Reattachment : public ::testing::Test {
protected:
    /// Adds a process and the record of its start.
    void Start(std::uint32_t id, std::uint32_t process, const std::string& argument)
    {
        machine_.Run(process, R"(C:\FW\App\a.exe)", log_.NowMs());
        log_.Add(2, Line("Start", id, process, argument));
    }
    void Attach(std::uint32_t id, std::uint32_t process, const std::string& argument)
    {
        log_.Add(2, Line("Attach", id, process, argument));
    }
    static std::string Line(const std::string& what, std::uint32_t id, std::uint32_t process,
                            const std::string& argument)
    {
        return what + " DaemonId(" + std::to_string(id) + ") PId(" + std::to_string(process) +
               R"() : C:\FW\App\a.exe )" + argument + " ";
    }

    /// Returns the plan as lines: "0/12 attach" or "0/12 already 3" or "0/12 lost: reason", with
    /// the former daemon id and the process id in front.
    std::vector<std::string> PlanNow(const std::vector<ListedProcess>& listed = {})
    {
        const Timeline timeline = log_.Timeline();
        const SupervisorRun* const current = RunThatGoesOn(timeline);
        std::vector<std::string> lines;
        for (const FormerDaemon& former :
             PlanReattachment(timeline, *current, listed, machine_.Source(), family_)) {
            std::string line = (former.id ? std::to_string(*former.id) : "-") + "/" +
                               (former.processId ? std::to_string(*former.processId) : "-");
            line += former.plan == FormerDaemon::Plan::kAttach ? " attach"
                    : former.plan == FormerDaemon::Plan::kAlready
                        ? " already " + std::to_string(*former.newId)
                    : former.plan == FormerDaemon::Plan::kUncertain ? " uncertain"
                    : former.plan == FormerDaemon::Plan::kNeverRan  ? " never ran: " + former.note
                                                                    : " lost: " + former.note;
            lines.push_back(line);
        }
        return lines;
    }

    using Lines = std::vector<std::string>;
    FakeLog log_;
    FakeMachine machine_;
    ProcessFamily family_; // has no functions unless a test sets them
};

} // namespace vqrx::test
