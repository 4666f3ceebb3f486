#include "end_process/SnmpAgent.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace vqrx::system::end_process::v1 {
namespace {

constexpr std::string_view kAgentName = "kxsnmp";

} // namespace

bool IsSnmpAgent(const std::string& executablePath)
{
    std::string lowered = executablePath;
    std::transform(lowered.begin(), lowered.end(), lowered.begin(), [](char c) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    });
    return lowered.size() >= kAgentName.size() && lowered.find(kAgentName) != std::string::npos;
}

} // namespace vqrx::system::end_process::v1
