#include "Manifest.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::kit {
namespace {

using Texts = std::vector<std::string>;

TEST(Manifest, Every_field_of_a_program_is_read)
{
    const Manifest manifest = ReadManifest(R"({"version": "1.2.3", "commit": "abc",
        "programs": [{"name": "unit_x", "program": "tests\\bin\\unit_x.exe",
            "arguments": ["--output", "{work}"], "locks": ["rot", "registry"],
            "timeoutSeconds": 90, "cost": 40.5, "takesLong": true, "googleTest": true}],
        "notInKit": [{"name": "shell", "reason": "needs a shell"}]})");
    EXPECT_EQ(manifest.version, "1.2.3");
    EXPECT_EQ(manifest.commit, "abc");
    ASSERT_EQ(manifest.programs.size(), 1U);
    const TestProgram& program = manifest.programs[0];
    EXPECT_EQ(program.name, "unit_x");
    EXPECT_EQ(program.program, "tests\\bin\\unit_x.exe");
    EXPECT_EQ(program.arguments, (Texts{"--output", "{work}"}));
    EXPECT_EQ(program.locks, (Texts{"rot", "registry"}));
    EXPECT_EQ(program.timeoutSeconds, 90U);
    EXPECT_EQ(program.cost, 40.5);
    EXPECT_TRUE(program.takesLong);
    EXPECT_TRUE(program.googleTest);
    ASSERT_EQ(manifest.notInKit.size(), 1U);
    EXPECT_EQ(manifest.notInKit[0].name, "shell");
    EXPECT_EQ(manifest.notInKit[0].reason, "needs a shell");
}

TEST(Manifest, A_text_that_is_no_manifest_is_refused)
{
    for (const char* text : {"", "{}", "no json", R"({"version": 1})"}) {
        EXPECT_THROW(static_cast<void>(ReadManifest(text)), std::runtime_error) << text;
    }
}

TEST(Manifest, Only_locks_on_protected_things_need_an_administrator)
{
    const auto needs = [](const Texts& locks) {
        TestProgram program;
        program.locks = locks;
        return NeedsAdministrator(program);
    };
    EXPECT_FALSE(needs({}));
    EXPECT_FALSE(needs({"rot"}));
    EXPECT_TRUE(needs({"rot", "registry"}));
    EXPECT_TRUE(needs({"services"}));
    EXPECT_TRUE(needs({"firewall"}));
}

} // namespace
} // namespace vqrx::kit
