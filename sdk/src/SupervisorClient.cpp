#include "daemon_manager/SupervisorClient.h"

#include "daemon_manager/AnswererIdentity.h"
#include "daemon_manager/ArgumentRules.h"
#include "daemon_manager/ComApartment.h"

#include "IDaemonMgrControl.h"
#include "OwnedInterface.h"

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <new>

namespace daemon_manager {
namespace {

struct BstrFree {
    void operator()(OLECHAR* text) const noexcept { SysFreeString(text); }
};
using OwnedBstr = std::unique_ptr<OLECHAR, BstrFree>;

struct ArrayDestroy {
    void operator()(SAFEARRAY* array) const noexcept { SafeArrayDestroy(array); }
};
using OwnedArray = std::unique_ptr<SAFEARRAY, ArrayDestroy>;

std::string SystemText(HRESULT hr)
{
    std::array<char, 512> buffer{};
    DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                                      FORMAT_MESSAGE_MAX_WIDTH_MASK,
                                  nullptr, static_cast<DWORD>(hr), 0, buffer.data(),
                                  static_cast<DWORD>(buffer.size()), nullptr);
    while (length != 0 && buffer[length - 1] == ' ') {
        --length;
    }
    return {buffer.data(), length};
}

std::string ErrorText(const char* what, HRESULT hr)
{
    std::array<char, 32> code{};
    static_cast<void>(
        std::snprintf(code.data(), code.size(), "0x%08lx", static_cast<unsigned long>(hr)));
    std::string text = std::string(what) + ": " + code.data();
    const std::string system = SystemText(hr);
    return system.empty() ? text : text + " (" + system + ")";
}

void Check(const char* what, HRESULT hr)
{
    if (FAILED(hr)) {
        throw SupervisorError(ErrorText(what, hr), hr);
    }
}

OwnedBstr MakeBstr(const std::wstring& text)
{
    OwnedBstr result(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
    if (!result) {
        throw std::bad_alloc();
    }
    return result;
}

OwnedArray MakeArray(const std::vector<std::wstring>& texts)
{
    OwnedArray array(SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(texts.size())));
    if (!array) {
        throw std::bad_alloc();
    }
    for (std::size_t index = 0; index < texts.size(); ++index) {
        auto position = static_cast<LONG>(index);
        const OwnedBstr text = MakeBstr(texts[index]);
        Check("argument array",
              SafeArrayPutElement(array.get(), &position, text.get())); // copies text
    }
    return array;
}

OwnedInterface<IUnknown> FindObject()
{
    IRunningObjectTable* rawTable = nullptr;
    Check("Running Object Table", GetRunningObjectTable(0, &rawTable));
    const OwnedInterface<IRunningObjectTable> table(rawTable);
    IMoniker* rawMoniker = nullptr;
    Check("item name", CreateItemMoniker(L"!", L"DaemonManager", &rawMoniker));
    const OwnedInterface<IMoniker> moniker(rawMoniker);
    IUnknown* object = nullptr;
    const HRESULT hr = table->GetObject(moniker.get(), &object);
    if (hr == MK_E_UNAVAILABLE) {
        throw SupervisorNotRunning("no supervisor is running on this machine", hr);
    }
    if (FAILED(hr)) { // the table still names a process that has ended
        throw SupervisorNotRunning(ErrorText("the supervisor does not answer", hr), hr);
    }
    return OwnedInterface<IUnknown>(object);
}

void RefuseStranger(IUnknown* object)
{
    const SupervisorIdentity identity = IdentifyAnswerer(object);
    if (identity.trust == SupervisorTrust::kStranger) {
        throw SupervisorNotTrusted("not the installed supervisor answers: " + identity.reason,
                                   E_ACCESSDENIED);
    }
}

void RefuseUnsafe(const std::wstring& path, const std::vector<std::wstring>& arguments,
                  ArgumentCheck check)
{
    if (check == ArgumentCheck::kNone) {
        return;
    }
    const std::string reason = ReasonToRefuse(path, arguments);
    if (!reason.empty()) {
        throw UnsafeArgument(reason, E_INVALIDARG);
    }
}

// Returns whether a result code says that the other end of the connection is gone. The codes are
// those of winerror.h.
bool IsBroken(HRESULT hr)
{
    constexpr std::array<DWORD, 7> kCodes = {
        0x800706BA, // RPC_S_SERVER_UNAVAILABLE
        0x800706BE, // RPC_S_CALL_FAILED
        0x800706BF, // RPC_S_CALL_FAILED_DNE
        0x80010007, // RPC_E_SERVER_DIED
        0x80010012, // RPC_E_SERVER_DIED_DNE
        0x80010108, // RPC_E_DISCONNECTED
        0x800401FD, // CO_E_OBJNOTCONNECTED
    };
    return std::find(kCodes.begin(), kCodes.end(), static_cast<DWORD>(hr)) != kCodes.end();
}

// Throws if a call failed. A supervisor that runs may pass such a code on from WMI or the firewall.
// So only a second call, which asks neither of them, shows whether the supervisor is gone.
void CheckCall(IDaemonMgrControl& control, const char* what, HRESULT hr)
{
    if (IsBroken(hr) && IsBroken(control.Detach(kNoDaemonId))) {
        throw SupervisorNotRunning("the supervisor has ended: " + ErrorText(what, hr), hr);
    }
    Check(what, hr);
}

// Encrypts the calls through a proxy, and lets the server learn the caller's name only. By default
// the machine's settings would decide that. An object of this apartment has no proxy and needs
// none, and Wine has no such settings.
void ProtectCalls(IUnknown* proxy)
{
    const HRESULT hr = CoSetProxyBlanket(proxy, RPC_C_AUTHN_DEFAULT, RPC_C_AUTHZ_DEFAULT,
                                         COLE_DEFAULT_PRINCIPAL, RPC_C_AUTHN_LEVEL_PKT_PRIVACY,
                                         RPC_C_IMP_LEVEL_IDENTIFY, nullptr, EOAC_NONE);
    if (hr != E_NOINTERFACE && hr != E_NOTIMPL) {
        Check("security of the calls", hr);
    }
}

} // namespace

ComApartment::ComApartment()
{
    Check("COM cannot be initialised", CoInitializeEx(nullptr, COINIT_MULTITHREADED));
}

void SupervisorClient::Releaser::operator()(IDaemonMgrControl* control) const noexcept
{
    control->Release();
}

SupervisorClient::SupervisorClient(Answerer answerer)
{
    const OwnedInterface<IUnknown> object = FindObject();
    if (answerer == Answerer::kInstalled) {
        RefuseStranger(object.get());
    }
    ProtectCalls(object.get());
    void* control = nullptr;
    const HRESULT hr = object->QueryInterface(__uuidof(IDaemonMgrControl), &control);
    if (hr == E_NOINTERFACE) {
        throw ProxyNotRegistered("the supervisor runs, but DaemonMgrPS.dll is not registered", hr);
    }
    if (IsBroken(hr)) { // it has ended since its object was found
        throw SupervisorNotRunning(ErrorText("the supervisor has ended", hr), hr);
    }
    Check("the supervisor's interface", hr);
    control_.reset(static_cast<IDaemonMgrControl*>(control));
    ProtectCalls(control_.get());
}

SupervisorClient::SupervisorClient(SupervisorClient&&) noexcept = default;
SupervisorClient& SupervisorClient::operator=(SupervisorClient&&) noexcept = default;
SupervisorClient::~SupervisorClient() = default;

DaemonRequest SupervisorClient::Launch(const std::wstring& path,
                                       const std::vector<std::wstring>& arguments,
                                       ArgumentCheck check)
{
    RefuseUnsafe(path, arguments, check);
    const OwnedBstr pathText = MakeBstr(path);
    const OwnedArray array = MakeArray(arguments);
    SAFEARRAY* argumentArray = array.get();
    DWORD daemonId = 0;
    const HRESULT hr = control_->Launch(pathText.get(), &argumentArray, &daemonId);
    CheckCall(*control_, "launch", hr);
    return {daemonId, hr == S_OK};
}

bool SupervisorClient::Stop(std::uint32_t daemonId)
{
    const HRESULT hr = control_->Stop(daemonId);
    CheckCall(*control_, "stop", hr);
    return hr == S_OK;
}

DaemonRequest SupervisorClient::Attach(std::uint32_t processId,
                                       const std::vector<std::wstring>& arguments,
                                       ArgumentCheck check)
{
    RefuseUnsafe({}, arguments, check);
    const OwnedArray array = MakeArray(arguments);
    SAFEARRAY* argumentArray = array.get();
    DWORD daemonId = 0;
    const HRESULT hr = control_->Attach(processId, &argumentArray, &daemonId);
    CheckCall(*control_, "attach", hr);
    return {daemonId, hr == S_OK};
}

bool SupervisorClient::Detach(std::uint32_t daemonId)
{
    const HRESULT hr = control_->Detach(daemonId);
    CheckCall(*control_, "detach", hr);
    return hr == S_OK;
}

void SupervisorClient::Exit()
{
    // RPC_S_CALL_FAILED (winerror.h): the connection broke during the call. The supervisor accepts
    // the order before it answers, and may have ended before its answer arrives.
    constexpr auto kAnswerLost = static_cast<HRESULT>(0x800706BE);
    const HRESULT hr = control_->Exit();
    if (hr != kAnswerLost) {
        CheckCall(*control_, "exit", hr);
    }
}

} // namespace daemon_manager
