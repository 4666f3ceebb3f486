#include "log_perf/ring/LogFileSink.h"

#include "ImportPatch.h"
#include "RingFileFixture.h"
#include "win32/UniqueHandle.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cerrno>
#include <cstdio>
#include <string_view>

namespace vqrx::test {

namespace {

using log::log_perf::v2::LogFileSink;

using OpenFunction = std::FILE* __cdecl(const char*, const char*);
OpenFunction* realOpen = nullptr;

// Wine lets root write a read-only file. Windows refuses it to everybody.
std::FILE* __cdecl OpenAsWindowsDoes(const char* name, const char* mode)
{
    const DWORD attributes = GetFileAttributesA(name);
    const bool readOnly =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (readOnly && std::string_view(mode).find_first_of("wa+") != std::string_view::npos) {
        errno = EACCES;
        return nullptr;
    }
    return realOpen(name, mode);
}

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
    const ImportPatch patch("fopen", OpenAsWindowsDoes, realOpen);
    Put("0x00000000\r\n");
    SetFileAttributesA(name_.c_str(), FILE_ATTRIBUTE_READONLY);
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, 2, "a");
    EXPECT_EQ("0x00000000\r\n", Bytes());
    SetFileAttributesA(name_.c_str(), FILE_ATTRIBUTE_NORMAL);
    Write(sink, 2, "b");
    EXPECT_EQ(Line(0, 2, "b"), Bytes().substr(12));
}

BOOL WINAPI SeeNothing(const char*)
{
    return FALSE;
}

TEST_F(RingFile, A_file_whose_existence_cannot_be_checked_keeps_its_records)
{
    {
        LogFileSink sink;
        sink.SetFileName(name_);
        Write(sink, 2, "a");
    }
    const ImportPatch patch("PathFileExistsA", SeeNothing);
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, 2, "b");
    EXPECT_EQ(Line(0, 2, "a") + Line(1, 2, "b"), Bytes().substr(12));
}

} // namespace
} // namespace vqrx::test
