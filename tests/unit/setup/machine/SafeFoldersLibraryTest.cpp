#include "SafeFolders.h"

#include "ImportPatch.h"
#include "ObjectRights.h"
#include "OpenToEverybody.h"
#include "SetupError.h"
#include "TempFolder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace vqrx::test {
namespace {

using setup::v0::SafeFolders;
using setup::v0::SetupError;

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

std::string EverybodyMayWriteTo(const std::string& path)
{
    return client::v0::NameOfAccount("S-1-1-0") + " may write to " + path;
}

class Library : public testing::Test {
protected:
    Library() { std::filesystem::create_directory(folder_); }

    [[nodiscard]] std::string Reason(const std::string& library, bool allowWeak = false) const
    {
        try {
            SafeFolders("", allowWeak).CheckLibrary(library);
        } catch (const SetupError& error) {
            return error.what();
        }
        return "accepted";
    }

    const TempFolder temp_;
    const std::string folder_ = temp_.File("dir");
    const std::string library_ = folder_ + "\\a.dll";
};

TEST_F(Library, In_a_sound_folder_is_accepted_also_if_it_is_missing)
{
    EXPECT_EQ("accepted", Reason(library_));
    std::ofstream(library_) << "x";
    EXPECT_EQ("accepted", Reason(library_));
    OpenToEverybody(library_);
    EXPECT_TRUE(Has(Reason(library_), EverybodyMayWriteTo(library_)));
}

// The imports of the library would be loaded from there.
TEST_F(Library, In_a_folder_where_everybody_may_add_files_is_refused)
{
    std::ofstream(library_) << "x";
    OpenToEverybody(folder_, "0x1200ab"); // read, enter, add a file
    const std::string reason = Reason(library_);
    EXPECT_TRUE(Has(reason, EverybodyMayWriteTo(folder_))) << reason;
    EXPECT_TRUE(Has(reason, "icacls \"" + folder_ + "\"")) << reason;
    EXPECT_EQ("accepted", Reason(library_, true));
}

// Somebody could put one there after the check.
TEST_F(Library, That_is_missing_is_refused_where_somebody_could_put_one)
{
    const std::string missing = temp_.File("gone\\a.dll");
    EXPECT_TRUE(Has(Reason(missing), temp_.File("gone") + " does not exist"));
    EXPECT_EQ("accepted", Reason(missing, true));
    OpenToEverybody(folder_, "0x1200ab");
    EXPECT_TRUE(Has(Reason(library_), EverybodyMayWriteTo(folder_)));
}

std::wstring hiddenFile;
DWORD(WINAPI* readAttributes)(LPCWSTR);

DWORD WINAPI HideOneFile(LPCWSTR path)
{
    if (hiddenFile != path) {
        return readAttributes(path);
    }
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_FILE_ATTRIBUTES;
}

TEST_F(Library, That_cannot_be_read_is_refused)
{
    hiddenFile.assign(library_.begin(), library_.end());
    const ImportPatch patch("GetFileAttributesW", HideOneFile, readAttributes);
    EXPECT_TRUE(Has(Reason(library_), "cannot be read (Windows error 5)"));
}

TEST_F(Library, Without_a_full_path_on_a_drive_of_this_machine_is_refused)
{
    for (const char* const path :
         {R"(\\server\share\a.dll)", "a.dll", "C:a.dll", R"("C:\Windows\a.dll")"}) {
        EXPECT_TRUE(Has(Reason(path), std::string(path) + " is no full path")) << path;
    }
}

// A command for the root of a drive would change what all users do there.
TEST_F(Library, In_the_root_of_a_drive_gets_no_command)
{
    hiddenFile = L"C:\\";
    const ImportPatch patch("GetFileAttributesW", HideOneFile, readAttributes);
    const std::string reason = Reason("C:\\a.dll");
    EXPECT_TRUE(Has(reason, "the rights of C:\\ cannot be read")) << reason;
    EXPECT_FALSE(Has(reason, "icacls")) << reason;
}

} // namespace
} // namespace vqrx::test
