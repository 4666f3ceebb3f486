#include "RecordFilter.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using client::v0::AttributedRecord;
using client::v0::Attribution;
using client::v0::EventOf;
using client::v0::Record;
using client::v0::RecordFilter;

AttributedRecord Of(const char* text)
{
    return {Record{1, 5000, 1, "", text}, EventOf(text), Attribution::kStated};
}

TEST(RecordFilter, without_conditions_accepts_every_record)
{
    EXPECT_TRUE(RecordFilter{}.Accepts(Of("")));
}

TEST(RecordFilter, compares_level_and_time)
{
    RecordFilter filter;
    filter.level = 1;
    filter.sinceMs = 5000;
    EXPECT_TRUE(filter.Accepts(Of("x")));
    filter.level = 0;
    EXPECT_FALSE(filter.Accepts(Of("x")));
    filter.level = 1;
    filter.sinceMs = 5001;
    EXPECT_FALSE(filter.Accepts(Of("x")));
}

TEST(RecordFilter, ignores_the_case_of_letters_in_the_text)
{
    RecordFilter filter;
    filter.contains = "VIDEO.exe";
    EXPECT_TRUE(filter.Accepts(Of("Start C:\\Video.EXE ")));
    EXPECT_FALSE(filter.Accepts(Of("Start C:\\Audio.EXE ")));
    filter.contains = "vidéo";
    EXPECT_TRUE(filter.Accepts(Of("Start C:\\VIDÉO.EXE ")));
    EXPECT_FALSE(filter.Accepts(Of("Start C:\\VIDEO.EXE ")));
}

TEST(RecordFilter, accepts_only_records_about_the_daemon)
{
    RecordFilter filter;
    filter.daemonId = 3;
    EXPECT_TRUE(filter.Accepts(Of("Start DaemonId(3) PId(1) : a.exe ")));
    EXPECT_FALSE(filter.Accepts(Of("Start DaemonId(33) PId(3) : a.exe ")));
    EXPECT_FALSE(filter.Accepts(Of("Exit")));
}

TEST(RecordFilter, accepts_only_records_about_a_daemon_with_such_a_command)
{
    RecordFilter filter;
    filter.command = [](const std::string& command) { return command == "a.exe -x "; };
    EXPECT_TRUE(filter.Accepts(Of("Start DaemonId(3) PId(1) : a.exe -x ")));
    EXPECT_TRUE(filter.Accepts(Of("Unable to start a.exe -x ")));
    EXPECT_FALSE(filter.Accepts(Of("Start DaemonId(3) PId(1) : a.exe ")));
    AttributedRecord end = Of("Exception caught in : Access violation");
    EXPECT_FALSE(filter.Accepts(end));
    end.event.command = "a.exe -x ";
    EXPECT_TRUE(filter.Accepts(end));
}

} // namespace
} // namespace vqrx::test
