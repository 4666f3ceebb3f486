#include "log_perf/RingHeader.h"

#include <array>
#include <cstdio>

namespace vqrx::log::log_perf::v2 {

std::string FormatRingHeader(std::uint32_t position)
{
    std::array<char, 16> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "0x%.8X", static_cast<unsigned>(position));
    return buffer.data();
}

std::uint32_t ReadRingHeader(std::istream& file)
{
    std::uint32_t position = kRingStart;
    if (!(file >> std::hex >> position)) {
        position = kRingStart; // a failed extraction stores 0 or the largest number
    }
    file.clear();
    file.seekg(0, std::ios::end);
    const std::streamoff length = file.tellg();
    if (static_cast<std::streamoff>(position) > length || position < kRingStart) {
        return kRingStart;
    }
    return position;
}

} // namespace vqrx::log::log_perf::v2
