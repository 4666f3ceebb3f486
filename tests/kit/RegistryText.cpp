#include "RegistryText.h"

#include "Utf8.h"

#include <windows.h>

namespace vqrx::kit {

std::string MachineText(const char* key, const char* value, const std::string& otherwise)
{
    const std::wstring wideKey = client::v0::Wide(key);
    const std::wstring wideValue = client::v0::Wide(value);
    DWORD number = 0;
    DWORD size = sizeof number;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, wideKey.c_str(), wideValue.c_str(), RRF_RT_REG_DWORD,
                     nullptr, &number, &size) == ERROR_SUCCESS) {
        return std::to_string(number);
    }
    wchar_t text[512] = {};
    size = sizeof text;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, wideKey.c_str(), wideValue.c_str(), RRF_RT_REG_SZ, nullptr,
                     text, &size) == ERROR_SUCCESS) {
        return client::v0::Utf8(text);
    }
    return otherwise;
}

} // namespace vqrx::kit
