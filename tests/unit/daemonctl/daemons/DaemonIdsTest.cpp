#include "DaemonIds.h"

#include "FakeLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace vqrx::test {
namespace {

using namespace client::v0;

std::string Ids(const FakeLog& log, const std::string& prefix = "")
{
    return DaemonIdLines(log.Timeline().runs.back(), log.NowMs(), prefix);
}

TEST(DaemonIds, Are_those_of_the_daemons_that_the_supervisor_looks_after)
{
    FakeLog log;
    log.Begin()
        .Add(2, "Start DaemonId(0) PId(10) : C:\\a.exe --in 1 ")
        .Add(2, "Start DaemonId(3) PId(11) : C:\\b c.exe ")
        .Add(2, "Start DaemonId(14) PId(12) : C:\\d\te\x1b[1m.exe ")
        .Add(2, "Stop (2) DaemonId(3) PId(11) : C:\\b c.exe ");
    EXPECT_EQ(Ids(log), "0 C:\\a.exe --in 1\n14 C:\\d\te\\x1B[1m.exe\n");
    EXPECT_EQ(Ids(log, "1"), "14 C:\\d\te\\x1B[1m.exe\n");
    EXPECT_EQ(Ids(log, "3"), "");
    EXPECT_EQ(Ids(FakeLog().Begin()), "");
}

TEST(DaemonIds, Are_at_most_1000)
{
    FakeLog log;
    log.Begin();
    for (int id = 0; id < 1001; ++id) {
        log.Add(2, "Start DaemonId(" + std::to_string(id) + ") PId(5000) : C:\\a.exe ");
    }
    const std::string ids = Ids(log);
    EXPECT_EQ(std::count(ids.begin(), ids.end(), '\n'), 1000);
    EXPECT_EQ(Ids(log, "1000"), "1000 C:\\a.exe\n");
}

} // namespace
} // namespace vqrx::test
