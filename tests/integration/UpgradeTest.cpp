// Upgrade: the supervisor ends, a new one starts, and daemonctl reattach gives it the running
// workers.
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "FileContent.h"
#include "PrefixClass.h"
#include "SupervisorProcess.h"
#include "win32/FileTime.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using Json = nlohmann::json;

// A supervisor that ends, and a second one that starts in the same folder. The processes that the
// first one started keep running.
class Upgrade : public ::testing::Test {
protected:
    void StartNew()
    {
        successor_ = std::make_unique<SupervisorProcess>(
            [this](FirmwareRegistry& registry, const std::string&) {
                registry.SetPathname(FirmwareRegistry::kCurrent, former_.Root() + "\\App\\bin");
            });
    }

    // Launches workers with different arguments. Returns their process ids, by daemon id.
    std::vector<DWORD> LaunchWorkers(int count)
    {
        std::vector<DWORD> processes;
        for (int index = 0; index < count; ++index) {
            former_.Client().Launch(std::wstring(worker_.begin(), worker_.end()),
                                    {std::to_wstring(index)});
        }
        for (int index = 0; index < count; ++index) {
            processes.push_back(former_.WaitForStart(static_cast<DWORD>(index)));
            EXPECT_NE(processes.back(), 0U);
        }
        return processes;
    }

    // Writes a file in the firmware root and returns its path.
    std::string File(const std::string& name, const std::string& text) const
    {
        return former_.Write(name, text);
    }

    // Returns the line of daemonctl for a worker.
    std::string Line(std::size_t id, DWORD process, const std::string& what) const
    {
        return "daemon " + std::to_string(id) + ", process " + std::to_string(process) + " (" +
               worker_ + " " + std::to_string(id) + "): " + what + "\n";
    }

    const PrefixStandIns standIns_{PrefixStandIns::Wmi::kStandIn};
    const std::string worker_ = TestProgram("no_windows");
    SupervisorProcess former_;
    std::unique_ptr<SupervisorProcess> successor_;
};

TEST_F(Upgrade, Reattach_after_an_orderly_exit_ends_none_of_ten_workers)
{
    const std::vector<DWORD> processes = LaunchWorkers(10);
    EXPECT_EQ(Daemonctl("exit").exitCode, 0U);
    StartNew();
    std::string expected;
    for (std::size_t id = 0; id < processes.size(); ++id) {
        expected += Line(id, processes[id], "attached as daemon " + std::to_string(id));
    }
    EXPECT_EQ(Daemonctl("reattach --outside"),
              (Answer{0, expected + "10 attached, 0 already, 0 not\n", ""}));
    for (const DWORD process : processes) {
        EXPECT_TRUE(IsRunning(process));
    }
    const Json daemons = ListedDaemons();
    ASSERT_EQ(daemons.size(), processes.size());
    for (std::size_t id = 0; id < processes.size(); ++id) {
        EXPECT_EQ(daemons[id].at("process_id"), processes[id]);
        EXPECT_EQ(daemons[id].at("attached"), true);
        EXPECT_EQ(daemons[id].at("restarts"), 0);
    }
    // A second reattach attaches nothing.
    const Answer again = Daemonctl("reattach --outside");
    EXPECT_EQ(again.exitCode, 1U) << again;
    EXPECT_NE(again.output.find("\n0 attached, 10 already, 0 not\n"), std::string::npos) << again;
    // The new supervisor restarts an attached worker.
    KillProcess(processes[3]);
    EXPECT_EQ(Daemonctl("wait 3 --for running --timeout 30").exitCode, 0U);
    EXPECT_EQ(Daemonctl("reattach --outside").exitCode, 1U);
}

// Returns when Windows noted the end of a process, milliseconds since 1970, UTC.
long long EndOf(const CapturedProgram& program)
{
    const system::win32::v1::UniqueKernelHandle process(
        OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, program.Pid()));
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    EXPECT_TRUE(GetProcessTimes(process.Get(), &created, &ended, &kernel, &user));
    return system::win32::v1::UnixMilliseconds(ended);
}

// The former supervisor has two workers, and its shutdown waits for a stop. The new one has a log
// of its own, so that each log shows what one of them did.
TEST_F(Upgrade, The_new_supervisor_gets_a_worker_only_after_the_former_one_has_ended)
{
    const std::vector<DWORD> processes = LaunchWorkers(2);
    const ReadyEvent ready;
    const ReadyEvent quit;
    const ReadyEvent mayEnd;
    Json listing = Json::parse(Daemonctl("ps --json").output);
    listing.at("daemons").erase(1);
    const std::string file = File("before.json", listing.dump());
    EXPECT_EQ(Daemonctl("launch \"" + TestProgram("signals_quit") + "\" " + ready.Name() + " " +
                        quit.Name() + " " + mayEnd.Name()),
              (Answer{0, "2\n", ""}));
    ASSERT_TRUE(ready.Wait());
    const CapturedProgram stopping(ProductProgram("daemonctl.exe") + " stop 2");
    ASSERT_TRUE(quit.Wait());
    EXPECT_EQ(Daemonctl("exit --no-wait").exitCode, 0U);
    ASSERT_TRUE(WaitUntil([] { return !FindPublished(); }));
    successor_ = std::make_unique<SupervisorProcess>();

    const std::string waiting =
        "daemonctl: waiting until the former supervisor has ended: process " +
        std::to_string(former_.Process().Pid()) + " (" + ProductProgram("DaemonManager.exe") +
        ")\n";
    EXPECT_EQ(Daemonctl("reattach --outside --timeout 0 --from " + file),
              (Answer{4, "",
                      waiting + "daemonctl: it still runs after 0 s; nothing was done, because "
                                "two supervisors would restart the same daemons\n"
                                "  End the process. If it is no supervisor: daemonctl reattach "
                                "--no-wait\n"}));
    // A look at the plan need not wait.
    EXPECT_EQ(
        Daemonctl("reattach --dry-run --from " + file),
        (Answer{0, Line(0, processes[0], "would be attached") + "1 to attach, 0 already, 0 not\n",
                "daemonctl: reattach would wait" + waiting.substr(waiting.find(" until"))}));
    const std::string command = ProductProgram("daemonctl.exe") + " reattach --outside --from ";
    const CapturedProgram reattach(command + file);
    ASSERT_TRUE(WaitUntil([&] { return reattach.Error() == waiting; }));
    // The former supervisor still restarts a worker; nobody else does.
    KillProcess(processes[1]);
    EXPECT_NE(former_.WaitForStart(1, processes[1]), 0U);
    EXPECT_TRUE(reattach.Running());
    mayEnd.Signal();
    EXPECT_EQ(former_.ExitCode(), 0U);
    EXPECT_EQ(reattach.ExitCode(), 0U) << reattach.Error();
    EXPECT_EQ(reattach.Output(),
              Line(0, processes[0], "attached as daemon 0") + "1 attached, 0 already, 0 not\n");
    const long long end = EndOf(former_.Process());
    std::size_t attached = 0;
    for (const RingRecord& record : successor_->Log()) {
        EXPECT_FALSE(record.text.starts_with("Start ")) << record;
        if (record.text.starts_with("Attach ")) {
            EXPECT_GE(record.timeMs, end);
            ++attached;
        }
    }
    EXPECT_EQ(attached, 1U);
    for (const RingRecord& record : former_.Log()) {
        EXPECT_LE(record.timeMs, end) << record;
    }
}

TEST_F(Upgrade, Reattach_reports_a_worker_that_ended_and_attaches_the_others)
{
    const std::vector<DWORD> processes = LaunchWorkers(2);
    EXPECT_EQ(Daemonctl("exit").exitCode, 0U);
    KillProcess(processes[0]);
    StartNew();
    const Answer dry = Daemonctl("reattach --dry-run");
    EXPECT_EQ(dry.exitCode, 4U);
    EXPECT_EQ(dry.output,
              Line(1, processes[1], "would be attached") + "1 to attach, 0 already, 1 not\n");
    const Answer answer = Daemonctl("reattach --outside");
    EXPECT_EQ(answer.exitCode, 4U);
    EXPECT_EQ(answer.output,
              Line(1, processes[1], "attached as daemon 0") + "1 attached, 0 already, 1 not\n");
    EXPECT_EQ(answer.error,
              "daemonctl: " +
                  Line(0, processes[0], "process " + std::to_string(processes[0]) + " has ended") +
                  "  To run the program again: daemonctl launch ...\n");
    // After a new launch, reattach no longer reports the worker.
    EXPECT_EQ(Daemonctl("launch \"" + worker_ + "\" 0").exitCode, 0U);
    EXPECT_EQ(Daemonctl("wait 1 --timeout 30").exitCode, 0U);
    EXPECT_EQ(Daemonctl("reattach --outside").exitCode, 1U);
}

TEST_F(Upgrade, Reattach_works_after_the_supervisor_was_killed)
{
    const std::vector<DWORD> processes = LaunchWorkers(2);
    EXPECT_EQ(Daemonctl("stop 0").exitCode, 0U);
    ASSERT_TRUE(former_.WaitForLog(1, "Stop (2) DaemonId(0) PId(" + std::to_string(processes[0]) +
                                          ") : " + worker_ + " 0 "));
    ASSERT_TRUE(former_.Terminate());
    StartNew();
    EXPECT_EQ(
        Daemonctl("reattach --outside"),
        (Answer{0, Line(1, processes[1], "attached as daemon 0") + "1 attached, 0 already, 0 not\n",
                ""}));
    // Reattach does not attach a worker that was detached on purpose.
    EXPECT_EQ(Daemonctl("detach 0").exitCode, 0U);
    EXPECT_EQ(Daemonctl("reattach --outside"), (Answer{1, "0 attached, 0 already, 0 not\n", ""}));
}

TEST_F(Upgrade, Reattach_reads_from_a_listing_the_daemons_that_the_log_no_longer_shows)
{
    const std::vector<DWORD> processes = LaunchWorkers(1);
    const std::string listing = Daemonctl("ps --json").output;
    const std::string file = File("before.json", listing);
    std::string wide = "\xFF\xFE"; // as PowerShell writes a redirected output
    for (const char character : listing) {
        wide += character;
        wide += '\0';
    }
    const std::string wideFile = File("wide.json", wide);
    EXPECT_EQ(Daemonctl("exit").exitCode, 0U);
    ASSERT_TRUE(DeleteFileA(former_.LogFile().c_str()));
    StartNew();
    EXPECT_EQ(Daemonctl("reattach --outside"), (Answer{1, "0 attached, 0 already, 0 not\n", ""}));
    EXPECT_EQ(
        Daemonctl("reattach --outside --from " + file),
        (Answer{0, Line(0, processes[0], "attached as daemon 0") + "1 attached, 0 already, 0 not\n",
                ""}));
    EXPECT_EQ(
        Daemonctl("reattach --outside --from " + wideFile),
        (Answer{1, Line(0, processes[0], "is daemon 0 already") + "0 attached, 1 already, 0 not\n",
                ""}));
    const Answer wrong = Daemonctl("reattach --outside --from " + File("wrong.json", "{}"));
    EXPECT_EQ(wrong.exitCode, 2U);
    EXPECT_NE(wrong.error.find("not a listing of daemonctl ps --json"), std::string::npos) << wrong;
}

// The new supervisor finds a record without a level, sets the log aside and begins a new one.
TEST_F(Upgrade, Reattach_names_a_damaged_log_that_was_set_aside_and_reads_it_if_asked)
{
    const std::vector<DWORD> processes = LaunchWorkers(1);
    EXPECT_EQ(Daemonctl("exit").exitCode, 0U);
    std::string log = ReadText(former_.LogFile());
    const std::size_t record = log.find("Deamon Thread started");
    ASSERT_NE(record, std::string::npos);
    log[record - 2] = 'x'; // the level
    {
        std::ofstream file(former_.LogFile()); // in text mode, as the supervisor writes it
        file << log;
    }
    StartNew();
    const std::string damaged = former_.LogFile() + ".damaged";
    EXPECT_EQ(
        Daemonctl("reattach"),
        (Answer{4, "0 attached, 0 already, 0 not\n",
                "daemonctl: the log does not show the former supervisor; this damaged log was "
                "set aside: " +
                    damaged + "\n  To read it, too: daemonctl reattach --former-log \"" + damaged +
                    "\"\n"}));
    EXPECT_EQ(
        Daemonctl("reattach --outside --former-log \"" + damaged + '"'),
        (Answer{0, Line(0, processes[0], "attached as daemon 0") + "1 attached, 0 already, 0 not\n",
                ""}));
    EXPECT_EQ(Daemonctl("reattach --outside --former-log \"" + damaged + '"').exitCode, 1U);
}

TEST_F(Upgrade, Reattach_reports_a_process_that_the_supervisor_refuses_to_attach)
{
    const std::vector<DWORD> processes = LaunchWorkers(1);
    EXPECT_EQ(Daemonctl("exit").exitCode, 0U);
    {
        const PrefixStandIns broken(PrefixStandIns::Wmi::kBroken);
        StartNew();
    }
    const Answer answer = Daemonctl("reattach --outside");
    EXPECT_EQ(answer.exitCode, 4U);
    EXPECT_EQ(answer.output, "0 attached, 0 already, 1 not\n");
    EXPECT_EQ(answer.error,
              "daemonctl: " + Line(0, processes[0],
                                   "the supervisor could not attach it; to find the reason: "
                                   "daemonctl doctor"));
    EXPECT_TRUE(IsRunning(processes[0]));
}

} // namespace
} // namespace vqrx::test
