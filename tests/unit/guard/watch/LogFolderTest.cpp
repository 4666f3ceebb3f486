#include "LogFolder.h"

#include "ImportPatch.h"
#include "NotedAccount.h"

#include <windows.h>

#include <sddl.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::GuardMode;
using guard::v0::MakeLogFolder;
using testing::ElementsAre;

// Windows keeps the access list as it is given; Wine keeps only parts of it. So the tests look at
// what Windows is given.
std::vector<std::string> listsGiven;

BOOL WINAPI NoteFolder(LPCWSTR, LPSECURITY_ATTRIBUTES attributes)
{
    char* text = nullptr;
    if (attributes != nullptr && ConvertSecurityDescriptorToStringSecurityDescriptorA(
                                     attributes->lpSecurityDescriptor, SDDL_REVISION_1,
                                     DACL_SECURITY_INFORMATION, &text, nullptr) != FALSE) {
        listsGiven.emplace_back(text);
        LocalFree(text);
    }
    return TRUE;
}

// @return the access lists with which an administrator's guard tries to make the folder
std::vector<std::string> ListsOfNewFolder(GuardMode mode)
{
    listsGiven.clear();
    const ImportPatch patch("CreateDirectoryW", NoteFolder);
    MakeLogFolder("C:\\x", mode);
    return listsGiven;
}

TEST(LogFolder, Is_for_administrators_and_the_account_that_the_installer_noted)
{
    EXPECT_THAT(ListsOfNewFolder(GuardMode::kSession),
                ElementsAre("D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)"));
    const NotedAccount account(L"S-1-5-21-1-2-3-1001");
    EXPECT_THAT(
        ListsOfNewFolder(GuardMode::kSession),
        ElementsAre("D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;FA;;;S-1-5-21-1-2-3-1001)"));
}

// The supervisor of a service runs as SYSTEM. Any other account in the folder is a stranger to it,
// and then the guard would not believe the log.
TEST(LogFolder, Of_a_service_is_for_administrators_alone)
{
    const NotedAccount account(L"S-1-5-21-1-2-3-1001");
    EXPECT_THAT(ListsOfNewFolder(GuardMode::kService),
                ElementsAre("D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)"));
}

TEST(LogFolder, Is_for_administrators_alone_if_the_note_is_no_account)
{
    const NotedAccount account(L"nobody");
    EXPECT_THAT(ListsOfNewFolder(GuardMode::kSession),
                ElementsAre("D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)"));
}

} // namespace
} // namespace vqrx::test
