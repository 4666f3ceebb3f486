// Commands of daemonctl that look at something, each time with another call that fails: the command
// prints all that it usually prints, or says what is missing, and the next command works.
#include "CommandMachine.h"
#include "CommandScenario.h"
#include "Commands.h"
#include "FileContent.h"
#include "InstalledPaths.h"
#include "StandInFirewall.h"
#include "StandInWmi.h"
#include "StartedThings.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

namespace vqrx::test::anomaly {
namespace {

using Arguments = std::vector<std::string>;

void AddLog(CLI::App& app, int& exitCode)
{
    client::v0::AddLogCommand(app, exitCode, client::v0::DefaultLogPath);
}

void AddReport(CLI::App& app, int& exitCode)
{
    client::v0::AddReportCommand(app, exitCode, client::v0::DefaultLogPath);
}

/// A command on a machine whose supervisor runs.
class LookingCommand : public CommandScenario {
public:
    LookingCommand(RunNotes& notes, AddCommand add, Arguments arguments)
        : CommandScenario(notes, std::move(add), std::move(arguments))
    {
        MakeCommandMachine();
        WriteLogOfOneRun();
    }
};

/// A page about a copy of a log: it does not depend on the present time. Without --json: the
/// library for JSON ends the process, or leaks, if memory runs out.
class ReportOfCopy : public LookingCommand {
public:
    explicit ReportOfCopy(RunNotes& notes)
        : ReportOfCopy(notes, std::make_unique<TempFolder>())
    {
    }

protected:
    [[nodiscard]] std::string TakeFiles() override
    {
        std::string content;
        for (const auto& entry : std::filesystem::directory_iterator(folder_->Path())) {
            content += entry.path().extension().string() + ":\n" + FileContent(entry.path());
            std::filesystem::remove(entry.path());
        }
        return content;
    }

private:
    ReportOfCopy(RunNotes& notes, std::unique_ptr<TempFolder> folder)
        : LookingCommand(notes, AddReport,
                         {"report", "--file", client::v0::DefaultLogPath(), "--output",
                          folder->File("page.html")})
        , folder_(std::move(folder))
    {
    }

    std::unique_ptr<TempFolder> folder_;
};

/// The list of daemons. It shows a dash for a figure that Windows does not give.
class Listing : public LookingCommand {
public:
    explicit Listing(RunNotes& notes)
        : LookingCommand(notes, client::v0::AddPsCommand, {"ps"})
    {
    }

protected:
    [[nodiscard]] bool MayLackFigures() const override { return true; }
};

/// The check of the machine. A fault that it cannot look for is a fault in its output.
class Examination : public LookingCommand {
public:
    explicit Examination(RunNotes& notes)
        : LookingCommand(notes, client::v0::AddDoctorCommand, {"doctor"})
    {
    }
    // A check that takes too long runs on after the command.
    void Finish() override
    {
        notes_.Begin("the threads of the checks end");
        WaitForStartedThreads();
        Expect(notes_, TheFirewallScript().liveObjects == 0, "a reference to the firewall is left");
        Expect(notes_, TheWmiScript().liveObjects == 0, "a reference to WMI is left");
    }

protected:
    [[nodiscard]] bool MayLackFigures() const override { return true; }
};

TEST(CommandAnomaly, Log_survives_the_failure_of_each_call)
{
    ExpectThatEachCallMayFail([](RunNotes& notes) {
        return std::make_unique<LookingCommand>(notes, AddLog, Arguments{"log"});
    });
}

TEST(CommandAnomaly, Report_survives_the_failure_of_each_call)
{
    ExpectThatEachCallMayFail(
        [](RunNotes& notes) { return std::make_unique<ReportOfCopy>(notes); });
}

TEST(CommandAnomaly, Ps_survives_the_failure_of_each_call)
{
    ExpectThatEachCallMayFail([](RunNotes& notes) { return std::make_unique<Listing>(notes); });
}

TEST(CommandAnomaly, Doctor_survives_the_failure_of_each_call)
{
    ExpectThatEachCallMayFail([](RunNotes& notes) { return std::make_unique<Examination>(notes); });
}

} // namespace
} // namespace vqrx::test::anomaly
