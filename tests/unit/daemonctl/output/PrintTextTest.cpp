#include "PrintText.h"

#include "AllocationFault.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <string>

namespace vqrx::test {
namespace {

TEST(PrintText, Memory_that_runs_out_is_an_exception_and_no_line_is_left_out)
{
    const std::string line(200, 'x'); // longer than what a string holds without memory
    const std::string text = line + "\n" + line + "\n";
    bool happened = true;
    std::size_t failures = 0;
    for (std::size_t succeeding = 0; happened && succeeding < 100; ++succeeding) {
        bool thrown = false;
        testing::internal::CaptureStdout();
        {
            const AllocationFault fault(succeeding);
            try {
                client::v0::PrintText(text);
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
            happened = fault.Happened();
        }
        const std::string printed = testing::internal::GetCapturedStdout();
        EXPECT_TRUE(thrown || printed == text) << "after " << succeeding << ": " << printed;
        failures += happened ? 1U : 0U;
    }
    EXPECT_LT(0U, failures);
}

} // namespace
} // namespace vqrx::test
