#include "log_perf/ring/LogFileSink.h"

#include "RingFileFixture.h"
#include "win32/UniqueHandle.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <fstream>
#include <iostream>

namespace vqrx::test {

using log::log_perf::v2::LogFileSink;

TEST_F(RingFile, The_record_after_a_text_with_line_feeds_follows_without_a_gap)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, 2, "one\ntwo\n");
    Write(sink, 2, "three");
    const std::string both = Line(0, 2, "one\r\ntwo\r\n") + Line(1, 2, "three");
    EXPECT_EQ(both, Bytes().substr(12));
    EXPECT_EQ(12 + both.size(), std::stoul(Bytes().substr(0, 10), nullptr, 16));
}

TEST_F(RingFile, A_file_that_another_program_has_locked_is_tried_again_at_every_record)
{
    Put("0x00000000\r\n");
    LogFileSink sink;
    sink.SetFileName(name_);
    {
        const system::win32::v1::UniqueKernelHandle locked(CreateFileA(
            name_.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(locked);
        Write(sink, 2, "a");
        Write(sink, 2, "b");
    }
    EXPECT_EQ("0x00000000\r\n", Bytes());
    Write(sink, 2, "c");
    EXPECT_EQ(Line(0, 2, "c"), Bytes().substr(12));
}

TEST_F(RingFile, A_read_only_file_is_written_as_soon_as_it_is_writable)
{
    Put("0x00000000\r\n");
    SetFileAttributesA(name_.c_str(), FILE_ATTRIBUTE_READONLY);
    const bool refused = !std::ofstream(name_, std::ios::app).is_open();
    std::cout << (refused ? "the host refuses" : "the host, as root, does not refuse")
              << " to write a read-only file\n";
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, 2, "a");
    EXPECT_EQ(refused ? "0x00000000\r\n" : "0x00000039\r\n" + Line(0, 2, "a"), Bytes());
    SetFileAttributesA(name_.c_str(), FILE_ATTRIBUTE_NORMAL);
    Write(sink, 2, "b");
    EXPECT_EQ(refused ? Line(0, 2, "b") : Line(0, 2, "a") + Line(1, 2, "b"), Bytes().substr(12));
}

} // namespace vqrx::test
