#include "CrashDialogChecks.h"

namespace vqrx::client::v0 {
namespace {

constexpr std::uint32_t kNoErrorBoxes = 2; // value of ErrorMode

} // namespace

Finding JudgeCrashDialogs(const CrashDialogFacts& facts)
{
    constexpr const char* check = "crash-dialogs";
    constexpr const char* key =
        R"(reg add "HKLM\SOFTWARE\Microsoft\Windows\Windows Error Reporting" /v DontShowUI )";
    if (!facts.debugger.empty()) {
        return Warning(
            check,
            "Windows starts a debugger when a worker crashes, and the process stays until the "
            "debugger releases it: " +
                facts.debugger,
            R"(Remove the value Debugger of the key HKLM\SOFTWARE\Microsoft\Windows NT\)"
            R"(CurrentVersion\AeDebug.)");
    }
    if (facts.reportingDisabled || facts.dialogsOff) {
        return Ok(check, "off: a worker that crashes ends at once");
    }
    if (facts.offForThisUser) {
        return Ok(check, "off for this user; the supervisor must run as the same user");
    }
    return Warning(
        check,
        "Windows may show a dialog when a worker crashes; until somebody closes the dialog, "
        "the process stays and the worker is not restarted",
        std::string("As administrator: ") + key + "/t REG_DWORD /d 1 /f");
}

Finding JudgeErrorBoxes(const CrashDialogFacts& facts)
{
    constexpr const char* check = "error-boxes";
    if (facts.errorMode == kNoErrorBoxes) {
        return Ok(check, "off: a worker that cannot be loaded ends at once");
    }
    return Warning(
        check,
        "Windows may show a message box when a worker lacks a DLL or a disk; until somebody "
        "closes the box, the process counts as running",
        "As administrator, before you restart Windows: "
        R"(reg add HKLM\SYSTEM\CurrentControlSet\Control\Windows )"
        "/v ErrorMode /t REG_DWORD /d 2 /f");
}

} // namespace vqrx::client::v0
