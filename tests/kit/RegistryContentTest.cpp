#include "RegistryContent.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

namespace vqrx::kit {
namespace {

constexpr const char* kKey = R"(Software\DaemonManagerKitTest)";
const WatchedKey kWithKeysBelow{false, kKey, true};
const WatchedKey kValuesOnly{false, kKey, false};

class RegistryContent : public testing::Test {
protected:
    RegistryContent() { Clear(); }
    ~RegistryContent() override { Clear(); }

    static void Clear()
    {
        RegDeleteTreeA(HKEY_CURRENT_USER, kKey);
        RegDeleteKeyA(HKEY_CURRENT_USER, kKey);
    }
    static void Set(const std::string& below, const char* name, DWORD number)
    {
        RegSetKeyValueA(HKEY_CURRENT_USER, (kKey + below).c_str(), name, REG_DWORD, &number,
                        sizeof number);
    }
    static DWORD Get(const std::string& below, const char* name)
    {
        DWORD number = 0;
        DWORD size = sizeof number;
        RegGetValueA(HKEY_CURRENT_USER, (kKey + below).c_str(), name, RRF_RT_REG_DWORD, nullptr,
                     &number, &size);
        return number;
    }
};

TEST_F(RegistryContent, A_key_that_did_not_exist_is_removed_with_all_below)
{
    const SavedKey saved{kWithKeysBelow, ReadContent(kWithKeysBelow)};
    EXPECT_FALSE(saved.before.exists);
    Set("\\a\\b", "x", 1);
    EXPECT_TRUE(ReadContent(kWithKeysBelow).exists);
    EXPECT_TRUE(RestoreContent(saved));
    EXPECT_FALSE(ReadContent(kWithKeysBelow).exists);
}

TEST_F(RegistryContent, Changed_removed_and_new_values_and_keys_are_put_back)
{
    Set("", "stays", 1);
    Set("", "changes", 2);
    Set("\\goes\\deep", "x", 3);
    const SavedKey saved{kWithKeysBelow, ReadContent(kWithKeysBelow)};
    Set("", "changes", 20);
    Set("", "new", 30);
    Set("\\new", "y", 40);
    RegDeleteTreeA(HKEY_CURRENT_USER, (std::string(kKey) + "\\goes").c_str());
    EXPECT_NE(ReadContent(kWithKeysBelow), saved.before);
    EXPECT_TRUE(RestoreContent(saved));
    EXPECT_EQ(ReadContent(kWithKeysBelow), saved.before);
    EXPECT_EQ(Get("", "changes"), 2U);
    EXPECT_EQ(Get("\\goes\\deep", "x"), 3U);
    EXPECT_EQ(Get("", "new"), 0U);
}

TEST_F(RegistryContent, Keys_below_a_key_whose_values_alone_are_watched_stay_as_they_are)
{
    const SavedKey saved{kValuesOnly, ReadContent(kValuesOnly)};
    Set("", "new", 1);
    Set("\\below", "x", 2);
    EXPECT_TRUE(RestoreContent(saved));
    EXPECT_EQ(Get("", "new"), 0U);
    EXPECT_EQ(Get("\\below", "x"), 2U);
    RegDeleteTreeA(HKEY_CURRENT_USER, (std::string(kKey) + "\\below").c_str());
    EXPECT_TRUE(RestoreContent(saved)); // nothing needs the key any more
    EXPECT_FALSE(ReadContent(kValuesOnly).exists);
}

} // namespace
} // namespace vqrx::kit
