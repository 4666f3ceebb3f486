#include "log_perf/LogHistory.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace vqrx::log::log_perf::v2 {

using system::sync_ptr::v1::CriticalSectionHold;

namespace {

// The pool keeps what it has for each size for good: so there are few sizes (each one less than
// what the pool gives, for the end of the string), and longer texts, which are few, are not of it.
constexpr std::array<std::size_t, 3> kPooledTexts = {63, 127, 191};

// How much longer than needed the memory of an old, longer text may be to be used again.
constexpr std::size_t kMaxUnusedText = 32;

bool IsPooled(std::size_t length) noexcept
{
    return length <= kPooledTexts.back();
}

// What is reserved for a text.
std::size_t ReservedFor(std::size_t length) noexcept
{
    return IsPooled(length) ? *std::lower_bound(kPooledTexts.begin(), kPooledTexts.end(), length)
                            : length;
}

} // namespace

void LogHistory::Insert(std::int64_t number, const LogHistoryEntry& entry)
{
    const CriticalSectionHold hold(lock_);
    if (!InsertInPlaceOfOldest(number, entry)) {
        entries_.insert_or_assign(entries_.end(), number, Store(entry));
    }
    while (entries_.size() > capacity_) {
        entries_.erase(entries_.begin());
    }
}

// In the memory of the oldest, which has to leave, where it is as much as is needed. Nothing is
// allocated: nothing can fail on the way.
bool LogHistory::InsertInPlaceOfOldest(std::int64_t number, const LogHistoryEntry& entry)
{
    if (entries_.size() < capacity_ || entries_.empty() || number <= entries_.rbegin()->first) {
        return false;
    }
    const std::size_t length = entry.date.size() + entry.text.size();
    const std::size_t available = entries_.begin()->second.dateAndText.capacity();
    const std::size_t usable = ReservedFor(length) + (IsPooled(length) ? 0 : kMaxUnusedText);
    if (available < length || available > usable) {
        return false;
    }
    auto node = entries_.extract(entries_.begin());
    node.key() = number;
    Stored& stored = node.mapped();
    stored.time = entry.time;
    stored.level = entry.level;
    stored.dateLength = static_cast<std::uint32_t>(entry.date.size());
    stored.dateAndText.assign(entry.date).append(entry.text);
    entries_.insert(entries_.end(), std::move(node));
    return true;
}

LogHistory::Stored LogHistory::Store(const LogHistoryEntry& entry)
{
    const std::size_t length = entry.date.size() + entry.text.size();
    std::pmr::memory_resource* const memory =
        IsPooled(length) ? &nodes_ : nodes_.upstream_resource();
    Stored stored{entry.time, entry.level, static_cast<std::uint32_t>(entry.date.size()),
                  std::pmr::string(memory)};
    stored.dateAndText.reserve(ReservedFor(length));
    stored.dateAndText.append(entry.date).append(entry.text);
    return stored;
}

void LogHistory::Clear() noexcept
{
    const CriticalSectionHold hold(lock_);
    entries_.clear();
}

// A damaged file can bring any number into the table: the sum wraps instead of overflowing.
std::int64_t LogHistory::Resolve(std::int64_t number) const noexcept
{
    if (number >= 0) {
        return number;
    }
    const auto newest = static_cast<std::uint64_t>(entries_.rbegin()->first);
    return static_cast<std::int64_t>(newest + 1 + static_cast<std::uint64_t>(number));
}

bool LogHistory::GetRange(std::int64_t first, std::int64_t last, std::int64_t& outFirst,
                          std::int64_t& outLast)
{
    const CriticalSectionHold hold(lock_);
    if (entries_.empty()) {
        throw std::runtime_error("History is empty");
    }
    outFirst = std::max(Resolve(first), entries_.begin()->first);
    outLast = std::min(Resolve(last), entries_.rbegin()->first);
    return outLast >= outFirst;
}

ILogRetriever::Entries LogHistory::GetEntries(std::int64_t first, std::int64_t last)
{
    ILogRetriever::Entries result;
    const CriticalSectionHold hold(lock_);
    if (entries_.empty()) {
        return result;
    }
    const std::int64_t lowest = Resolve(first);
    const std::int64_t highest = Resolve(last);
    for (auto entry = entries_.lower_bound(lowest);
         entry != entries_.end() && entry->first <= highest; ++entry) {
        const Stored& stored = entry->second;
        const std::string_view texts = stored.dateAndText;
        LogHistoryEntry whole{stored.level, stored.time,
                              std::string(texts.substr(0, stored.dateLength)),
                              std::string(texts.substr(stored.dateLength))};
        result.emplace_back(entry->first, std::move(whole));
    }
    return result;
}

} // namespace vqrx::log::log_perf::v2
