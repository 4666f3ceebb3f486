// Duration of Launch with a table of 10,000 daemons, called in the process and from another
// process.
#include "ArgumentArray.h"
#include "DaemonManager.h"
#include "HeapBytes.h"
#include "Measure.h"
#include "RotRegistration.h"
#include "SharedChild.h"
#include "com/ComApartment.h"
#include "com/ComPtr.h"
#include "com/UniqueBstr.h"
#include "daemon_manager/SupervisorClient.h"
#include "log_perf/LibLogPerf.h"
#include "win32/UniqueHandle.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::bench {
namespace {

using system::com::v1::ComPtr;
using system::com::v1::UniqueBstr;
using system::daemon::daemon_mgr::v0::DaemonManager;
using system::win32::v1::UniqueKernelHandle;

constexpr std::uint32_t kUnknownDaemon = 0xFFFFFFF0;
constexpr int kCalls = 100;

std::wstring Path()
{
    const std::string path = kDaemonPath;
    return {path.begin(), path.end()};
}

std::vector<std::wstring> Texts(int number)
{
    const std::wstring digits = std::to_wstring(100000 + number);
    return {L"--channel", digits, L"--profile=broadcast-hd", L"--multicast=239.1." + digits};
}

class Request {
public:
    explicit Request(int number)
        : path_(Path())
    {
        SAFEARRAYBOUND bound{4, 0};
        arguments_ = SafeArrayCreate(VT_BSTR, 1, &bound);
        LONG position = 0;
        for (const std::wstring& text : Texts(number)) {
            const UniqueBstr argument(text);
            SafeArrayPutElement(arguments_, &position, argument.Get());
            ++position;
        }
    }
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;
    ~Request() { SafeArrayDestroy(arguments_); }

    HRESULT Send(DaemonManager& manager)
    {
        DWORD daemonId = 0;
        return manager.Launch(path_.Get(), &arguments_, &daemonId);
    }

private:
    UniqueBstr path_;
    SAFEARRAY* arguments_ = nullptr;
};

// Registers DaemonMgrPS.dll beside this program until its end.
class RegisteredProxy {
public:
    RegisteredProxy()
        : library_(LoadLibraryA((std::filesystem::path(OwnPath()).parent_path() / "DaemonMgrPS.dll")
                                    .string()
                                    .c_str()))
    {
        if (library_ == nullptr || Call("DllRegisterServer") != S_OK) {
            throw std::runtime_error("DaemonMgrPS.dll cannot be registered");
        }
    }
    RegisteredProxy(const RegisteredProxy&) = delete;
    RegisteredProxy& operator=(const RegisteredProxy&) = delete;
    ~RegisteredProxy() { static_cast<void>(Call("DllUnregisterServer")); }

private:
    [[nodiscard]] HRESULT Call(const char* function) const
    {
        using Entry = HRESULT(STDAPICALLTYPE*)();
        // The cast through void* avoids a warning: the two function types are not related.
        void* const address = reinterpret_cast<void*>(GetProcAddress(library_, function));
        return address != nullptr ? reinterpret_cast<Entry>(address)() : E_NOTIMPL;
    }

    HMODULE library_; // stays loaded
};

} // namespace

void LaunchBench(const Settings& settings)
{
    const int records = settings.quick ? 1000 : 10000;
    const system::com::v1::ComApartment apartment;
    log::log_perf::v2::LibLogPerf logger;
    const auto manager =
        ComPtr<DaemonManager>::Share(new DaemonManager(GetCurrentThreadId(), INFINITE, &logger));
    Request(-1).Send(*manager.Get());
    const std::size_t before = HeapBytes();
    for (int number = 0; number < records; ++number) {
        Request(number).Send(*manager.Get());
    }
    Sleep(500); // The logger writes its last records in this time.
    Report("launch.table_mib", static_cast<double>(HeapBytes() - before) / 1048576);

    Request last(records - 1);
    const Stopwatch watch;
    for (int i = 0; i < kCalls; ++i) {
        last.Send(*manager.Get());
    }
    Report("launch.in_process_us", watch.Seconds() / kCalls * 1e6);

    std::optional<RegisteredProxy> proxy;
    if (settings.registerProxy) {
        proxy.emplace();
    }
    std::unique_ptr<app::v0::RotRegistration> registration;
    app::v0::MakeRotRegistration(registration, manager.Get(), logger);
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION client{};
    std::string commandLine = OwnPath() + " launch_client " + std::to_string(records - 1);
    if (CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                       &startup, &client) == FALSE) {
        throw std::runtime_error("the client of the launch benchmark cannot be started");
    }
    const UniqueKernelHandle primaryThread(client.hThread);
    const UniqueKernelHandle process(client.hProcess);
    if (WaitForSingleObject(process.Get(), 60000) != WAIT_OBJECT_0) {
        TerminateProcess(process.Get(), 9);
    }
    DWORD result = 0;
    if (GetExitCodeProcess(process.Get(), &result) == FALSE || result != 0) {
        throw std::runtime_error("the client of the launch benchmark has failed");
    }
}

int LaunchClient()
{
    const system::com::v1::ComApartment apartment;
    // The measuring program has published the object, not an installed supervisor.
    daemon_manager::SupervisorClient client(daemon_manager::Answerer::kAnybody);
    client.Detach(kUnknownDaemon);
    const Stopwatch call;
    for (int i = 0; i < kCalls; ++i) {
        client.Detach(kUnknownDaemon); // has no effect, so only the call itself takes time
    }
    Report("launch.one_call_us", call.Seconds() / kCalls * 1e6);
    const int last = std::stoi(__argv[2]);
    const Stopwatch launch;
    for (int i = 0; i < kCalls; ++i) {
        client.Launch(Path(), Texts(last));
    }
    Report("launch.other_process_us", launch.Seconds() / kCalls * 1e6);
    return 0;
}

} // namespace vqrx::bench
