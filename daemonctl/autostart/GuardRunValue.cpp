#include "GuardRunValue.h"

#include "GuardArguments.h"
#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <cwchar>
#include <stdexcept>

namespace vqrx::client::v0 {
namespace {

using system::win32::v1::UniqueRegistryKey;

constexpr const wchar_t* kRunKey = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr std::size_t kLongestCommandLine = 32768;

[[noreturn]] void ThrowRunKeyError(const char* what, LSTATUS error)
{
    throw std::runtime_error(
        std::string("the value DaemonGuard of the machine's Run key cannot be ") + what +
        ": Windows error " + std::to_string(error));
}

} // namespace

std::string ReadGuardRunValue()
{
    std::wstring text(kLongestCommandLine, L'\0');
    auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    const LSTATUS error = RegGetValueW(HKEY_LOCAL_MACHINE, kRunKey, kGuardName, RRF_RT_REG_SZ,
                                       nullptr, text.data(), &size);
    if (error == ERROR_FILE_NOT_FOUND) {
        return {};
    }
    if (error != ERROR_SUCCESS) {
        ThrowRunKeyError("read", error);
    }
    return Utf8(std::wstring_view(text.c_str()));
}

void WriteGuardRunValue(const std::string& commandLine)
{
    UniqueRegistryKey key;
    LSTATUS error = RegCreateKeyExW(HKEY_LOCAL_MACHINE, kRunKey, 0, nullptr, 0, KEY_SET_VALUE,
                                    nullptr, key.Put(), nullptr);
    if (error == ERROR_SUCCESS) {
        const std::wstring text = Wide(commandLine);
        error = RegSetValueExW(key.Get(), kGuardName, 0, REG_SZ,
                               reinterpret_cast<const BYTE*>(text.c_str()),
                               static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    }
    if (error != ERROR_SUCCESS) {
        ThrowRunKeyError("written", error);
    }
}

bool RemoveGuardRunValue()
{
    if (ReadGuardRunValue().empty()) {
        return false;
    }
    const LSTATUS error = RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kRunKey, kGuardName);
    if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) {
        ThrowRunKeyError("removed", error);
    }
    return error == ERROR_SUCCESS;
}

} // namespace vqrx::client::v0
