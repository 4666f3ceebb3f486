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
    facts.state = ProcessFacts::State::running;
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

TEST(ProcessMatch, of_a_process_made_just_before_its_line_is_the_same)
{
    EXPECT_EQ(Fit(kLogged), ProcessFit::same);
    EXPECT_EQ(Fit(kLogged - 500), ProcessFit::same);
    EXPECT_EQ(Fit(kLogged - 60000), ProcessFit::same); // a slow start
    EXPECT_EQ(Fit(kLogged + 1000), ProcessFit::same);  // clocks of different grain
}

TEST(ProcessMatch, of_a_reused_id_is_another_process)
{
    EXPECT_EQ(Fit(kLogged + 1001), ProcessFit::otherTime);
    EXPECT_EQ(Fit(kLogged + 86400000), ProcessFit::otherTime);
    EXPECT_EQ(Fit(kLogged + 1001, true), ProcessFit::otherTime);
}

TEST(ProcessMatch, of_a_process_older_than_its_start_is_another_one)
{
    EXPECT_EQ(Fit(kLogged - 60001), ProcessFit::otherTime);
}

TEST(ProcessMatch, of_an_attached_process_may_be_as_old_as_it_likes)
{
    EXPECT_EQ(Fit(kLogged - 86400000, true), ProcessFit::same);
}

TEST(ProcessMatch, of_another_program_is_another_process)
{
    EXPECT_EQ(Fit(kLogged, false, R"(C:\FW\App\b.exe)"), ProcessFit::otherProgram);
    EXPECT_EQ(Fit(kLogged, true, ""), ProcessFit::otherProgram);
}

TEST(ProcessMatch, of_a_process_that_is_gone_or_hidden_says_so)
{
    ProcessFacts facts = Process(R"(C:\FW\App\a.exe)", kLogged);
    facts.state = ProcessFacts::State::gone;
    EXPECT_EQ(FitProcess({12, kLogged, false, R"(C:\FW\App\a.exe )"}, facts, kApp, Never),
              ProcessFit::gone);
    facts.state = ProcessFacts::State::hidden;
    EXPECT_EQ(FitProcess({12, kLogged, false, R"(C:\FW\App\a.exe )"}, facts, kApp, Never),
              ProcessFit::hidden);
}

bool Fits(const std::string& image, const std::string& command)
{
    return IsImageOfCommand(image, command, kApp, Never);
}

TEST(ImageOfCommand, is_compared_whatever_the_letter_case_and_the_slashes)
{
    EXPECT_TRUE(Fits(R"(C:\FW\App\a.exe)", "c:/fw/APP/A.exe "));
    EXPECT_TRUE(Fits(R"(C:\FW\App\a.exe)", R"(C:\FW\\App\.\bin\..\a.exe -x )"));
    EXPECT_TRUE(Fits(R"(\\server\share\a.exe)", R"(\\SERVER\share\a.exe )"));
    EXPECT_TRUE(Fits(R"(C:\FW\App\a.exe)", R"(\\?\C:\FW\App\a.exe )"));
    EXPECT_FALSE(Fits(R"(C:\FW\App\a.exe)", R"(C:\FW\App\a.ex )"));
    EXPECT_FALSE(Fits(R"(C:\FW\App\a.exe)", R"(C:\FW\App\a.exe2 )"));
    EXPECT_FALSE(Fits(R"(C:\FW\App\a.exe)", ""));
    EXPECT_FALSE(Fits("", " "));
}

TEST(ImageOfCommand, may_have_blanks_in_its_path)
{
    EXPECT_TRUE(
        Fits(R"(C:\Program Files\My App\a b.exe)", R"(C:\Program Files\My App\a b.exe x y )"));
    EXPECT_FALSE(Fits(R"(C:\Program.exe)", R"(C:\Program Files\My App\a b.exe x y )"));
}

TEST(ImageOfCommand, may_be_relative_to_the_working_folder)
{
    EXPECT_TRUE(Fits(R"(C:\FW\App\a.exe)", "a.exe -x "));
    EXPECT_TRUE(Fits(R"(C:\FW\bin\a.exe)", R"(..\bin\a.exe )"));
    EXPECT_TRUE(Fits(R"(C:\bin\a.exe)", R"(\bin\a.exe )"));
    EXPECT_FALSE(Fits(R"(D:\FW\App\a.exe)", "a.exe -x "));
}

TEST(ImageOfCommand, may_have_letters_that_the_code_page_lacks)
{
    EXPECT_TRUE(Fits("C:\\\xE2\x82\xAC\xC3\xBC.exe", "C:\\?\xC3\xBC.exe "));
    EXPECT_FALSE(Fits("C:\\ab.exe", "C:\\?.exe "));
}

TEST(ImageOfCommand, may_be_reached_by_another_path)
{
    const SameFile junction = [](const std::string& path, const std::string& image) {
        return path == R"(C:\FW\App\link\a.exe)" && image == R"(D:\real\a.exe)";
    };
    EXPECT_TRUE(
        IsImageOfCommand(R"(D:\real\a.exe)", R"(C:\FW\App\link\a.exe -x )", kApp, junction));
    EXPECT_TRUE(IsImageOfCommand(R"(D:\real\a.exe)", R"(link\a.exe -x )", kApp, junction));
    EXPECT_FALSE(IsImageOfCommand(R"(D:\real\b.exe)", R"(link\a.exe -x )", kApp, junction));
}

TEST(ProcessMatch, tells_in_words_what_is_not_the_one)
{
    const ProcessFacts facts = Process(R"(C:\b.exe)", 0);
    EXPECT_EQ(DescribeMisfit(ProcessFit::same, facts), "process 12 runs");
    EXPECT_EQ(DescribeMisfit(ProcessFit::gone, facts), "process 12 has ended");
    EXPECT_EQ(DescribeMisfit(ProcessFit::hidden, facts),
              "process 12 may not be asked about: run this as administrator");
    EXPECT_EQ(DescribeMisfit(ProcessFit::otherTime, facts),
              R"(process 12 has ended; the id belongs to another process now, C:\b.exe)");
    EXPECT_EQ(DescribeMisfit(ProcessFit::otherProgram, facts),
              R"(process 12 runs another program, C:\b.exe)");
}

} // namespace
} // namespace vqrx::test
