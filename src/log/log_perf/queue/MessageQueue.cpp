#include "log_perf/queue/MessageQueue.h"

#include "LogLevel.h"
#include "log_perf/time/Clock.h"

namespace vqrx::log::log_perf::v2 {
namespace {

// The memory of a longer text is freed after delivery: up to kMaxWaiting texts are kept.
constexpr std::size_t kMaxSpareText = 512;

} // namespace

bool MessageQueue::Append(int level, const Timestamp& timestamp, std::string_view text)
{
    const auto incoming = incoming_.Lock();
    if (overflowed_) {
        return false;
    }
    if (incoming->spare.empty()) {
        incoming->spare.emplace_back();
    }
    LogRecord& record = incoming->spare.front();
    if (waiting_ < kMaxWaiting) {
        record.text.assign(text);
        record.level = level;
        record.timestamp = timestamp;
    } else {
        record.text.assign("Overflowed message queue.");
        record.level = i_logger::v0::kLevelError;
        record.timestamp = CurrentTimestamp();
        overflowed_ = true;
    }
    incoming->records.splice(incoming->records.end(), incoming->spare, incoming->spare.begin());
    ++waiting_;
    return true;
}

// The worker collects all appended records at once and returns the delivered ones for reuse. So it
// seldom meets a caller at the lock, and a steady stream of records allocates nothing.
void MessageQueue::Collect() noexcept
{
    delivered_.remove_if(
        [](const LogRecord& record) { return record.text.capacity() > kMaxSpareText; });
    const auto incoming = incoming_.Lock();
    incoming->spare.splice(incoming->spare.begin(), delivered_);
    collected_.swap(incoming->records);
}

const LogRecord* MessageQueue::Take() noexcept
{
    if (collected_.empty()) {
        Collect();
    }
    if (collected_.empty()) {
        return nullptr;
    }
    delivered_.splice(delivered_.begin(), collected_, collected_.begin());
    // The flag is read before the count is lowered. After the count has become 0, callers may fill
    // the queue again and overflow it; that later overflow must not be cleared here.
    const bool overflowed = overflowed_;
    if (--waiting_ == 0 && overflowed) {
        const auto incoming = incoming_.Lock();
        overflowed_ = false;
    }
    return &delivered_.front();
}

} // namespace vqrx::log::log_perf::v2
