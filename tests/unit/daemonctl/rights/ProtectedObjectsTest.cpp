#include "ProtectedObjects.h"

#include "FileContent.h"
#include "ImportPatch.h"
#include "ObjectRights.h"
#include "TempFolder.h"
#include "win32/LocalMemory.h"

#include <windows.h>

#include <sddl.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace vqrx::test {
namespace {

using client::v0::FolderUse;
using client::v0::MakeProtectedFolder;
using client::v0::NameOfAccount;
using client::v0::SidOfAccount;
using client::v0::WriteProtectedFile;

// Windows keeps the access list as it is given; Wine keeps only parts of it. So the tests look at
// what Windows is given.
std::string listGiven;

void NoteList(const SECURITY_ATTRIBUTES* attributes)
{
    char* text = nullptr;
    if (attributes != nullptr && ConvertSecurityDescriptorToStringSecurityDescriptorA(
                                     attributes->lpSecurityDescriptor, SDDL_REVISION_1,
                                     DACL_SECURITY_INFORMATION, &text, nullptr) != FALSE) {
        listGiven = text;
        LocalFree(text);
    }
}

BOOL WINAPI NoteFolder(LPCWSTR, LPSECURITY_ATTRIBUTES attributes)
{
    NoteList(attributes);
    return TRUE;
}

HANDLE WINAPI NoteFile(LPCWSTR, DWORD, DWORD sharing, LPSECURITY_ATTRIBUTES attributes,
                       DWORD disposition, DWORD, HANDLE)
{
    EXPECT_EQ(0U, sharing);
    EXPECT_EQ(DWORD{CREATE_NEW}, disposition);
    NoteList(attributes);
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

BOOL WINAPI RefuseToFlush(HANDLE)
{
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

} // namespace

TEST(ProtectedObjects, A_folder_for_programs_can_be_read_by_users_and_changed_by_administrators)
{
    const ImportPatch patch("CreateDirectoryW", NoteFolder);
    EXPECT_EQ(0U, MakeProtectedFolder("C:\\x", FolderUse::kPrograms, "S-1-5-21-1-2-3-1001"));
    EXPECT_EQ("D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)", listGiven);
}

TEST(ProtectedObjects, A_folder_for_logs_is_for_administrators_and_the_account_of_the_supervisor)
{
    const ImportPatch patch("CreateDirectoryW", NoteFolder);
    EXPECT_EQ(0U, MakeProtectedFolder("C:\\x", FolderUse::kLogs, ""));
    EXPECT_EQ("D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)", listGiven);
    EXPECT_EQ(0U, MakeProtectedFolder("C:\\x", FolderUse::kLogs, "S-1-5-21-1-2-3-1001"));
    EXPECT_EQ("D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;FA;;;S-1-5-21-1-2-3-1001)", listGiven);
    EXPECT_NE(0U, MakeProtectedFolder("C:\\x", FolderUse::kLogs, "no SID)(A;;FA;;;WD"));
}

TEST(ProtectedObjects, A_folder_that_exists_or_has_no_parent_is_not_made)
{
    const TempFolder folder;
    const std::string path = folder.File("new");
    EXPECT_EQ(0U, MakeProtectedFolder(path, FolderUse::kLogs, ""));
    EXPECT_EQ(DWORD{ERROR_ALREADY_EXISTS}, MakeProtectedFolder(path, FolderUse::kLogs, ""));
    EXPECT_EQ(DWORD{ERROR_PATH_NOT_FOUND},
              MakeProtectedFolder(folder.File("no\\new"), FolderUse::kLogs, ""));
}

TEST(ProtectedObjects, A_file_has_its_rights_before_its_content)
{
    const ImportPatch patch("CreateFileW", NoteFile);
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, WriteProtectedFile("C:\\x", "text"));
    EXPECT_EQ("D:P(A;;FA;;;SY)(A;;FA;;;BA)(A;;FA;;;OW)", listGiven);
}

TEST(ProtectedObjects, A_file_is_written_once_and_an_existing_one_is_not_touched)
{
    const TempFolder folder;
    const std::string path = folder.File("listing");
    EXPECT_EQ(0U, WriteProtectedFile(path, "first\n"));
    EXPECT_EQ(DWORD{ERROR_FILE_EXISTS}, WriteProtectedFile(path, "second"));
    EXPECT_EQ("first\n", FileContent(path));
}

// A power failure after the call must not leave an empty listing, and a failed call no half of one.
TEST(ProtectedObjects, A_file_whose_content_does_not_reach_the_disk_is_removed)
{
    const TempFolder folder;
    const std::string path = folder.File("listing");
    const ImportPatch patch("FlushFileBuffers", RefuseToFlush);
    EXPECT_EQ(DWORD{ERROR_DISK_FULL}, WriteProtectedFile(path, "text"));
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(ProtectedObjects, An_account_is_found_by_its_name_or_its_SID)
{
    EXPECT_EQ("S-1-5-18", SidOfAccount("S-1-5-18"));
    const std::string name = NameOfAccount("S-1-5-18"); // in the language of Windows
    EXPECT_NE("S-1-5-18", name);
    EXPECT_EQ("S-1-5-18", SidOfAccount(name));
    EXPECT_EQ("", SidOfAccount("no such account of ours"));
}

} // namespace vqrx::test
