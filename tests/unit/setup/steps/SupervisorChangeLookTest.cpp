// What a look for the supervisor finds, and what it leaves alone.
#include "SupervisorChange.h"

#include "SupervisorChangeFixture.h"

#include <atomic>
#include <utility>

namespace vqrx::test {
namespace {

DWORD hiddenProcess = 0;
DWORD errorOfHidden = ERROR_ACCESS_DENIED;
HANDLE(WINAPI* openProcess)(DWORD, BOOL, DWORD);

HANDLE WINAPI OpenUnlessHidden(DWORD access, BOOL inherit, DWORD processId)
{
    if (processId == hiddenProcess) {
        SetLastError(errorOfHidden);
        return nullptr;
    }
    return openProcess(access, inherit, processId);
}

const ChildProcess* endsNow = nullptr;

// The process cannot be opened the first time, and has ended afterwards.
HANDLE WINAPI OpenThatEnds(DWORD access, BOOL inherit, DWORD processId)
{
    if (endsNow != nullptr && processId == endsNow->Pid()) {
        endsNow->Kill();
        EXPECT_TRUE(std::exchange(endsNow, nullptr)->Wait());
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    return openProcess(access, inherit, processId);
}

BOOL(WINAPI* getProcessTimes)(HANDLE, LPFILETIME, LPFILETIME, LPFILETIME, LPFILETIME);

BOOL WINAPI TellLaterEachTime(HANDLE process, LPFILETIME created, LPFILETIME ended,
                              LPFILETIME kernel, LPFILETIME user)
{
    static std::atomic<DWORD> calls = 0;
    const BOOL done = getProcessTimes(process, created, ended, kernel, user);
    created->dwLowDateTime += ++calls;
    return done;
}

// Windows refuses to open the process of another user who has forbidden it.
TEST_F(SupervisorChangeTest, Process_that_cannot_be_examined_is_named_and_not_ended)
{
    StartSupervisor();
    EXPECT_EQ(Look().Overlooked(), "");
    hiddenProcess = supervisor_->Pid();
    const ImportPatch hide("OpenProcess", OpenUnlessHidden, openProcess);
    const SupervisorChange change = Look();
    EXPECT_FALSE(change.Ran());
    EXPECT_EQ(change.Overlooked(),
              "Process " + std::to_string(supervisor_->Pid()) +
                  " is named DaemonManager.exe, and Windows does not tell which file it runs. The "
                  "installer does not end it. If it is the supervisor, it keeps its former files: "
                  "end it, then run the installer again.\n");
}

TEST_F(SupervisorChangeTest, Process_that_ended_before_it_was_examined_is_not_named)
{
    StartSupervisor();
    hiddenProcess = supervisor_->Pid();
    errorOfHidden = ERROR_INVALID_PARAMETER; // what Windows says of an id that no process has
    const ImportPatch hide("OpenProcess", OpenUnlessHidden, openProcess);
    EXPECT_EQ(Look().Overlooked(), "");
    errorOfHidden = ERROR_ACCESS_DENIED;
}

// Windows opens it as long as somebody else has it open, here the test.
TEST_F(SupervisorChangeTest, Process_that_ended_and_that_somebody_keeps_open_is_not_named)
{
    StartSupervisor();
    endsNow = &*supervisor_;
    const ImportPatch end("OpenProcess", OpenThatEnds, openProcess);
    EXPECT_EQ(Look().Overlooked(), "");
    EXPECT_EQ(endsNow, nullptr);
}

TEST_F(SupervisorChangeTest, Process_that_only_has_the_name_of_the_supervisor_is_not_named)
{
    const TempFolder elsewhere;
    std::filesystem::copy_file(TestProgram("no_windows"), elsewhere.File("DaemonManager.exe"));
    const ChildProcess stranger('"' + elsewhere.File("DaemonManager.exe") + '"');
    EXPECT_EQ(Look().Overlooked(), "");
}

// The supervisor ended after the list was made, and another process has its id.
TEST_F(SupervisorChangeTest, Process_of_another_time_is_not_waited_for)
{
    StartSupervisor();
    const ImportPatch times("GetProcessTimes", TellLaterEachTime, getProcessTimes);
    SupervisorChange change = Look();
    EXPECT_TRUE(change.Ran());
    EXPECT_EQ(change.Former()->Token(), nullptr);
    daemonctl = [](const std::string&) { return kNotFound; };
    EXPECT_EQ(WhyNotEnded(change), "it was ended");
}

} // namespace
} // namespace vqrx::test
