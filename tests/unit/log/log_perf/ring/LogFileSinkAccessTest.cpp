#include "log_perf/ring/LogFileSink.h"

#include "ImportPatch.h"
#include "RingFileFixture.h"
#include "win32/UniqueHandle.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <io.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

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

using Texts = std::vector<std::string>;

// Opens the file so that others may only read it.
system::win32::v1::UniqueKernelHandle Locked(const std::string& name)
{
    return system::win32::v1::UniqueKernelHandle(CreateFileA(
        name.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
}

TEST_F(RingFile, Records_that_a_locked_file_lacks_are_in_the_history_until_it_is_written_again)
{
    {
        LogFileSink sink;
        sink.SetFileName(name_);
        Write(sink, 2, "before");
    }
    LogFileSink sink;
    sink.SetFileName(name_);
    {
        const auto locked = Locked(name_);
        ASSERT_TRUE(locked);
        Write(sink, 2, "a");
        Write(sink, 2, "b");
        EXPECT_EQ((Texts{"0:before", "1:a", "2:b"}), History(sink));
    }
    Write(sink, 2, "c");
    EXPECT_EQ((Texts{"0:before", "1:c"}), History(sink));
    EXPECT_EQ(Line(0, 2, "before") + Line(1, 2, "c"), Bytes().substr(12));
}

TEST_F(RingFile, A_file_that_somebody_changed_during_an_outage_is_read_again)
{
    Put("0x00000000\r\n");
    LogFileSink sink;
    sink.SetFileName(name_);
    {
        const auto locked = Locked(name_);
        ASSERT_TRUE(locked);
        Write(sink, 2, "a");
    }
    char header[16] = {};
    std::snprintf(header, sizeof header, "0x%.8X\r\n",
                  static_cast<unsigned>(12 + Line(0, 2, "other").size()));
    Put(header + Line(0, 2, "other"));
    Write(sink, 2, "b");
    EXPECT_EQ((Texts{"0:other", "1:b"}), History(sink));
    EXPECT_EQ(Line(0, 2, "other") + Line(1, 2, "b"), Bytes().substr(12));
}

bool readable = true;
decltype(&_read) realRead = nullptr;

// As when another program has locked a part of the file.
int __cdecl ReadWhileReadable(int file, void* bytes, unsigned count)
{
    if (readable) {
        return realRead(file, bytes, count);
    }
    errno = EACCES;
    return -1;
}

TEST_F(RingFile, A_file_that_is_open_but_cannot_be_read_keeps_its_records)
{
    {
        LogFileSink sink;
        sink.SetFileName(name_);
        Write(sink, 2, "before");
    }
    const ImportPatch patch("_read", ReadWhileReadable, realRead);
    readable = false;
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, 2, "a");
    const auto report = sink.TakeReport();
    ASSERT_TRUE(report);
    EXPECT_EQ(
        "Log file " + name_ +
            " cannot be written: Permission denied. Messages are lost until it can be written "
            "again",
        *report);
    readable = true;
    Write(sink, 2, "b");
    EXPECT_EQ(Line(0, 2, "before") + Line(1, 2, "b"), Bytes().substr(12));
}

int readings = 0;

std::FILE* __cdecl CountReadings(const char* name, const char* mode)
{
    readings += std::string_view(mode) == "rb" ? 1 : 0;
    return OpenAsWindowsDoes(name, mode);
}

TEST_F(RingFile, A_file_that_can_only_be_read_is_read_once)
{
    const ImportPatch patch("fopen", CountReadings, realOpen);
    Put("0x00000000\r\n");
    SetFileAttributesA(name_.c_str(), FILE_ATTRIBUTE_READONLY);
    readings = 0;
    LogFileSink sink;
    sink.SetFileName(name_);
    for (const char* text : {"a", "b", "c"}) {
        Write(sink, 2, text);
    }
    EXPECT_EQ(1, readings);
    EXPECT_EQ((Texts{"0:a", "1:b", "2:c"}), History(sink));
    SetFileAttributesA(name_.c_str(), FILE_ATTRIBUTE_NORMAL);
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
