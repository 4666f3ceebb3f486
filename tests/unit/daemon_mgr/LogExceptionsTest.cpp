#include "LogExceptions.h"

#include "CapturingLogger.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::LogExceptions;
using Lines = std::vector<CapturingLogger::Line>;

} // namespace

TEST(LogExceptionsTest, Work_that_does_not_throw_logs_nothing)
{
    CapturingLogger logger;
    bool done = false;
    LogExceptions(logger, [&] { done = true; });
    EXPECT_TRUE(done);
    EXPECT_TRUE(logger.Lines().empty());
}

TEST(LogExceptionsTest, Exception_is_logged_with_its_text_at_level_0)
{
    CapturingLogger logger;
    LogExceptions(logger, [] { throw std::runtime_error("no memory"); });
    EXPECT_EQ((Lines{{0, "Exception occured : no memory"}}), logger.Lines());
}

TEST(LogExceptionsTest, Exception_of_another_type_is_logged_without_a_text)
{
    CapturingLogger logger;
    LogExceptions(logger, [] { throw 5; });
    EXPECT_EQ((Lines{{0, "Unknown exception occured"}}), logger.Lines());
}

} // namespace vqrx::test
