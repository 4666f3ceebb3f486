// daemonctl record while its log comes and goes.
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "SupervisorProcess.h"
#include "TempFolder.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

namespace vqrx::test {
namespace {

// Writes a log with one record.
void WriteLogOf(const std::string& path, const std::string& text)
{
    const std::string line = "0;Sun Nov 16 03:52:36.123;1763265156123;2;" + text + "\r\n";
    std::array<char, 13> header{};
    std::snprintf(header.data(), header.size(), "0x%08x\r\n",
                  static_cast<unsigned>(header.size() - 1 + line.size()));
    std::ofstream(path, std::ios::binary) << header.data() << line;
}

std::size_t CountOfNotices(const std::string& errors)
{
    const std::string notice = "; waiting for it\n";
    std::size_t count = 0;
    for (std::size_t at = errors.find(notice); at != std::string::npos;
         at = errors.find(notice, at + 1)) {
        ++count;
    }
    return count;
}

TEST(Record, A_log_that_is_missing_is_told_each_time_and_followed_when_it_is_back)
{
    const TempFolder folder;
    const std::string log = folder.File("a.log");
    const std::string records = folder.File("records");
    const CapturedProgram record('"' + ProductProgram("daemonctl.exe") + "\" record --file " + log +
                                 " --output " + records);
    for (const std::size_t absence : {1U, 2U}) {
        EXPECT_TRUE(WaitUntil([&] { return CountOfNotices(record.Error()) == absence; }))
            << record.Error();
        const std::string text = "record " + std::to_string(absence);
        WriteLogOf(log, text);
        EXPECT_TRUE(WaitUntil([&] {
            return Daemonctl("log --file " + records).output.find(text) != std::string::npos;
        })) << record.Error();
        EXPECT_TRUE(WaitUntil([&] {
            std::error_code error; // while the recorder reads the file, it stays
            return std::filesystem::remove(log, error);
        }));
    }
}

// Returns the numbers of the records that a command shows.
std::vector<std::int64_t> NumbersOf(const std::string& command)
{
    std::vector<std::int64_t> numbers;
    std::istringstream lines(Daemonctl(command).output);
    for (std::string line; std::getline(lines, line);) {
        numbers.push_back(nlohmann::json::parse(line).at("number"));
    }
    return numbers;
}

TEST(Record, A_recorder_that_the_supervisor_starts_again_has_each_record_once)
{
    const SupervisorProcess supervisor;
    const std::string records = supervisor.Root() + "\\records";
    EXPECT_EQ(
        Daemonctl("launch \"" + ProductProgram("daemonctl.exe") + "\" record --output " + records)
            .exitCode,
        0U);
    const DWORD first = supervisor.WaitForStart(0);
    const auto hasAll = [&records] {
        const std::vector<std::int64_t> recorded = NumbersOf("log --json --file " + records);
        return !recorded.empty() && recorded == NumbersOf("log --json");
    };
    EXPECT_TRUE(WaitUntil(hasAll));
    KillProcess(first);
    EXPECT_NE(supervisor.WaitForStart(0, first), 0U);
    EXPECT_TRUE(WaitUntil(hasAll));
}

} // namespace
} // namespace vqrx::test
