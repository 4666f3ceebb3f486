#include "CrashDialogChecks.h"

#include "ExpectFinding.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(CrashDialogsCheck, Is_ok_if_dialogs_are_off_for_the_machine_or_for_this_user)
{
    CrashDialogFacts facts;
    facts.offForThisUser = true;
    ExpectFinding(JudgeCrashDialogs(facts), Verdict::kOk,
                  "off for this user; the supervisor must run as the same user");
    facts.reportingDisabled = true;
    ExpectFinding(JudgeCrashDialogs(facts), Verdict::kOk,
                  "off: a worker that crashes ends at once");
    facts.reportingDisabled = false;
    facts.dialogsOff = true;
    ExpectFinding(JudgeCrashDialogs(facts), Verdict::kOk,
                  "off: a worker that crashes ends at once");
}

TEST(CrashDialogsCheck, Warns_of_a_dialog_that_keeps_the_process_of_a_crashed_worker)
{
    const Finding finding = JudgeCrashDialogs(CrashDialogFacts());
    ExpectFinding(finding, Verdict::kWarning,
                  "Windows may show a dialog when a worker crashes; until somebody closes the "
                  "dialog, the process stays and the worker is not restarted");
    EXPECT_EQ(finding.remedy,
              R"(As administrator: reg add "HKLM\SOFTWARE\Microsoft\Windows\Windows Error )"
              R"(Reporting" /v DontShowUI /t REG_DWORD /d 1 /f)");
}

TEST(CrashDialogsCheck, Warns_of_a_debugger_even_if_dialogs_are_off)
{
    CrashDialogFacts facts;
    facts.reportingDisabled = true;
    facts.debugger = "drdebug.exe -p %ld";
    ExpectFinding(JudgeCrashDialogs(facts), Verdict::kWarning,
                  "Windows starts a debugger when a worker crashes, and the process stays until "
                  "the debugger releases it: drdebug.exe -p %ld");
}

TEST(ErrorBoxesCheck, Warns_unless_the_error_mode_is_2)
{
    CrashDialogFacts facts;
    const Finding finding = JudgeErrorBoxes(facts);
    ExpectFinding(finding, Verdict::kWarning,
                  "Windows may show a message box when a worker lacks a DLL or a disk; until "
                  "somebody closes the box, the process counts as running");
    EXPECT_EQ(finding.remedy,
              "As administrator, before you restart Windows: reg add "
              R"(HKLM\SYSTEM\CurrentControlSet\Control\Windows /v ErrorMode /t REG_DWORD /d 2 /f)");
    facts.errorMode = 2;
    ExpectFinding(JudgeErrorBoxes(facts), Verdict::kOk,
                  "off: a worker that cannot be loaded ends at once");
}

} // namespace
} // namespace vqrx::test
