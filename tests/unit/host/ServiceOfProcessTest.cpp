#include "ServiceOfProcess.h"

#include "ImportPatch.h"
#include "TestService.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using host::v0::FindServiceOfProcess;
using host::v0::ServiceOfProcess;

SC_HANDLE WINAPI RefuseManager(LPCSTR, LPCSTR, DWORD)
{
    return nullptr;
}

SC_HANDLE WINAPI RefuseService(SC_HANDLE, LPCSTR, DWORD)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
}

BOOL WINAPI NothingToEnumerate(SC_HANDLE, SC_ENUM_TYPE, DWORD, DWORD, LPBYTE, DWORD, LPDWORD needed,
                               LPDWORD count, LPDWORD, LPCSTR)
{
    *needed = 0;
    *count = 0;
    return TRUE;
}

int enumerations = 0;
BOOL WINAPI FailSecondEnumeration(SC_HANDLE, SC_ENUM_TYPE, DWORD, DWORD, LPBYTE, DWORD,
                                  LPDWORD needed, LPDWORD count, LPDWORD, LPCSTR)
{
    ++enumerations;
    *needed = 100;
    *count = 0;
    SetLastError(enumerations == 1 ? ERROR_MORE_DATA : ERROR_ACCESS_DENIED);
    return FALSE;
}

// Two services of one process, which the system itself never lists.
BOOL WINAPI EnumerateTwoOfOneProcess(SC_HANDLE, SC_ENUM_TYPE, DWORD, DWORD, LPBYTE buffer,
                                     DWORD size, LPDWORD needed, LPDWORD count, LPDWORD, LPCSTR)
{
    static char names[3][16] = {"DmTestElse", "DmTestFirst", "DmTestSecond"};
    *needed = 3 * sizeof(ENUM_SERVICE_STATUS_PROCESSA);
    *count = 0;
    if (size < *needed) {
        SetLastError(ERROR_MORE_DATA);
        return FALSE;
    }
    auto* const entries = reinterpret_cast<ENUM_SERVICE_STATUS_PROCESSA*>(buffer);
    for (int index = 0; index < 3; ++index) {
        entries[index].lpServiceName = names[index];
        entries[index].ServiceStatusProcess.dwProcessId = index == 0 ? 5 : 4711;
    }
    *count = 3;
    return TRUE;
}

} // namespace

TEST(ServiceLookup, finds_the_running_service_of_a_process_and_opens_it)
{
    TestService service("DmTestOwn");
    service.Start();
    ServiceOfProcess found;
    EXPECT_EQ(0, FindServiceOfProcess(service.ProcessId(), found));
    EXPECT_TRUE(found.isService);
    EXPECT_EQ("DmTestOwn", found.name);
    ASSERT_TRUE(found.handle);
    SERVICE_STATUS status{};
    EXPECT_TRUE(QueryServiceStatus(found.handle.Get(), &status));
}

TEST(ServiceLookup, of_an_ordinary_program_succeeds_and_finds_nothing)
{
    TestService other("DmTestOther");
    other.Start(); // so that there is something to list
    ServiceOfProcess found;
    EXPECT_EQ(0, FindServiceOfProcess(GetCurrentProcessId(), found));
    EXPECT_FALSE(found.isService);
    EXPECT_EQ("", found.name);
    EXPECT_FALSE(found.handle);
}

TEST(ServiceLookup, takes_a_service_in_a_shared_process_for_an_ordinary_program)
{
    TestService other("DmTestOther");
    other.Start();
    TestService shared("DmTestShared", SERVICE_WIN32_SHARE_PROCESS);
    shared.Start();
    ServiceOfProcess found;
    EXPECT_EQ(0, FindServiceOfProcess(shared.ProcessId(), found));
    EXPECT_FALSE(found.isService);
}

TEST(ServiceLookup, does_not_find_a_service_that_is_stopped)
{
    TestService running("DmTestOther");
    running.Start();
    const TestService stopped("DmTestStopped");
    ServiceOfProcess found;
    EXPECT_EQ(0, FindServiceOfProcess(GetCurrentProcessId(), found));
    EXPECT_FALSE(found.isService);
}

TEST(ServiceLookup, fails_when_the_service_may_not_be_opened_with_its_name_found)
{
    TestService service("DmTestOwn");
    service.Start();
    ServiceOfProcess found;
    const ImportPatch patch("OpenServiceA", RefuseService);
    EXPECT_EQ(1, FindServiceOfProcess(service.ProcessId(), found));
    EXPECT_TRUE(found.isService);
    EXPECT_EQ("DmTestOwn", found.name);
    EXPECT_FALSE(found.handle);
}

TEST(ServiceLookup, takes_the_first_of_two_services_with_one_process_id)
{
    const ImportPatch patch("EnumServicesStatusExA", EnumerateTwoOfOneProcess);
    ServiceOfProcess found;
    EXPECT_EQ(1, FindServiceOfProcess(4711, found)); // there is no such service to open
    EXPECT_TRUE(found.isService);
    EXPECT_EQ("DmTestFirst", found.name);
}

TEST(ServiceLookup, fails_without_a_service_manager)
{
    const ImportPatch patch("OpenSCManagerA", RefuseManager);
    ServiceOfProcess found;
    EXPECT_EQ(1, FindServiceOfProcess(GetCurrentProcessId(), found));
}

TEST(ServiceLookup, fails_on_a_machine_where_no_service_has_a_process_of_its_own)
{
    const ImportPatch patch("EnumServicesStatusExA", NothingToEnumerate);
    SetLastError(ERROR_MORE_DATA); // an older error must not be taken for this call's
    ServiceOfProcess found;
    EXPECT_EQ(1, FindServiceOfProcess(GetCurrentProcessId(), found));
}

TEST(ServiceLookup, fails_when_the_list_cannot_be_read)
{
    enumerations = 0;
    const ImportPatch patch("EnumServicesStatusExA", FailSecondEnumeration);
    ServiceOfProcess found;
    EXPECT_EQ(1, FindServiceOfProcess(GetCurrentProcessId(), found));
    EXPECT_EQ(2, enumerations);
}

} // namespace vqrx::test
