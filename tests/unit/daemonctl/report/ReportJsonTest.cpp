#include "ReportJson.h"

#include "TimelineBuilder.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

using client::v0::BuildTimeline;
using client::v0::MakeReportModel;
using client::v0::Record;
using client::v0::ReportJson;
using client::v0::ReportMoment;
using client::v0::SupervisorState;

TEST(ReportJson, has_the_documented_fields)
{
    const auto timeline =
        BuildTimeline({Record{0, 1000, 2, "", "Start DaemonId(3) PId(10) : \xC3\xBC.exe "},
                       Record{1, 11000, 0, "", "Exception caught in : Unknown (0x3)"},
                       Record{2, 11000, 1, "", "Start DaemonId(3) PId(11) : \xC3\xBC.exe "}});
    EXPECT_EQ(
        ReportJson(MakeReportModel(timeline, {SupervisorState::kRunning, 21000}), "a.log", "1.0.0"),
        R"json({
  "version": "1.0.0",
  "written": {
    "time": "1970-01-01T00:00:21.000Z",
    "time_ms": 21000
  },
  "source": "a.log",
  "supervisor": "running",
  "log_failure": null,
  "log_damage": null,
  "from": {
    "time": "1970-01-01T00:00:01.000Z",
    "time_ms": 1000
  },
  "to": {
    "time": "1970-01-01T00:00:21.000Z",
    "time_ms": 21000
  },
  "records": 3,
  "runs": 1,
  "daemons": [
    {
      "ids": [
        3
      ],
      "command": "\u00fc.exe",
      "state": "running",
      "watched": true,
      "up_since_ms": 11000,
      "restarts": 1,
      "restarts_last_hour": 1,
      "restarts_last_10_minutes": 1,
      "failed_starts": 0,
      "availability": 1.0,
      "longest_ms": 10000,
      "median_ms": 10000,
      "last_exit": {
        "time": "1970-01-01T00:00:11.000Z",
        "time_ms": 11000,
        "reason": "exit code 3",
        "sure": true
      },
      "ends": {
        "exit code 3": 1
      }
    }
  ],
  "ends": {
    "exit code 3": 1
  },
  "ends_of_unknown_daemons": 0,
  "gaps": []
}
)json");
}

TEST(ReportJson, of_an_empty_log_has_null_for_its_times)
{
    const std::string json = ReportJson(MakeReportModel({}), "a.log", "1.0.0");
    EXPECT_NE(json.find("\"from\": null"), std::string::npos) << json;
    EXPECT_NE(json.find("\"supervisor\": \"unknown\""), std::string::npos) << json;
    EXPECT_NE(json.find("\"daemons\": []"), std::string::npos) << json;
}

TEST(ReportJson, names_a_supervisor_that_does_not_answer_and_a_log_that_cannot_be_read)
{
    const std::string json = ReportJson(
        MakeReportModel({}, {SupervisorState::kNotAnswering, 1, "no \"log\""}), "", "1.0.0");
    EXPECT_NE(json.find("\"supervisor\": \"not_answering\""), std::string::npos) << json;
    EXPECT_NE(json.find("\"log_failure\": \"no \\\"log\\\"\""), std::string::npos) << json;
}

TEST(ReportJson, names_the_damage_of_the_log)
{
    ReportMoment moment;
    moment.logDamage = "1 line could not be read";
    const std::string json = ReportJson(MakeReportModel({}, moment), "", "1.0.0");
    EXPECT_NE(json.find("\"log_damage\": \"1 line could not be read\""), std::string::npos) << json;
}

} // namespace
} // namespace vqrx::test
