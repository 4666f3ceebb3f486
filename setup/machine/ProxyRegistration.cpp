#include "ProxyRegistration.h"

#include "MachineKey.h"
#include "SetupError.h"
#include "Utf8.h"
#include "daemon_manager/SupervisorIdentity.h"
#include "system_library/SystemLibrary.h"

#include <windows.h>

#include <cstdint>

namespace vqrx::setup::v0 {
namespace {

using client::v0::Utf8;
using client::v0::Wide;
using cpp_utils::system_library::v1::FindFunction;

// A library that is loaded for one call. Windows looks for its imports in the library's own folder
// first, so whoever may write to that folder decides what is loaded.
class LoadedProxy {
public:
    explicit LoadedProxy(const std::string& library)
        : module_(LoadLibraryExW(Wide(library).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH))
    {
    }
    LoadedProxy(const LoadedProxy&) = delete;
    LoadedProxy& operator=(const LoadedProxy&) = delete;
    ~LoadedProxy()
    {
        if (module_ != nullptr) {
            FreeLibrary(module_);
        }
    }

    // @return the error of loading the library, or the result of its function
    [[nodiscard]] HRESULT Call(const char* function) const
    {
        if (auto* const entry = FindFunction<HRESULT WINAPI()>(module_, function)) {
            return entry();
        }
        return HRESULT_FROM_WIN32(GetLastError());
    }

private:
    HMODULE module_;
};

// The key of the class of the proxy/stub, below HKEY_LOCAL_MACHINE.
std::string ProxyKey()
{
    return R"(SOFTWARE\Classes\CLSID\)" + Utf8(daemon_manager::kInterfaceId);
}

void CheckFormer(const std::string& library, const SafeFolders& folders)
{
    try {
        folders.CheckLibrary(library);
    } catch (const SetupError&) {
        throw SetupError("The former proxy/stub " + library +
                         " is not registered again: others may change it or its folder.");
    }
}

} // namespace

std::string RegisteredProxy()
{
    return MachineKey(ProxyKey() + R"(\InprocServer32)").Text("");
}

std::string CommandToForgetProxy()
{
    return R"(reg delete "HKLM\)" + ProxyKey() + R"(" /f)";
}

void CheckRegisteredProxy(const SafeFolders& folders)
{
    const std::string proxy = RegisteredProxy();
    if (proxy.empty()) {
        return;
    }
    try {
        folders.CheckLibrary(proxy);
    } catch (const SetupError& error) {
        throw SetupError("To end a supervisor, the client would load the registered proxy/stub " +
                         proxy + ".\n" + error.what() +
                         "\nIf no supervisor runs there, the registration can go:\n  " +
                         CommandToForgetProxy());
    }
}

void RegisterProxy(const std::string& library)
{
    const HRESULT result = LoadedProxy(library).Call("DllRegisterServer");
    if (FAILED(result) || RegisteredProxy() != library) {
        throw SetupError(library + " cannot be registered (result " +
                         std::to_string(static_cast<std::uint32_t>(result)) + ").");
    }
}

void RegisterFormerProxy(const std::string& former, const std::string& other,
                         const SafeFolders& folders)
{
    try {
        CheckFormer(former, folders);
        RegisterProxy(former);
    } catch (const SetupError&) {
        UnregisterProxy(other);
        throw;
    }
}

void UnregisterProxy(const std::string& library) noexcept
{
    if (RegisteredProxy() == library) {
        static_cast<void>(LoadedProxy(library).Call("DllUnregisterServer"));
    }
}

} // namespace vqrx::setup::v0
