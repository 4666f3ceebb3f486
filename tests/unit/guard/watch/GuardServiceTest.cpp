#include "FirmwareRegistry.h"
#include "GuardProgram.h"
#include "ImportPatch.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

// The service control manager gives a program controls at any moment. The functions below take its
// place, to choose the moment.
LPHANDLER_FUNCTION_EX controlHandler = nullptr;
std::vector<DWORD> statesReported;
int objectOfStatus = 0;

SERVICE_STATUS_HANDLE WINAPI NoteHandler(LPCWSTR, LPHANDLER_FUNCTION_EX handler, void*)
{
    controlHandler = handler;
    return reinterpret_cast<SERVICE_STATUS_HANDLE>(&objectOfStatus);
}

BOOL WINAPI NoteState(SERVICE_STATUS_HANDLE, LPSERVICE_STATUS status)
{
    statesReported.push_back(status->dwCurrentState);
    return TRUE;
}

std::vector<std::wstring> eventsReported;

BOOL WINAPI NoteEvent(HANDLE, WORD, WORD, DWORD, PSID, WORD, DWORD, LPCWSTR* inserts, LPVOID)
{
    eventsReported.emplace_back(inserts[0]);
    return TRUE;
}

BOOL WINAPI RunServiceAndStopItThen(const SERVICE_TABLE_ENTRYW* table)
{
    table->lpServiceProc(0, nullptr);
    EXPECT_EQ(controlHandler(SERVICE_CONTROL_STOP, 0, nullptr, nullptr), DWORD{NO_ERROR});
    return TRUE;
}

TEST(GuardService,
     A_guard_that_cannot_begin_is_in_the_event_log_and_a_later_control_is_not_reported)
{
    const FirmwareRegistry registry; // names no firmware root, so the guard ends at once
    const ImportPatch dispatcher("StartServiceCtrlDispatcherW", RunServiceAndStopItThen);
    const ImportPatch handler("RegisterServiceCtrlHandlerExW", NoteHandler);
    const ImportPatch report("SetServiceStatus", NoteState);
    const ImportPatch event("ReportEventW", NoteEvent);
    EXPECT_EQ(guard::v0::RunAsService({}), int{ERROR_SERVICE_SPECIFIC_ERROR});
    EXPECT_EQ(statesReported, (std::vector<DWORD>{SERVICE_START_PENDING, SERVICE_STOPPED}));
    EXPECT_EQ(eventsReported, (std::vector<std::wstring>{L"DaemonGuard fails: the registry does "
                                                         L"not name the firmware root"}));
}

} // namespace
} // namespace vqrx::test
