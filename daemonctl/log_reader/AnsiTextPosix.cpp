#include "log_reader/AnsiText.h"

#include "log_reader/TextEncoding.h"

namespace vqrx::client::v0 {

std::string AnsiToUtf8(std::string_view text)
{
    return ToUtf8(text, TextEncoding::kWindows1252);
}

} // namespace vqrx::client::v0
