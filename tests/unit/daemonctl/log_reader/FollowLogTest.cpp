#include "FollowLog.h"

#include "RingModel.h"
#include "TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::FollowEvents;
using client::v0::FollowLog;
using client::v0::NewRecords;
using client::v0::Record;
using client::v0::TextEncoding;
using testing::ElementsAre;

/// Follows a log file that changes by one step after each read, and keeps what was reported.
class Followed {
public:
    Followed() { Save(); }

    TempFolder folder;
    RingModel ring;
    const std::string path = folder.File("a.log");
    std::vector<std::string> shown;
    bool endless = false; ///< continue after the last step

    void Save() { std::ofstream(path, std::ios::binary) << ring.Bytes(); }

    void Follow(const std::vector<std::function<void()>>& steps)
    {
        std::size_t reads = 0;
        FollowEvents events;
        events.record = [&](const Record& record) { shown.push_back(record.text); };
        events.gap = [&](const NewRecords& found) {
            shown.push_back(found.isNewLog ? "new log"
                                           : "lost " + std::to_string(found.lostCount.value_or(0)));
        };
        events.goOn = [&] {
            if (reads == steps.size()) {
                return endless;
            }
            steps[reads++]();
            return true;
        };
        static_cast<void>(FollowLog(path, TextEncoding::kAuto,
                                    {std::chrono::milliseconds(1), std::chrono::milliseconds(50)},
                                    events));
    }
};

TEST(FollowLog, reports_the_records_of_the_file_and_then_added_records)
{
    Followed log;
    log.ring.Write("first");
    log.Save();
    log.Follow({[&] {
                    log.ring.Write("second");
                    log.Save();
                },
                [] {},
                [&] {
                    log.ring.Write("third");
                    log.ring.Write("fourth");
                    log.Save();
                }});
    EXPECT_THAT(log.shown, ElementsAre("first", "second", "third", "fourth"));
}

TEST(FollowLog, continues_when_the_ring_wraps)
{
    Followed log;
    log.ring = RingModel(400);
    std::vector<std::function<void()>> steps;
    std::vector<std::string> expected;
    for (int index = 0; index < 40; ++index) {
        expected.push_back("record " + std::to_string(index));
        steps.emplace_back([&log, text = expected.back()] {
            log.ring.Write(text);
            log.Save();
        });
    }
    log.Save();
    log.Follow(steps);
    EXPECT_EQ(log.shown, expected);
}

TEST(FollowLog, reports_how_many_records_were_overwritten_between_two_reads)
{
    Followed log;
    log.ring = RingModel(400);
    log.ring.Write("shown");
    log.Save();
    log.Follow({[&] {
        for (int index = 0; index < 30; ++index) {
            log.ring.Write("record " + std::to_string(index));
        }
        log.Save();
    }});
    const std::size_t left = log.ring.Intact().size();
    ASSERT_EQ(log.shown.size(), 2 + left);
    EXPECT_EQ(log.shown[0], "shown");
    EXPECT_EQ(log.shown[1], "lost " + std::to_string(30 - left));
    EXPECT_EQ(log.shown.back(), "record 29");
}

TEST(FollowLog, continues_when_a_restarted_supervisor_uses_numbers_again)
{
    Followed log;
    log.ring.Write("first");
    log.ring.Write("second");
    log.Save();
    log.Follow({[&] {
                    log.ring.SetNumber(1);
                    log.ring.Write("third");
                    log.Save();
                },
                [&] {
                    log.ring.SetNumber(1);
                    log.ring.Write("fourth");
                    log.Save();
                }});
    EXPECT_THAT(log.shown, ElementsAre("first", "second", "third", "fourth"));
}

TEST(FollowLog, reports_no_record_twice_after_a_second_supervisor_was_refused)
{
    Followed log;
    log.ring = RingModel(2000);
    for (int index = 0; index < 50; ++index) {
        log.ring.Write("record " + std::to_string(index));
    }
    ASSERT_LT(log.ring.WritePosition(), 1500U);
    std::string both;
    log.Save();
    log.Follow({[&] { log.shown.clear(); },
                [&] {
                    RingModel refused = log.ring;
                    refused.SetNumber(0);
                    refused.Write("second begins");
                    refused.Write("second is refused");
                    refused.Write("second ends");
                    std::ofstream(log.path, std::ios::binary) << refused.Bytes();
                    // The first supervisor does not know these records and overwrites them.
                    both = refused.Bytes();
                    const std::size_t begin = log.ring.WritePosition();
                    log.ring.SetTime(1763265256000);
                    log.ring.Write("first continues");
                    const std::size_t end = log.ring.WritePosition();
                    both.replace(0, 12, log.ring.Bytes(), 0, 12);
                    both.replace(begin, end - begin, log.ring.Bytes(), begin, end - begin);
                },
                [&] { std::ofstream(log.path, std::ios::binary) << both; }});
    EXPECT_THAT(log.shown, ElementsAre("second begins", "second is refused", "second ends",
                                       "first continues"));
}

TEST(FollowLog, continues_with_a_new_log_file)
{
    Followed log;
    log.ring.Write("first");
    log.ring.Write("second");
    log.Save();
    log.Follow({[&] {
        log.ring = RingModel();
        log.ring.SetTime(1763300000000);
        log.ring.Write("other");
        log.Save();
    }});
    EXPECT_THAT(log.shown, ElementsAre("first", "second", "new log", "other"));
}

TEST(FollowLog, waits_for_a_file_that_is_missing_for_a_moment)
{
    Followed log;
    log.ring.Write("first");
    log.Save();
    log.Follow({[&] {
        std::filesystem::remove(log.path);
        log.ring.Write("second");
        log.Save();
    }});
    EXPECT_THAT(log.shown, ElementsAre("first", "second"));
}

TEST(FollowLog, fails_when_the_file_stays_missing)
{
    Followed log;
    log.ring.Write("first");
    log.Save();
    log.endless = true;
    EXPECT_THROW(log.Follow({[&] { std::filesystem::remove(log.path); }}), std::runtime_error);
    EXPECT_THAT(log.shown, ElementsAre("first"));
}

TEST(FollowLog, fails_at_once_without_a_file)
{
    Followed log;
    std::filesystem::remove(log.path);
    EXPECT_THROW(log.Follow({}), std::runtime_error);
}

} // namespace
} // namespace vqrx::test
