#include "LocalTime.h"

#include <array>
#include <ctime>

namespace vqrx::client::v0 {

std::string LocalTimeText(std::int64_t timeMs)
{
    const auto seconds = static_cast<std::time_t>(timeMs / 1000);
    std::tm parts{};
#if defined(_WIN32)
    const bool known = localtime_s(&parts, &seconds) == 0;
#else
    const bool known = localtime_r(&seconds, &parts) != nullptr;
#endif
    std::array<char, 64> text{};
    if (!known || std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts) == 0) {
        return "?";
    }
    return text.data();
}

} // namespace vqrx::client::v0
