#include "WindowsService.h"

#include "ImportPatch.h"
#include "TestService.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace vqrx::test {
namespace {

using namespace client::v0;

decltype(QueryServiceStatusEx)* queryServiceStatus = nullptr;
int queries = 0;

// At the first query the service is about to stop.
BOOL WINAPI ReportStopFirst(SC_HANDLE service, SC_STATUS_TYPE level, BYTE* buffer, DWORD size,
                            DWORD* needed)
{
    const BOOL isDone = queryServiceStatus(service, level, buffer, size, needed);
    if (++queries == 1) {
        reinterpret_cast<SERVICE_STATUS_PROCESS*>(buffer)->dwCurrentState = SERVICE_STOP_PENDING;
    }
    return isDone;
}

SC_HANDLE WINAPI RefuseService(SC_HANDLE, const wchar_t*, DWORD)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
}

TEST(WindowsService, Service_exists_from_its_creation_to_its_removal)
{
    {
        const TestService service("DmWindowsServiceTest");
        EXPECT_TRUE(ServiceExists("DmWindowsServiceTest"));
        EXPECT_TRUE(ServiceExists("dmwindowsservicetest"));
    }
    EXPECT_FALSE(ServiceExists("DmWindowsServiceTest"));
}

TEST(WindowsService, Stopped_service_is_started_and_a_running_one_stays_as_it_is)
{
    const TestService service("DmWindowsServiceTest");
    const std::uint32_t started = RunService("DmWindowsServiceTest", {"-x"});
    EXPECT_NE(started, 0U);
    EXPECT_EQ(started, service.ProcessId());
    EXPECT_EQ(RunService("DmWindowsServiceTest", {}), started);
}

TEST(WindowsService, Service_that_stops_at_this_moment_is_started_after_its_stop)
{
    const TestService service("DmWindowsServiceTest");
    queries = 0;
    std::uint32_t started = 0;
    {
        const ImportPatch patch("QueryServiceStatusEx", ReportStopFirst, queryServiceStatus);
        started = RunService("DmWindowsServiceTest", {});
    }
    EXPECT_EQ(started, service.ProcessId());
}

TEST(WindowsService, Refusal_to_answer_whether_a_service_exists_is_no_answer)
{
    const ImportPatch patch("OpenServiceW", RefuseService);
    try {
        static_cast<void>(ServiceExists("DmWindowsServiceTest"));
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(),
                     "Windows does not say whether DmWindowsServiceTest is a service: error 5");
    }
}

TEST(WindowsService, Process_of_a_service_is_the_one_that_Windows_runs_for_it)
{
    TestService service("DmWindowsServiceTest");
    EXPECT_FALSE(MayBeProcessOfService("DmWindowsServiceTest", GetCurrentProcessId()));
    service.Start();
    EXPECT_TRUE(MayBeProcessOfService("DmWindowsServiceTest", service.ProcessId()));
    EXPECT_FALSE(MayBeProcessOfService("DmWindowsServiceTest", GetCurrentProcessId()));
    EXPECT_FALSE(MayBeProcessOfService("DmNoSuchService", GetCurrentProcessId()));
    const ImportPatch patch("OpenServiceW", RefuseService);
    EXPECT_TRUE(MayBeProcessOfService("DmWindowsServiceTest", GetCurrentProcessId()));
}

TEST(WindowsService, Unknown_and_disabled_services_are_refused_with_the_reason)
{
    const TestService disabled("DmWindowsServiceTest", SERVICE_WIN32_OWN_PROCESS, SERVICE_DISABLED);
    try {
        static_cast<void>(RunService("DmNoSuchService", {}));
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "the service cannot be opened: error 1060");
    }
    try {
        static_cast<void>(RunService("DmWindowsServiceTest", {}));
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "the service cannot be started: error 1058");
    }
}

} // namespace
} // namespace vqrx::test
