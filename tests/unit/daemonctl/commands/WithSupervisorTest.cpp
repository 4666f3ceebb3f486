#include "WithSupervisor.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

TEST(PrintNotes, writes_each_note_on_a_line_of_standard_error)
{
    client::v0::DaemonStatus daemon; // the log shows neither its start nor its id
    daemon.inLog = false;
    testing::internal::CaptureStderr();
    client::v0::PrintNotes({daemon}, {});
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(errors.find("daemonctl: the log no longer shows the start of a process, "), 0U)
        << errors;
    EXPECT_EQ(errors.back(), '\n');
}

} // namespace
} // namespace vqrx::test
