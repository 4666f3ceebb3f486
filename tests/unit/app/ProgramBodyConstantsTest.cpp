// The two constants that only the program itself gives: the interval of the supervision and the
// size of the log.
#include "ImportPatch.h"
#include "ProgramBodyFixture.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>

namespace vqrx::test {
namespace {

class ProgramBodyConstantsTest : public ProgramBodyTest {};

std::atomic<int> waitsOfASecond = 0;
DWORD(WINAPI* realWaitForObject)(HANDLE, DWORD) = nullptr;

DWORD WINAPI CountWaitsOfASecond(HANDLE object, DWORD milliseconds)
{
    waitsOfASecond += milliseconds == 1000 ? 1 : 0;
    return realWaitForObject(object, milliseconds);
}

TEST_F(ProgramBodyConstantsTest, Supervision_waits_1000_ms_before_a_pass)
{
    waitsOfASecond = 0;
    const ImportPatch patch("WaitForSingleObject", CountWaitsOfASecond, realWaitForObject);
    EXPECT_EQ(RunUntilPublished(), 0);
    EXPECT_GE(waitsOfASecond, 1);
}

/// Makes a log whose next record begins at `position`. One long record fills the file before it.
void WriteLog(const std::string& path, std::size_t position)
{
    constexpr std::size_t kHeader = 12;
    std::ostringstream text;
    text << "0x" << std::uppercase << std::hex << std::setfill('0') << std::setw(8) << position
         << "\r\n0;Sun Nov 16 03:52:36.123;1763265156123;2;";
    std::string log = text.str();
    EXPECT_EQ(log.find("0;Sun"), kHeader);
    log.append(position - 2 - log.size(), 'x').append("\r\n");
    std::ofstream(path, std::ios::binary | std::ios::trunc) << log;
}

TEST_F(ProgramBodyConstantsTest,
       Log_begins_again_at_its_front_after_the_record_that_passes_0x100000_bytes)
{
    constexpr std::size_t kLimit = 0x100000;
    EXPECT_EQ(RunUntilPublished(), 0);
    const std::string path = (root.Path() / "Logs" / "DaemonManager.log").string();
    std::ifstream first(path, std::ios::binary);
    std::string header;
    std::string record;
    std::getline(first, header);
    std::getline(first, record); // each run begins with this record
    first.close();
    const std::size_t length = record.size() + 1; // with its line feed

    WriteLog(path, kLimit - length); // this record ends at the limit, and the next one passes it
    EXPECT_EQ(RunUntilPublished(), 0);
    EXPECT_GT(std::filesystem::file_size(path), kLimit);
    WriteLog(path, kLimit - length + 1);
    EXPECT_EQ(RunUntilPublished(), 0);
    EXPECT_EQ(std::filesystem::file_size(path), kLimit + 1);
}

} // namespace
} // namespace vqrx::test
