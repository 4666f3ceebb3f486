#include "MachineKey.h"

#include "SetupError.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using setup::v0::MachineKey;
using setup::v0::SetupError;

class MachineKeyTest : public testing::Test {
protected:
    ~MachineKeyTest() override
    {
        inner_.Remove();
        key_.Remove();
    }

    MachineKey key_{"SOFTWARE\\DmMachineKeyTest"};
    MachineKey inner_{"SOFTWARE\\DmMachineKeyTest\\inner"};
};

TEST_F(MachineKeyTest, What_was_set_is_read_again)
{
    EXPECT_FALSE(key_.Exists());
    key_.SetText("text", "f\xC3\xBC"
                         "r C:\\x");
    key_.SetText("", "default");
    key_.SetNumber("number", 7);
    key_.SetList("list", {"one", "two words", "three"});
    EXPECT_TRUE(key_.Exists());
    EXPECT_EQ("f\xC3\xBC"
              "r C:\\x",
              key_.Text("text"));
    EXPECT_EQ("default", key_.Text(""));
    EXPECT_EQ((std::vector<std::string>{"one", "two words", "three"}), key_.List("list"));
    key_.SetList("list", {});
    EXPECT_EQ(std::vector<std::string>(), key_.List("list"));
}

TEST_F(MachineKeyTest, What_does_not_exist_or_is_of_another_kind_is_empty)
{
    EXPECT_EQ("", key_.Text("text"));
    EXPECT_EQ(std::vector<std::string>(), key_.List("list"));
    key_.SetNumber("number", 7);
    EXPECT_EQ("", key_.Text("number"));
    EXPECT_EQ(std::vector<std::string>(), key_.List("number"));
}

TEST_F(MachineKeyTest, Values_of_before_are_restored_and_new_ones_go)
{
    const auto absent = key_.Values();
    EXPECT_FALSE(absent);
    key_.SetText("DisplayVersion", "1.0.0");
    key_.SetNumber("number", 7);
    key_.SetList("Files", {"one", "two"});
    const auto before = key_.Values();
    ASSERT_TRUE(before);
    EXPECT_EQ(before->size(), 3U);
    key_.SetText("DisplayVersion", "2.0.0");
    key_.SetText("MadeLog", "x");
    key_.RemoveValue("number");
    key_.SetList("Files", {"three"});
    key_.Restore(before);
    EXPECT_EQ(key_.Text("DisplayVersion"), "1.0.0");
    EXPECT_EQ(key_.Text("MadeLog"), "");
    EXPECT_EQ(key_.List("Files"), (std::vector<std::string>{"one", "two"}));
    const auto restored = key_.Values();
    ASSERT_TRUE(restored);
    EXPECT_EQ(restored->size(), 3U);
    key_.Restore(absent);
    EXPECT_FALSE(key_.Exists());
}

TEST_F(MachineKeyTest, Only_an_empty_key_is_removed_if_empty)
{
    key_.SetText("text", "x");
    key_.RemoveIfEmpty();
    EXPECT_TRUE(key_.Exists());
    key_.RemoveValue("text");
    inner_.SetText("", "");
    key_.RemoveIfEmpty();
    EXPECT_TRUE(inner_.Exists());
    inner_.Remove();
    key_.RemoveIfEmpty();
    EXPECT_FALSE(key_.Exists());
}

TEST_F(MachineKeyTest, A_key_that_cannot_be_made_is_named)
{
    try {
        MachineKey("no\\such\\" + std::string(300, 'x')).SetText("", "x"); // 255 is the limit
        FAIL() << "made";
    } catch (const SetupError& error) {
        EXPECT_NE(std::string(error.what()).find("The registry key HKLM\\"), std::string::npos);
    }
}

} // namespace
} // namespace vqrx::test
