#include "Weaknesses.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::GrantedRight;
using client::v0::GrantsToStrangers;
using client::v0::GrantsToStrangersOfParent;
using client::v0::ObjectRights;
using client::v0::Readers;
using client::v0::TrustedSids;
using client::v0::Weaknesses;
using client::v0::WeaknessesOfParent;
using testing::ElementsAre;
using testing::IsEmpty;

const TrustedSids kTrusted{"S-1-5-18", "S-1-5-32-544"};

ObjectRights SoundFolder()
{
    ObjectRights rights;
    rights.path = "C:\\FW";
    rights.kind = ObjectRights::Kind::kFolder;
    rights.ownerSid = "S-1-5-32-544";
    rights.ownerName = "BUILTIN\\Administrators";
    rights.granted = {{"S-1-5-18", "SYSTEM", 0x1F01FF},
                      {"S-1-5-32-544", "BUILTIN\\Administrators", 0x1F01FF},
                      {"S-1-5-32-545", "BUILTIN\\Users", 0x1200A9}};
    return rights;
}

ObjectRights With(std::uint32_t mask)
{
    ObjectRights rights = SoundFolder();
    rights.granted.push_back({"S-1-1-0", "Everyone", mask});
    return rights;
}

TEST(Weaknesses, of_a_folder_that_administrators_own_and_users_read_are_none)
{
    EXPECT_THAT(Weaknesses(SoundFolder(), kTrusted), IsEmpty());
    EXPECT_THAT(WeaknessesOfParent(SoundFolder(), kTrusted), IsEmpty());
    EXPECT_THAT(Weaknesses(With(0x1200A9), kTrusted), IsEmpty());
}

// Windows gives everybody who has logged on the right to change the root of a data drive.
TEST(Weaknesses, of_the_root_of_a_drive_as_a_place_are_only_those_that_reach_the_folders_in_it)
{
    ObjectRights root = With(0x1301BF);
    root.path = "D:\\";
    EXPECT_THAT(WeaknessesOfParent(root, kTrusted), IsEmpty());
    EXPECT_THAT(GrantsToStrangersOfParent(root, kTrusted), IsEmpty());
    EXPECT_THAT(Weaknesses(root, kTrusted), ElementsAre("Everyone may write to D:\\"));
    root.granted.back().mask = 0x1301FF; // with the right to delete what lies in it
    EXPECT_THAT(WeaknessesOfParent(root, kTrusted), ElementsAre("Everyone may write to D:\\"));
    EXPECT_THAT(WeaknessesOfParent(With(0x1301BF), kTrusted),
                ElementsAre("Everyone may write to C:\\FW"));
}

TEST(Weaknesses, name_a_link_a_stranger_as_owner_and_everybody_who_may_write)
{
    ObjectRights rights = With(0x1301BF);
    rights.granted.push_back({"S-1-5-32-545", "BUILTIN\\Users", 0x2});
    rights.granted.push_back({"S-1-1-0", "Everyone", 0x4}); // named once
    rights.reparsePoint = true;
    rights.ownerSid = "S-1-5-21-1";
    rights.ownerName = "PC\\guest";
    EXPECT_THAT(Weaknesses(rights, kTrusted),
                ElementsAre("C:\\FW is a junction or a link", "PC\\guest owns C:\\FW",
                            "Everyone may write to C:\\FW", "BUILTIN\\Users may write to C:\\FW"));
}

TEST(Weaknesses, name_each_right_with_which_a_folder_or_its_content_can_be_changed)
{
    for (const std::uint32_t mask : {0x2U, 0x4U, 0x10U, 0x40U, 0x100U, 0x10000U, 0x40000U, 0x80000U,
                                     0x10000000U, 0x40000000U}) {
        EXPECT_THAT(Weaknesses(With(mask), kTrusted), ElementsAre("Everyone may write to C:\\FW"))
            << mask;
    }
    for (const std::uint32_t mask :
         {0x1U, 0x8U, 0x20U, 0x80U, 0x20000U, 0x100000U, 0x20000000U, 0x80000000U}) {
        EXPECT_THAT(Weaknesses(With(mask), kTrusted), IsEmpty()) << mask;
    }
}

TEST(Weaknesses, of_a_parent_are_not_that_somebody_may_add_to_it)
{
    EXPECT_THAT(WeaknessesOfParent(With(0x16), kTrusted), IsEmpty());
    for (const std::uint32_t mask : {0x40U, 0x100U, 0x10000U, 0x40000U, 0x80000U, 0x10000000U}) {
        EXPECT_THAT(WeaknessesOfParent(With(mask), kTrusted),
                    ElementsAre("Everyone may write to C:\\FW"))
            << mask;
    }
}

TEST(Weaknesses, come_from_the_first_dangerous_right_of_each_stranger)
{
    ObjectRights rights = With(0x1200A9);
    rights.granted.push_back({"S-1-1-0", "Everyone", 0x2});
    rights.granted.push_back({"S-1-5-11", "Authenticated Users", 0x10000});
    rights.granted.push_back({"S-1-1-0", "Everyone", 0x10000});
    const auto sids = [](const std::vector<GrantedRight>& grants) {
        std::string text;
        for (const GrantedRight& grant : grants) {
            text += grant.sid + " ";
        }
        return text;
    };
    EXPECT_EQ(sids(GrantsToStrangers(rights, kTrusted)), "S-1-1-0 S-1-5-11 ");
    EXPECT_EQ(GrantsToStrangers(rights, kTrusted).front().mask, 0x2U);
    EXPECT_EQ(sids(GrantsToStrangersOfParent(rights, kTrusted)), "S-1-5-11 S-1-1-0 ");
    EXPECT_EQ(sids(GrantsToStrangers(SoundFolder(), kTrusted)), "");
}

// A new file gets such rights, and "icacls FILE /reset" gives them to an old one.
TEST(Weaknesses, count_a_right_that_new_files_get_but_not_for_a_parent)
{
    ObjectRights rights = With(0x1F01FF);
    rights.granted.back().onlyInherited = true;
    EXPECT_THAT(Weaknesses(rights, kTrusted),
                ElementsAre("Everyone may write to new files in C:\\FW"));
    EXPECT_THAT(WeaknessesOfParent(rights, kTrusted), IsEmpty());
    rights.granted.back().sid = "S-1-3-0"; // CREATOR OWNER: whoever may make a file
    EXPECT_THAT(Weaknesses(rights, kTrusted), IsEmpty());
}

TEST(Weaknesses, are_not_that_somebody_may_read_but_the_log_has_readers)
{
    EXPECT_THAT(Readers(SoundFolder(), kTrusted), ElementsAre("BUILTIN\\Users may read C:\\FW"));
    for (const std::uint32_t mask : {0x1U, 0x80000000U, 0x10000000U}) {
        EXPECT_THAT(Readers(With(mask), {"S-1-5-18", "S-1-5-32-544", "S-1-5-32-545"}),
                    ElementsAre("Everyone may read C:\\FW"))
            << mask;
    }
    EXPECT_THAT(Readers(With(0x20020), {"S-1-5-18", "S-1-5-32-544", "S-1-5-32-545"}), IsEmpty());
    ObjectRights unreadable;
    unreadable.error = 5;
    EXPECT_THAT(Readers(unreadable, kTrusted), IsEmpty()); // Weaknesses() says so
}

TEST(Weaknesses, of_a_registry_key_are_the_rights_to_set_a_value_and_to_make_a_key_or_a_link)
{
    for (const std::uint32_t mask : {0x2U, 0x4U, 0x20U, 0x10000U, 0x40000U, 0x80000U}) {
        ObjectRights rights = With(mask);
        rights.kind = ObjectRights::Kind::kRegistryKey;
        rights.granted.erase(rights.granted.begin() + 2); // the numbers mean other rights here
        EXPECT_THAT(Weaknesses(rights, kTrusted), ElementsAre("Everyone may write to C:\\FW"))
            << mask;
    }
    ObjectRights rights = With(0x20019); // to read
    rights.kind = ObjectRights::Kind::kRegistryKey;
    rights.granted.erase(rights.granted.begin() + 2);
    EXPECT_THAT(Weaknesses(rights, kTrusted), IsEmpty());
}

TEST(Weaknesses, are_a_missing_access_list_and_rights_that_cannot_be_read)
{
    ObjectRights rights = SoundFolder();
    rights.unprotected = true;
    EXPECT_THAT(Weaknesses(rights, kTrusted),
                ElementsAre("everybody may write to C:\\FW, which has no access list"));
    rights.error = 5;
    EXPECT_THAT(Weaknesses(rights, kTrusted),
                ElementsAre("the rights of C:\\FW cannot be read (Windows error 5)"));
}

} // namespace
} // namespace vqrx::test
