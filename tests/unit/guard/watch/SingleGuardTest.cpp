#include "SingleGuard.h"

#include "ImportPatch.h"
#include "TempFolder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace vqrx::test {
namespace {

using guard::v0::SingleGuard;

std::string ReasonOf(const std::string& file)
{
    try {
        const SingleGuard guard(file, 0);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return {};
}

TEST(SingleGuard, Second_guard_is_refused_until_the_first_one_has_gone)
{
    const TempFolder folder;
    const std::string file = folder.File("DaemonGuard.lock");
    std::optional<SingleGuard> first(std::in_place, file, 0);
    EXPECT_EQ(ReasonOf(file), "another guard runs: it holds " + file);
    first.reset();
    EXPECT_EQ(GetFileAttributesA(file.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(ReasonOf(file), "");
}

DWORD flagsOfLock = 0;
decltype(&CreateFileW) makeFile = nullptr;

HANDLE WINAPI NoteFlags(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                        DWORD disposition, DWORD flags, HANDLE model)
{
    flagsOfLock = flags;
    return makeFile(name, access, share, security, disposition, flags, model);
}

// Wine makes no links. So this test looks at the flags that Windows would get.
TEST(SingleGuard, Opens_and_deletes_a_link_itself_and_not_the_file_to_which_it_leads)
{
    const TempFolder folder;
    const ImportPatch patch("CreateFileW", NoteFlags, makeFile);
    EXPECT_EQ(ReasonOf(folder.File("DaemonGuard.lock")), "");
    EXPECT_EQ(flagsOfLock, DWORD{FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT});
}

TEST(SingleGuard, Guard_that_holds_its_lock_has_no_fault)
{
    const TempFolder folder;
    EXPECT_EQ(SingleGuard(folder.File("DaemonGuard.lock"), 0).Fault(), "");
}

// As with a full disk: the guard runs all the same.
TEST(SingleGuard, Folder_that_does_not_exist_is_no_other_guard)
{
    const TempFolder folder;
    const std::string file = folder.File("missing") + "\\DaemonGuard.lock";
    EXPECT_EQ(SingleGuard(file, 0).Fault(), file + " cannot be made: error 3");
}

BOOL WINAPI IsNoAdministrator()
{
    return FALSE;
}

BOOL WINAPI IsAdministrator()
{
    return TRUE;
}

TEST(SingleGuard, Refused_access_keeps_only_a_user_without_rights_from_running)
{
    const TempFolder folder;
    const std::string file = folder.File("DaemonGuard.lock");
    ASSERT_NE(CreateDirectoryA(file.c_str(), nullptr), FALSE); // Windows opens no folder as a file
    {
        const ImportPatch user("IsUserAnAdmin", IsNoAdministrator);
        EXPECT_EQ(ReasonOf(file), file + " cannot be made: error 5");
    }
    const ImportPatch user("IsUserAnAdmin", IsAdministrator);
    EXPECT_EQ(SingleGuard(file, 0).Fault(), file + " cannot be made: error 5");
}

} // namespace
} // namespace vqrx::test
