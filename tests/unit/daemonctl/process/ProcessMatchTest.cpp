#include "ProcessMatch.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

using namespace client::v0;

constexpr std::int64_t kLogged = 1'000'000'000'000;
constexpr const char* kApp = R"(C:\FW\App)";

bool Never(const std::string&, const std::string&)
{
    return false;
}

ProcessFacts Process(const std::string& image, std::int64_t createdMs)
{
    ProcessFacts facts;
    facts.processId = 12;
    facts.state = ProcessFacts::State::kRunning;
    facts.image = image;
    facts.createdMs = createdMs;
    return facts;
}

ProcessFit Fit(std::int64_t createdMs, bool attached = false,
               const std::string& image = R"(C:\FW\App\a.exe)")
{
    return FitProcess({12, kLogged, attached, R"(C:\FW\App\a.exe -x )"}, Process(image, createdMs),
                      kApp, Never);
}

TEST(FitProcess, accepts_a_process_created_just_before_its_record)
{
    EXPECT_EQ(Fit(kLogged), ProcessFit::kSame);
    EXPECT_EQ(Fit(kLogged - 500), ProcessFit::kSame);
    EXPECT_EQ(Fit(kLogged - 60000), ProcessFit::kSame); // a slow start
    EXPECT_EQ(Fit(kLogged + 1000), ProcessFit::kSame);  // clocks of different grain
}

TEST(FitProcess, rejects_a_process_created_after_the_record)
{
    EXPECT_EQ(Fit(kLogged + 1001), ProcessFit::kOtherTime);
    EXPECT_EQ(Fit(kLogged + 86400000), ProcessFit::kOtherTime);
    EXPECT_EQ(Fit(kLogged + 1001, true), ProcessFit::kOtherTime);
}

TEST(FitProcess, rejects_a_process_created_long_before_the_record_of_its_start)
{
    EXPECT_EQ(Fit(kLogged - 60001), ProcessFit::kOtherTime);
}

TEST(FitProcess, accepts_an_attached_process_of_any_age)
{
    EXPECT_EQ(Fit(kLogged - 86400000, true), ProcessFit::kSame);
}

// The clock was set back between the creation of the process and its attach.
TEST(FitProcess, accepts_an_attached_process_that_is_no_newer_than_the_latest_record)
{
    constexpr std::int64_t kLatest = kLogged + 3600000;
    const auto fit = [](std::int64_t createdMs, bool attached) {
        return FitProcess({12, kLogged, attached, R"(C:\FW\App\a.exe -x )", kLatest},
                          Process(R"(C:\FW\App\a.exe)", createdMs), kApp, Never);
    };
    EXPECT_EQ(fit(kLatest + 1000, true), ProcessFit::kSame);
    EXPECT_EQ(fit(kLatest + 1001, true), ProcessFit::kOtherTime);
    EXPECT_EQ(fit(kLatest, false), ProcessFit::kOtherTime);
}

TEST(FitProcess, rejects_a_process_that_runs_another_program)
{
    EXPECT_EQ(Fit(kLogged, false, R"(C:\FW\App\b.exe)"), ProcessFit::kOtherProgram);
    EXPECT_EQ(Fit(kLogged, true, ""), ProcessFit::kOtherProgram);
}

TEST(FitProcess, reports_a_process_that_is_gone_or_hidden)
{
    ProcessFacts facts = Process(R"(C:\FW\App\a.exe)", kLogged);
    facts.state = ProcessFacts::State::kGone;
    EXPECT_EQ(FitProcess({12, kLogged, false, R"(C:\FW\App\a.exe )"}, facts, kApp, Never),
              ProcessFit::kGone);
    facts.state = ProcessFacts::State::kHidden;
    EXPECT_EQ(FitProcess({12, kLogged, false, R"(C:\FW\App\a.exe )"}, facts, kApp, Never),
              ProcessFit::kHidden);
}

bool Fits(const std::string& image, const std::string& command)
{
    return IsImageOfCommand(image, command, kApp, Never);
}

TEST(IsImageOfCommand, ignores_letter_case_and_the_kind_of_slash)
{
    EXPECT_TRUE(Fits(R"(C:\FW\App\a.exe)", "c:/fw/APP/A.exe "));
    EXPECT_TRUE(Fits(R"(C:\FW\Äpp\vidéo.exe)", "c:/fw/äPP/VIDÉO.exe "));
    EXPECT_TRUE(Fits(R"(C:\FW\Äpp\vidéo.exe)", "c:/fw/?PP/VID?O.exe "));
    EXPECT_TRUE(Fits(R"(C:\FW\App\a.exe)", R"(C:\FW\\App\.\bin\..\a.exe -x )"));
    EXPECT_TRUE(Fits(R"(C:\a.exe)", R"(C:\..\a.exe )"));
    EXPECT_TRUE(Fits(R"(\\server\share\a.exe)", R"(\\SERVER\share\a.exe )"));
    EXPECT_TRUE(Fits(R"(C:\FW\App\a.exe)", R"(\\?\C:\FW\App\a.exe )"));
    EXPECT_FALSE(Fits(R"(C:\FW\App\a.exe)", R"(C:\FW\App\a.ex )"));
    EXPECT_FALSE(Fits(R"(C:\FW\App\a.exe)", R"(C:\FW\App\a.exe2 )"));
    EXPECT_FALSE(Fits(R"(C:\FW\App\a.exe)", ""));
    EXPECT_FALSE(Fits("", " "));
}

TEST(IsImageOfCommand, accepts_blanks_in_the_path)
{
    EXPECT_TRUE(
        Fits(R"(C:\Program Files\My App\a b.exe)", R"(C:\Program Files\My App\a b.exe x y )"));
    EXPECT_FALSE(Fits(R"(C:\Program.exe)", R"(C:\Program Files\My App\a b.exe x y )"));
}

TEST(IsImageOfCommand, resolves_a_path_relative_to_the_working_folder)
{
    EXPECT_TRUE(Fits(R"(C:\FW\App\a.exe)", "a.exe -x "));
    EXPECT_TRUE(Fits(R"(C:\FW\bin\a.exe)", R"(..\bin\a.exe )"));
    EXPECT_TRUE(Fits(R"(C:\bin\a.exe)", R"(\bin\a.exe )"));
    EXPECT_FALSE(Fits(R"(D:\FW\App\a.exe)", "a.exe -x "));
}

TEST(IsImageOfCommand, accepts_question_marks_for_letters_that_the_code_page_lacks)
{
    EXPECT_TRUE(Fits("C:\\\xE2\x82\xAC\xC3\xBC.exe", "C:\\?\xC3\xBC.exe "));
    EXPECT_FALSE(Fits("C:\\ab.exe", "C:\\?.exe "));
}

TEST(IsImageOfCommand, accepts_another_path_to_the_same_file)
{
    const SameFile junction = [](const std::string& path, const std::string& image) {
        return path == R"(C:\FW\App\link\a.exe)" && image == R"(D:\real\a.exe)";
    };
    EXPECT_TRUE(
        IsImageOfCommand(R"(D:\real\a.exe)", R"(C:\FW\App\link\a.exe -x )", kApp, junction));
    EXPECT_TRUE(IsImageOfCommand(R"(D:\real\a.exe)", R"(link\a.exe -x )", kApp, junction));
    EXPECT_FALSE(IsImageOfCommand(R"(D:\real\b.exe)", R"(link\a.exe -x )", kApp, junction));
}

TEST(IsImageOfCommand, accepts_the_command_interpreter_for_a_batch_file)
{
    EXPECT_TRUE(Fits(R"(C:\windows\system32\cmd.exe)", R"(C:\FW\App\my start.BAT one )"));
    EXPECT_TRUE(Fits(R"(C:\Windows\System32\CMD.EXE)", "start.cmd "));
    EXPECT_FALSE(Fits(R"(C:\windows\system32\cmd.exe)", R"(C:\FW\App\a.exe one )"));
    EXPECT_FALSE(Fits(R"(C:\FW\App\a.exe)", R"(C:\FW\App\start.bat )"));
}

TEST(DescribeMisfit, explains_each_reason)
{
    const ProcessFacts facts = Process(R"(C:\b.exe)", 0);
    EXPECT_EQ(DescribeMisfit(ProcessFit::kSame, facts), "process 12 runs");
    EXPECT_EQ(DescribeMisfit(ProcessFit::kGone, facts), "process 12 has ended");
    EXPECT_EQ(DescribeMisfit(ProcessFit::kHidden, facts),
              "process 12 may not be opened by this user: run this command as administrator");
    EXPECT_EQ(DescribeMisfit(ProcessFit::kOtherTime, facts),
              R"(process 12 has ended; the id belongs to another process now, C:\b.exe)");
    EXPECT_EQ(DescribeMisfit(ProcessFit::kOtherProgram, facts),
              R"(process 12 runs another program, C:\b.exe)");
}

} // namespace
} // namespace vqrx::test
