#include "SafeFolders.h"

#include "ImportPatch.h"
#include "ObjectRights.h"
#include "OpenToEverybody.h"
#include "SetupError.h"
#include "TempFolder.h"
#include "Wine.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::FolderUse;
using setup::v0::SafeFolders;
using setup::v0::SetupError;

// Windows gives this group a name in its own language.
std::string Everybody()
{
    return client::v0::NameOfAccount("S-1-1-0");
}

std::string ReasonOfRefusal(SafeFolders& folders, const std::string& path,
                            FolderUse use = FolderUse::kPrograms)
{
    try {
        folders.Prepare(path, use);
    } catch (const SetupError& error) {
        return error.what();
    }
    return "accepted";
}

bool Contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

BOOL(WINAPI* makeFolder)(LPCWSTR, LPSECURITY_ATTRIBUTES);

// Another program is quicker.
BOOL WINAPI MakeAfterAnother(LPCWSTR path, LPSECURITY_ATTRIBUTES attributes)
{
    makeFolder(path, nullptr);
    return makeFolder(path, attributes);
}

// A file system that keeps no rights.
BOOL WINAPI MakeWithoutRights(LPCWSTR path, LPSECURITY_ATTRIBUTES)
{
    const BOOL made = makeFolder(path, nullptr);
    OpenToEverybody(std::filesystem::path(path).string());
    return made;
}

TEST(SafeFolders, Missing_folders_are_made_with_those_above_them_and_removed_again)
{
    const TempFolder temp;
    SafeFolders folders("", false);
    EXPECT_TRUE(folders.Prepare(temp.File("one\\two"), FolderUse::kPrograms));
    EXPECT_FALSE(folders.Prepare(temp.File("one"), FolderUse::kPrograms));
    EXPECT_TRUE(folders.Prepare(temp.File("one\\logs"), FolderUse::kLogs));
    EXPECT_EQ(
        (std::vector<std::string>{temp.File("one"), temp.File("one\\two"), temp.File("one\\logs")}),
        folders.Made());
    folders.RemoveMade();
    EXPECT_FALSE(std::filesystem::exists(temp.File("one")));
}

TEST(SafeFolders, A_made_folder_that_is_not_empty_stays)
{
    const TempFolder temp;
    SafeFolders folders("", false);
    folders.Prepare(temp.File("one"), FolderUse::kPrograms);
    std::ofstream(temp.File("one\\file")) << "x";
    folders.RemoveMade();
    EXPECT_TRUE(std::filesystem::exists(temp.File("one\\file")));
}

TEST(SafeFolders, An_existing_folder_that_everybody_may_change_is_refused_with_a_remedy)
{
    const TempFolder temp;
    std::filesystem::create_directory(temp.File("open"));
    OpenToEverybody(temp.File("open"));
    SafeFolders folders("", false);
    const std::string reason = ReasonOfRefusal(folders, temp.File("open"));
    EXPECT_TRUE(Contains(reason, Everybody() + " may write to " + temp.File("open"))) << reason;
    EXPECT_TRUE(Contains(reason, "icacls \"" + temp.File("open") + "\" /inheritance:r")) << reason;
    // A right that was given to the folder itself stays until somebody takes it away.
    EXPECT_TRUE(Contains(reason, "icacls \"" + temp.File("open") + "\" /remove:g *S-1-1-0"))
        << reason;
    EXPECT_TRUE(Contains(reason, "Then restart Windows")) << reason;
    EXPECT_TRUE(Contains(reason, "/ALLOWWEAK")) << reason;
}

TEST(SafeFolders, The_remedy_for_the_logs_lets_only_the_account_of_the_supervisor_in)
{
    const TempFolder temp;
    std::filesystem::create_directory(temp.File("logs"));
    OpenToEverybody(temp.File("logs"));
    SafeFolders folders("S-1-5-21-7", false);
    const std::string reason = ReasonOfRefusal(folders, temp.File("logs"), FolderUse::kLogs);
    EXPECT_TRUE(Contains(reason, "*S-1-5-32-544:(OI)(CI)F *S-1-5-21-7:(OI)(CI)F\n")) << reason;
    EXPECT_FALSE(Contains(reason, "S-1-5-32-545")) << reason;
}

// The others are for administrators alone. Under Wine everybody stands for the account.
TEST(SafeFolders, The_account_of_the_supervisor_may_change_the_logs_and_nothing_else)
{
    const TempFolder temp;
    std::filesystem::create_directory(temp.File("open"));
    OpenToEverybody(temp.File("open"));
    SafeFolders folders("S-1-1-0", false);
    EXPECT_EQ("accepted", ReasonOfRefusal(folders, temp.File("open"), FolderUse::kLogs));
    const std::string reason = ReasonOfRefusal(folders, temp.File("open"));
    EXPECT_TRUE(Contains(reason, Everybody() + " may write to " + temp.File("open"))) << reason;
    EXPECT_NE("accepted", ReasonOfRefusal(folders, temp.File("open\\new"), FolderUse::kLogs));
    std::ofstream(temp.File("log")) << "x";
    OpenToEverybody(temp.File("log"));
    EXPECT_NO_THROW(folders.Check(temp.File("log"), FolderUse::kLogs));
    EXPECT_THROW(folders.Check(temp.File("log"), FolderUse::kPrograms), SetupError);
}

TEST(SafeFolders, The_remedy_for_a_file_gives_it_the_rights_of_its_folder)
{
    const TempFolder temp;
    std::ofstream(temp.File("log")) << "x";
    OpenToEverybody(temp.File("log"));
    try {
        SafeFolders("", false).Check(temp.File("log"), FolderUse::kLogs);
        ADD_FAILURE() << "accepted";
    } catch (const SetupError& error) {
        EXPECT_TRUE(Contains(error.what(), "icacls \"" + temp.File("log") + "\" /reset\n"))
            << error.what();
    }
}

TEST(SafeFolders, Who_else_may_read_the_log_is_said_with_the_commands_that_change_it)
{
    const TempFolder temp;
    SafeFolders folders("", false);
    folders.Prepare(temp.File("logs"), FolderUse::kLogs);
    EXPECT_EQ("", folders.WarningOfReaders(temp.File("logs")));
    OpenToEverybody(temp.File("logs"), "FR");
    const std::string warning = folders.WarningOfReaders(temp.File("logs"));
    EXPECT_TRUE(
        Contains(warning, "Warning: " + Everybody() + " may read " + temp.File("logs") + ". "))
        << warning;
    EXPECT_TRUE(Contains(warning, "icacls \"" + temp.File("logs") + "\" /remove:g *S-1-1-0"))
        << warning;
}

TEST(SafeFolders, What_others_may_change_below_a_folder_of_programs_is_said)
{
    const TempFolder temp;
    std::filesystem::create_directories(temp.File("App\\plugins"));
    const SafeFolders folders("", false);
    for (int number = 1; number <= 6; ++number) {
        EXPECT_EQ(number == 1, folders.WarningOfContents(temp.File("App")).empty());
        const std::string file = temp.File("App\\plugins\\a" + std::to_string(number) + ".dll");
        std::ofstream(file) << "x";
        OpenToEverybody(file);
    }
    const std::string warning = folders.WarningOfContents(temp.File("App"));
    EXPECT_TRUE(Contains(warning, "Warning: " + Everybody() + " may write to " +
                                      temp.File("App\\plugins\\a")))
        << warning;
    EXPECT_TRUE(Contains(warning, ". More files and folders are like that. ")) << warning;
    std::size_t named = 0;
    for (std::size_t at = warning.find(".dll. "); at != std::string::npos;
         at = warning.find(".dll. ", at + 1)) {
        ++named;
    }
    EXPECT_EQ(5U, named) << warning;
}

TEST(SafeFolders, A_new_folder_below_one_that_everybody_may_change_is_refused)
{
    const TempFolder temp;
    std::filesystem::create_directory(temp.File("open"));
    OpenToEverybody(temp.File("open"));
    SafeFolders folders("", false);
    const std::string reason = ReasonOfRefusal(folders, temp.File("open\\new\\inner"));
    EXPECT_TRUE(Contains(reason, Everybody() + " may write to " + temp.File("open"))) << reason;
    // The folder above may belong to other programs, too.
    EXPECT_FALSE(Contains(reason, "icacls")) << reason;
    EXPECT_FALSE(std::filesystem::exists(temp.File("open\\new")));
}

TEST(SafeFolders, A_file_that_everybody_may_change_is_refused_and_a_missing_one_is_not)
{
    const TempFolder temp;
    SafeFolders folders("", false);
    EXPECT_NO_THROW(folders.Check(temp.File("log"), FolderUse::kLogs));
    std::ofstream(temp.File("log")) << "x";
    EXPECT_NO_THROW(folders.Check(temp.File("log"), FolderUse::kLogs));
    OpenToEverybody(temp.File("log"));
    EXPECT_THROW(folders.Check(temp.File("log"), FolderUse::kLogs), SetupError);
}

// The supervisor would write its records into the other file.
TEST(SafeFolders, A_file_with_a_second_name_is_refused)
{
    const TempFolder temp;
    std::ofstream(temp.File("elsewhere")) << "x";
    ASSERT_NE(CreateHardLinkA(temp.File("log").c_str(), temp.File("elsewhere").c_str(), nullptr),
              FALSE);
    try {
        SafeFolders("", false).Check(temp.File("log"), FolderUse::kLogs);
        ADD_FAILURE() << "accepted";
    } catch (const SetupError& error) {
        EXPECT_TRUE(Contains(error.what(), temp.File("log") + " also has another name"))
            << error.what();
        EXPECT_TRUE(Contains(error.what(), "Delete the name")) << error.what();
    }
    std::filesystem::remove(temp.File("elsewhere"));
    EXPECT_NO_THROW(SafeFolders("", false).Check(temp.File("log"), FolderUse::kLogs));
}

// Commands for rights would change what the link leads to: somebody else's folder.
TEST(SafeFolders, A_link_is_refused_without_commands_that_would_follow_it)
{
    // Drive Z: of Wine is a link to the root of the host. Windows has a junction of this name.
    SafeFolders folders("", false);
    const std::string reason = ReasonOfRefusal(
        folders, RunsUnderWine() ? "Z:\\usr" : "C:\\Documents and Settings\\Public");
    EXPECT_TRUE(Contains(reason, "is a junction or a link")) << reason;
    EXPECT_TRUE(Contains(reason, "Remove the link")) << reason;
    EXPECT_FALSE(Contains(reason, "icacls")) << reason;
}

TEST(SafeFolders, With_ALLOWWEAK_every_existing_folder_is_accepted)
{
    const TempFolder temp;
    std::filesystem::create_directory(temp.File("open"));
    OpenToEverybody(temp.File("open"));
    SafeFolders folders("", true);
    EXPECT_EQ("accepted", ReasonOfRefusal(folders, temp.File("open")));
    EXPECT_EQ("accepted", ReasonOfRefusal(folders, temp.File("open\\new")));
}

TEST(SafeFolders, A_folder_that_another_program_makes_at_the_same_moment_is_refused)
{
    const TempFolder temp;
    SafeFolders folders("", false);
    const ImportPatch patch("CreateDirectoryW", MakeAfterAnother, makeFolder);
    EXPECT_EQ("Somebody else made " + temp.File("new") + " just now. Try again.",
              ReasonOfRefusal(folders, temp.File("new")));
    EXPECT_TRUE(folders.Made().empty());
}

TEST(SafeFolders, A_made_folder_without_its_rights_is_refused)
{
    const TempFolder temp;
    SafeFolders folders("", false);
    const ImportPatch patch("CreateDirectoryW", MakeWithoutRights, makeFolder);
    EXPECT_TRUE(
        Contains(ReasonOfRefusal(folders, temp.File("new")), Everybody() + " may write to"));
    EXPECT_EQ(std::vector<std::string>{temp.File("new")}, folders.Made()); // so that it is removed
}

TEST(SafeFolders, What_is_no_folder_or_no_full_path_is_refused)
{
    const TempFolder temp;
    std::ofstream(temp.File("file")) << "x";
    SafeFolders folders("", false);
    EXPECT_EQ(temp.File("file") + " is no folder.", ReasonOfRefusal(folders, temp.File("file")));
    EXPECT_EQ("new is no full path of a folder.", ReasonOfRefusal(folders, "new"));
}

} // namespace
} // namespace vqrx::test
