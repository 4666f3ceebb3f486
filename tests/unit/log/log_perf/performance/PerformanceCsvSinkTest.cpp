#include "log_perf/performance/PerformanceCsvSink.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
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
    static std::string Content(const std::string& file)
    {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    std::filesystem::path folder;
    std::string name;
};

TEST_F(PerformanceCsvSinkTest, writes_each_row_as_a_line_that_is_on_disk_at_once)
{
    PerformanceCsvSink sink(name, 1000);
    Write(sink, "Cpu,A,");
    EXPECT_EQ("Cpu,A,\r\n", Content(name));
    Write(sink, "1,2,");
    EXPECT_EQ("Cpu,A,\r\n1,2,\r\n", Content(name));
}

TEST_F(PerformanceCsvSinkTest, makes_no_file_before_the_first_row)
{
    const PerformanceCsvSink sink(name, 1000);
    EXPECT_FALSE(std::filesystem::exists(name));
}

TEST_F(PerformanceCsvSinkTest, carries_on_a_file_that_exists)
{
    {
        PerformanceCsvSink sink(name, 1000);
        Write(sink, "Cpu,A,");
    }
    PerformanceCsvSink sink(name, 1000);
    Write(sink, "Cpu,B,");
    Write(sink, "1,2,");
    EXPECT_EQ("Cpu,A,\r\nCpu,B,\r\n1,2,\r\n", Content(name));
}

TEST_F(PerformanceCsvSinkTest, fills_a_file_to_the_very_bound)
{
    PerformanceCsvSink sink(name, 20); // 8 + 6 + 6
    Write(sink, "Cpu,A,");
    Write(sink, "1,2,");
    Write(sink, "3,4,");
    EXPECT_EQ("Cpu,A,\r\n1,2,\r\n3,4,\r\n", Content(name));
    EXPECT_FALSE(std::filesystem::exists(name + ".1"));
}

TEST_F(PerformanceCsvSinkTest, keeps_one_previous_file_and_starts_the_next_with_the_header)
{
    PerformanceCsvSink sink(name, 20);
    Write(sink, "Cpu,A,");
    for (const char* row : {"1,1,", "2,2,", "3,3,", "4,4,", "5,5,"}) {
        Write(sink, row);
    }
    EXPECT_EQ("Cpu,A,\r\n5,5,\r\n", Content(name));
    EXPECT_EQ("Cpu,A,\r\n3,3,\r\n4,4,\r\n", Content(name + ".1"));
    EXPECT_FALSE(std::filesystem::exists(name + ".2"));
}

TEST_F(PerformanceCsvSinkTest, does_not_repeat_a_header_that_starts_the_next_file_itself)
{
    PerformanceCsvSink sink(name, 20);
    Write(sink, "Cpu,A,");
    Write(sink, "1,1,");
    Write(sink, "Cpu,B,");
    EXPECT_EQ("Cpu,B,\r\n", Content(name));
    EXPECT_EQ("Cpu,A,\r\n1,1,\r\n", Content(name + ".1"));
}

TEST_F(PerformanceCsvSinkTest, counts_what_stood_in_the_file_before)
{
    std::ofstream(name, std::ios::binary) << std::string(30, 'x');
    PerformanceCsvSink sink(name, 20);
    Write(sink, "Cpu,A,");
    EXPECT_EQ("Cpu,A,\r\n", Content(name));
    EXPECT_EQ(std::string(30, 'x'), Content(name + ".1"));
}

TEST_F(PerformanceCsvSinkTest, takes_a_header_and_one_row_however_small_the_bound)
{
    PerformanceCsvSink sink(name, 0);
    Write(sink, "Cpu,A,");
    Write(sink, "1,1,");
    EXPECT_EQ("Cpu,A,\r\n1,1,\r\n", Content(name));
    Write(sink, "2,2,");
    EXPECT_EQ("Cpu,A,\r\n2,2,\r\n", Content(name));
    EXPECT_EQ("Cpu,A,\r\n1,1,\r\n", Content(name + ".1"));
}

TEST_F(PerformanceCsvSinkTest, starts_the_file_over_when_it_cannot_become_the_previous_one)
{
    std::filesystem::create_directory(name + ".1"); // in the way, and not empty
    std::ofstream(folder / "perf.csv.1" / "inside") << "x";
    PerformanceCsvSink sink(name, 20);
    Write(sink, "Cpu,A,");
    for (const char* row : {"1,1,", "2,2,", "3,3,"}) {
        Write(sink, row);
    }
    EXPECT_EQ("Cpu,A,\r\n3,3,\r\n", Content(name));
}

TEST_F(PerformanceCsvSinkTest, that_could_not_open_its_file_tries_again_and_writes_the_header_first)
{
    const std::string deeper = (folder / "later" / "perf.csv").string();
    PerformanceCsvSink sink(deeper, 1000);
    Write(sink, "Cpu,A,");
    Write(sink, "1,1,");
    std::filesystem::create_directory(folder / "later");
    Write(sink, "2,2,");
    EXPECT_EQ("Cpu,A,\r\n2,2,\r\n", Content(deeper));
}

} // namespace
} // namespace vqrx::test
