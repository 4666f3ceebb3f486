#pragma once

#include "FirewallService.h"
#include "ILogger.h"
#include "com/ComApartment.h"
#include "com/ComPtr.h"

#include <netfw.h>

#include <cstdint>
#include <set>
#include <string>

namespace vqrx::host::v0 {

/// Opens the host firewall for programs, by rules that are found by their names alone.
/// Either bound to Windows Firewall with Advanced Security from construction on, or unavailable for
/// good. Has no lock: used from any thread of the multithreaded apartment. Failures are logged and
/// swallowed.
class Firewall {
public:
    /// Waits, without bound, for the firewall service and its endpoint.
    /// @param name    the application's, kept for rules per TCP port
    /// @param logger  borrowed; must outlive the object
    /// @param sleep   how the waiting is done
    /// @throws COMException when COM cannot be initialised on this thread
    Firewall(const std::string& name, log::i_logger::v0::ILogger* logger,
             const SleepSeconds& sleep = SleepForSeconds);
    Firewall(const Firewall&) = delete;
    Firewall& operator=(const Firewall&) = delete;
    ~Firewall();

    /// Makes sure that the rule "allowing " + path exists: every protocol, every profile. A rule of
    /// that name is left as it is. @param path  in the thread's ANSI code page
    /// @throws ATL::CAtlException(E_OUTOFMEMORY)
    void AllowApplication(const std::string& path);

    /// Removes the rule "allowing " + path. @throws as AllowApplication
    void RemoveApplication(const std::string& path);

private:
    void Bind(const SleepSeconds& sleep);
    void WaitForEndpoint(INetFwPolicy* localPolicy, const SleepSeconds& sleep);
    system::com::v1::ComPtr<INetFwRules> Rules();
    system::com::v1::ComPtr<INetFwRule> MakeRule(BSTR name, BSTR path);

    system::com::v1::ComApartment apartment_; // first in, last out
    system::com::v1::ComPtr<INetFwProfile> currentProfile_;
    system::com::v1::ComPtr<INetFwPolicy2> policy_; // null: no firewall
    std::set<std::uint64_t> ports_;                 // for rules per TCP port; none are made yet
    log::i_logger::v0::ILogger* logger_;
    std::string portRulePattern_; // the names of such rules
};

} // namespace vqrx::host::v0
