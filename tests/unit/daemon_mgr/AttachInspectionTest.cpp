#include "AttachInspection.h"

#include "ChildProcess.h"
#include "ImportPatch.h"
#include "InspectionFixture.h"
#include "TestService.h"

#include <gtest/gtest.h>

#include <set>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::InspectAttachingProcess;

constexpr DWORD kUnusedProcessId = 0xFFFFFFF0U;

class AttachInspectionTest : public InspectionFixture {};

std::set<SC_HANDLE> closedServices;
decltype(&CloseServiceHandle) closeServiceHandle = nullptr;
BOOL WINAPI NoteAndClose(SC_HANDLE handle)
{
    closedServices.insert(handle);
    return closeServiceHandle(handle);
}

DWORD askedAccess = 0;
BOOL askedInherit = TRUE;
HANDLE WINAPI RefuseToOpen(DWORD access, BOOL inherit, DWORD)
{
    askedAccess = access;
    askedInherit = inherit;
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
}

} // namespace

TEST_F(AttachInspectionTest, Inspection_gives_path_and_arguments_of_a_running_program)
{
    const StandInWmi standIn; // answers from the live system
    Connect();
    const ReadyEvent ready;
    const ChildProcess child("\"" + TestProgram("no_windows") + "\" " + ready.Name() +
                             " \"two words\"");
    ASSERT_TRUE(ready.Wait());
    ProcessInfo daemon;
    daemon.processId = child.Pid();
    daemon.arguments = {"given"};
    EXPECT_EQ(0, InspectAttachingProcess(*wmi_, daemon));
    EXPECT_EQ(TestProgram("no_windows"), daemon.executablePath);
    EXPECT_EQ((std::vector<std::string>{ready.Name(), "two words"}), daemon.arguments);
    EXPECT_EQ(child.Pid(), GetProcessId(daemon.process.Get()));
    EXPECT_FALSE(daemon.isService);
    EXPECT_EQ(L"WQL", TheWmiScript().lastLanguage);
    EXPECT_EQ(L"SELECT * FROM Win32_Process WHERE ProcessId=" + std::to_wstring(child.Pid()),
              TheWmiScript().lastQuery);
    EXPECT_EQ(0, TheWmiScript().lastQueryFlags);
}

TEST_F(AttachInspectionTest, Inspection_of_a_service_gives_its_name_and_keeps_the_given_arguments)
{
    const StandInWmi standIn;
    Connect();
    TestService service("DmTestAttached");
    service.Start();
    ProcessInfo daemon;
    daemon.processId = service.ProcessId();
    daemon.arguments = {"given"};
    EXPECT_EQ(0, InspectAttachingProcess(*wmi_, daemon));
    EXPECT_TRUE(daemon.isService);
    EXPECT_EQ("DmTestAttached", daemon.serviceName);
    EXPECT_TRUE(daemon.service);
    EXPECT_EQ((std::vector<std::string>{"given"}), daemon.arguments);
    EXPECT_EQ(TestProgram("test_service"), daemon.executablePath);
}

TEST_F(AttachInspectionTest, Earlier_service_handle_is_closed_and_replaced)
{
    const StandInWmi standIn;
    Connect();
    TestService service("DmTestAttached");
    service.Start();
    ProcessInfo daemon;
    daemon.processId = service.ProcessId();
    const SC_HANDLE previous = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT);
    daemon.service.Reset(previous);
    closedServices.clear();
    const ImportPatch patch("CloseServiceHandle", NoteAndClose, closeServiceHandle);
    EXPECT_EQ(0, InspectAttachingProcess(*wmi_, daemon));
    EXPECT_TRUE(daemon.service);
    EXPECT_EQ(1U, closedServices.count(previous));
}

TEST_F(AttachInspectionTest, Inspection_of_an_ordinary_program_keeps_earlier_service_fields)
{
    const StandInWmi standIn;
    Connect();
    TestService other("DmTestOther");
    other.Start(); // the search fails if no service runs
    ProcessInfo daemon;
    daemon.processId = GetCurrentProcessId();
    daemon.isService = true;
    daemon.serviceName = "Svc";
    daemon.arguments = {"given"};
    EXPECT_EQ(0, InspectAttachingProcess(*wmi_, daemon));
    EXPECT_TRUE(daemon.isService);
    EXPECT_EQ("Svc", daemon.serviceName);
    EXPECT_EQ((std::vector<std::string>{"given"}), daemon.arguments);
}

TEST_F(AttachInspectionTest,
       Inspection_asks_for_full_access_and_fails_if_the_process_cannot_be_opened)
{
    const StandInWmi standIn;
    Connect();
    TestService other("DmTestOther");
    other.Start(); // the search for services succeeds, so that only the open can fail
    ProcessInfo daemon;
    daemon.processId = GetCurrentProcessId();
    const ImportPatch patch("OpenProcess", RefuseToOpen);
    EXPECT_EQ(1, InspectAttachingProcess(*wmi_, daemon));
    EXPECT_FALSE(daemon.process);
    EXPECT_EQ(0x1FFFFFU, askedAccess); // PROCESS_ALL_ACCESS
    EXPECT_EQ(FALSE, askedInherit);
    EXPECT_EQ(L"", TheWmiScript().lastQuery);
}

TEST_F(AttachInspectionTest, Earlier_process_handle_is_closed_also_if_the_inspection_fails)
{
    const StandInWmi standIn;
    Connect();
    ProcessInfo daemon;
    daemon.processId = kUnusedProcessId;
    const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    daemon.process.Reset(event);
    EXPECT_EQ(1, InspectAttachingProcess(*wmi_, daemon));
    DWORD flags = 0;
    EXPECT_FALSE(GetHandleInformation(event, &flags));
}

TEST_F(AttachInspectionTest,
       Inspection_without_a_connection_fails_and_the_daemon_owns_the_opened_handle)
{
    const StandInWmi standIn;
    TheWmiScript().connect = kRefused;
    Connect();
    ProcessInfo daemon;
    daemon.processId = GetCurrentProcessId();
    EXPECT_EQ(1, InspectAttachingProcess(*wmi_, daemon));
    EXPECT_TRUE(daemon.process);
}

TEST_F(AttachInspectionTest, Inspection_releases_every_object_of_WMI)
{
    const StandInWmi standIn;
    Connect();
    ProcessInfo daemon;
    daemon.processId = GetCurrentProcessId();
    static_cast<void>(InspectAttachingProcess(*wmi_, daemon));
    wmi_.reset();
    EXPECT_EQ(0, TheWmiScript().liveObjects);
}

} // namespace vqrx::test
