#include "Commands.h"

#include "FileContent.h"
#include "LogFile.h"
#include "RecordFolder.h"
#include "RingModel.h"
#include "TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class RecordCommand : public testing::Test {
protected:
    void Save(const RingModel& ring) { std::ofstream(log_, std::ios::binary) << ring.Bytes(); }

    int Run(const std::string& command)
    {
        CLI::App app("test", "daemonctl");
        int exitCode = 0;
        client::v0::AddRecordCommand(app, exitCode, {}, trust_);
        client::v0::AddLogCommand(app, exitCode, {});
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        app.parse(command);
        output_ = testing::internal::GetCapturedStdout();
        errors_ = testing::internal::GetCapturedStderr();
        return exitCode;
    }

    int RecordOnce()
    {
        return Run("record --once --file \"" + log_ + "\" --output \"" + records_ + "\"");
    }

    std::vector<std::string> Recorded() const
    {
        std::vector<std::string> recorded;
        for (const client::v0::Record& record : client::v0::ReadLogFile(records_)) {
            recorded.push_back(record.text);
        }
        return recorded;
    }

    std::string FileOfRecords() const
    {
        return FileContent(client::v0::RecordFilesOf(records_).at(0));
    }

    TempFolder folder_;
    const std::string log_ = folder_.File("DaemonManager.log");
    const std::string records_ = folder_.File("records");
    client::v0::FolderTrust trust_; // empty: as on another system
    std::string output_;
    std::string errors_;
};

TEST_F(RecordCommand, records_every_record_of_a_ring_that_wraps_once_and_no_more)
{
    RingModel ring(4000);
    std::vector<std::string> written;
    for (int look = 0; look < 20; ++look) {
        for (int record = 0; record < 15; ++record) { // fewer than the ring holds
            written.push_back("record " + std::to_string(written.size()));
            ring.Write(written.back());
        }
        Save(ring);
        EXPECT_EQ(RecordOnce(), 0);
        EXPECT_EQ(errors_, "");
        EXPECT_EQ(RecordOnce(), 0); // nothing is new
    }
    EXPECT_EQ(Recorded(), written);
}

TEST_F(RecordCommand, takes_limits_from_1_on)
{
    RingModel ring(2000);
    ring.Write("recorded");
    Save(ring);
    const std::string command =
        "record --once --file \"" + log_ + "\" --output \"" + records_ + '"';
    EXPECT_EQ(Run(command + " --max-file 1 --max-age 1 --max-total 1"), 0);
    for (const char* option : {" --max-file 0", " --max-age 0", " --max-total 0"}) {
        EXPECT_THROW(Run(command + option), CLI::ValidationError) << option;
        testing::internal::GetCapturedStdout();
        testing::internal::GetCapturedStderr();
    }
}

TEST_F(RecordCommand, names_each_damaged_log_that_was_set_aside_once)
{
    RingModel ring(2000);
    ring.Write("begins again");
    Save(ring);
    std::ofstream(log_ + ".damaged") << "x";
    std::ofstream(log_ + ".damaged2") << "x";
    EXPECT_EQ(RecordOnce(), 0);
    const std::string told = "\n  A damaged log was set aside; to read it: daemonctl log --file \"";
    EXPECT_EQ(errors_, "daemonctl: the supervisor could not read its log and began a new one" +
                           told + log_ + ".damaged\"" + told + log_ + ".damaged2\"\n");
    EXPECT_EQ(Recorded(), std::vector<std::string>({"begins again"}));
}

TEST_F(RecordCommand, repeats_nothing_after_the_records_of_a_refused_supervisor_are_overwritten)
{
    RingModel ring(2000);
    for (int record = 0; record < 50; ++record) {
        ring.Write("record " + std::to_string(record));
    }
    ASSERT_LT(ring.WritePosition(), 1500U);
    Save(ring);
    EXPECT_EQ(RecordOnce(), 0);
    std::vector<std::string> expected = Recorded();
    RingModel refused = ring;
    refused.SetNumber(0);
    for (const char* text : {"second begins", "second is refused", "second ends"}) {
        refused.Write(text);
        expected.emplace_back(text);
    }
    Save(refused);
    EXPECT_EQ(RecordOnce(), 0);
    EXPECT_EQ(Recorded(), expected);
    // The first supervisor does not know these records and overwrites them.
    ring.SetTime(1763265256000);
    for (int record = 0; record < 5; ++record) {
        expected.push_back("first continues " + std::to_string(record));
        ring.Write(expected.back());
    }
    ASSERT_GT(ring.WritePosition(), refused.WritePosition());
    Save(ring);
    EXPECT_EQ(RecordOnce(), 0);
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(Recorded(), expected);
}

TEST_F(RecordCommand, says_on_standard_error_and_in_the_files_that_the_log_is_damaged)
{
    std::ofstream(log_, std::ios::binary)
        << "0x00000067\r\n"
        << "0;Sun Nov 16 04:52:36.123;1763265156123;2;Start DaemonId(3) PId(7) : a.exe \r\n"
        << "what is this\r\n";
    EXPECT_EQ(RecordOnce(), 5);
    EXPECT_THAT(errors_, HasSubstr(": 1 line could not be read\n"));
    const std::string first =
        "0;Sun Nov 16 04:52:36.123;1763265156123;2;Start DaemonId(3) PId(7) : a.exe \n"
        "# the log is damaged: 1 line could not be read\n";
    EXPECT_EQ(FileOfRecords(), first);
    EXPECT_EQ(RecordOnce(), 5); // and says nothing twice in the file
    EXPECT_EQ(FileOfRecords(), first);
    const std::string next = "1;Sun Nov 16 04:52:37.123;1763265157123;2;next";
    std::ofstream(log_, std::ios::binary)
        << "0x00000089\r\n"
        << "0;Sun Nov 16 04:52:36.123;1763265156123;2;Start DaemonId(3) PId(7) : a.exe \r\n"
        << next << "\r\n";
    EXPECT_EQ(RecordOnce(), 0);
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(FileOfRecords(), first + next + "\n");
}

TEST_F(RecordCommand, says_how_much_was_overwritten_before_the_recording_began)
{
    RingModel ring(0, 7);
    ring.Write("oldest that is left");
    ring.Write("next");
    Save(ring);
    EXPECT_EQ(RecordOnce(), 0);
    const std::string text = "the log begins with record 7; the 7 earlier ones were overwritten "
                             "before the recording began";
    EXPECT_EQ(errors_, "daemonctl: " + text + "\n");
    EXPECT_EQ(FileOfRecords(),
              LineOf(ring.Intact()[0]) + "\n# " + text + "\n" + LineOf(ring.Intact()[1]) + "\n");
    ring.Write("one more");
    Save(ring);
    EXPECT_EQ(RecordOnce(), 0);
    EXPECT_EQ(errors_, "");
}

TEST_F(RecordCommand, says_that_one_record_was_overwritten_before_the_recording_began)
{
    RingModel ring(0, 1);
    ring.Write("oldest that is left");
    Save(ring);
    EXPECT_EQ(RecordOnce(), 0);
    EXPECT_EQ(errors_, "daemonctl: the log begins with record 1; the earlier one was overwritten "
                       "before the recording began\n");
}

// A recorder that waits for its log looks each second, and the files may have 16 MiB and more.
TEST_F(RecordCommand, reads_no_recorded_file_while_the_log_is_missing)
{
    RingModel ring;
    ring.Write("a record");
    Save(ring);
    EXPECT_EQ(RecordOnce(), 0);
    std::filesystem::create_directory(records_ + "/000000-2025-11-16T03-52-36.log"); // unreadable
    EXPECT_EQ(RecordOnce(), 5);
    EXPECT_THAT(errors_, HasSubstr("000000-2025-11-16T03-52-36.log cannot be read"));
    std::filesystem::remove(log_);
    EXPECT_EQ(RecordOnce(), 5);
    EXPECT_THAT(errors_, StartsWith("daemonctl: " + log_ + " cannot be read: "));
}

TEST_F(RecordCommand, says_how_many_records_were_overwritten_before_it_came)
{
    RingModel ring(4000);
    ring.Write("first");
    Save(ring);
    EXPECT_EQ(RecordOnce(), 0);
    for (int record = 0; record < 500; ++record) {
        ring.Write("record " + std::to_string(record));
    }
    Save(ring);
    EXPECT_EQ(RecordOnce(), 0);
    const auto records = client::v0::ReadLogFile(records_);
    const auto lost = *records[1].number - *records[0].number - 1;
    ASSERT_GT(lost, 0);
    EXPECT_EQ(errors_, "daemonctl: " + std::to_string(lost) +
                           " records were overwritten before they could be recorded\n");
}

TEST_F(RecordCommand, log_reads_the_folder_in_place_of_the_log)
{
    RingModel ring;
    ring.Write("Start DaemonId(3) PId(7) : a.exe ");
    Save(ring);
    EXPECT_EQ(RecordOnce(), 0);
    EXPECT_EQ(Run("log --file \"" + records_ + "\""), 0);
    EXPECT_THAT(output_, HasSubstr("Start DaemonId(3) PId(7) : a.exe"));
    EXPECT_EQ(errors_, "");
}

TEST_F(RecordCommand, log_does_not_follow_a_folder_and_names_the_command_that_follows)
{
    RingModel ring;
    ring.Write("a record");
    Save(ring);
    EXPECT_EQ(RecordOnce(), 0);
    EXPECT_EQ(Run("log --follow --file \"" + records_ + "\""), 2);
    EXPECT_EQ(errors_, "daemonctl: " + records_ +
                           " is a folder, which cannot be followed\n"
                           "  To follow the log: daemonctl log --follow\n");
}

TEST_F(RecordCommand, touches_no_folder_that_is_not_trusted_unless_it_is_told_to)
{
    std::vector<std::string> asked;
    trust_ = [&asked](const std::string& folder) {
        asked.push_back(folder);
        return false;
    };
    Save(RingModel());
    EXPECT_EQ(RecordOnce(), 4);
    EXPECT_EQ(asked, std::vector<std::string>{records_});
    EXPECT_FALSE(std::filesystem::exists(records_));
    EXPECT_EQ(Run("record --trust --once --file \"" + log_ + "\" --output \"" + records_ + "\""),
              0);
    EXPECT_EQ(asked.size(), 1U);
    EXPECT_TRUE(std::filesystem::exists(records_));
}

TEST_F(RecordCommand, reports_a_log_that_cannot_be_read_and_a_folder_that_cannot_be_made)
{
    EXPECT_EQ(RecordOnce(), 5);
    EXPECT_THAT(errors_, StartsWith("daemonctl: "));
    Save(RingModel());
    const std::string inTheWay = folder_.File("file");
    std::ofstream(inTheWay) << "in the way";
    EXPECT_EQ(Run("record --once --file \"" + log_ + "\" --output \"" + inTheWay + "\""), 4);
    EXPECT_THAT(errors_, HasSubstr(inTheWay));
}

} // namespace
} // namespace vqrx::test
