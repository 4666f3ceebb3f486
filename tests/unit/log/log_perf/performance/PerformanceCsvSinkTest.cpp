#include "log_perf/performance/PerformanceCsvSink.h"

#include "FileContent.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace vqrx::test {
namespace {

using log::log_perf::v2::PerformanceCsvSink;
using log::log_perf::v2::Timestamp;

class PerformanceCsvSinkTest : public testing::Test {
protected:
    PerformanceCsvSinkTest()
        : folder(std::filesystem::temp_directory_path() /
                 (std::string("csv_sink_") +
                  testing::UnitTest::GetInstance()->current_test_info()->name()))
    {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directory(folder);
        name = (folder / "perf.csv").string();
    }
    ~PerformanceCsvSinkTest() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    static void Write(PerformanceCsvSink& sink, const char* row)
    {
        const Timestamp timestamp{};
        sink.Write(2, &timestamp, row);
    }

    std::filesystem::path folder;
    std::string name;
};

TEST_F(PerformanceCsvSinkTest, Each_row_is_a_line_and_is_on_disk_at_once)
{
    PerformanceCsvSink sink(name, 1000);
    Write(sink, "Cpu,A,");
    EXPECT_EQ("Cpu,A,\r\n", FileContent(name));
    Write(sink, "1,2,");
    EXPECT_EQ("Cpu,A,\r\n1,2,\r\n", FileContent(name));
}

TEST_F(PerformanceCsvSinkTest, No_file_is_made_before_the_first_row)
{
    const PerformanceCsvSink sink(name, 1000);
    EXPECT_FALSE(std::filesystem::exists(name));
}

TEST_F(PerformanceCsvSinkTest, A_file_that_exists_is_continued)
{
    {
        PerformanceCsvSink sink(name, 1000);
        Write(sink, "Cpu,A,");
    }
    PerformanceCsvSink sink(name, 1000);
    Write(sink, "Cpu,B,");
    Write(sink, "1,2,");
    EXPECT_EQ("Cpu,A,\r\nCpu,B,\r\n1,2,\r\n", FileContent(name));
}

TEST_F(PerformanceCsvSinkTest, A_row_after_a_torn_one_has_a_line_of_its_own_and_the_bound_counts_it)
{
    for (const char* torn : {"1,", "1,2,\r"}) {
        const std::string rest = std::string("Cpu,A,\r\n") + torn;
        std::ofstream(name, std::ios::binary | std::ios::trunc) << rest;
        {
            PerformanceCsvSink sink(name, rest.size() + 2 + 8);
            Write(sink, "Cpu,B,");
            EXPECT_EQ(rest + "\r\nCpu,B,\r\n", FileContent(name));
        } // Windows renames no file that is open
        std::ofstream(name, std::ios::binary | std::ios::trunc) << rest;
        PerformanceCsvSink full(name, rest.size() + 2 + 7);
        Write(full, "Cpu,B,");
        EXPECT_EQ("Cpu,B,\r\n", FileContent(name));
        EXPECT_EQ(rest, FileContent(name + ".1"));
    }
}

TEST_F(PerformanceCsvSinkTest, A_file_is_filled_exactly_to_the_bound)
{
    PerformanceCsvSink sink(name, 20); // 8 + 6 + 6
    Write(sink, "Cpu,A,");
    Write(sink, "1,2,");
    Write(sink, "3,4,");
    EXPECT_EQ("Cpu,A,\r\n1,2,\r\n3,4,\r\n", FileContent(name));
    EXPECT_FALSE(std::filesystem::exists(name + ".1"));
}

TEST_F(PerformanceCsvSinkTest, One_previous_file_is_kept_and_the_next_one_starts_with_the_header)
{
    PerformanceCsvSink sink(name, 20);
    Write(sink, "Cpu,A,");
    for (const char* row : {"1,1,", "2,2,", "3,3,", "4,4,", "5,5,"}) {
        Write(sink, row);
    }
    EXPECT_EQ("Cpu,A,\r\n5,5,\r\n", FileContent(name));
    EXPECT_EQ("Cpu,A,\r\n3,3,\r\n4,4,\r\n", FileContent(name + ".1"));
    EXPECT_FALSE(std::filesystem::exists(name + ".2"));
}

TEST_F(PerformanceCsvSinkTest, A_header_row_that_starts_a_new_file_is_written_once)
{
    PerformanceCsvSink sink(name, 20);
    Write(sink, "Cpu,A,");
    Write(sink, "1,1,");
    Write(sink, "Cpu,B,");
    EXPECT_EQ("Cpu,B,\r\n", FileContent(name));
    EXPECT_EQ("Cpu,A,\r\n1,1,\r\n", FileContent(name + ".1"));
}

TEST_F(PerformanceCsvSinkTest, The_bound_counts_bytes_that_were_in_the_file_before)
{
    std::ofstream(name, std::ios::binary) << std::string(30, 'x');
    PerformanceCsvSink sink(name, 20);
    Write(sink, "Cpu,A,");
    EXPECT_EQ("Cpu,A,\r\n", FileContent(name));
    EXPECT_EQ(std::string(30, 'x'), FileContent(name + ".1"));
}

TEST_F(PerformanceCsvSinkTest, A_header_and_one_row_are_written_even_beyond_the_bound)
{
    PerformanceCsvSink sink(name, 0);
    Write(sink, "Cpu,A,");
    Write(sink, "1,1,");
    EXPECT_EQ("Cpu,A,\r\n1,1,\r\n", FileContent(name));
    Write(sink, "2,2,");
    EXPECT_EQ("Cpu,A,\r\n2,2,\r\n", FileContent(name));
    EXPECT_EQ("Cpu,A,\r\n1,1,\r\n", FileContent(name + ".1"));
}

TEST_F(PerformanceCsvSinkTest, A_file_that_cannot_be_renamed_is_emptied)
{
    std::filesystem::create_directory(name + ".1"); // in the way, and not empty
    std::ofstream(folder / "perf.csv.1" / "inside") << "x";
    PerformanceCsvSink sink(name, 20);
    Write(sink, "Cpu,A,");
    for (const char* row : {"1,1,", "2,2,", "3,3,"}) {
        Write(sink, row);
    }
    EXPECT_EQ("Cpu,A,\r\n3,3,\r\n", FileContent(name));
}

TEST_F(PerformanceCsvSinkTest,
       A_file_that_could_not_be_opened_is_tried_again_and_starts_with_the_header)
{
    const std::string deeper = (folder / "later" / "perf.csv").string();
    PerformanceCsvSink sink(deeper, 1000);
    Write(sink, "Cpu,A,");
    Write(sink, "1,1,");
    std::filesystem::create_directory(folder / "later");
    Write(sink, "2,2,");
    EXPECT_EQ("Cpu,A,\r\n2,2,\r\n", FileContent(deeper));
}

} // namespace
} // namespace vqrx::test
