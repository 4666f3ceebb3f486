#include "LaunchPath.h"

#include "FakeLog.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;
using Warnings = std::vector<std::string>;

Warnings WarningsOf(const std::string& path, PathKind kind = PathKind::kFile)
{
    return WarningsAboutPath(path, R"(C:\FW\App)", [kind](const std::string&) { return kind; });
}

TEST(LaunchPath, Full_path_of_a_file_gives_no_warning)
{
    for (const char* path : {R"(C:\FW\App\a.exe)", "c:/FW/a.exe", R"(\\server\share\a.exe)"}) {
        EXPECT_EQ(WarningsOf(path), Warnings{}) << path;
    }
    EXPECT_EQ(WarningsOf(R"(C:\secret\a.exe)", PathKind::kUnknown), Warnings{});
}

TEST(LaunchPath, Missing_file_and_folder_give_a_warning)
{
    EXPECT_EQ(
        WarningsOf(R"(C:\no\such.exe)", PathKind::kMissing),
        Warnings{
            R"(C:\no\such.exe does not exist; the supervisor tries to start it every second)"});
    EXPECT_EQ(WarningsOf(R"(C:\FW)", PathKind::kFolder),
              Warnings{R"(C:\FW is a folder, no program)"});
}

TEST(LaunchPath, Relative_path_is_looked_for_in_the_working_folder_of_the_supervisor)
{
    std::string asked;
    const auto warnings = WarningsAboutPath("a.exe", R"(C:\FW\App)", [&](const std::string& path) {
        asked = path;
        return PathKind::kMissing;
    });
    EXPECT_EQ(asked, R"(C:\FW\App\a.exe)");
    EXPECT_EQ(
        warnings,
        (Warnings{
            R"("a.exe" is no full path, so the supervisor looks for it in C:\FW\App)",
            R"(C:\FW\App\a.exe does not exist; the supervisor tries to start it every second)"}));
    EXPECT_EQ(WarningsOf(R"(\a.exe)").size(), 1U);
    EXPECT_EQ(WarningsOf("C:a.exe").size(), 1U);
}

TEST(LaunchPath, Relative_path_is_not_looked_for_if_the_working_folder_is_not_known)
{
    const auto warnings = WarningsAboutPath("a.exe", "", [](const std::string&) {
        ADD_FAILURE() << "looked";
        return PathKind::kMissing;
    });
    EXPECT_EQ(
        warnings,
        Warnings{
            R"("a.exe" is no full path, so the supervisor looks for it in its working folder)"});
}

TEST(OtherDaemonOfProcess, is_a_daemon_that_is_watched_and_has_the_process)
{
    FakeLog log;
    log.Begin()
        .Add(2, "Start DaemonId(0) PId(12) : a.exe ")
        .Add(2, "Start DaemonId(1) PId(13) : b.exe ")
        .Add(2, "Attach DaemonId(2) PId(12) : a.exe ")
        .Add(1, "Stop (1) DaemonId(1) PId(13) : b.exe ")
        .Add(2, "Attach DaemonId(3) PId(13) : b.exe ");
    const Timeline timeline = log.Timeline();
    const SupervisorRun& run = timeline.runs.back();
    EXPECT_EQ(OtherDaemonOfProcess(run, 12, 2), 0U);
    EXPECT_EQ(OtherDaemonOfProcess(run, 13, 3), std::nullopt);
    EXPECT_EQ(OtherDaemonOfProcess(run, 14, 3), std::nullopt);
}

} // namespace
} // namespace vqrx::test
