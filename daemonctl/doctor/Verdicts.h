#pragma once

#include "DoctorFacts.h"
#include "Finding.h"

#include <cstdint>
#include <string>

namespace vqrx::client::v0 {

// One verdict for each thing that `daemonctl doctor` looks at. Pure.

Finding JudgeRights(const InstallationFacts& facts);
Finding JudgeRegistry(const InstallationFacts& facts);
Finding JudgeApp(const InstallationFacts& facts);
Finding JudgeLog(const InstallationFacts& facts);

/// @param version  daemonctl's own
Finding JudgeProxy(const ProxyFacts& facts, const std::string& version);
Finding JudgeSupervisor(const SupervisorFacts& facts, const std::string& version);

Finding JudgeFirewallService(const FirewallServiceFacts& facts);
Finding JudgeWmi(const WmiFacts& facts);
Finding JudgeCrashDialogs(const CrashDialogFacts& facts);
Finding JudgeErrorBoxes(const CrashDialogFacts& facts);
Finding JudgeFirewallRules(const FirewallRulesFacts& facts);

/// "error 5 (access denied)".
std::string ErrorNumberText(std::uint32_t error);

/// "0x80070005".
std::string ResultText(long result);

} // namespace vqrx::client::v0
