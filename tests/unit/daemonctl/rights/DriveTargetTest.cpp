#include "DriveTarget.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using client::v0::DriveTarget;
using client::v0::JudgeDrive;
using Kind = DriveTarget::Kind;

TEST(DriveTarget, A_drive_with_a_disk_or_without_anything_is_here)
{
    EXPECT_EQ(JudgeDrive({false, R"(\Device\HarddiskVolume3)"}), (DriveTarget{Kind::kHere, ""}));
    EXPECT_EQ(JudgeDrive({false, R"(\Device\MupFilter)"}), (DriveTarget{Kind::kHere, ""}));
    EXPECT_EQ(JudgeDrive({false, ""}), (DriveTarget{Kind::kHere, ""}));
}

TEST(DriveTarget, A_network_drive_is_elsewhere)
{
    EXPECT_EQ(JudgeDrive({true, R"(\Device\Something)"}), (DriveTarget{Kind::kElsewhere, ""}));
    EXPECT_EQ(JudgeDrive({true, ""}), (DriveTarget{Kind::kElsewhere, ""}));
}

TEST(DriveTarget, A_drive_that_Windows_says_nothing_about_is_elsewhere)
{
    EXPECT_EQ(JudgeDrive({false, "", true}), (DriveTarget{Kind::kElsewhere, ""}));
}

TEST(DriveTarget, A_network_drive_that_is_not_connected_is_elsewhere)
{
    EXPECT_EQ(JudgeDrive({false, R"(\Device\LanmanRedirector\;N:\server\share)"}),
              (DriveTarget{Kind::kElsewhere, ""}));
    EXPECT_EQ(JudgeDrive({false, R"(\device\mup\server\share)"}),
              (DriveTarget{Kind::kElsewhere, ""}));
    EXPECT_EQ(JudgeDrive({false, R"(\Device\WebDavRedirector)"}),
              (DriveTarget{Kind::kElsewhere, ""}));
}

TEST(DriveTarget, A_drive_of_subst_stands_for_its_folder)
{
    EXPECT_EQ(JudgeDrive({false, R"(\??\C:\work)"}), (DriveTarget{Kind::kFolder, R"(C:\work)"}));
    EXPECT_EQ(JudgeDrive({true, R"(\??\N:\)"}), (DriveTarget{Kind::kFolder, "N:"}));
}

TEST(DriveTarget, A_drive_of_subst_for_a_share_or_another_device_is_elsewhere)
{
    EXPECT_EQ(JudgeDrive({false, R"(\??\UNC\server\share)"}), (DriveTarget{Kind::kElsewhere, ""}));
    EXPECT_EQ(JudgeDrive({false, R"(\??\Volume{1})"}), (DriveTarget{Kind::kElsewhere, ""}));
    EXPECT_EQ(JudgeDrive({false, R"(\??\)"}), (DriveTarget{Kind::kElsewhere, ""}));
    EXPECT_EQ(JudgeDrive({false, R"(\??\C:work)"}), (DriveTarget{Kind::kElsewhere, ""}));
}

} // namespace
} // namespace vqrx::test
