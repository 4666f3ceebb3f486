#include "FileSwap.h"

#include "FileContent.h"
#include "ImportPatch.h"
#include "RandomName.h"
#include "SetupError.h"
#include "TempFolder.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using setup::v0::FileSwap;
using setup::v0::PayloadFile;
using setup::v0::SetupError;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

void Write(const std::string& path, const std::string& text)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

// All files below a folder: "name=content".
std::vector<std::string> FilesIn(const TempFolder& folder)
{
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Path())) {
        std::string name = std::filesystem::relative(entry.path(), folder.Path()).string();
        if (entry.is_regular_file()) {
            name += "=" + FileContent(entry.path());
        }
        found.push_back(name);
    }
    return found;
}

const std::vector<PayloadFile> kFiles{{"a.exe", "new a"}, {"docs\\inner\\b.md", "new b"}};

BOOL(WINAPI* moveFile)(LPCWSTR, LPCWSTR, DWORD);

BOOL WINAPI RefuseToMoveDocument(LPCWSTR from, LPCWSTR to, DWORD flags)
{
    if (std::wstring(from).find(L"~new-") != std::wstring::npos &&
        std::wstring(from).find(L"b.md") != std::wstring::npos) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    return moveFile(from, to, flags);
}

BOOL WINAPI RefuseToPutBack(LPCWSTR from, LPCWSTR to, DWORD flags)
{
    if (std::wstring(from).find(L"~old-") != std::wstring::npos) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    return moveFile(from, to, flags);
}

int refusals = 0; // that are still to come

BOOL WINAPI RefuseFirstMoves(LPCWSTR from, LPCWSTR to, DWORD flags)
{
    if (refusals > 0) {
        --refusals;
        SetLastError(ERROR_SHARING_VIOLATION);
        return FALSE;
    }
    return moveFile(from, to, flags);
}

std::vector<std::string> later; // what Windows is to do when it starts next

BOOL WINAPI NoteWhatIsDoneLater(LPCWSTR from, LPCWSTR to, DWORD flags)
{
    if ((flags & MOVEFILE_DELAY_UNTIL_REBOOT) == 0) {
        return moveFile(from, to, flags);
    }
    const std::string path = std::filesystem::path(from).string();
    later.push_back(to == nullptr ? path + " is deleted"
                                  : path + " to " + std::filesystem::path(to).string());
    return TRUE;
}

BOOL WINAPI WriteNothing(HANDLE, LPCVOID, DWORD, LPDWORD written, LPOVERLAPPED)
{
    *written = 0;
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

TEST(FileSwap, New_files_take_the_places_of_the_former_ones)
{
    const TempFolder folder;
    Write(folder.File("a.exe"), "old a");
    Write(folder.File("docs\\old.md"), "old");
    Write(folder.File("docs\\mine.txt"), "mine");
    FileSwap swap(folder.Path().string());
    swap.Unpack(kFiles);
    swap.SwapIn({"a.exe", "docs\\old.md", "docs\\missing.md"});
    swap.Keep();
    EXPECT_THAT(FilesIn(folder), UnorderedElementsAre("a.exe=new a", "docs", "docs\\mine.txt=mine",
                                                      "docs\\inner", "docs\\inner\\b.md=new b"));
}

TEST(FileSwap, Until_the_swap_the_former_files_are_untouched_and_afterwards_nothing_is_left)
{
    const TempFolder folder;
    Write(folder.File("a.exe"), "old a");
    {
        FileSwap swap(folder.Path().string());
        swap.Unpack(kFiles);
        EXPECT_EQ("old a", FileContent(folder.File("a.exe")));
        EXPECT_THAT(swap.PlaceOf("a.exe"), testing::StartsWith(folder.File("~new-")));
    }
    EXPECT_THAT(FilesIn(folder), ElementsAre("a.exe=old a"));
}

TEST(FileSwap, A_swap_that_is_not_kept_is_taken_back)
{
    const TempFolder folder;
    Write(folder.File("a.exe"), "old a");
    Write(folder.File("docs\\old.md"), "old");
    {
        FileSwap swap(folder.Path().string());
        swap.Unpack(kFiles);
        swap.SwapIn({"docs\\old.md"});
        EXPECT_EQ(folder.File("a.exe"), swap.PlaceOf("a.exe"));
        EXPECT_EQ(swap.TakeBack(), "");
        EXPECT_TRUE(std::filesystem::exists(swap.PlaceOf("a.exe"))); // unpacked again
    }
    EXPECT_THAT(FilesIn(folder), UnorderedElementsAre("a.exe=old a", "docs", "docs\\old.md=old"));
}

TEST(FileSwap, A_file_that_cannot_be_moved_takes_everything_back)
{
    const TempFolder folder;
    Write(folder.File("a.exe"), "old a");
    Write(folder.File("docs\\inner\\b.md"), "old b");
    {
        FileSwap swap(folder.Path().string());
        swap.Unpack(kFiles);
        const ImportPatch patch("MoveFileExW", RefuseToMoveDocument, moveFile);
        EXPECT_THROW(swap.SwapIn({}), SetupError);
    }
    EXPECT_THAT(FilesIn(folder), UnorderedElementsAre("a.exe=old a", "docs", "docs\\inner",
                                                      "docs\\inner\\b.md=old b"));
}

TEST(FileSwap, A_file_that_cannot_be_put_back_is_named_and_the_others_are_put_back)
{
    const TempFolder folder;
    Write(folder.File("a.exe"), "old a");
    FileSwap swap(folder.Path().string());
    swap.Unpack(kFiles);
    swap.SwapIn({});
    const ImportPatch patch("MoveFileExW", RefuseToPutBack, moveFile);
    EXPECT_THAT(swap.TakeBack(),
                testing::AllOf(testing::StartsWith("The file " + folder.File("~old-")),
                               testing::EndsWith("\\a.exe could not be moved back to " +
                                                 folder.File("a.exe") + " (Windows error 5).\n")));
    EXPECT_FALSE(std::filesystem::exists(folder.File("docs\\inner\\b.md")));
}

TEST(FileSwap, A_new_file_that_is_held_for_a_moment_is_waited_for)
{
    const TempFolder folder;
    Write(folder.File("a.exe"), "old a");
    FileSwap swap(folder.Path().string());
    swap.Unpack(kFiles);
    swap.SwapIn({});
    refusals = 3;
    const ImportPatch patch("MoveFileExW", RefuseFirstMoves, moveFile);
    EXPECT_EQ("", swap.TakeBack());
    EXPECT_EQ("old a", FileContent(folder.File("a.exe")));
}

// The installer may have run again by the next start of Windows, and with success.
TEST(FileSwap,
     A_new_file_that_stays_held_is_named_and_nothing_is_left_for_the_next_start_of_Windows)
{
    const TempFolder folder;
    Write(folder.File("a.exe"), "old a");
    FileSwap swap(folder.Path().string(), 200);
    swap.Unpack(kFiles);
    swap.SwapIn({});
    const system::win32::v1::UniqueKernelHandle held(CreateFileA(
        folder.File("a.exe").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(held);
    later.clear();
    const ImportPatch patch("MoveFileExW", NoteWhatIsDoneLater, moveFile);
    const std::string left = swap.TakeBack();
    EXPECT_THAT(left, testing::HasSubstr(" (Windows error 32).\n"));
    EXPECT_THAT(left, testing::EndsWith("\\a.exe could not be moved back to " +
                                        folder.File("a.exe") + " (Windows error 183).\n"));
    EXPECT_THAT(later, testing::IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(folder.File("docs\\inner\\b.md")));
}

TEST(FileSwap, A_full_disk_leaves_the_former_files)
{
    const TempFolder folder;
    Write(folder.File("a.exe"), "old a");
    {
        FileSwap swap(folder.Path().string());
        const ImportPatch patch("WriteFile", WriteNothing);
        EXPECT_THROW(swap.Unpack(kFiles), SetupError);
    }
    EXPECT_THAT(FilesIn(folder), ElementsAre("a.exe=old a"));
}

TEST(FileSwap, A_former_name_that_leads_out_of_the_folder_is_ignored)
{
    const TempFolder folder;
    Write(folder.File("outside"), "stays");
    std::filesystem::create_directory(folder.File("programs"));
    FileSwap swap(folder.File("programs"));
    swap.Unpack(kFiles);
    swap.SwapIn({"..\\outside", folder.File("outside")});
    swap.Keep();
    EXPECT_TRUE(std::filesystem::exists(folder.File("outside")));
}

// Whoever prepares a folder with a foreseen name could put a link there, or keep a handle to it.
TEST(FileSwap, The_folder_for_unpacking_has_a_new_random_name_each_time)
{
    const TempFolder folder;
    std::optional<FileSwap> swap(folder.Path().string());
    swap->Unpack(kFiles);
    const std::string first = swap->PlaceOf("a.exe");
    swap.emplace(folder.Path().string());
    swap->Unpack(kFiles);
    EXPECT_NE(first, swap->PlaceOf("a.exe"));
    EXPECT_NE(setup::v0::RandomName("x"), setup::v0::RandomName("x"));
    EXPECT_EQ(std::string::npos,
              setup::v0::RandomName("x").find_first_not_of("0123456789abcdef", 1));
    EXPECT_EQ(17U, setup::v0::RandomName("x").size());
}

TEST(FileSwap, Only_files_of_the_installation_are_deleted)
{
    const TempFolder folder;
    Write(folder.File("~new\\x"), "x");
    Write(folder.File("~old-0123456789abcdef\\x"), "x");
    {
        FileSwap swap(folder.Path().string());
        swap.Unpack(kFiles);
        swap.SwapIn({});
        swap.Keep();
    }
    EXPECT_TRUE(std::filesystem::exists(folder.File("~new\\x")));
    EXPECT_TRUE(std::filesystem::exists(folder.File("~old-0123456789abcdef\\x")));
}

} // namespace
} // namespace vqrx::test
