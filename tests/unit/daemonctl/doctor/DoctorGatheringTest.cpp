#include "Bounded.h"
#include "ChildProcess.h"
#include "FirewallFacts.h"
#include "FirmwareRegistry.h"
#include "HeldProcess.h"
#include "ImportPatch.h"
#include "InstallationFacts.h"
#include "ProcessFacts.h"
#include "ProcessList.h"
#include "StandInFirewall.h"
#include "StandInWmi.h"
#include "TempFolder.h"
#include "TestService.h"
#include "WmiFacts.h"
#include "com/ComApartment.h"

#include <windows.h>

#include <process.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(InstallationFacts, tell_that_there_is_no_key)
{
    const FirmwareRegistry registry;
    const InstallationFacts facts = GatherInstallationFacts();
    EXPECT_EQ(facts.currentKey.openError, 2U);
    EXPECT_EQ(facts.olderKey.openError, 2U);
    EXPECT_EQ(facts.currentKey.name, R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion)");
    EXPECT_EQ(facts.olderKey.name, R"(HKLM\SOFTWARE\VANTORO_QRX\CurrentVersion)");
    EXPECT_EQ(facts.root, "");
}

TEST(InstallationFacts, do_not_look_behind_a_key_without_a_value)
{
    FirmwareRegistry registry;
    registry.Create(FirmwareRegistry::current);
    registry.SetPathname(FirmwareRegistry::older, R"(C:\FW)");
    const InstallationFacts facts = GatherInstallationFacts();
    EXPECT_EQ(facts.currentKey.openError, 0U);
    EXPECT_EQ(facts.currentKey.valueError, 2U);
    EXPECT_EQ(facts.olderKey.pathname, R"(C:\FW)");
    EXPECT_EQ(facts.root, "");
}

TEST(InstallationFacts, tell_a_value_that_is_too_long)
{
    FirmwareRegistry registry;
    registry.SetPathname(FirmwareRegistry::current, std::string(300, 'x'));
    EXPECT_EQ(GatherInstallationFacts().currentKey.valueError, 234U);
}

TEST(InstallationFacts, tell_the_folders_of_an_installation)
{
    const TempFolder root;
    const std::string path = root.Path().string();
    std::filesystem::create_directory(root.Path() / "App");
    FirmwareRegistry registry;
    registry.SetPathname(FirmwareRegistry::current, path + R"(\App\bin)");
    InstallationFacts facts = GatherInstallationFacts();
    EXPECT_EQ(facts.currentKey.pathname, path + R"(\App\bin)");
    EXPECT_EQ(facts.root, path);
    EXPECT_EQ(facts.app.path, path + R"(\App)");
    EXPECT_EQ(facts.app.error, 0U);
    EXPECT_TRUE(facts.app.isFolder);
    EXPECT_EQ(facts.logs.error, 2U);
    EXPECT_FALSE(std::filesystem::exists(root.Path() / "Logs"));
    std::filesystem::create_directory(root.Path() / "Logs");
    facts = GatherInstallationFacts();
    EXPECT_EQ(facts.logs.error, 0U);
    EXPECT_EQ(facts.logFile, path + R"(\Logs\DaemonManager.log)");
    EXPECT_EQ(facts.logFileError, 2U);
    EXPECT_TRUE(facts.freeBytes.has_value());
    EXPECT_TRUE(std::filesystem::is_empty(root.Path() / "Logs"));
    std::ofstream(root.Path() / "Logs" / "DaemonManager.log") << "x";
    EXPECT_EQ(GatherInstallationFacts().logFileError, 0U);
}

TEST(InstallationFacts, tell_a_file_in_a_folders_place)
{
    const TempFolder root;
    std::ofstream(root.Path() / "Logs") << "x";
    FirmwareRegistry registry;
    registry.SetPathname(FirmwareRegistry::older, root.Path().string());
    const InstallationFacts facts = GatherInstallationFacts();
    EXPECT_FALSE(facts.logs.isFolder);
    EXPECT_EQ(facts.app.error, 2U);
}

TEST(FirewallFacts, tell_the_state_of_the_service)
{
    EXPECT_EQ(GatherFirewallServiceFacts().serviceError, 1060U);
    {
        TestService service("SharedAccess");
        FirewallServiceFacts facts = GatherFirewallServiceFacts();
        EXPECT_EQ(facts.name, "SharedAccess");
        EXPECT_EQ(facts.serviceError, 0U);
        EXPECT_EQ(facts.startType, static_cast<std::uint32_t>(SERVICE_DEMAND_START));
        EXPECT_EQ(facts.state, static_cast<std::uint32_t>(SERVICE_STOPPED));
        service.Start();
        facts = GatherFirewallServiceFacts();
        EXPECT_EQ(facts.state, static_cast<std::uint32_t>(SERVICE_RUNNING));
    }
    const TestService service("MpsSvc", SERVICE_WIN32_OWN_PROCESS, SERVICE_DISABLED);
    const FirewallServiceFacts facts = GatherFirewallServiceFacts();
    EXPECT_EQ(facts.name, "MpsSvc");
    EXPECT_EQ(facts.startType, static_cast<std::uint32_t>(SERVICE_DISABLED));
}

TEST(FirewallFacts, list_the_supervisors_rules_and_whether_their_programs_are_there)
{
    using Program = FirewallRuleFacts::Program;
    const system::com::v1::ComApartment apartment;
    const StandInFirewall firewall;
    const std::string own = TestProgram("quits");
    const std::wstring wideOwn(own.begin(), own.end());
    StoreFirewallRule(L"allowing " + wideOwn, {wideOwn});
    StoreFirewallRule(L"allowing C:\\gone\u00FC.exe", {L"C:\\gone\u00FC.exe"});
    StoreFirewallRule(L"allowing Q:\\drive.exe", {L"Q:\\drive.exe"});
    StoreFirewallRule(L"allowing %TEMP%", {L"%TEMP%"});
    StoreFirewallRule(L"somebody else's", {L"C:\\other.exe"});
    const FirewallRulesFacts facts = GatherFirewallRules();
    EXPECT_EQ(facts.result, 0);
    std::map<std::string, Program> programs;
    for (const FirewallRuleFacts& rule : facts.rules) {
        EXPECT_EQ(rule.name, "allowing " + rule.application);
        programs[rule.application] = rule.program;
    }
    EXPECT_EQ(programs, (std::map<std::string, Program>{{own, Program::there},
                                                        {"C:\\gone\xC3\xBC.exe", Program::gone},
                                                        {"Q:\\drive.exe", Program::unknown},
                                                        {"%TEMP%", Program::there}}));
    EXPECT_EQ(RemoveFirewallRule("allowing C:\\gone\xC3\xBC.exe"), 0);
    EXPECT_EQ(StoredFirewallRules().count(L"allowing C:\\gone\u00FC.exe"), 0U);
    EXPECT_LT(RemoveFirewallRule("allowing C:\\gone\xC3\xBC.exe"), 0);
    EXPECT_EQ(TheFirewallScript().liveObjects, 0);
}

TEST(FirewallFacts, tell_that_rules_cannot_be_listed)
{
    const system::com::v1::ComApartment apartment;
    const StandInFirewall firewall;
    TheFirewallScript().rules = E_ACCESSDENIED;
    EXPECT_EQ(GatherFirewallRules().result, E_ACCESSDENIED);
    EXPECT_EQ(RemoveFirewallRule("allowing x"), E_ACCESSDENIED);
    TheFirewallScript().createPolicy2 = REGDB_E_CLASSNOTREG;
    EXPECT_EQ(GatherFirewallRules().result, REGDB_E_CLASSNOTREG);
}

TEST(WmiFacts, tell_what_wmi_says_about_this_process)
{
    const system::com::v1::ComApartment apartment;
    const StandInWmi wmi;
    WmiFacts facts = GatherWmiFacts();
    EXPECT_TRUE(facts.answered);
    EXPECT_EQ(facts.connectFailure, "");
    EXPECT_TRUE(facts.knowsThisProcess);
    EXPECT_EQ(facts.executablePathResult, 0);
    EXPECT_EQ(facts.commandLineResult, 0);
    EXPECT_TRUE(facts.executablePathFits);
    TheWmiScript().processes = [](DWORD) { return std::vector<ProcessAnswer>(); };
    EXPECT_FALSE(GatherWmiFacts().knowsThisProcess);
    TheWmiScript().processes = [](DWORD) {
        ProcessAnswer answer;
        answer.executablePath.result = E_ACCESSDENIED;
        return std::vector<ProcessAnswer>{answer};
    };
    EXPECT_EQ(GatherWmiFacts().executablePathResult, E_ACCESSDENIED);
    TheWmiScript().query = E_OUTOFMEMORY;
    EXPECT_EQ(GatherWmiFacts().queryResult, E_OUTOFMEMORY);
    TheWmiScript().connect = E_ACCESSDENIED;
    facts = GatherWmiFacts();
    EXPECT_EQ(facts.connectFailure.find("COM Error "), 0U) << facts.connectFailure;
    EXPECT_EQ(TheWmiScript().liveObjects, 0);
}

TEST(ProcessFacts, tell_image_and_creation_of_a_process_that_runs)
{
    const std::string program = TestProgram("no_windows");
    FILETIME before{};
    GetSystemTimeAsFileTime(&before);
    const ChildProcess child('"' + program + '"');
    const ProcessFacts facts = ReadProcessFacts(child.Pid());
    EXPECT_EQ(facts.state, ProcessFacts::State::running);
    EXPECT_EQ(facts.processId, child.Pid());
    EXPECT_EQ(facts.image, program);
    const std::int64_t beforeMs =
        static_cast<std::int64_t>((static_cast<std::uint64_t>(before.dwHighDateTime) << 32U) |
                                  before.dwLowDateTime) /
            10000 -
        11644473600000;
    EXPECT_GE(facts.createdMs, beforeMs - 20); // the two clocks tick apart
    EXPECT_LT(facts.createdMs, beforeMs + 60000);
}

TEST(ProcessFacts, of_a_process_that_has_ended_say_so_while_its_handle_is_open)
{
    const ChildProcess child('"' + TestProgram("no_windows") + '"');
    child.Kill();
    ASSERT_TRUE(child.Wait());
    EXPECT_EQ(ReadProcessFacts(child.Pid()).state, ProcessFacts::State::gone);
    EXPECT_EQ(ReadProcessFacts(4294967280U).state, ProcessFacts::State::gone);
    EXPECT_EQ(ReadProcessFacts(0).state, ProcessFacts::State::gone);
}

TEST(HeldProcess, is_told_of_until_it_ends_and_keeps_its_id)
{
    const ChildProcess child('"' + TestProgram("no_windows") + '"');
    const HeldProcess held(child.Pid());
    const ProcessFacts facts = held.Facts();
    EXPECT_EQ(facts.state, ProcessFacts::State::running);
    EXPECT_EQ(facts.processId, child.Pid());
    EXPECT_EQ(facts.image, TestProgram("no_windows"));
    EXPECT_EQ(facts.createdMs, ReadProcessFacts(child.Pid()).createdMs);
    child.Kill();
    ASSERT_TRUE(child.Wait());
    EXPECT_EQ(held.Facts().state, ProcessFacts::State::gone);
    EXPECT_EQ(HeldProcess(4294967280U).Facts().state, ProcessFacts::State::gone);
}

TEST(ProcessFacts, know_one_file_under_two_names)
{
    const std::string program = TestProgram("quits");
    EXPECT_TRUE(IsSameFile(program, OwnFolder() + R"(\..\programs\QUITS.exe)"));
    EXPECT_FALSE(IsSameFile(program, TestProgram("no_windows")));
    EXPECT_FALSE(IsSameFile(program + "x", program + "x"));
}

TEST(ProcessFacts, know_a_services_program)
{
    const TestService service("DmFactsTest");
    EXPECT_NE(CommandOfService("DmFactsTest").find("test_service"), std::string::npos);
    EXPECT_EQ(CommandOfService("DmNoSuchService"), "");
}

TEST(ImageVersion, is_read_from_the_files_resource)
{
    const std::string program = ProductProgram("daemonctl.exe");
    EXPECT_EQ(VersionOfImage(std::wstring(program.begin(), program.end())), "1.0.0");
    EXPECT_EQ(VersionOfImage(L"C:\\no\\such.exe"), "");
}

TEST(ImageVersion, is_told_for_the_processes_of_a_file_name)
{
    const ChildProcess child('"' + TestProgram("no_windows") + '"');
    const std::vector<ImageFacts> found = ProcessesOfImage(L"NO_windows.EXE");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].processId, child.Pid());
    EXPECT_EQ(found[0].path, TestProgram("no_windows"));
}

TEST(Bounded, gives_the_result_or_nothing_when_its_time_is_over)
{
    using std::chrono::milliseconds;
    EXPECT_EQ(Bounded<int>(milliseconds(60000), [] { return 7; }), 7);
    EXPECT_THROW(Bounded<int>(milliseconds(60000), []() -> int { throw std::runtime_error("x"); }),
                 std::runtime_error);
    const auto event = std::make_shared<ReadyEvent>();
    EXPECT_EQ(Bounded<int>(milliseconds(50), [event] { return event->Wait() ? 1 : 0; }),
              std::nullopt);
    event->Signal();
}

uintptr_t __cdecl RefuseThread(void*, unsigned, _beginthreadex_proc_type, void*, unsigned,
                               unsigned*)
{
    return 0;
}

TEST(Bounded, says_at_once_that_windows_gives_no_thread_and_does_nothing)
{
    const ImportPatch patch("_beginthreadex", RefuseThread);
    EXPECT_THROW(Bounded<int>(std::chrono::milliseconds(60000),
                              []() -> int {
                                  ADD_FAILURE();
                                  return 0;
                              }),
                 std::system_error);
}

TEST(Bounded, holds_however_often_its_threads_come_and_go)
{
    using std::chrono::milliseconds;
    for (int round = 0; round < 3000; ++round) {
        ASSERT_EQ(Bounded<int>(milliseconds(60000), [round] { return round; }), round);
        ASSERT_THROW(
            Bounded<int>(milliseconds(60000), []() -> int { throw std::runtime_error("x"); }),
            std::runtime_error)
            << round;
    }
}

} // namespace
} // namespace vqrx::test
