#include "DaemonIds.h"

#include "DaemonStatus.h"
#include "Printable.h"

#include <cstddef>

namespace vqrx::client::v0 {
namespace {

constexpr std::size_t kMostIds = 1000;

} // namespace

std::string DaemonIdLines(const SupervisorRun& run, std::int64_t nowMs, std::string_view prefix)
{
    std::string lines;
    std::size_t count = 0;
    for (const auto& [id, daemon] : run.daemons) {
        const std::string text = std::to_string(id);
        if (text.starts_with(prefix) && IsLookedAfter(daemon, nowMs) && ++count <= kMostIds) {
            lines += text + " " + Printable(WithoutBlank(daemon.command)) + "\n";
        }
    }
    return lines;
}

} // namespace vqrx::client::v0
