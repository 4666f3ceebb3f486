#include "MachineTexts.h"

#include <string_view>

namespace vqrx::kit {
namespace {

constexpr unsigned long kFirstBuildOf11 = 22000;

} // namespace

std::string NameOfWindows(const std::string& product, unsigned long build)
{
    constexpr std::string_view ten = "Windows 10";
    return build >= kFirstBuildOf11 && product.starts_with(ten)
               ? "Windows 11" + product.substr(ten.size())
               : product;
}

std::string DefenderText(const DefenderFacts& facts)
{
    if (!facts.exists) {
        return "no Defender (no service WinDefend)";
    }
    if (!facts.runs) {
        return "Defender does not run; real-time protection off";
    }
    if (!facts.passive.empty() && facts.passive != "0") {
        return "Defender runs in passive mode: another virus scanner protects the machine";
    }
    if (!facts.policy.empty() && facts.policy != "0") {
        return "Defender runs; real-time protection off by a policy";
    }
    return std::string("Defender runs; real-time protection ") +
           (facts.policy.empty() && !facts.off.empty() && facts.off != "0" ? "off" : "on");
}

std::string CodeIntegrityText(const std::string& memoryIntegrity,
                              const std::string& smartAppControl)
{
    std::string text = std::string("Memory integrity ") + (memoryIntegrity == "1" ? "on" : "off") +
                       "; Smart App Control ";
    if (smartAppControl.empty() || smartAppControl == "0") {
        return text + "off";
    }
    return text + (smartAppControl == "1" ? "on" : "watches, and may switch itself on");
}

} // namespace vqrx::kit
