#include "WatchTexts.h"

#include <array>
#include <cstdio>

namespace vqrx::guard::v0 {

std::string HexText(std::uint32_t code)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%x", static_cast<unsigned>(code));
    return text.data();
}

std::string SecondsText(std::uint64_t milliseconds)
{
    return std::to_string(milliseconds / 1000) + " s";
}

std::string WhyUnpublished(const SupervisorProgram& supervisor, const std::string& detail)
{
    if (const auto session = OtherSessionOf(supervisor)) {
        return "it runs in session " + std::to_string(*session) +
               ", where this guard does not find it; to let the guard start its own: there "
               "daemonctl exit, then here daemonctl autostart start";
    }
    return detail.empty() ? "it may wait for the firewall service" : detail;
}

} // namespace vqrx::guard::v0
