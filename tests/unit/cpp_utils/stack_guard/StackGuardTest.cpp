// The child program writes its secret value, then damages its stack in a protected function.
#include "stack_guard/StackGuard.h"

#include "ChildProcess.h"
#include "TempFolder.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>

namespace vqrx::test {
namespace {

using cpp_utils::stack_guard::v1::MixStackGuard;
using cpp_utils::stack_guard::v1::StartValues;

// Runs the child and returns what it wrote.
std::string RunChild(const TempFolder& folder)
{
    const std::string file = folder.File("output");
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    {
        const system::win32::v1::UniqueKernelHandle output(CreateFileA(
            file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr));
        const ChildProcess child('"' + TestProgram("overruns") + '"', output.Get());
        EXPECT_TRUE(child.Wait());
        EXPECT_EQ(child.ExitCode(), 0xC000001DU); // STATUS_ILLEGAL_INSTRUCTION (ntstatus.h)
    }
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(StackGuard, A_function_that_overruns_its_buffer_ends_the_program)
{
    const TempFolder folder;
    const std::string output = RunChild(folder);
    EXPECT_NE(output.find("*** stack smashing detected ***"), std::string::npos) << output;
    EXPECT_EQ(output.find("returned"), std::string::npos) << output;
}

TEST(StackGuard, The_secret_value_differs_from_start_to_start)
{
    const TempFolder folder;
    const std::string first = RunChild(folder);
    EXPECT_NE(first, RunChild(folder));
}

TEST(StackGuard, The_secret_value_is_set_and_no_text_can_contain_it)
{
    EXPECT_NE(__stack_chk_guard, 0U);
    EXPECT_EQ(__stack_chk_guard & 0xFFU, 0U);
}

TEST(StackGuard, Each_value_of_the_start_changes_the_secret_value)
{
    const std::uintptr_t without = MixStackGuard({});
    StartValues values;
    for (std::uint64_t* const value :
         {&values.time, &values.counter, &values.process, &values.address}) {
        *value = 1;
        EXPECT_NE(MixStackGuard(values), without);
        *value = 0;
    }
    EXPECT_EQ(MixStackGuard(values), without);
}

} // namespace
} // namespace vqrx::test
