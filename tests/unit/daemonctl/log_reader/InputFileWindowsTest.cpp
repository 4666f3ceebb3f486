#include "InputFile.h"

#include "ImportPatch.h"
#include "TempFolder.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <span>
#include <stdexcept>
#include <string>

namespace vqrx::test {
namespace {

using client::v0::InputFile;

constexpr std::size_t kMiB = std::size_t{1024} * 1024;

// Reads the first MiB as the disk would, and refuses what follows.
BOOL WINAPI ReadFirstMiB(HANDLE, void*, DWORD wanted, DWORD* got, OVERLAPPED* position)
{
    if (position->Offset != 0) {
        SetLastError(ERROR_CRC);
        return FALSE;
    }
    *got = wanted;
    return TRUE;
}

TEST(InputFileWindows, Part_that_Windows_does_not_read_is_an_error_and_not_the_end_of_the_file)
{
    const TempFolder folder;
    const std::string path = folder.File("damaged.log");
    std::ofstream(path, std::ios::binary) << "0123";
    const auto input = InputFile::Open(path);
    std::string bytes(kMiB + 10, ' ');
    const ImportPatch patch("ReadFile", ReadFirstMiB);
    EXPECT_EQ(kMiB, input->ReadAt(0, std::span(bytes).first(kMiB)));
    try {
        static_cast<void>(input->ReadAt(0, bytes));
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), testing::StartsWith(path + " cannot be read: "));
    }
}

TEST(InputFileWindows, Read_beyond_the_end_of_the_file_fills_nothing)
{
    const TempFolder folder;
    const std::string path = folder.File("short.log");
    std::ofstream(path, std::ios::binary) << "0123";
    const auto input = InputFile::Open(path);
    std::array<char, 10> bytes{};
    EXPECT_EQ(2U, input->ReadAt(2, bytes));
    EXPECT_EQ(0U, input->ReadAt(4, bytes));
    EXPECT_EQ(0U, input->ReadAt(100, bytes));
}

} // namespace
} // namespace vqrx::test
