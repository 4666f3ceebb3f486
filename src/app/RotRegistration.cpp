#include "RotRegistration.h"

#include "OriginMark.h"
#include "exception_utils/COMException.h"
#include "exception_utils/HResultText.h"

#include <objbase.h>

#include <stdexcept>

namespace vqrx::app::v0 {
namespace {

using cpp_utils::exception_utils::v1::HResultText;
using log::i_logger::v0::kLevelError;
using system::com::v1::ComPtr;

ComPtr<IMoniker> MakeItemMoniker(const std::string& name)
{
    const std::wstring wide(name.begin(), name.end());
    ComPtr<IMoniker> moniker;
    ThrowIfFailed(CreateItemMoniker(L"!", wide.c_str(), moniker.Put()));
    return moniker;
}

} // namespace

RotRegistration::RotRegistration(IUnknown* object, const std::string& name)
{
    ThrowIfFailed(GetRunningObjectTable(0, table_.Put()));
    const ComPtr<IMoniker> moniker = MakeItemMoniker(name);
    // Before the object can be found: whoever finds it finds the mark, too.
    resultOfMark_ = MakeOriginMark(object, mark_);
    const HRESULT hr =
        table_->Register(ROTFLAGS_REGISTRATIONKEEPSALIVE, object, moniker.Get(), &cookie_);
    if (hr == S_OK) {
        return;
    }
    if (SUCCEEDED(hr)) {
        table_->Revoke(cookie_); // the table made a second entry of the same name
    }
    throw std::runtime_error("A registration with this name already exists: \"" + name + "\" (" +
                             HResultText(hr) + ")");
}

RotRegistration::~RotRegistration()
{
    table_->Revoke(cookie_);
}

void MakeRotRegistration(std::unique_ptr<RotRegistration>& registration, IUnknown* object,
                         log::i_logger::v0::ILogger& logger)
{
    const HRESULT hr =
        CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_NONE,
                             RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr);
    if (FAILED(hr) && hr != RPC_E_TOO_LATE) {
        logger.Log(kLevelError, "CoInitializeSecurity error %s", HResultText(hr).c_str());
    }
    registration.reset();
    try {
        registration = std::make_unique<RotRegistration>(object, "DaemonManager");
        if (const HRESULT mark = registration->ResultOfMark(); FAILED(mark)) {
            logger.Log(kLevelError,
                       "The published object has no mark of its origin, so clients refuse it: %s",
                       HResultText(mark).c_str());
        }
    } catch (const COMException& exception) {
        logger.Log(kLevelError, "RotRegistration errror %s", exception.what());
    }
}

} // namespace vqrx::app::v0
