#include "log_perf/queue/MessageQueue.h"

#include "AllocationFault.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

namespace vqrx::test {
namespace {

using log::log_perf::v2::LogRecord;
using log::log_perf::v2::MessageQueue;
using log::log_perf::v2::Timestamp;

constexpr Timestamp kTime{1795236736, 7, 0, 0};

bool Append(MessageQueue& queue, const std::string& text)
{
    return queue.Append(2, kTime, text);
}

std::string TakeText(MessageQueue& queue)
{
    const LogRecord* const record = queue.Take();
    return record == nullptr ? "none" : record->text;
}

void Fill(MessageQueue& queue)
{
    for (std::size_t i = 0; i < MessageQueue::kMaxWaiting; ++i) {
        ASSERT_TRUE(Append(queue, std::to_string(i)));
    }
}

} // namespace

TEST(MessageQueue, Take_returns_null_if_the_queue_is_empty)
{
    MessageQueue queue;
    EXPECT_TRUE(queue.IsEmpty());
    EXPECT_EQ(nullptr, queue.Take());
}

TEST(MessageQueue, Take_returns_the_records_in_the_order_of_the_appends)
{
    MessageQueue queue;
    EXPECT_TRUE(Append(queue, "first"));
    EXPECT_TRUE(Append(queue, "second"));
    EXPECT_EQ("first", TakeText(queue));
    EXPECT_TRUE(Append(queue, "third"));
    EXPECT_FALSE(queue.IsEmpty());
    EXPECT_EQ("second", TakeText(queue));
    EXPECT_EQ("third", TakeText(queue));
    EXPECT_TRUE(queue.IsEmpty());
    EXPECT_EQ("none", TakeText(queue));
}

TEST(MessageQueue, Take_returns_level_and_time_of_the_record)
{
    MessageQueue queue;
    EXPECT_TRUE(queue.Append(3, kTime, "text"));
    const LogRecord* const record = queue.Take();
    ASSERT_NE(nullptr, record);
    EXPECT_EQ(3, record->level);
    EXPECT_EQ(kTime.time, record->timestamp.time);
    EXPECT_EQ(kTime.millitm, record->timestamp.millitm);
}

TEST(MessageQueue, The_record_after_1000_waiting_ones_reports_the_overflow)
{
    MessageQueue queue;
    Fill(queue);
    EXPECT_TRUE(Append(queue, "lost"));
    EXPECT_FALSE(Append(queue, "lost too"));
    for (std::size_t i = 0; i < MessageQueue::kMaxWaiting; ++i) {
        ASSERT_EQ(std::to_string(i), TakeText(queue));
    }
    const LogRecord* const last = queue.Take();
    ASSERT_NE(nullptr, last);
    EXPECT_EQ("Overflowed message queue.", last->text);
    EXPECT_EQ(0, last->level);
    EXPECT_EQ(nullptr, queue.Take());
}

TEST(MessageQueue, After_an_overflow_records_are_lost_until_the_last_one_is_taken)
{
    MessageQueue queue;
    Fill(queue);
    EXPECT_TRUE(Append(queue, "lost"));
    for (std::size_t i = 0; i < MessageQueue::kMaxWaiting; ++i) {
        ASSERT_EQ(std::to_string(i), TakeText(queue));
        ASSERT_FALSE(Append(queue, "lost"));
    }
    EXPECT_EQ("Overflowed message queue.", TakeText(queue));
    EXPECT_TRUE(Append(queue, "kept"));
    EXPECT_EQ("kept", TakeText(queue));
}

TEST(MessageQueue, A_steady_stream_of_records_allocates_nothing)
{
    MessageQueue queue;
    const std::string text(200, 'x');
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(Append(queue, text));
        ASSERT_EQ(text, TakeText(queue));
    }
    const AllocationFault fault(0);
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(queue.Append(2, kTime, text));
        EXPECT_NE(nullptr, queue.Take());
    }
    EXPECT_FALSE(fault.Happened());
}

TEST(MessageQueue, The_memory_of_a_text_of_more_than_512_bytes_is_freed_after_delivery)
{
    MessageQueue queue;
    const std::string text(513, 'x');
    EXPECT_TRUE(Append(queue, text));
    EXPECT_EQ(text, TakeText(queue));
    EXPECT_EQ("none", TakeText(queue));
    const AllocationFault fault(0);
    EXPECT_THROW(static_cast<void>(queue.Append(2, kTime, text)), std::bad_alloc);
}

TEST(MessageQueue, An_append_that_runs_out_of_memory_leaves_the_queue_unchanged)
{
    MessageQueue queue;
    const std::string text(200, 'x');
    {
        const AllocationFault fault(0);
        EXPECT_THROW(static_cast<void>(queue.Append(2, kTime, text)), std::bad_alloc);
    }
    EXPECT_TRUE(queue.IsEmpty());
    EXPECT_TRUE(Append(queue, text));
    EXPECT_EQ(text, TakeText(queue));
    EXPECT_EQ("none", TakeText(queue));
}

} // namespace vqrx::test
