#include "RightsRemedies.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace vqrx::test {
namespace {

using namespace client::v0;
using Role = PlaceFacts::Role;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const TrustedSids kAdministrators{"S-1-5-18", "S-1-5-32-544"};

PlaceFacts Place(const std::string& path, Role role)
{
    PlaceFacts place;
    place.role = role;
    place.rights.path = path;
    place.rights.kind = ObjectRights::Kind::kFolder;
    place.rights.ownerSid = "S-1-5-18";
    return place;
}

PlaceFacts WeakPlace(const std::string& path, Role role, const std::string& sid = "S-1-1-0")
{
    PlaceFacts place = Place(path, role);
    place.rights.granted = {{sid, "somebody", 0x1F01FF}};
    return place;
}

TEST(RightsRemedies, Nothing_is_done_to_a_sound_place)
{
    EXPECT_THAT(RemediesFor(Place(R"(C:\FW\App)", Role::kPrograms), kAdministrators, ""),
                IsEmpty());
}

TEST(RightsRemedies, Logs_are_for_administrators_and_the_account_of_the_supervisor)
{
    EXPECT_THAT(
        RemediesFor(WeakPlace(R"(C:\FW\Logs)", Role::kLogs, "S-1-5-32-545"), kAdministrators, ""),
        ElementsAre(R"(icacls "C:\FW\Logs" /inheritance:r /grant:r "*S-1-5-18:(OI)(CI)F" )"
                    R"("*S-1-5-32-544:(OI)(CI)F")",
                    R"(icacls "C:\FW\Logs" /remove:g *S-1-5-32-545)"));
    EXPECT_THAT(RemediesFor(WeakPlace(R"(C:\FW\Logs)", Role::kLogs), kAdministrators, "S-1-5-21-7"),
                ElementsAre(R"(icacls "C:\FW\Logs" /inheritance:r /grant:r "*S-1-5-18:(OI)(CI)F" )"
                            R"("*S-1-5-32-544:(OI)(CI)F" "*S-1-5-21-7:(OI)(CI)F")",
                            R"(icacls "C:\FW\Logs" /remove:g *S-1-1-0)"));
}

// A library that lies there makes it a folder of programs.
TEST(RightsRemedies, The_root_of_a_drive_gets_no_command)
{
    for (const Role role : {Role::kPrograms, Role::kAbove}) {
        EXPECT_THAT(
            RemediesFor(WeakPlace(R"(D:\)", role), kAdministrators, ""),
            ElementsAre(
                R"(Let only administrators own and change D:\: its properties, page Security.)"));
    }
}

TEST(RightsRemedies, Users_still_read_a_folder_of_programs_and_a_folder_above)
{
    EXPECT_THAT(RemediesFor(WeakPlace(R"(C:\FW\App)", Role::kPrograms, "S-1-5-32-545"),
                            kAdministrators, ""),
                ElementsAre(R"(icacls "C:\FW\App" /inheritance:r /grant:r "*S-1-5-18:(OI)(CI)F" )"
                            R"("*S-1-5-32-544:(OI)(CI)F" "*S-1-5-32-545:(OI)(CI)RX")"));
    EXPECT_THAT(RemediesFor(WeakPlace(R"(C:\FW)", Role::kAbove), kAdministrators, ""),
                ElementsAre(R"(icacls "C:\FW" /inheritance:d)",
                            R"(icacls "C:\FW" /remove:g *S-1-1-0)",
                            R"(icacls "C:\FW" /grant "*S-1-5-32-545:(OI)(CI)RX")"));
}

TEST(RightsRemedies, A_file_gets_the_rights_of_its_folder)
{
    EXPECT_THAT(RemediesFor(WeakPlace(R"(C:\FW\App\a.exe)", Role::kProgram), kAdministrators, ""),
                ElementsAre(R"(icacls "C:\FW\App\a.exe" /reset)"));
}

TEST(RightsRemedies, No_command_holds_a_name_that_would_start_another_one)
{
    for (const char* const name : {"C:\\%x%", "C:\\$(calc)", "C:\\a`b", "C:\\\xE2\x80\x9C"}) {
        EXPECT_THAT(RemediesFor(WeakPlace(name, Role::kPrograms), kAdministrators, ""),
                    ElementsAre("Let only administrators own and change " + std::string(name) +
                                ": its properties, page Security."));
    }
}

TEST(RightsRemedies, A_link_is_replaced_and_a_place_that_cannot_be_read_needs_an_administrator)
{
    PlaceFacts place = Place(R"(C:\FW)", Role::kAbove);
    place.rights.reparsePoint = true;
    EXPECT_THAT(RemediesFor(place, kAdministrators, ""),
                ElementsAre("Replace C:\\FW by a folder: somebody may turn the link elsewhere."));
    // Commands would change what the link leads to: somebody else's folder.
    place.rights.ownerSid = "S-1-5-21-7";
    place.rights.granted = {{"S-1-1-0", "somebody", 0x1F01FF}};
    EXPECT_THAT(RemediesFor(place, kAdministrators, ""), ElementsAre(HasSubstr("Replace C:\\FW")));
    place.rights.error = 5;
    EXPECT_THAT(RemediesFor(place, kAdministrators, ""),
                ElementsAre("To see all rights: daemonctl doctor"));
}

} // namespace
} // namespace vqrx::test
