#include "KitFolder.h"

#include "TempFolder.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace vqrx::kit {
namespace {

TEST(KitFolder, A_file_is_replaced_and_read)
{
    const test::TempFolder folder;
    const std::filesystem::path file = folder.Path() / "undo.json";
    EXPECT_THROW(static_cast<void>(ContentOfFile(file)), std::runtime_error);
    EXPECT_TRUE(ReplaceContentOnDisk(file, "a longer first content"));
    EXPECT_TRUE(ReplaceContentOnDisk(file, "x\r\n"));
    EXPECT_EQ(ContentOfFile(file), "x\r\n");
    EXPECT_FALSE(ReplaceContentWithin(folder.Path() / "none" / "undo.json", "x", 0));
}

TEST(KitFolder, A_file_that_a_scanner_holds_is_replaced_when_it_is_closed)
{
    const test::TempFolder folder;
    const std::filesystem::path file = folder.Path() / "report.html";
    ASSERT_TRUE(ReplaceContentWithin(file, "old", 0));
    system::win32::v1::UniqueKernelHandle held(CreateFileW(
        file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_FALSE(ReplaceContentWithin(file, "new", 0));
    EXPECT_EQ(ContentOfFile(file), "old");
    int pauses = 0;
    EXPECT_TRUE(ReplaceContentWithin(file, "new", 60000, [&] {
        ++pauses;
        held.Reset();
    }));
    EXPECT_EQ(pauses, 1);
    EXPECT_EQ(ContentOfFile(file), "new");
}

TEST(KitFolder, A_file_that_is_missing_is_named_with_what_to_do)
{
    const test::TempFolder folder;
    try {
        static_cast<void>(ContentOfFile(folder.Path() / "manifest.json"));
        FAIL();
    } catch (const std::runtime_error& error) {
        const std::string text = error.what();
        EXPECT_NE(text.find("manifest.json is missing."), std::string::npos) << text;
        EXPECT_NE(text.find("started inside the ZIP"), std::string::npos) << text;
    }
}

} // namespace
} // namespace vqrx::kit
