#include "TextFile.h"

#include "Utf8.h"
#include "WholeFile.h"

#include <cstddef>
#include <string_view>

namespace vqrx::client::v0 {
namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";

} // namespace

std::string ReadTextFile(const std::string& path)
{
    std::string bytes = ReadWholeFile(Wide(path));
    if (!bytes.starts_with(kUtf16Mark)) {
        return bytes;
    }
    std::wstring wide;
    for (std::size_t index = kUtf16Mark.size(); index + 1 < bytes.size(); index += 2) {
        const auto low = static_cast<unsigned char>(bytes[index]);
        const auto high = static_cast<unsigned char>(bytes[index + 1]);
        wide += static_cast<wchar_t>(low | (high << 8U));
    }
    return Utf8(wide);
}

} // namespace vqrx::client::v0
