#include "ProcessEnd.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace vqrx::test {
namespace {

using app::v0::ExitCodeOfNow;

/// Notes the exit code at its own destruction.
class NotesExitCode {
public:
    explicit NotesExitCode(UINT& code)
        : code_(code)
    {
    }
    NotesExitCode(const NotesExitCode&) = delete;
    NotesExitCode& operator=(const NotesExitCode&) = delete;
    ~NotesExitCode() { code_ = ExitCodeOfNow(); }

private:
    UINT& code_;
};

TEST(ProcessEndTest, Exit_code_is_0_without_an_exception)
{
    UINT code = 9;
    {
        const NotesExitCode notes(code);
    }
    EXPECT_EQ(code, 0U);
}

TEST(ProcessEndTest, Exit_code_is_1_while_an_exception_passes_and_0_after_it_is_caught)
{
    UINT code = 9;
    try {
        const NotesExitCode notes(code);
        throw std::runtime_error("start-up failed");
    } catch (const std::runtime_error&) {
        EXPECT_EQ(code, 1U);
        EXPECT_EQ(ExitCodeOfNow(), 0U);
    }
}

} // namespace
} // namespace vqrx::test
