#include "DaemonSelection.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

// Three daemons: 0 and 4 run a.exe, 2 runs b.exe; and a child that the log does not show runs
// a.exe.
std::vector<DaemonStatus> FourDaemons()
{
    std::vector<DaemonStatus> daemons(4);
    daemons[0].id = 0;
    daemons[0].command = R"(C:\FW\App\a.exe -x )";
    daemons[1].id = 2;
    daemons[1].command = R"(C:\FW\App\b.exe a.exe )";
    daemons[2].id = 4;
    daemons[2].command = R"(D:\My Folder\A.EXE )";
    daemons[3].command = R"(C:\FW\App\a.exe -z )";
    daemons[3].inLog = false;
    return daemons;
}

// Returns "0" or, for a daemon without an id, its command; "?9" for one that the listing lacks; and
// "no NAME" for an unknown name.
std::vector<std::string> Selected(const DaemonSelection& selection)
{
    const SelectedDaemons selected = SelectDaemons(selection, FourDaemons());
    std::vector<std::string> result;
    for (const DaemonStatus& daemon : selected.daemons) {
        result.push_back(!daemon.id ? daemon.command
                                    : (daemon.inLog ? "" : "?") + std::to_string(*daemon.id));
    }
    for (const std::string& name : selected.unknownNames) {
        result.push_back("no " + name);
    }
    return result;
}

using Lines = std::vector<std::string>;

TEST(DaemonSelection, Ids_are_selected_in_their_order_each_once)
{
    EXPECT_EQ(Selected({{"4", "0", "4"}, false}), (Lines{"4", "0"}));
}

TEST(DaemonSelection, Id_that_the_log_does_not_show_is_selected_once)
{
    EXPECT_EQ(Selected({{"9", "9"}, false}), (Lines{"?9"}));
}

TEST(DaemonSelection, Name_of_a_batch_file_selects_the_interpreter_that_was_handed_over)
{
    std::vector<DaemonStatus> daemons(1);
    daemons[0].id = 3;
    daemons[0].attached = true;
    daemons[0].command = R"(C:\windows\system32\cmd.exe /s/c C:\FW\App\run.bat  )";
    EXPECT_EQ(SelectDaemons({{"run.bat"}, false}, daemons).daemons.size(), 1U);
    EXPECT_EQ(SelectDaemons({{"cmd.exe"}, false}, daemons).daemons.size(), 1U);
}

TEST(DaemonSelection, Name_selects_every_daemon_of_the_program)
{
    EXPECT_EQ(Selected({{"a.exe"}, false}), (Lines{"0", "4", R"(C:\FW\App\a.exe -z )"}));
    EXPECT_EQ(Selected({{"b.exe", "c.exe", "2"}, false}), (Lines{"2", "no c.exe"}));
}

TEST(DaemonSelection, All_selects_every_daemon)
{
    EXPECT_EQ(Selected({{}, true}), (Lines{"0", "2", "4", R"(C:\FW\App\a.exe -z )"}));
}

TEST(DaemonSelection, Target_is_a_decimal_id_or_a_file_name_with_a_point)
{
    for (const char* target : {"0", "007", "4294967295", "video.exe", "x.y"}) {
        EXPECT_TRUE(IsTarget(target)) << target;
    }
    for (const char* text : {"", "x", "-1", "0x10", "4294967296", "C:\\a.exe", "x/a.exe", "1 2"}) {
        EXPECT_FALSE(IsTarget(text)) << text;
    }
}

} // namespace
} // namespace vqrx::test
