#include "Utf8.h"
#include "com/TextConversion.h"
#include "log_reader/AnsiText.h"

#include <windows.h>

namespace vqrx::client::v0 {

std::string AnsiToUtf8(std::string_view text)
{
    return Utf8(system::com::v1::NarrowToWide(text, CP_ACP));
}

} // namespace vqrx::client::v0
