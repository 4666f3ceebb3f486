#include "ServiceOfProcess.h"

#include "ImportPatch.h"
#include "TestService.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using host::v0::FindServiceOfProcess;
using host::v0::ServiceOfProcess;

SC_HANDLE WINAPI RefuseServiceManager(LPCSTR, LPCSTR, DWORD)
{
    return nullptr;
}

DWORD managerAccess = 0;
DWORD serviceAccess = 0;

decltype(&OpenSCManagerA) systemOpenManager = nullptr;
SC_HANDLE WINAPI NoteManagerAccess(LPCSTR machine, LPCSTR database, DWORD access)
{
    EXPECT_EQ(nullptr, machine);
    EXPECT_EQ(nullptr, database);
    managerAccess = access;
    return systemOpenManager(machine, database, access);
}

decltype(&OpenServiceA) systemOpenService = nullptr;
SC_HANDLE WINAPI NoteServiceAccess(SC_HANDLE manager, LPCSTR name, DWORD access)
{
    serviceAccess = access;
    return systemOpenService(manager, name, access);
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
    SetLastError(ERROR_ACCESS_DENIED); // a failed sizing call goes on, whatever its error is
    return FALSE;
}

// The sizing call succeeds, and yet its error says that there is more.
BOOL WINAPI SucceedWithMoreData(SC_HANDLE, SC_ENUM_TYPE level, DWORD type, DWORD state, LPBYTE,
                                DWORD size, LPDWORD needed, LPDWORD count, LPDWORD resume,
                                LPCSTR group)
{
    ++enumerations;
    EXPECT_EQ(SC_ENUM_PROCESS_INFO, level);
    EXPECT_EQ(0x10U, type);
    EXPECT_EQ(1U, state);
    EXPECT_EQ(nullptr, resume);
    EXPECT_EQ(nullptr, group);
    EXPECT_EQ(enumerations == 1 ? 0U : 100U, size);
    *needed = 100;
    *count = 0;
    SetLastError(ERROR_MORE_DATA);
    return TRUE;
}

// Lists two services of process 4711. Windows itself never lists such services.
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

TEST(ServiceOfProcessTest, Running_service_of_a_process_is_found_and_opened)
{
    TestService service("DmTestOwn");
    service.Start();
    const ImportPatch manager("OpenSCManagerA", NoteManagerAccess, systemOpenManager);
    const ImportPatch open("OpenServiceA", NoteServiceAccess, systemOpenService);
    ServiceOfProcess found;
    EXPECT_EQ(0, FindServiceOfProcess(service.ProcessId(), found));
    EXPECT_TRUE(found.isService);
    EXPECT_EQ("DmTestOwn", found.name);
    EXPECT_EQ(5U, managerAccess);
    EXPECT_EQ(0xF003FU, serviceAccess);
    ASSERT_TRUE(found.handle);
    SERVICE_STATUS status{};
    EXPECT_TRUE(QueryServiceStatus(found.handle.Get(), &status));
}

TEST(ServiceOfProcessTest, Search_for_an_ordinary_program_succeeds_and_finds_nothing)
{
    TestService other("DmTestOther");
    other.Start(); // the search fails if no service runs
    ServiceOfProcess found;
    EXPECT_EQ(0, FindServiceOfProcess(GetCurrentProcessId(), found));
    EXPECT_FALSE(found.isService);
    EXPECT_EQ("", found.name);
    EXPECT_FALSE(found.handle);
}

TEST(ServiceOfProcessTest, Service_in_a_shared_process_is_not_found)
{
    TestService other("DmTestOther");
    other.Start();
    TestService shared("DmTestShared", SERVICE_WIN32_SHARE_PROCESS);
    shared.Start();
    ServiceOfProcess found;
    EXPECT_EQ(0, FindServiceOfProcess(shared.ProcessId(), found));
    EXPECT_FALSE(found.isService);
}

TEST(ServiceOfProcessTest, Stopped_service_is_not_found)
{
    TestService running("DmTestOther");
    running.Start();
    const TestService stopped("DmTestStopped");
    ServiceOfProcess found;
    EXPECT_EQ(0, FindServiceOfProcess(stopped.ProcessId(), found)); // 0: it has no process
    EXPECT_FALSE(found.isService);
    EXPECT_EQ("", found.name);
}

TEST(ServiceOfProcessTest, Search_fails_with_the_name_set_if_the_service_cannot_be_opened)
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

TEST(ServiceOfProcessTest, First_of_two_services_with_one_process_id_is_found)
{
    const ImportPatch patch("EnumServicesStatusExA", EnumerateTwoOfOneProcess);
    ServiceOfProcess found;
    EXPECT_EQ(1, FindServiceOfProcess(4711, found)); // there is no such service to open
    EXPECT_TRUE(found.isService);
    EXPECT_EQ("DmTestFirst", found.name);
}

TEST(ServiceOfProcessTest, Search_fails_if_the_service_manager_cannot_be_opened)
{
    const ImportPatch patch("OpenSCManagerA", RefuseServiceManager);
    ServiceOfProcess found;
    EXPECT_EQ(1, FindServiceOfProcess(GetCurrentProcessId(), found));
}

TEST(ServiceOfProcessTest, Search_fails_if_no_service_with_its_own_process_runs)
{
    const ImportPatch patch("EnumServicesStatusExA", NothingToEnumerate);
    SetLastError(ERROR_MORE_DATA); // an earlier error must not count as the error of the search
    ServiceOfProcess found;
    EXPECT_EQ(1, FindServiceOfProcess(GetCurrentProcessId(), found));
}

TEST(ServiceOfProcessTest, Search_goes_on_if_the_sizing_call_succeeds_with_more_data)
{
    enumerations = 0;
    const ImportPatch patch("EnumServicesStatusExA", SucceedWithMoreData);
    ServiceOfProcess found;
    EXPECT_EQ(0, FindServiceOfProcess(GetCurrentProcessId(), found));
    EXPECT_EQ(2, enumerations);
}

TEST(ServiceOfProcessTest, Search_fails_if_the_services_cannot_be_listed)
{
    enumerations = 0;
    const ImportPatch patch("EnumServicesStatusExA", FailSecondEnumeration);
    ServiceOfProcess found;
    EXPECT_EQ(1, FindServiceOfProcess(GetCurrentProcessId(), found));
    EXPECT_EQ(2, enumerations);
}

} // namespace vqrx::test
