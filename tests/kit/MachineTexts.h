#pragma once

#include <string>

namespace vqrx::kit {

/// Returns the name of this Windows. The registry of Windows 11 says "Windows 10".
/// @param product  value ProductName of the registry
/// @param build    build number, as the system itself reports it
[[nodiscard]] std::string NameOfWindows(const std::string& product, unsigned long build);

/// What the service manager and the registry say about Defender. Texts are registry values as
/// decimal numbers; empty: the value does not exist.
struct DefenderFacts {
    bool exists = false; ///< the service WinDefend
    bool runs = false;   ///< the service WinDefend
    std::string passive; ///< PassiveMode: "1" or "2" if another scanner protects the machine
    std::string off;     ///< DisableRealtimeMonitoring, as set on this machine
    std::string policy;  ///< DisableRealtimeMonitoring, as set by a policy; outweighs off
};

/// Says in one line whether Defender looks at new files while they are used.
[[nodiscard]] std::string DefenderText(const DefenderFacts& facts);

/// Says in one line which programs Windows lets run. Texts are registry values as decimal numbers;
/// empty: the value does not exist.
/// @param memoryIntegrity  value Enabled of HypervisorEnforcedCodeIntegrity
/// @param smartAppControl  value VerifiedAndReputablePolicyState, which Windows 11 has
[[nodiscard]] std::string CodeIntegrityText(const std::string& memoryIntegrity,
                                            const std::string& smartAppControl);

} // namespace vqrx::kit
