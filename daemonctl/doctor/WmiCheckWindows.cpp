#include "WmiCheck.h"

#include "LetterCase.h"
#include "ProcessFacts.h"
#include "Utf8.h"
#include "com/ComPtr.h"
#include "com/UnmarshalPolicy.h"
#include "exception_utils/COMException.h"
#include "wmi/ConnectWmi.h"
#include "wmi/WmiQuery.h"

#include <windows.h>

#include <exception>
#include <string>

namespace vqrx::client::v0 {
namespace {

namespace wmi = system::wmi::v1;

using WmiServices = system::com::v1::ComPtr<IWbemServices>;

// Connects to WMI by the steps of the supervisor.
// @param failure  receives the error text of the step that failed
// @return null if a step failed
WmiServices Connect(std::string& failure)
{
    try {
        ThrowIfFailed(system::com::v1::RequireTrustedUnmarshalers());
        ThrowIfFailed(wmi::SetComSecurity());
        system::com::v1::PermitUnmarshalerOfWmi();
        const auto locator = wmi::MakeLocator();
        WmiServices services = wmi::OpenNamespace(locator.Get());
        wmi::SetCallSecurity(services.Get());
        return services;
    } catch (const std::exception& exception) {
        failure = exception.what();
    } catch (...) {
        failure = "out of memory";
    }
    return {};
}

// Reads a property. @return an HRESULT
long ReadProperty(IWbemClassObject* object, const wchar_t* name, std::string& value)
{
    try {
        value = Utf8(wmi::ReadStringProperty(object, name).View());
        return S_OK;
    } catch (const COMException& exception) {
        return exception.Code();
    }
}

void AskForThisProcess(IWbemServices* services, WmiFacts& facts)
{
    const DWORD processId = GetCurrentProcessId();
    const auto process = wmi::FindProcess(services, processId);
    facts.knowsThisProcess = static_cast<bool>(process);
    if (!process) {
        return;
    }
    std::string path;
    std::string commandLine;
    facts.executablePathResult = ReadProperty(process.Get(), wmi::kExecutablePath, path);
    facts.commandLineResult = ReadProperty(process.Get(), wmi::kCommandLine, commandLine);
    facts.executablePathFits = WithoutCase(path) == WithoutCase(ReadProcessFacts(processId).image);
}

} // namespace

WmiFacts GatherWmiFacts()
{
    WmiFacts facts;
    facts.answered = true;
    const WmiServices services = Connect(facts.connectFailure);
    if (!services) {
        return facts;
    }
    try {
        AskForThisProcess(services.Get(), facts);
    } catch (const COMException& exception) {
        facts.queryResult = exception.Code();
    }
    return facts;
}

} // namespace vqrx::client::v0
