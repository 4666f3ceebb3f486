#include "ProgramVersion.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>

namespace vqrx::setup::v0 {
namespace {

// Cuts the first number off the text.
std::uint32_t TakeNumber(std::string_view& text)
{
    const std::size_t end = std::min(text.find('.'), text.size());
    std::uint32_t number = 0;
    std::from_chars(text.data(), text.data() + end, number);
    text.remove_prefix(std::min(end + 1, text.size()));
    return number;
}

} // namespace

bool IsOlder(std::string_view version, std::string_view than)
{
    while (!version.empty() || !than.empty()) {
        const std::uint32_t left = TakeNumber(version);
        const std::uint32_t right = TakeNumber(than);
        if (left != right) {
            return left < right;
        }
    }
    return false;
}

} // namespace vqrx::setup::v0
