#include "DaemonListing.h"

#include "SomeDaemons.h"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(DaemonListing, Json_has_the_documented_fields)
{
    auto daemons = SomeDaemons();
    daemons.pop_back();
    EXPECT_EQ(ListingJson(daemons, 1'100'000, "1.0.0"), R"json({
  "version": "1.0.0",
  "time": "1970-01-01T00:18:20.000Z",
  "time_ms": 1100000,
  "daemons": [
    {
      "id": 0,
      "state": "running",
      "process_id": 1234,
      "image": "C:\\FW\\App\\a.exe",
      "up_since": "1970-01-01T00:16:40.000Z",
      "up_since_ms": 1000000,
      "restarts": 2,
      "restarts_complete": true,
      "restarts_last_hour": 0,
      "failed_starts": 0,
      "last_exit": {
        "time": "1970-01-01T00:16:39.000Z",
        "time_ms": 999000,
        "reason": "exit code 3",
        "sure": true
      },
      "cpu_ms": 500,
      "cpu_percent": 0.5,
      "memory_bytes": 1572864,
      "attached": false,
      "service": false,
      "in_log": true,
      "command": "C:\\FW\\App\\a.exe \u00fc"
    },
    {
      "id": null,
      "state": "cannot_start",
      "process_id": null,
      "image": null,
      "up_since": null,
      "up_since_ms": null,
      "restarts": 0,
      "restarts_complete": true,
      "restarts_last_hour": 0,
      "failed_starts": 7,
      "last_exit": {
        "time": "1970-01-01T00:16:38.000Z",
        "time_ms": 998000,
        "reason": null,
        "sure": false
      },
      "cpu_ms": null,
      "cpu_percent": null,
      "memory_bytes": null,
      "attached": false,
      "service": false,
      "in_log": true,
      "command": "no.exe"
    }
  ]
}
)json");
}

TEST(DaemonListing, Running_processes_are_read_back_from_json)
{
    ListedProcess first{0,    1234, 1'000'000, R"(C:\FW\App\a.exe)", "C:\\FW\\App\\a.exe \xC3\xBC",
                        false};
    ListedProcess second = first;
    second.id = std::nullopt;
    EXPECT_EQ(ParseListing(ListingJson(SomeDaemons(), 0, "1")),
              (std::vector<ListedProcess>{first, second}));
}

TEST(DaemonListing, Process_of_a_daemon_in_a_crash_loop_is_listed_and_read_back)
{
    auto daemons = SomeDaemons();
    daemons.resize(1);
    daemons[0].state = RunState::kRestarting;
    daemons[0].recent.lastHour = 41;
    const std::string json = ListingJson(daemons, 0, "1");
    EXPECT_NE(json.find("\"state\": \"restarting\""), std::string::npos) << json;
    EXPECT_NE(json.find("\"restarts_last_hour\": 41"), std::string::npos) << json;
    EXPECT_EQ(ParseListing(json).size(), 1U);
    daemons[0].processId = std::nullopt;
    EXPECT_TRUE(ParseListing(ListingJson(daemons, 0, "1")).empty());
}

TEST(DaemonListing, Notes_say_what_the_log_does_not_show)
{
    SupervisorRun run;
    run.beginningSeen = true;
    auto daemons = SomeDaemons(); // one that runs, one that never ran, one that is not in the log
    auto notes = ListingNotes(daemons, run);
    ASSERT_EQ(notes.size(), 2U);
    EXPECT_EQ(notes[0],
              "the log no longer shows the start of a process, so its id is not known: the log was "
              "emptied, newer records have overwritten the start, or the log is damaged (daemonctl "
              "log)");
    EXPECT_EQ(notes[1].find("a daemon that never ran has an id that no record shows"), 0U);
    daemons.resize(1);
    EXPECT_TRUE(ListingNotes(daemons, run).empty());
    run.beginningSeen = false;
    notes = ListingNotes(daemons, run);
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_EQ(notes[0].find("the log does not reach back to the start of the supervisor"), 0U);
}

TEST(DaemonListing, Text_that_is_no_listing_is_refused)
{
    for (const char* text : {"", "{", "[]", "{}", R"({"daemons":1})", R"({"daemons":[{}]})",
                             R"({"daemons":[{"state":"running","id":"x"}]})"}) {
        EXPECT_THROW(static_cast<void>(ParseListing(text)), std::runtime_error) << text;
    }
}

// The listing of SomeDaemons() with another number in a field of the first daemon.
std::string ListingWith(const std::string& field, const std::string& number)
{
    std::string json = ListingJson(SomeDaemons(), 0, "1");
    const std::size_t name = json.find("\"" + field + "\": ");
    const std::size_t value = json.find(' ', name) + 1;
    return json.replace(value, json.find(',', value) - value, number);
}

TEST(DaemonListing, Number_that_is_no_id_and_no_time_is_refused)
{
    for (const char* field : {"id", "process_id", "up_since_ms"}) {
        EXPECT_NO_THROW(static_cast<void>(ParseListing(ListingWith(field, "7")))) << field;
        for (const char* number : {"1e134", "0.5", "true", "9223372036854775808"}) {
            EXPECT_THROW(static_cast<void>(ParseListing(ListingWith(field, number))),
                         std::runtime_error)
                << field << " " << number;
        }
    }
    for (const char* field : {"id", "process_id"}) {
        for (const char* number : {"-1", "4294967296"}) {
            EXPECT_THROW(static_cast<void>(ParseListing(ListingWith(field, number))),
                         std::runtime_error)
                << field << " " << number;
        }
    }
}

} // namespace
} // namespace vqrx::test
