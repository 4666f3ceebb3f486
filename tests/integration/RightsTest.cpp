// daemonctl rights: who may change a path, and folders with rights of their own.
#include "Daemonctl.h"
#include "OpenToAll.h"
#include "TempFolder.h"
#include "Wine.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace vqrx::test {
namespace {

TEST(Rights, A_folder_that_was_made_for_programs_or_logs_is_found_sound)
{
    const TempFolder folder;
    const std::string app = folder.File("FW");
    EXPECT_EQ(Daemonctl("rights --make programs " + app + " " + app + "\\App"),
              (Answer{0, "", ""}));
    EXPECT_EQ(Daemonctl("rights --make logs --account S-1-5-19 " + app + "\\Logs"),
              (Answer{0, "", ""}));
    EXPECT_EQ(Daemonctl("rights " + app + "\\App " + app + "\\Logs"),
              (Answer{0, "ok    " + app + "\\App\nok    " + app + "\\Logs\n", ""}));
}

TEST(Rights, What_others_may_change_below_a_folder_is_shown_on_request)
{
    const TempFolder folder;
    const std::string app = folder.File("App");
    ASSERT_EQ(Daemonctl("rights --make programs " + app + " " + app + "\\bin").exitCode, 0U);
    const std::string library = app + "\\bin\\a.dll";
    std::ofstream(library) << "x";
    EXPECT_EQ(Daemonctl("rights --below " + app), (Answer{0, "ok    " + app + "\n", ""}));
    OpenToAll(library);
    EXPECT_EQ(Daemonctl("rights " + app), (Answer{0, "ok    " + app + "\n", ""}));
    const Answer answer = Daemonctl("rights --below " + app);
    EXPECT_EQ(answer.exitCode, 1U);
    EXPECT_TRUE(answer.output.starts_with("ok    " + app + "\nweak  " + library + "\n      "))
        << answer;
}

TEST(Rights, A_folder_that_exists_is_not_taken_over)
{
    const TempFolder folder;
    const std::string path = folder.Path().string();
    EXPECT_EQ(Daemonctl("rights --make programs " + path),
              (Answer{4, "",
                      "daemonctl: " + path + " exists already\n  To check it: daemonctl rights \"" +
                          path + "\"\n"}));
}

TEST(Rights, Advice_holds_no_name_that_does_something_else_when_it_is_pasted)
{
    const TempFolder folder;
    const std::string path = folder.File("100%");
    ASSERT_TRUE(std::filesystem::create_directory(path));
    EXPECT_EQ(Daemonctl("rights --make programs " + path),
              (Answer{4, "",
                      "daemonctl: " + path +
                          " exists already\n"
                          "  To check it, run daemonctl rights on this folder.\n"}));
}

TEST(Rights, A_link_on_the_way_is_found_and_nothing_is_made_behind_it)
{
    // Drive Z: of Wine is a link to the root of the host. Windows has a junction of this name.
    const std::string link = RunsUnderWine() ? "Z:\\" : "C:\\Documents and Settings";
    const std::string below = RunsUnderWine() ? "Z:\\usr" : link + "\\Public";
    const Answer answer = Daemonctl("rights \"" + below + "\"");
    EXPECT_EQ(answer.exitCode, 1U);
    EXPECT_TRUE(answer.output.starts_with("weak  " + below + "\n")) << answer;
    EXPECT_NE(answer.output.find("      " + link + " is a junction or a link\n"), std::string::npos)
        << answer;
    const std::string never = below + "\\dm_never_made";
    const Answer made = Daemonctl("rights --make programs \"" + never + "\"");
    EXPECT_EQ(made.exitCode, 4U);
    EXPECT_EQ(made.error, "daemonctl: " + never + " was not made: " + link +
                              " is a junction or a link\n"
                              "  To see who may change it: daemonctl rights \"" +
                              below + "\"\n");
    EXPECT_FALSE(std::filesystem::exists(never));
}

TEST(Rights, Wrong_arguments_are_refused)
{
    EXPECT_EQ(Daemonctl("rights").exitCode, 2U);
    EXPECT_EQ(Daemonctl("rights --make anything C:\\x").exitCode, 2U);
    EXPECT_EQ(Daemonctl("rights --make logs --below C:\\x").exitCode, 2U);
    EXPECT_EQ(Daemonctl("rights --make logs --account no_such_account_of_ours C:\\x"),
              (Answer{4, "",
                      "daemonctl: there is no account no_such_account_of_ours\n"
                      "  For examples: daemonctl rights --help\n"}));
    EXPECT_EQ(Daemonctl("rights --make logs relative").exitCode, 4U);
}

} // namespace
} // namespace vqrx::test
