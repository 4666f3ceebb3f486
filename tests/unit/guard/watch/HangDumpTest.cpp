#include "HangDump.h"

#include "ChildProcess.h"
#include "FileContent.h"
#include "ImportPatch.h"
#include "TempFolder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace vqrx::test {
namespace {

constexpr DWORD kDumpLimitMs = 60000;

HANDLE g_release = nullptr;
HANDLE g_over = nullptr;

HANDLE WINAPI RefuseFileAfterRelease(LPCSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD,
                                     HANDLE)
{
    WaitForSingleObject(g_release, INFINITE);
    SetEvent(g_over);
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

// A child program stands for the supervisor.
class HangDump : public ::testing::Test {
protected:
    HangDump()
        : child_("\"" + TestProgram("no_windows") + "\" " + ready_.Name())
    {
        EXPECT_TRUE(ready_.Wait());
        supervisor_.process.Reset(OpenProcess(PROCESS_ALL_ACCESS, FALSE, child_.Pid()));
        supervisor_.processId = child_.Pid();
    }

    const TempFolder folder_;
    guard::v0::SupervisorProgram supervisor_;

private:
    const ReadyEvent ready_;
    const ChildProcess child_;
};

// The guard may have all rights. Whoever may write to the folder has put a second name of another
// file there.
TEST_F(HangDump, Is_not_written_to_a_file_that_somebody_has_prepared)
{
    const std::string dump = folder_.File("DaemonManager.dmp");
    std::ofstream(folder_.File("victim"), std::ios::binary) << "mine";
    std::filesystem::create_hard_link(folder_.File("victim"), dump + ".new");

    EXPECT_EQ("written to " + dump, guard::v0::DumpWithin(kDumpLimitMs, supervisor_, dump));
    EXPECT_EQ("mine", FileContent(folder_.File("victim")));
    EXPECT_EQ("MDMP", FileContent(dump).substr(0, 4));
    EXPECT_FALSE(std::filesystem::exists(dump + ".new"));
}

// A virus scanner or a debugger may hold the process or the file as long as it likes.
TEST_F(HangDump, Dump_that_takes_too_long_is_given_up_and_the_text_names_the_limit)
{
    const system::win32::v1::UniqueKernelHandle release(
        CreateEventA(nullptr, TRUE, FALSE, nullptr));
    const system::win32::v1::UniqueKernelHandle over(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    g_release = release.Get();
    g_over = over.Get();
    const ImportPatch held("CreateFileA", RefuseFileAfterRelease);

    EXPECT_EQ("not within 1 s",
              guard::v0::DumpWithin(1000, supervisor_, folder_.File("DaemonManager.dmp")));
    SetEvent(release.Get());
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(over.Get(), kDumpLimitMs));
}

} // namespace
} // namespace vqrx::test
