#include "ring_format/RingHeader.h"

#include <charconv>
#include <system_error>

namespace vqrx::system::ring_format::v1 {
namespace {

constexpr std::string_view kPrefix = "0x";

} // namespace

std::string FormatRingHeader(std::uint32_t position)
{
    std::string header = "0x00000000"; // short enough to fit into the string object itself
    for (auto digit = header.rbegin(); position != 0; ++digit, position >>= 4) {
        *digit = "0123456789ABCDEF"[position & 0xF];
    }
    return header;
}

std::optional<std::uint32_t> ReadRingHeader(std::istream& file)
{
    std::uint32_t position = kRingStart;
    if (!(file >> std::hex >> position)) {
        position = kRingStart; // a failed extraction stores 0 or the largest number
    }
    if (file.bad()) {
        return std::nullopt;
    }
    file.clear();
    file.seekg(0, std::ios::end);
    const std::streamoff length = file.tellg();
    if (length < 0) {
        return std::nullopt;
    }
    if (static_cast<std::streamoff>(position) > length || position < kRingStart) {
        return kRingStart;
    }
    return position;
}

std::optional<std::uint32_t> ParseRingHeader(std::string_view bytes) noexcept
{
    if (bytes.size() <= kRingHeaderLength || !bytes.starts_with(kPrefix) ||
        (bytes[kRingHeaderLength] != '\r' && bytes[kRingHeaderLength] != '\n')) {
        return std::nullopt;
    }
    const char* const end = bytes.data() + kRingHeaderLength;
    std::uint32_t position = 0;
    const auto [rest, error] = std::from_chars(bytes.data() + kPrefix.size(), end, position, 16);
    if (error != std::errc{} || rest != end) {
        return std::nullopt;
    }
    return position;
}

} // namespace vqrx::system::ring_format::v1
