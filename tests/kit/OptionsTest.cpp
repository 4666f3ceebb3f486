#include "Options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::kit {
namespace {

using Texts = std::vector<std::string>;

Manifest ThreePrograms()
{
    Manifest manifest;
    for (const char* name : {"a", "b", "c"}) {
        TestProgram program;
        program.name = name;
        program.takesLong = program.name == "b";
        manifest.programs.push_back(program);
    }
    return manifest;
}

Texts ChosenNames(const Texts& arguments)
{
    Texts names;
    for (const TestProgram& program : Chosen(ThreePrograms(), ReadOptions(arguments))) {
        names.push_back(program.name);
    }
    return names;
}

std::string Refusal(const Texts& arguments)
{
    try {
        static_cast<void>(ChosenNames(arguments));
    } catch (const UsageError& error) {
        return error.what();
    }
    return "accepted";
}

TEST(KitOptions, Without_arguments_a_run_asks_and_runs_every_program_one_at_a_time)
{
    const Options options = ReadOptions({});
    EXPECT_FALSE(options.help || options.yes || options.quick || options.undo);
    EXPECT_EQ(options.jobs, 1U);
    EXPECT_EQ(ChosenNames({}), (Texts{"a", "b", "c"}));
}

TEST(KitOptions, Each_option_is_read)
{
    EXPECT_TRUE(ReadOptions({"--help"}).help);
    EXPECT_TRUE(ReadOptions({"--yes"}).yes);
    EXPECT_TRUE(ReadOptions({"--undo"}).undo);
    EXPECT_EQ(ReadOptions({"--jobs", "16"}).jobs, 16U);
    EXPECT_EQ(ReadOptions({"--only", "a,c"}).only, (Texts{"a", "c"}));
}

TEST(KitOptions, Programs_are_chosen_by_name_or_by_the_time_that_they_take)
{
    EXPECT_EQ(ChosenNames({"--quick"}), (Texts{"a", "c"}));
    EXPECT_EQ(ChosenNames({"--only", "c,b"}), (Texts{"b", "c"}));
    EXPECT_EQ(ChosenNames({"--quick", "--only", "b"}), (Texts{"b"}));
}

TEST(KitOptions, Wrong_arguments_are_refused_with_the_reason)
{
    EXPECT_EQ(Refusal({"--fast"}), "unknown argument --fast");
    EXPECT_EQ(Refusal({"--jobs"}), "--jobs needs a value");
    for (const char* jobs : {"0", "17", "-1", "two", "2x", ""}) {
        EXPECT_EQ(Refusal({"--jobs", jobs}),
                  "--jobs needs a number from 1 to 16, not '" + std::string(jobs) + "'");
    }
    EXPECT_EQ(Refusal({"--only", "a,d"}), "this kit has no program d");
    EXPECT_EQ(Refusal({"--only", "a,"}), "this kit has no program ");
}

TEST(KitOptions, A_folder_in_which_tests_would_fail_is_refused)
{
    EXPECT_EQ(ObjectionTo("C:\\kit"), "");
    EXPECT_EQ(ObjectionTo("C:\\" + std::string(57, 'k')), "");
    EXPECT_EQ(ObjectionTo("C:\\" + std::string(58, 'k')), "its path has more than 60 characters");
    EXPECT_EQ(ObjectionTo("C:\\my kit"), "its path contains a blank or a letter beyond ASCII");
    EXPECT_EQ(ObjectionTo("C:\\M\xC3\xBCller"),
              "its path contains a blank or a letter beyond ASCII");
    EXPECT_EQ(ObjectionTo("C:\\x\\AppData\\kit"), "its path contains \\App");
    EXPECT_EQ(ObjectionTo("\\\\server\\kit"), "it is on another machine");
    EXPECT_EQ(ObjectionTo("C:\\Users\\x\\OneDrive\\Desktop\\kit"),
              "it is in OneDrive, which holds new files open and copies them away");
}

} // namespace
} // namespace vqrx::kit
