// What daemonctl says when something fails: the exit code, and what to do next.
#include "Daemonctl.h"
#include "FirmwareRegistry.h"
#include "SupervisorProcess.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace vqrx::test {
namespace {

using testing::EndsWith;
using testing::StartsWith;

TEST(OperatorErrors, Commands_end_with_exit_code_5_if_the_registry_does_not_name_the_firmware_root)
{
    const SupervisorProcess supervisor;
    const std::string fleet = supervisor.Write("fleet.txt", "a.exe\n");
    const FirmwareRegistry removed;
    for (const std::string& arguments :
         {std::string("ps"), std::string("stop --all"), std::string("reattach --dry-run"),
          std::string("reattach"), "apply --trust " + fleet}) {
        const Answer answer = Daemonctl(arguments);
        EXPECT_EQ(answer.exitCode, 5U) << arguments << ": " << answer;
        EXPECT_EQ(answer.output, "") << arguments;
        EXPECT_THAT(answer.error, StartsWith("daemonctl: the registry does not name the "
                                             "firmware root; see daemonctl doctor"))
            << arguments;
    }
}

// The operator need not know the documents by heart.
TEST(OperatorErrors, Every_error_names_the_next_step)
{
    const SupervisorProcess supervisor;
    const std::string noFile = " C:\\no\\such.file";
    const std::string text = supervisor.Write("text.txt", "\"no end\n");
    const std::pair<std::string, std::string> steps[] = {
        {"attach 4294967280", "To see the messages of the supervisor: daemonctl log --tail 5"},
        {"detach 7", "To see all daemons: daemonctl ps"},
        {"stop 7", "To see all daemons: daemonctl ps"},
        {"metrics --output" + noFile, "Choose another file: --output FILE"},
        {"report --output" + noFile, "Choose another file: --output FILE"},
        {"report --output " + supervisor.Root() + "\\page.html --json" + noFile,
         "Choose another file: --json FILE"},
        {"ps --output " + text, "Choose another file: --output FILE"},
        {"check --expect" + noFile,
         "For the form of a list, with an example: daemonctl check --help"},
        {"check --expect " + text,
         "For the form of a list, with an example: daemonctl check --help"},
        {"apply" + noFile, "For the form of a fleet file, with an example: daemonctl apply --help"},
        {"apply --trust " + text,
         "For the form of a fleet file, with an example: daemonctl apply --help"},
        {"autostart install --fleet" + noFile,
         "For the form of a fleet file, with an example: daemonctl apply --help"},
        {"autostart status --fleet" + noFile,
         "To see which options there are: daemonctl autostart --help"},
        {"reattach --trust --from " + text, "Without a listing: daemonctl reattach"},
        {"log --file" + noFile, "Name another log: --file FILE"},
        {"log --file " + text, "Name another log: --file FILE"},
        {"ps --log" + noFile, "To find out more: daemonctl doctor"},
        {"record --once --trust --output " + text, "Choose another folder: --output FOLDER"},
        {"rights --make logs relative", "For examples: daemonctl rights --help"},
        {"rights --make logs --account no_such_account_of_ours C:\\x",
         "For examples: daemonctl rights --help"}};
    for (const auto& [arguments, step] : steps) {
        const Answer answer = Daemonctl(arguments);
        EXPECT_NE(answer.exitCode, 0U) << arguments;
        EXPECT_THAT(answer.error, EndsWith("\n  " + step + "\n")) << arguments;
    }
}

TEST(OperatorErrors, Metrics_warn_of_a_name_that_no_collector_reads)
{
    const SupervisorProcess supervisor;
    const std::string file = supervisor.Root() + "\\daemons.txt";
    EXPECT_EQ(Daemonctl("metrics --output " + file),
              (Answer{0, "",
                      "daemonctl: warning: the name of " + file +
                          " does not end with .prom, so a textfile collector does not read it\n"
                          "  Choose another name: --output FILE\n"}));
    EXPECT_EQ(Daemonctl("metrics --output " + supervisor.Root() + "\\daemons.prom"),
              (Answer{0, "", ""}));
    EXPECT_EQ(Daemonctl("metrics").error, "");
}

} // namespace
} // namespace vqrx::test
