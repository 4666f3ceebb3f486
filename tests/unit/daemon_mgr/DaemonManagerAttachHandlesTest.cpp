#include "ImportPatch.h"
#include "ManagerFixture.h"
#include "StandInWmi.h"
#include "TestService.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <set>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::kNoId;

constexpr auto kRefused = static_cast<HRESULT>(0x800706BA);

// The handles that this program has opened and not yet closed, while a HandleLedger lives.
std::mutex ledgerMutex;
std::multiset<HANDLE> processes;
std::multiset<SC_HANDLE> services; // handles of the service control manager included
decltype(&OpenProcess) openProcess = nullptr;
decltype(&CloseHandle) closeHandle = nullptr;
decltype(&OpenSCManagerA) openManager = nullptr;
decltype(&OpenServiceA) openService = nullptr;
decltype(&CloseServiceHandle) closeService = nullptr;

template <typename Handle>
Handle Note(std::multiset<Handle>& open, Handle handle)
{
    const std::lock_guard lock(ledgerMutex);
    if (handle != nullptr) {
        open.insert(handle);
    }
    return handle;
}

template <typename Handle>
void Forget(std::multiset<Handle>& open, Handle handle)
{
    const std::lock_guard lock(ledgerMutex);
    const auto found = open.find(handle);
    if (found != open.end()) {
        open.erase(found);
    }
}

HANDLE WINAPI NoteProcess(DWORD access, BOOL inherit, DWORD processId)
{
    return Note(processes, openProcess(access, inherit, processId));
}

BOOL WINAPI ForgetHandle(HANDLE handle)
{
    Forget(processes, handle);
    return closeHandle(handle);
}

SC_HANDLE WINAPI NoteManager(LPCSTR machine, LPCSTR database, DWORD access)
{
    return Note(services, openManager(machine, database, access));
}

SC_HANDLE WINAPI NoteService(SC_HANDLE manager, LPCSTR name, DWORD access)
{
    return Note(services, openService(manager, name, access));
}

BOOL WINAPI ForgetService(SC_HANDLE handle)
{
    Forget(services, handle);
    return closeService(handle);
}

// Counts the handles of processes and services that the code under test opens and closes.
class HandleLedger {
public:
    HandleLedger()
    {
        processes.clear();
        services.clear();
    }

    static std::size_t Processes() { return processes.size(); }
    static std::size_t Services() { return services.size(); }

private:
    ImportPatch openProcess_{"OpenProcess", NoteProcess, openProcess};
    ImportPatch closeHandle_{"CloseHandle", ForgetHandle, closeHandle};
    ImportPatch openManager_{"OpenSCManagerA", NoteManager, openManager};
    ImportPatch openService_{"OpenServiceA", NoteService, openService};
    ImportPatch closeService_{"CloseServiceHandle", ForgetService, closeService};
};

LPWSTR* WINAPI RefuseToSplitAnything(LPCWSTR, int*)
{
    return nullptr;
}

SC_HANDLE WINAPI RefuseManager(LPCSTR, LPCSTR, DWORD)
{
    return nullptr;
}

SC_HANDLE WINAPI RefuseService(SC_HANDLE, LPCSTR, DWORD)
{
    return nullptr;
}

BOOL WINAPI NothingToEnumerate(SC_HANDLE, SC_ENUM_TYPE, DWORD, DWORD, LPBYTE, DWORD, LPDWORD needed,
                               LPDWORD count, LPDWORD, LPCSTR)
{
    *needed = 0;
    *count = 0;
    return TRUE;
}

class DaemonManagerAttachHandlesTest : public ManagerFixture {
protected:
    DaemonManagerAttachHandlesTest() { service_.Start(); }

    StandInWmi wmi_;
    TestService service_{"DmTestAttachHandles"};
};

} // namespace

TEST_F(DaemonManagerAttachHandlesTest, Attach_closes_every_handle_however_it_fails)
{
    PropertyAnswer missing;
    missing.result = static_cast<HRESULT>(0x80041002);
    PropertyAnswer number;
    number.type = VT_I4;
    PropertyAnswer text;
    text.text = L"a.exe";
    const auto answer = [](const PropertyAnswer& path, const PropertyAnswer& commandLine) {
        TheWmiScript().processes = [=](DWORD) {
            return std::vector<ProcessAnswer>{{path, commandLine}};
        };
    };
    std::unique_ptr<ImportPatch> patch;
    struct Case {
        const char* failure;
        std::function<void()> arrange;
        HRESULT expected;
    };
    const Case cases[] = {
        {"the query fails", [] { TheWmiScript().query = kRefused; }, kRefused},
        {"the first Next fails", [] { TheWmiScript().failAtNext = 1; }, E_ABORT},
        {"the second Next fails", [] { TheWmiScript().failAtNext = 2; }, E_ABORT},
        {"WMI does not know the process",
         [] { TheWmiScript().processes = [](DWORD) { return std::vector<ProcessAnswer>{}; }; },
         S_FALSE},
        {"the path is missing", [&] { answer(missing, text); }, missing.result},
        {"the command line is a number", [&] { answer(text, number); }, E_FAIL},
        {"the command line does not split",
         [&] {
             patch = std::make_unique<ImportPatch>("CommandLineToArgvW", RefuseToSplitAnything);
         },
         S_FALSE},
        {"there is no service manager",
         [&] { patch = std::make_unique<ImportPatch>("OpenSCManagerA", RefuseManager); }, S_FALSE},
        {"no service has a process of its own",
         [&] {
             patch = std::make_unique<ImportPatch>("EnumServicesStatusExA", NothingToEnumerate);
         },
         S_FALSE},
        {"the service may not be opened",
         [&] { patch = std::make_unique<ImportPatch>("OpenServiceA", RefuseService); }, S_FALSE},
    };
    Make(kNoPasses);
    const DWORD processId = service_.ProcessId();
    const long objects = TheWmiScript().liveObjects;
    const HandleLedger ledger;
    for (const Case& failing : cases) {
        SCOPED_TRACE(failing.failure);
        failing.arrange();
        DWORD daemonId = 9;
        EXPECT_EQ(failing.expected, manager_->Attach(processId, nullptr, &daemonId));
        EXPECT_EQ(kNoId, daemonId);
        EXPECT_EQ(0U, ledger.Processes());
        EXPECT_EQ(0U, ledger.Services());
        EXPECT_EQ(objects, TheWmiScript().liveObjects);
        patch.reset();
        TheWmiScript().query = S_OK;
        TheWmiScript().failAtNext = 0;
        TheWmiScript().processes = nullptr;
    }
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, manager_->Attach(processId, nullptr, &daemonId));
    EXPECT_EQ(std::size(cases), daemonId); // each failed attach used up one id
}

TEST_F(DaemonManagerAttachHandlesTest, Handles_of_an_attached_service_stay_open_until_Detach)
{
    Make(kNoPasses);
    const DWORD processId = service_.ProcessId();
    const HandleLedger ledger;
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, manager_->Attach(processId, nullptr, &daemonId));
    EXPECT_EQ(1U, ledger.Processes());
    EXPECT_EQ(1U, ledger.Services()); // the service; the service control manager is closed
    EXPECT_EQ(S_OK, manager_->Detach(daemonId));
    EXPECT_EQ(0U, ledger.Processes());
    EXPECT_EQ(0U, ledger.Services());
}

TEST_F(DaemonManagerAttachHandlesTest, Handles_of_an_attached_service_are_closed_by_Stop)
{
    Make(kNoPasses);
    const DWORD processId = service_.ProcessId();
    const HandleLedger ledger;
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, manager_->Attach(processId, nullptr, &daemonId));
    EXPECT_EQ(S_FALSE, manager_->Stop(daemonId));
    EXPECT_EQ(0U, ledger.Processes());
    EXPECT_EQ(0U, ledger.Services());
}

TEST_F(DaemonManagerAttachHandlesTest,
       Attach_of_a_service_that_cannot_be_opened_is_logged_with_the_name_of_the_service)
{
    Make(kNoPasses);
    const DWORD processId = service_.ProcessId();
    DWORD daemonId = 9;
    {
        const ImportPatch patch("OpenServiceA", RefuseService);
        EXPECT_EQ(S_FALSE, manager_->Attach(processId, nullptr, &daemonId));
    }
    const std::string text =
        "Unable to attach DaemonId(0) PId(" + std::to_string(processId) + ") : DmTestAttachHandles";
    EXPECT_TRUE(sink_.WaitForText(text));
    EXPECT_EQ(1U, sink_.Count(1, text));
}

} // namespace vqrx::test
