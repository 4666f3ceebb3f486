#include "BatchCommand.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(BatchCommand, Command_of_an_interpreter_gives_that_of_its_batch_file)
{
    EXPECT_EQ(BatchCommandOf(R"(C:\windows\system32\cmd.exe /s/c C:\FW\run.bat  )"),
              "C:\\FW\\run.bat ");
    EXPECT_EQ(BatchCommandOf(R"(C:\WINDOWS\System32\CMD.EXE /d /c "D:\x y\Job.CMD" 1 two words )"),
              "D:\\x y\\Job.CMD 1 two words ");
}

TEST(BatchCommand, Other_commands_give_none)
{
    for (const char* command :
         {"", "SnmpSvc", R"(C:\FW\video.exe run.bat )", R"(C:\windows\system32\cmd.exe )",
          R"(C:\windows\system32\cmd.exe /c )", R"(C:\windows\system32\cmd.exe /c C:\FW\a.exe )"}) {
        EXPECT_EQ(BatchCommandOf(command), std::nullopt) << command;
    }
}

TEST(BatchCommand, Only_an_attached_daemon_runs_a_batch_file_under_another_command)
{
    DaemonStatus daemon;
    daemon.command = R"(C:\windows\system32\cmd.exe /c C:\FW\run.bat )";
    EXPECT_EQ(LaunchCommandOf(daemon), daemon.command);
    daemon.attached = true;
    EXPECT_EQ(LaunchCommandOf(daemon), "C:\\FW\\run.bat ");
    daemon.command = "SnmpSvc";
    EXPECT_EQ(LaunchCommandOf(daemon), "SnmpSvc");
}

} // namespace
} // namespace vqrx::test
