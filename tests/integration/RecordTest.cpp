// daemonctl record while its log comes and goes.
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "FileContent.h"
#include "OpenToAll.h"
#include "SupervisorProcess.h"
#include "TempFolder.h"
#include "Wine.h"

#include <windows.h>

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
    const std::string notice = "; waiting for it\n  To find out more: daemonctl doctor\n";
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
                                 " --trust --output " + records);
    for (const std::size_t absence : {1U, 2U}) {
        EXPECT_TRUE(WaitUntil([&] { return CountOfNotices(record.Error()) == absence; }))
            << record.Error();
        // The recorder that waits keeps its place.
        if (absence == 1) {
            EXPECT_EQ(
                Daemonctl("record --once --file " + log + " --trust --output " + records).exitCode,
                4U);
        }
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
    EXPECT_EQ(Daemonctl("launch \"" + ProductProgram("daemonctl.exe") +
                        "\" record --trust --output " + records)
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

// A folder below a sound one, and a log.
class RecordTrust : public ::testing::Test {
protected:
    RecordTrust()
    {
        WriteLogOf(log_, "evidence");
        std::filesystem::create_directory(records_);
    }

    [[nodiscard]] Answer RecordOnce(const std::string& options = {}) const
    {
        return RecordOnceInto(records_, options);
    }

    [[nodiscard]] Answer RecordOnceInto(const std::string& folder,
                                        const std::string& options = {}) const
    {
        return Daemonctl("record --once --file " + log_ + " --output " + folder + options);
    }

    // Makes a file that record would continue.
    [[nodiscard]] std::string WriteFile(const std::string& folder) const
    {
        const std::string file = folder + "\\000001-2025-11-16T03-52-36.log";
        std::ofstream(file, std::ios::binary)
            << "0;Sun Nov 16 03:52:36.123;1763265156123;2;before\n";
        return file;
    }

    // Expects that nothing was recorded, for this reason and no other one.
    static void ExpectRefused(const Answer& answer, const std::string& reason)
    {
        EXPECT_EQ(answer.exitCode, 4U) << answer;
        EXPECT_NE(answer.error.find(reason + "\ndaemonctl: nothing was recorded: "),
                  std::string::npos)
            << answer;
        EXPECT_NE(answer.error.find("daemonctl record --trust\n"), std::string::npos) << answer;
    }

    const TempFolder folder_;
    const std::string log_ = folder_.File("a.log");
    const std::string records_ = folder_.File("records");
};

TEST_F(RecordTrust, A_folder_that_others_may_change_is_refused_unless_it_is_trusted)
{
    const std::string file = WriteFile(records_);
    const std::string before = ReadText(file);
    OpenToAll(records_);
    ExpectRefused(RecordOnce(), "may write to " + records_);
    EXPECT_EQ(ReadText(file), before);
    EXPECT_EQ(RecordOnce(" --trust").exitCode, 0U);
    EXPECT_NE(ReadText(file), before);
}

TEST_F(RecordTrust, A_file_that_others_may_change_is_refused)
{
    const std::string file = WriteFile(records_);
    const std::string before = ReadText(file);
    OpenToAll(file);
    ExpectRefused(RecordOnce(), "may write to " + file);
    EXPECT_EQ(ReadText(file), before);
}

TEST_F(RecordTrust, A_second_name_of_another_file_is_refused)
{
    const std::string elsewhere = WriteFile(folder_.Path().string());
    const std::string before = ReadText(elsewhere);
    const std::string file = records_ + "\\000009-2025-11-16T03-52-36.log";
    ASSERT_TRUE(CreateHardLinkA(file.c_str(), elsewhere.c_str(), nullptr));
    ExpectRefused(RecordOnce(), file + " also has another name (a hard link)");
    EXPECT_EQ(ReadText(elsewhere), before);
}

TEST_F(RecordTrust, A_folder_below_a_link_is_refused_and_not_made)
{
    // Drive Z: of Wine is a link to the root of the host. Windows has a junction of this name.
    const std::string link = RunsUnderWine() ? "Z:\\" : "C:\\Documents and Settings";
    const std::string below = (RunsUnderWine() ? "Z:\\usr" : link + "\\Public") + "\\dm_never_made";
    ExpectRefused(RecordOnceInto("\"" + below + "\""), link + " is a junction or a link");
    EXPECT_FALSE(std::filesystem::exists(below));
}

TEST_F(RecordTrust, A_new_folder_is_for_administrators_alone)
{
    const std::string outer = folder_.File("new");
    EXPECT_EQ(RecordOnceInto(outer + "\\inner"), (Answer{0, "", ""}));
    for (const std::string& made : {outer, outer + "\\inner"}) {
        for (const char* others : {";;;WD)", ";;;BU)", ";;;AU)"}) {
            EXPECT_EQ(AccessListOf(made).find(others), std::string::npos) << AccessListOf(made);
        }
    }
    EXPECT_EQ(RecordOnceInto(outer + "\\inner"), (Answer{0, "", ""})); // and goes on there
}

TEST_F(RecordTrust, A_second_recorder_is_refused_until_the_first_one_is_killed)
{
    const CapturedProgram first('"' + ProductProgram("daemonctl.exe") + "\" record --file " + log_ +
                                " --trust --output " + records_);
    EXPECT_TRUE(WaitUntil([this] {
        return Daemonctl("log --file " + records_).output.find("evidence") != std::string::npos;
    })) << first.Error();
    EXPECT_EQ(
        RecordOnce(" --trust"),
        (Answer{4, "",
                "daemonctl: " + records_ + " cannot be written: another recorder holds " +
                    records_ + "\\recorder.lock\n  Choose another folder: --output FOLDER\n"}));
    EXPECT_TRUE(first.Running());
    KillProcess(first.Pid());
    EXPECT_EQ(RecordOnce(" --trust"), (Answer{0, "", ""}));
    EXPECT_FALSE(std::filesystem::exists(records_ + "\\recorder.lock"));
}

} // namespace
} // namespace vqrx::test
