#include "WmiConnection.h"

#include "com/UniqueBstr.h"
#include "exception_utils/COMException.h"
#include "exception_utils/HResultText.h"

namespace vqrx::system::daemon::daemon_mgr::v0 {
namespace {

using com::v1::UniqueBstr;
using log::i_logger::v0::ILogger;

// wbemidl.h; spelt out to need no import library.
constexpr CLSID kWbemLocator = {
    0x4590F811, 0x1D3A, 0x11D0, {0x89, 0x1F, 0x00, 0xAA, 0x00, 0x4B, 0x2E, 0x24}};

} // namespace

void WmiConnection::Connect(ILogger& logger) noexcept
{
    try {
        ConnectOrThrow(logger);
    } catch (const std::exception& exception) {
        logger.Log(0, "Init WMI errror %s", exception.what());
    } catch (...) {
        logger.Log(0, "Init WMI errror %s", "out of memory");
    }
}

void WmiConnection::ConnectOrThrow(ILogger& logger)
{
    const HRESULT hr =
        CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_CONNECT,
                             RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr);
    if (FAILED(hr) && hr != RPC_E_TOO_LATE) {
        logger.Log(0, "CoInitializeSecurity error %s",
                   cpp_utils::exception_utils::v1::HResultText(hr).c_str());
        return;
    }
    ThrowIfFailed(CoCreateInstance(kWbemLocator, nullptr, CLSCTX_INPROC_SERVER,
                                   __uuidof(IWbemLocator), locator_.PutVoid()));
    logger.Log(2, "Connecting to WMI resource ...");
    const UniqueBstr name(L"root\\cimv2");
    ThrowIfFailed(locator_->ConnectServer(name.Get(), nullptr, nullptr, nullptr,
                                          WBEM_FLAG_CONNECT_USE_MAX_WAIT, nullptr, nullptr,
                                          services_.Put()));
    logger.Log(2, "Connected to WMI resource");
    ThrowIfFailed(CoSetProxyBlanket(services_.Get(), RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr,
                                    RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr,
                                    EOAC_NONE));
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
