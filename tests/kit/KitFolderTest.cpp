#include "KitFolder.h"

#include "TempFolder.h"

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
    EXPECT_FALSE(ReplaceContentOnDisk(folder.Path() / "none" / "undo.json", "x"));
}

} // namespace
} // namespace vqrx::kit
