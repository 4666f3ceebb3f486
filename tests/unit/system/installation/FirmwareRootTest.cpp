#include "installation/FirmwareRoot.h"

#include "FirmwareRegistry.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace vqrx::test {
namespace {

using system::installation::v1::GetFirmwareRoot;
using system::installation::v1::TryGetFirmwareRoot;
using Key = FirmwareRegistry::Key;

struct FirmwareRootTest : testing::Test {
    FirmwareRegistry registry;
    std::string path = "before";
};

TEST_F(FirmwareRootTest, Root_is_the_default_if_neither_key_exists)
{
    EXPECT_FALSE(TryGetFirmwareRoot(path));
    EXPECT_EQ(path, R"(D:\FIRMWARE)");
}

TEST_F(FirmwareRootTest, Root_is_the_default_if_the_first_key_has_no_value)
{
    registry.Create(Key::kCurrent);
    registry.SetPathname(Key::kOlder, R"(E:\FW)");
    EXPECT_FALSE(TryGetFirmwareRoot(path));
    EXPECT_EQ(path, R"(D:\FIRMWARE)");
}

TEST_F(FirmwareRootTest, Root_comes_from_the_first_key_if_both_have_a_value)
{
    registry.SetPathname(Key::kCurrent, R"(E:\FW\App\bin)");
    registry.SetPathname(Key::kOlder, R"(F:\old)");
    EXPECT_TRUE(TryGetFirmwareRoot(path));
    EXPECT_EQ(path, R"(E:\FW)");
}

TEST_F(FirmwareRootTest, Root_comes_from_the_second_key_if_the_first_cannot_be_opened)
{
    registry.SetPathname(Key::kOlder, R"(F:\old\App)");
    EXPECT_TRUE(TryGetFirmwareRoot(path));
    EXPECT_EQ(path, R"(F:\old)");
}

TEST_F(FirmwareRootTest, Root_ends_at_the_first_zero_of_the_value)
{
    registry.SetPathname(Key::kCurrent, REG_BINARY, std::string("E:\\FW\0\\x", 8));
    EXPECT_TRUE(TryGetFirmwareRoot(path));
    EXPECT_EQ(path, R"(E:\FW)");
}

TEST_F(FirmwareRootTest, Value_of_255_bytes_without_a_zero_is_read_whole)
{
    const std::string longest = "E:\\" + std::string(252, 'x');
    registry.SetPathname(Key::kCurrent, REG_BINARY, longest);
    EXPECT_TRUE(TryGetFirmwareRoot(path));
    EXPECT_EQ(path, longest);
}

TEST_F(FirmwareRootTest, Value_of_256_bytes_is_not_read)
{
    registry.SetPathname(Key::kCurrent, REG_BINARY, std::string(256, 'x'));
    EXPECT_FALSE(TryGetFirmwareRoot(path));
    EXPECT_EQ(path, R"(D:\FIRMWARE)");
}

TEST_F(FirmwareRootTest, Empty_value_gives_the_empty_root)
{
    registry.SetPathname(Key::kCurrent, REG_SZ, "");
    EXPECT_TRUE(TryGetFirmwareRoot(path));
    EXPECT_EQ(path, "");
}

TEST_F(FirmwareRootTest, GetFirmwareRoot_throws_if_there_is_no_root)
{
    try {
        GetFirmwareRoot(path);
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "could not get firmware root path");
    }
}

} // namespace
} // namespace vqrx::test
