#include "Attribution.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::AttributedRecord;
using client::v0::Attribution;
using client::v0::Attributor;
using client::v0::Record;

std::vector<AttributedRecord> Attribute(const std::vector<std::string>& texts,
                                        std::size_t missingBefore = 1000, int level = 1)
{
    std::vector<AttributedRecord> found;
    Attributor attributor([&](AttributedRecord record) { found.push_back(std::move(record)); });
    std::int64_t number = 0;
    for (std::size_t index = 0; index < texts.size(); ++index) {
        number += index == missingBefore ? 2 : 1;
        attributor.Add(Record{number, 1000 + number, level, "", texts[index]});
    }
    attributor.Flush();
    return found;
}

TEST(Attribution, of_an_end_comes_from_the_next_start)
{
    const auto records =
        Attribute({"Start DaemonId(0) PId(10) : a.exe ", "Start DaemonId(1) PId(11) : b.exe ",
                   "Exception caught in : Access violation", "Start DaemonId(1) PId(12) : b.exe "});
    ASSERT_EQ(records.size(), 4U);
    EXPECT_EQ(records[0].attribution, Attribution::kStated);
    EXPECT_EQ(records[2].attribution, Attribution::kPaired);
    EXPECT_EQ(records[2].event.daemonId, 1U);
    EXPECT_EQ(records[2].event.processId, 11U);
}

// A client may launch a program with the path "DaemonId(0) PId(10) : a.exe", which cannot be
// started.
TEST(Attribution, of_a_failed_start_is_unknown_if_the_process_that_it_names_runs)
{
    const std::string forged = "Unable to start DaemonId(0) PId(10) : a.exe ";
    auto records = Attribute({"Start DaemonId(0) PId(10) : a.exe ", forged,
                              "Exception caught in : Unknown (0x1)",
                              "Start DaemonId(1) PId(12) : b.exe ", forged});
    ASSERT_EQ(records.size(), 5U);
    for (const std::size_t index : {1U, 4U}) {
        EXPECT_EQ(records[index].attribution, Attribution::kNone);
        EXPECT_FALSE(records[index].event.daemonId);
        EXPECT_FALSE(records[index].event.processId);
        EXPECT_EQ(records[index].event.command, "DaemonId(0) PId(10) : a.exe ");
    }
    EXPECT_EQ(records[2].event.daemonId, 1U);
}

TEST(Attribution, of_a_failed_start_is_unknown_if_the_daemon_that_it_names_was_removed)
{
    const std::string forged = "Unable to start DaemonId(0) PId(10) : a.exe ";
    for (const char* const removal :
         {"Stop (2) DaemonId(0) PId(10) : a.exe ", "Unable to stop DaemonId(0) PId(10) : a.exe ",
          "Detached DaemonId(0) PId(10) : a.exe "}) {
        const auto records = Attribute({"Start DaemonId(0) PId(10) : a.exe ", removal, forged});
        ASSERT_EQ(records.size(), 3U);
        EXPECT_EQ(records[2].attribution, Attribution::kNone) << removal;
        EXPECT_FALSE(records[2].event.daemonId) << removal;
    }
    // In the next run the id belongs to another daemon.
    const auto records = Attribute({"Detached DaemonId(0) PId(10) : a.exe ",
                                    "Deamon Thread started", "Start DaemonId(0) PId(10) : a.exe ",
                                    "Exception caught in : Unknown (0x1)", forged});
    EXPECT_EQ(records.back().event.daemonId, 0U);
}

TEST(Attribution, of_a_failed_start_is_that_of_its_text_if_the_process_may_have_ended)
{
    const std::string start = "Start DaemonId(0) PId(10) : a.exe ";
    const std::string failed = "Unable to start DaemonId(0) PId(10) : a.exe ";
    // After its end, and again a second later.
    auto records = Attribute({start, "Exception caught in : Unknown (0x1)", failed, failed});
    EXPECT_EQ(records[2].event.daemonId, 0U);
    EXPECT_EQ(records[3].event.daemonId, 0U);
    // The end may be among missing records, or could not be logged.
    EXPECT_EQ(Attribute({start, failed}, 1)[1].event.daemonId, 0U);
    EXPECT_EQ(Attribute({start, "Overflowed message queue.", failed})[2].event.daemonId, 0U);
    EXPECT_EQ(Attribute({start, "Unknown exception occured", failed})[2].event.daemonId, 0U);
    EXPECT_EQ(Attribute({start, "Exception caught in : Unknown (0x1)",
                         "Exception caught in : Unknown (0x1)",
                         "Start DaemonId(1) PId(11) : b.exe ", failed})[4]
                  .event.daemonId,
              0U);
}

TEST(Attribution, of_a_failed_start_is_unknown_if_the_run_has_no_such_daemon)
{
    const std::string forged = "Unable to start DaemonId(5) PId(10) : a.exe ";
    EXPECT_FALSE(Attribute({"Deamon Thread started", forged})[1].event.daemonId);
    // Where the log does not show the beginning, the start of the daemon may be missing.
    EXPECT_EQ(Attribute({forged})[0].event.daemonId, 5U);
    EXPECT_EQ(Attribute({"Deamon Thread started", "Exit", forged}, 2)[2].event.daemonId, 5U);
}

TEST(Attribution, of_an_end_comes_from_the_next_failed_start_and_its_process)
{
    const auto records = Attribute(
        {"Exception caught in : Unknown (0x1)", "Unable to start DaemonId(3) PId(30) : a.exe "});
    EXPECT_EQ(records[0].event.daemonId, 3U);
    EXPECT_EQ(records[0].event.processId, 30U);
}

TEST(Attribution, ignores_messages_of_other_threads_in_between)
{
    const auto records = Attribute(
        {"Exception caught in : Unknown (0x1)", "Unable to attach DaemonId(9) PId(90) :  ",
         "Detached DaemonId(4) PId(40) : b.exe ", "Exit", "Start DaemonId(3) PId(31) : a.exe "});
    ASSERT_EQ(records.size(), 5U);
    EXPECT_EQ(records[0].event.daemonId, 3U);
    EXPECT_EQ(records[0].attribution, Attribution::kPaired);
    EXPECT_FALSE(records[0].event.processId);
}

TEST(Attribution, is_likely_if_records_in_between_are_missing)
{
    const std::vector<std::string> texts = {"Exception caught in : Unknown (0x1)",
                                            "Start DaemonId(3) PId(31) : a.exe "};
    EXPECT_EQ(Attribute(texts, 1)[0].attribution, Attribution::kLikely);
    EXPECT_EQ(Attribute({texts[0], "Overflowed message queue.", texts[1]})[0].attribution,
              Attribution::kLikely);
    const std::string outage = "Log file a.log is written again. Messages missing in it: 3";
    EXPECT_EQ(Attribute({texts[0], outage, texts[1]})[0].attribution, Attribution::kLikely);
}

// The lines of the end and of the restart belong to two daemons: those between them are missing.
TEST(Attribution, is_unknown_if_the_next_start_is_the_first_one_of_its_daemon)
{
    const std::vector<std::string> texts = {"Exception caught in : Unknown (0x1)",
                                            "Start DaemonId(3) PId(31) : a.exe "};
    EXPECT_EQ(Attribute(texts, 1000, 1)[0].attribution, Attribution::kPaired);
    EXPECT_EQ(Attribute(texts, 1000, 2)[0].attribution, Attribution::kNone);
    EXPECT_EQ(Attribute({texts[0], "Unable to start DaemonId(3) PId(31) : a.exe "}, 1000, 2)[0]
                  .attribution,
              Attribution::kPaired);
}

TEST(Attribution, is_unknown_if_the_start_is_missing)
{
    for (const char* const next :
         {"Exception caught in : Unknown (0x2)", "Deamon Thread started",
          "Exception occured : std::bad_alloc", "Unknown exception occured",
          "Connecting to WMI resource ...", "Unable to start a.exe ",
          "Start DaemonId(3) PId(31) : Spooler"}) {
        const auto records = Attribute(
            {"Exception caught in : Unknown (0x1)", next, "Start DaemonId(1) PId(11) : b.exe "});
        EXPECT_EQ(records[0].attribution, Attribution::kNone) << next;
        EXPECT_FALSE(records[0].event.daemonId) << next;
    }
}

// Daemon 1 had no process that could end, so the end was that of a daemon whose start is missing.
TEST(Attribution, is_unknown_if_the_last_start_of_the_next_daemon_had_failed)
{
    const std::string failed = "Unable to start DaemonId(1) PId(11) : b.exe ";
    for (const std::string& next : {failed, std::string("Start DaemonId(1) PId(12) : b.exe ")}) {
        const auto records = Attribute({failed, "Exception caught in : Unknown (0x1)", next});
        EXPECT_EQ(records[1].attribution, Attribution::kNone) << next;
        EXPECT_FALSE(records[1].event.daemonId) << next;
    }
    const std::vector<std::string> startedSince = {failed, "Start DaemonId(1) PId(12) : b.exe ",
                                                   "Exception caught in : Unknown (0x1)",
                                                   "Start DaemonId(1) PId(13) : b.exe "};
    EXPECT_EQ(Attribute(startedSince)[2].attribution, Attribution::kPaired);
    // A start may be among missing records.
    const std::vector<std::string> mayHaveStarted = {failed, "Exception caught in : Unknown (0x1)",
                                                     "Start DaemonId(1) PId(12) : b.exe "};
    EXPECT_EQ(Attribute(mayHaveStarted, 1)[1].attribution, Attribution::kPaired);
}

TEST(Attribution, of_a_services_end_needs_the_name_of_the_service)
{
    const auto records = Attribute(
        {"Exception caught in Spooler: Unknown (0x1)", "Start DaemonId(3) PId(31) : Spooler",
         "Exception caught in Spooler: Unknown (0x1)", "Start DaemonId(4) PId(31) : Other"});
    EXPECT_EQ(records[0].event.daemonId, 3U);
    EXPECT_FALSE(records[2].event.daemonId);
}

TEST(Attribution, keeps_the_order_of_the_records)
{
    const auto records = Attribute({"Exit", "Exception caught in : Unknown (0x1)", "Exit",
                                    "Start DaemonId(3) PId(31) : a.exe ", "Exit"});
    ASSERT_EQ(records.size(), 5U);
    for (std::size_t index = 0; index < records.size(); ++index) {
        EXPECT_EQ(records[index].record.number, static_cast<std::int64_t>(index) + 1);
    }
}

} // namespace
} // namespace vqrx::test
