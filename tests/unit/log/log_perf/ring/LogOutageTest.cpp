#include "log_perf/ring/LogOutage.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace vqrx::test {
namespace {

using log::log_perf::v2::LogOutage;

std::string TextOf(LogOutage& outage)
{
    return outage.TakeReport("a.log").value_or("");
}

void Lose(LogOutage& outage, int error)
{
    outage.Begin();
    outage.Failed(error);
}

void Write(LogOutage& outage)
{
    outage.Begin();
    outage.Written();
}

TEST(LogOutage, An_outage_is_reported_once_at_its_beginning_and_once_at_its_end)
{
    LogOutage outage;
    for (int time = 1; time <= 2; ++time) {
        Write(outage);
        EXPECT_EQ(TextOf(outage), "");
        Lose(outage, EACCES);
        EXPECT_EQ(TextOf(outage), "Log file a.log cannot be written: Permission denied. Messages "
                                  "are lost until it can be written again");
        Lose(outage, ENOSPC);
        EXPECT_EQ(TextOf(outage), "");
        Write(outage);
        EXPECT_EQ(TextOf(outage), "Log file a.log is written again. Messages missing in it: 2");
        EXPECT_EQ(TextOf(outage), "");
    }
}

// The outage goes on after the note: a second note counts only what was lost since the first one.
TEST(LogOutage, A_note_counts_the_records_since_the_last_note_and_the_report_counts_all)
{
    LogOutage outage;
    Lose(outage, 0);
    Lose(outage, 0);
    outage.Begin();
    EXPECT_EQ(outage.LostBefore(), 2U);
    EXPECT_EQ(outage.NoteFor("a.log"),
              "Log file a.log is written again. Messages missing in it: 2");
    outage.Noted();
    EXPECT_EQ(outage.LostBefore(), 0U);
    outage.Failed(0);
    EXPECT_NE(TextOf(outage), "");
    outage.Begin();
    EXPECT_EQ(outage.LostBefore(), 1U);
    outage.Noted();
    outage.Written();
    EXPECT_EQ(TextOf(outage), "Log file a.log is written again. Messages missing in it: 3");
}

TEST(LogOutage, An_unknown_reason_is_called_so)
{
    LogOutage outage;
    Lose(outage, 0);
    EXPECT_EQ(TextOf(outage), "Log file a.log cannot be written: unknown error. Messages are lost "
                              "until it can be written again");
}

TEST(LogOutage, A_record_that_was_given_up_without_an_error_is_missing_too)
{
    LogOutage outage;
    outage.Begin(); // no memory
    Write(outage);
    EXPECT_EQ(TextOf(outage), "Log file a.log is written again. Messages missing in it: 1");
}

TEST(LogOutage, A_beginning_that_is_known_is_not_reported_and_the_kept_file_is_named)
{
    LogOutage outage;
    outage.BeginningIsKnown();
    Lose(outage, 0);
    EXPECT_EQ(TextOf(outage), "");
    outage.KeptAs("a.log.damaged2");
    Write(outage);
    EXPECT_EQ(TextOf(outage), "Log file a.log is written again. Messages missing in it: 1. The "
                              "damaged file is kept as a.log.damaged2");
    Lose(outage, EACCES);
    EXPECT_NE(TextOf(outage), "");
    Write(outage);
    EXPECT_EQ(TextOf(outage), "Log file a.log is written again. Messages missing in it: 1");
}

} // namespace
} // namespace vqrx::test
