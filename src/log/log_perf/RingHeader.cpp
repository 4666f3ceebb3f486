#include "log_perf/RingHeader.h"

namespace vqrx::log::log_perf::v2 {

std::string FormatRingHeader(std::uint32_t position)
{
    std::string header = "0x00000000"; // short enough to live without memory of its own
    for (auto digit = header.rbegin(); position != 0; ++digit, position >>= 4) {
        *digit = "0123456789ABCDEF"[position & 0xF];
    }
    return header;
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
