#include "Journal.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>

namespace vqrx::kit {
namespace {

TEST(Journal, Content_of_keys_survives_the_file)
{
    Journal journal;
    RegistryTree below;
    below.exists = true;
    below.values = {
        {"Pathname", 1, {'C', ':', 0}}, {"", 4, {1, 0, 0, 255}}, {"M\xC3\xBCller", 3, {}}};
    RegistryTree tree;
    tree.exists = true;
    tree.keys = {{"CurrentVersion", below}};
    journal.keys = {{{true, R"(SOFTWARE\X)", true}, tree}, {{false, "Y", false}, {}}};
    EXPECT_EQ(ReadJournal(JournalText(journal)), journal);
}

TEST(Journal, A_text_that_is_no_journal_is_refused)
{
    for (const char* text : {"", "{}", R"({"keys": [{}]})", "{\"keys\": ["}) {
        EXPECT_THROW(static_cast<void>(ReadJournal(text)), std::runtime_error) << text;
    }
}

TEST(Journal, Watched_keys_are_named_as_operators_write_them_and_none_is_watched_twice)
{
    EXPECT_EQ(NameOf({true, R"(SOFTWARE\X)", true}), R"(HKLM\SOFTWARE\X)");
    EXPECT_EQ(NameOf({false, "X", true}), R"(HKCU\X)");
    std::set<std::string> names;
    for (const WatchedKey& key : KeysThatTestsChange()) {
        EXPECT_TRUE(names.insert(NameOf(key)).second) << NameOf(key);
    }
    for (const char* name :
         {R"(HKLM\SOFTWARE\UnitWarden)", R"(HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Run)",
          R"(HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall\DaemonManager)",
          R"(HKLM\SYSTEM\CurrentControlSet\Services\DaemonGuard)",
          R"(HKLM\SOFTWARE\Microsoft\Ole)"}) {
        EXPECT_TRUE(names.contains(name)) << name;
    }
}

} // namespace
} // namespace vqrx::kit
