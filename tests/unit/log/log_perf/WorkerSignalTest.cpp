#include "log_perf/WorkerSignal.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using log::log_perf::v2::WorkerSignal;
using Result = WorkerSignal::Result;

TEST(WorkerSignal, that_nobody_gave_times_out)
{
    WorkerSignal signal;
    EXPECT_EQ(Result::kTimedOut, signal.Wait(0));
    EXPECT_EQ(Result::kTimedOut, signal.Wait(1));
}

TEST(WorkerSignal, tells_of_as_many_records_as_were_posted)
{
    WorkerSignal signal;
    signal.Post();
    signal.Post();
    EXPECT_EQ(Result::kRecord, signal.Wait(0));
    EXPECT_EQ(Result::kRecord, signal.Wait(0));
    EXPECT_EQ(Result::kTimedOut, signal.Wait(0));
}

TEST(WorkerSignal, tells_of_the_stop_before_records_and_once)
{
    WorkerSignal signal;
    signal.Post();
    signal.Stop();
    EXPECT_EQ(Result::kStop, signal.Wait(0));
    EXPECT_EQ(Result::kRecord, signal.Wait(0));
    EXPECT_EQ(Result::kTimedOut, signal.Wait(0));
}

} // namespace
} // namespace vqrx::test
