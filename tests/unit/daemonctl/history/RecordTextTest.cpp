#include "RecordText.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

using client::v0::AttributedRecord;
using client::v0::Attribution;
using client::v0::EventOf;
using client::v0::Record;
using client::v0::ToJson;
using client::v0::ToText;

AttributedRecord RecordOf(const std::string& text, int level = 1)
{
    return {Record{17, 1763265156123, level, "Sun Nov 16 03:52:36.123", text}, EventOf(text),
            Attribution::kStated};
}

TEST(RecordText, is_date_and_text_as_on_the_supervisors_console)
{
    EXPECT_EQ(ToText(RecordOf("Start DaemonId(3) PId(1234) : a.exe ")),
              "Sun Nov 16 03:52:36.123 Start DaemonId(3) PId(1234) : a.exe ");
}

TEST(RecordText, of_an_end_names_the_daemon)
{
    AttributedRecord end = RecordOf("Exception caught in : Access violation", 0);
    EXPECT_EQ(ToText(end), "Sun Nov 16 03:52:36.123 Exception caught in : Access violation");
    end.event.daemonId = 3;
    end.attribution = Attribution::kPaired;
    EXPECT_EQ(ToText(end),
              "Sun Nov 16 03:52:36.123 Exception caught in : Access violation  [daemon 3]");
    end.event.processId = 1234;
    EXPECT_EQ(ToText(end), "Sun Nov 16 03:52:36.123 Exception caught in : Access violation  "
                           "[daemon 3, process 1234]");
    end.attribution = Attribution::kLikely;
    EXPECT_EQ(ToText(end), "Sun Nov 16 03:52:36.123 Exception caught in : Access violation  "
                           "[probably daemon 3, process 1234]");
}

TEST(RecordText, of_an_end_with_an_exit_code_shows_the_code_as_ps_does)
{
    AttributedRecord end = RecordOf("Exception caught in : Unknown (0x3)", 0);
    EXPECT_EQ(ToText(end), "Sun Nov 16 03:52:36.123 Exception caught in : Unknown (0x3)  "
                           "[exit code 3]");
    end.event.daemonId = 3;
    end.event.processId = 1234;
    end.attribution = Attribution::kPaired;
    EXPECT_EQ(ToText(end), "Sun Nov 16 03:52:36.123 Exception caught in : Unknown (0x3)  "
                           "[daemon 3, process 1234, exit code 3]");
}

TEST(RecordJson, has_number_times_level_and_text)
{
    EXPECT_EQ(ToJson(RecordOf("say \"a\\b\"\x01 \xC3\xBC", 3)),
              R"({"number":17,"time":"2025-11-16T03:52:36.123Z","time_ms":1763265156123,)"
              R"("level":3,"text":"say \"a\\b\"\u0001 \u00fc"})");
}

TEST(RecordJson, of_a_known_message_has_event_daemon_and_process)
{
    EXPECT_EQ(ToJson(RecordOf("Start DaemonId(3) PId(1234) : a.exe ")),
              R"({"number":17,"time":"2025-11-16T03:52:36.123Z","time_ms":1763265156123,)"
              R"("level":1,"text":"Start DaemonId(3) PId(1234) : a.exe ","event":"started",)"
              R"("daemon_id":3,"process_id":1234})");
}

TEST(RecordJson, of_an_end_has_the_reason_and_whether_the_daemon_is_sure)
{
    AttributedRecord end = RecordOf("Exception caught in : Unknown (0x1)", 0);
    end.event.daemonId = 3;
    end.attribution = Attribution::kLikely;
    EXPECT_EQ(ToJson(end),
              R"j({"number":17,"time":"2025-11-16T03:52:36.123Z","time_ms":1763265156123,)j"
              R"j("level":0,"text":"Exception caught in : Unknown (0x1)","event":"ended",)j"
              R"j("daemon_id":3,"reason":"exit code 1","sure":false})j");
}

TEST(RecordJson, has_null_for_a_missing_number_and_an_impossible_time)
{
    AttributedRecord record = RecordOf("x");
    record.record.number.reset();
    record.record.timeMs = 9223372036854775807;
    EXPECT_EQ(ToJson(record), R"({"number":null,"time":null,"time_ms":9223372036854775807,)"
                              R"("level":1,"text":"x"})");
}

} // namespace
} // namespace vqrx::test
