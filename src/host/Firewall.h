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

/// Adds and removes the Windows Firewall rules of the programs that the supervisor launches. The
/// firewall finds a rule by its name alone.
/// The constructor connects to Windows Firewall with Advanced Security. If that fails, the object
/// never tries again, and every later call only logs that the firewall is not available.
/// Has no lock. Any thread of the multithreaded apartment may call it. Every failure of the
/// firewall is logged and not reported to the caller.
class Firewall {
public:
    /// Connects to the firewall. If the firewall service is enabled, waits without limit until it
    /// runs and its endpoint answers. Otherwise logs the reason and returns at once.
    /// @param name    begins the names of rules per TCP port; no code makes such rules
    /// @param logger  borrowed; must outlive the object
    /// @param sleep   called for each wait
    /// @throws COMException  COM cannot be initialised on this thread
    Firewall(const std::string& name, log::i_logger::v0::ILogger* logger,
             const SleepSeconds& sleep = SleepForSeconds);
    Firewall(const Firewall&) = delete;
    Firewall& operator=(const Firewall&) = delete;
    /// On the thread that called the constructor: ends that thread's membership in COM.
    ~Firewall();

    /// Makes sure that the rule "allowing " + path exists. A new rule allows the program every
    /// protocol in every profile. An existing rule of that name stays as it is.
    /// @param path  in the ANSI code page of the thread
    /// @throws ATL::CAtlException(E_OUTOFMEMORY), std::bad_alloc
    void AllowApplication(const std::string& path);

    /// Removes the rule "allowing " + path.
    /// @param path  in the ANSI code page of the thread
    /// @throws ATL::CAtlException(E_OUTOFMEMORY), std::bad_alloc
    void RemoveApplication(const std::string& path);

private:
    void Bind(const SleepSeconds& sleep);
    void WaitForEndpoint(INetFwPolicy* localPolicy, const SleepSeconds& sleep);
    [[nodiscard]] system::com::v1::ComPtr<INetFwRules> Rules();
    [[nodiscard]] system::com::v1::ComPtr<INetFwRule> MakeRule(BSTR name, BSTR path);

    system::com::v1::ComApartment apartment_; // constructed first and destroyed last
    system::com::v1::ComPtr<INetFwProfile> currentProfile_;
    system::com::v1::ComPtr<INetFwPolicy2> policy_; // null: the firewall is not available
    std::set<std::uint64_t> ports_; // always empty: no code makes rules per TCP port
    log::i_logger::v0::ILogger* logger_;
    std::string portRulePattern_; // format of the names of rules per TCP port; never read
};

} // namespace vqrx::host::v0
