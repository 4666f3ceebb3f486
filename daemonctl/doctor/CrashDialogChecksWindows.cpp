#include "CrashDialogChecks.h"

#include "TextEncoding.h"

#include <windows.h>

#include <array>

namespace vqrx::client::v0 {
namespace {

// Returns 0 for a value that is not there or is not a number.
std::uint32_t NumberValue(HKEY root, const char* key, const char* value)
{
    DWORD number = 0;
    DWORD size = sizeof number;
    RegGetValueA(root, key, value, RRF_RT_REG_DWORD, nullptr, &number, &size);
    return number;
}

} // namespace

CrashDialogFacts GatherCrashDialogFacts()
{
    constexpr const char* reporting = R"(SOFTWARE\Microsoft\Windows\Windows Error Reporting)";
    constexpr const char* policy = R"(SOFTWARE\Policies\Microsoft\Windows\Windows Error Reporting)";
    const auto off = [&](HKEY root, const char* value) {
        return NumberValue(root, reporting, value) == 1 || NumberValue(root, policy, value) == 1;
    };
    CrashDialogFacts facts;
    facts.reportingDisabled = off(HKEY_LOCAL_MACHINE, "Disabled");
    facts.dialogsOff = off(HKEY_LOCAL_MACHINE, "DontShowUI");
    facts.offForThisUser =
        off(HKEY_CURRENT_USER, "Disabled") || off(HKEY_CURRENT_USER, "DontShowUI");
    std::array<char, 1024> debugger{};
    auto size = static_cast<DWORD>(debugger.size());
    if (RegGetValueA(HKEY_LOCAL_MACHINE, R"(SOFTWARE\Microsoft\Windows NT\CurrentVersion\AeDebug)",
                     "Debugger", RRF_RT_REG_SZ, nullptr, debugger.data(), &size) == ERROR_SUCCESS) {
        facts.debugger = AnsiToUtf8(debugger.data());
    }
    facts.errorMode =
        NumberValue(HKEY_LOCAL_MACHINE, R"(SYSTEM\CurrentControlSet\Control\Windows)", "ErrorMode");
    return facts;
}

} // namespace vqrx::client::v0
