// A file with a damaged line is set aside, and a new one is begun.
#include "log_perf/ring/LogFileSink.h"

#include "RingFileFixture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using log::log_perf::v2::LogFileSink;

using Texts = std::vector<std::string>;

// Puts a folder in the way of a file. It is not empty, so that nothing replaces it.
void Obstruct(const std::string& name)
{
    std::filesystem::create_directory(name);
    std::ofstream(name + "/inside") << "x";
}

} // namespace

TEST_F(RingFile, A_damaged_file_throws_once_and_is_kept_beside_a_new_one)
{
    const std::string damaged = "0x00000032\r\n0;d;1;2;readable\r\n1;date;x;2;damaged\r\n";
    Put(damaged);
    LogFileSink sink;
    sink.SetFileName(name_);
    EXPECT_THROW(Write(sink, 2, "a"), std::invalid_argument);
    Write(sink, 2, "b");
    EXPECT_EQ((Texts{"0:a", "1:b"}), History(sink));
    EXPECT_EQ(Line(0, 2, "a") + Line(1, 2, "b"), Bytes().substr(12));
    EXPECT_EQ(damaged, FileContent(name_ + ".damaged"));
}

TEST_F(RingFile, Only_the_newest_damaged_file_is_kept)
{
    LogFileSink sink;
    for (const std::string level : {"x", "99999999999"}) {
        const std::string header = level == "x" ? "0x00000017\r\n" : "0x00000021\r\n";
        const std::string damaged = header + "0;d;1;" + level + ";a\r\n";
        sink.SetFileName("");
        Write(sink, 2, "closes the file");
        Put(damaged);
        sink.SetFileName(name_);
        if (level == "x") {
            EXPECT_THROW(Write(sink, 2, "a"), std::invalid_argument);
        } else {
            EXPECT_THROW(Write(sink, 2, "a"), std::out_of_range);
        }
        EXPECT_EQ(damaged, FileContent(name_ + ".damaged"));
    }
}

TEST_F(RingFile, A_damaged_file_is_kept_under_a_second_name_if_the_first_one_is_taken)
{
    Obstruct(name_ + ".damaged");
    const std::string damaged = "0x0000001F\r\n0;date;x;2;damaged\r\n";
    Put(damaged);
    LogFileSink sink;
    sink.SetFileName(name_);
    EXPECT_THROW(Write(sink, 2, "a"), std::invalid_argument);
    EXPECT_EQ(Line(0, 2, "a"), Bytes().substr(12));
    EXPECT_EQ(damaged, FileContent(name_ + ".damaged2"));
    EXPECT_FALSE(sink.TakeReport()); // the exception reports it
}

TEST_F(RingFile, A_damaged_file_that_cannot_be_set_aside_throws_once_and_is_tried_again_in_a_second)
{
    Obstruct(name_ + ".damaged");
    Obstruct(name_ + ".damaged2");
    const std::string damaged = "0x0000001F\r\n0;date;x;2;damaged\r\n";
    Put(damaged);
    LogFileSink sink;
    sink.SetFileName(name_);
    EXPECT_THROW(Write(sink, 2, "a"), std::invalid_argument);
    Write(sink, 2, "b");
    EXPECT_EQ((Texts{"0:a", "1:b"}), History(sink));
    EXPECT_EQ(damaged, Bytes());
    EXPECT_FALSE(sink.TakeReport()); // the exception reports it
    std::filesystem::remove_all(name_ + ".damaged2");
    Write(sink, 2, "in the same second");
    EXPECT_EQ(damaged, Bytes());
    Write(sink, 2, "c", kSeconds + 1);
    EXPECT_NE(std::string::npos, Bytes().find(";c\r\n")) << Bytes();
    EXPECT_EQ((Texts{"0:c"}), History(sink));
    EXPECT_EQ(damaged, FileContent(name_ + ".damaged2"));
    const auto report = sink.TakeReport();
    ASSERT_TRUE(report);
    EXPECT_EQ("Log file " + name_ +
                  " is written again. Messages missing in it: 3. The damaged file "
                  "is kept as " +
                  name_ + ".damaged2",
              *report);
}

// A clock that was set back does not delay the next attempt.
TEST_F(RingFile, A_damaged_file_that_somebody_removes_is_begun_anew)
{
    Obstruct(name_ + ".damaged");
    Obstruct(name_ + ".damaged2");
    Put("0x0000001F\r\n0;date;x;2;damaged\r\n");
    LogFileSink sink;
    sink.SetFileName(name_);
    EXPECT_THROW(Write(sink, 2, "a"), std::invalid_argument);
    std::filesystem::remove(name_);
    Write(sink, 2, "b", kSeconds - 3600);
    EXPECT_NE(std::string::npos, Bytes().find("0;")) << Bytes();
    const auto report = sink.TakeReport();
    ASSERT_TRUE(report);
    EXPECT_EQ("Log file " + name_ + " is written again. Messages missing in it: 1", *report);
}

} // namespace vqrx::test
