#pragma once

#include "FleetPlan.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::test {

using namespace client::v0;

class FleetPlanTest : public ::testing::Test {
protected:
    // Adds a daemon of the supervisor.
    void Daemon(const std::string& command, bool attached = false)
    {
        DaemonStatus daemon;
        daemon.id = static_cast<std::uint32_t>(daemons_.size());
        daemon.state = RunState::kRunning;
        daemon.processId = 100 + *daemon.id;
        daemon.attached = attached;
        daemon.service = !command.ends_with(' ');
        daemon.command = command;
        daemons_.push_back(daemon);
    }

    void Orphan(std::uint32_t processId, const std::string& image,
                const std::optional<std::vector<std::string>>& arguments)
    {
        UnwatchedProgram program;
        program.facts.processId = processId;
        program.facts.state = ProcessFacts::State::kRunning;
        program.facts.image = image;
        program.arguments = arguments;
        orphans_[image.substr(image.rfind('\\') + 1)].push_back(program);
    }

    // Plans for the lines of a file. Returns "launch PATH", "there 0", "attached 0", "process 12",
    // "service NAME" or "refused REASON" for each line, then "surplus 0", errors and warnings.
    std::vector<std::string> PlanFor(const std::string& file)
    {
        const ExpectFile fleet = ParseExpectFile(file);
        EXPECT_TRUE(fleet.errors.empty());
        const FleetPlan plan = PlanFleet(fleet.programs, daemons_, Source());
        std::vector<std::string> lines;
        for (const FleetMember& member : plan.members) {
            lines.push_back(Describe(member));
        }
        for (const std::size_t index : plan.surplus) {
            lines.push_back("surplus " + std::to_string(index));
        }
        for (const std::string& error : plan.errors) {
            lines.push_back("error " + error);
        }
        for (const std::string& warning : plan.warnings) {
            lines.push_back("warning " + warning);
        }
        return lines;
    }

    using Lines = std::vector<std::string>;
    std::set<std::string> files_ = {R"(C:\FW\App\a.exe)", R"(C:\FW\App\b.exe)", R"(D:\x y\c.exe)"};
    bool attachedKnown_ = true;
    std::map<std::string, std::string> links_; // from a path to the file to which it leads

private:
    static std::string Describe(const FleetMember& member)
    {
        switch (member.plan) {
        case FleetMember::Plan::kLaunch:
            return "launch " + member.path;
        case FleetMember::Plan::kRegistered:
            return "there " + std::to_string(*member.daemon);
        case FleetMember::Plan::kAttached:
            return "attached " + std::to_string(*member.daemon);
        case FleetMember::Plan::kTakeOver:
            return "process " + std::to_string(member.process.processId);
        case FleetMember::Plan::kService:
            return "service " + member.path;
        case FleetMember::Plan::kRefused:
            return "refused " + member.reason;
        }
        return "?";
    }

    FleetSource Source()
    {
        return {R"(C:\FW\App)",
                [this](const std::string& path, const std::string& image) {
                    const auto found = links_.find(path);
                    return found != links_.end() && found->second == image;
                },
                [this](const std::string& path) { return files_.count(path) != 0; },
                [](const std::string& name) {
                    if (name == "HiddenSvc") {
                        throw std::runtime_error("Windows does not answer");
                    }
                    return name == "SnmpSvc";
                },
                [this](const std::string& fileName) { return orphans_[fileName]; },
                [](const std::string& path, const std::vector<std::string>& arguments) {
                    for (const std::string& argument : arguments) {
                        if (argument.find('%') != std::string::npos) {
                            return "[" + path + "] refused";
                        }
                    }
                    return std::string();
                },
                attachedKnown_};
    }

    std::vector<DaemonStatus> daemons_;
    std::map<std::string, std::vector<UnwatchedProgram>> orphans_; // by file name
};

} // namespace vqrx::test
