#include "ObjectRights.h"

#include "ImportPatch.h"
#include "OpenToAll.h"
#include "ProtectedObjects.h"
#include "TempFolder.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::FolderUse;
using client::v0::MakeProtectedFolder;
using client::v0::ObjectRights;
using client::v0::ReadKeyRights;
using client::v0::ReadRights;
using client::v0::TrustedAdministrators;
using client::v0::WayTo;
using client::v0::WeaknessesOfPath;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct ObjectRightsTest : testing::Test {
    ObjectRightsTest()
        : path(folder.File("sound"))
    {
        EXPECT_EQ(0U, MakeProtectedFolder(path, FolderUse::kPrograms, ""));
    }

    const TempFolder folder;
    const std::string path;
};

TEST_F(ObjectRightsTest, A_folder_made_for_programs_has_no_weakness)
{
    const ObjectRights rights = ReadRights(path);
    EXPECT_EQ(0U, rights.error);
    EXPECT_EQ(ObjectRights::Kind::kFolder, rights.kind);
    EXPECT_FALSE(rights.reparsePoint);
    EXPECT_FALSE(rights.unprotected);
    EXPECT_TRUE(TrustedAdministrators().contains(rights.ownerSid)) << rights.ownerSid;
    EXPECT_THAT(WeaknessesOfPath(path, TrustedAdministrators()), IsEmpty());
}

TEST_F(ObjectRightsTest, A_folder_or_a_parent_that_everybody_may_change_is_found)
{
    const std::string inside = path + "\\inside";
    ASSERT_EQ(0U, MakeProtectedFolder(inside, FolderUse::kPrograms, ""));
    std::ofstream(inside + "\\file") << "x";
    OpenToAll(path);
    const std::string weakness = "may write to " + path;
    EXPECT_THAT(WeaknessesOfPath(path, TrustedAdministrators()), ElementsAre(HasSubstr(weakness)));
    EXPECT_THAT(WeaknessesOfPath(inside, TrustedAdministrators()),
                ElementsAre(HasSubstr(weakness)));
    EXPECT_THAT(WeaknessesOfPath(inside + "\\file", TrustedAdministrators()),
                ElementsAre(HasSubstr(weakness)));
    OpenToAll(inside + "\\file");
    EXPECT_THAT(WeaknessesOfPath(inside + "\\file", TrustedAdministrators()),
                ElementsAre(HasSubstr("may write to " + inside + "\\file"), HasSubstr(weakness)));
}

TEST_F(ObjectRightsTest, An_owner_who_is_not_trusted_is_found)
{
    const std::vector<std::string> found = WeaknessesOfPath(path, {"S-1-5-18", "S-1-5-32-544"});
    EXPECT_THAT(found, Contains(HasSubstr("owns " + path)));
}

TEST_F(ObjectRightsTest, A_path_that_does_not_exist_or_lies_on_a_network_proves_nothing)
{
    EXPECT_THAT(WeaknessesOfPath(path + "\\no", TrustedAdministrators()),
                ElementsAre("the rights of " + path + "\\no cannot be read (Windows error 2)"));
    EXPECT_THAT(WeaknessesOfPath("\\\\server\\share\\x", TrustedAdministrators()),
                ElementsAre("\\\\server\\share\\x lies on a network or is no path"));
}

TEST(ObjectRights, The_way_to_a_path_ends_at_the_root_of_its_drive)
{
    EXPECT_THAT(WayTo("C:/FW\\x\\..\\App\\"), ElementsAre("C:\\FW\\App", "C:\\FW", "C:\\"));
    EXPECT_THAT(WayTo("C:\\"), ElementsAre("C:\\"));
    EXPECT_THAT(WayTo("\\\\server\\share\\x"), IsEmpty());
    EXPECT_THAT(WayTo(""), IsEmpty());
}

// The drives O:, S:, T: and U: as "subst" makes them, and X:, which the system does not tell.
DWORD(WINAPI* queryDevice)(LPCWSTR, LPWSTR, DWORD);
DWORD WINAPI QueryFurtherDevice(LPCWSTR drive, LPWSTR device, DWORD size)
{
    const std::wstring name(drive);
    const std::wstring target = name == L"S:"   ? L"\\??\\C:\\windows"
                                : name == L"T:" ? L"\\??\\S:\\system32"
                                : name == L"O:" ? L"\\??\\O:\\round"
                                : name == L"U:" ? L"\\??\\N:\\below"
                                                : L"";
    if (name == L"X:") {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
    if (target.empty()) {
        return queryDevice(drive, device, size);
    }
    device[target.copy(device, target.size())] = L'\0';
    device[target.size() + 1] = L'\0';
    return static_cast<DWORD>(target.size() + 2);
}

UINT(WINAPI* driveType)(LPCWSTR);
UINT WINAPI TypeOfFurtherDrive(LPCWSTR root)
{
    return std::wstring(root) == L"N:\\" ? DRIVE_REMOTE : driveType(root);
}

TEST(ObjectRights, The_way_to_a_path_on_a_drive_of_subst_goes_through_the_folder_of_that_drive)
{
    const ImportPatch devices("QueryDosDeviceW", QueryFurtherDevice, queryDevice);
    EXPECT_THAT(WayTo("S:\\App"), ElementsAre("C:\\windows\\App", "C:\\windows", "C:\\"));
    EXPECT_THAT(WayTo("S:\\"), ElementsAre("C:\\windows", "C:\\"));
    EXPECT_THAT(WayTo("T:\\x"), ElementsAre("C:\\windows\\system32\\x", "C:\\windows\\system32",
                                            "C:\\windows", "C:\\"));
    EXPECT_THAT(WayTo("O:\\x"), IsEmpty()); // a circle
    EXPECT_THAT(WayTo("X:\\x"), IsEmpty());
    EXPECT_THAT(WayTo("Y:\\x"), ElementsAre("Y:\\x", "Y:\\")); // no such drive
}

TEST(ObjectRights, A_path_on_a_network_drive_lies_on_a_network)
{
    const ImportPatch devices("QueryDosDeviceW", QueryFurtherDevice, queryDevice);
    const ImportPatch types("GetDriveTypeW", TypeOfFurtherDrive, driveType);
    EXPECT_THAT(WayTo("N:\\FW"), IsEmpty());
    EXPECT_THAT(WayTo("U:\\FW"), IsEmpty());
    EXPECT_THAT(WeaknessesOfPath("N:\\FW", TrustedAdministrators()),
                ElementsAre("N:\\FW lies on a network or is no path"));
}

TEST(ObjectRights, Owner_and_access_list_of_a_registry_key_are_read)
{
    const ObjectRights rights = ReadKeyRights("SOFTWARE");
    EXPECT_EQ(0U, rights.error);
    EXPECT_EQ(ObjectRights::Kind::kRegistryKey, rights.kind);
    EXPECT_EQ("HKLM\\SOFTWARE", rights.path);
    EXPECT_NE("", rights.ownerSid);
    EXPECT_NE(0U, ReadKeyRights("SOFTWARE\\no such key of ours").error);
}

} // namespace
} // namespace vqrx::test
