#include "log_perf/ring/LogHistory.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace vqrx::log::log_perf::v2 {
namespace {

// Capacities of the strings in the pool. The pool never gives memory of one size back for another,
// so there are few sizes. Each is one less than a block of the pool: a string needs a byte for its
// NUL. Longer texts are rare and lie on the heap.
constexpr std::array<std::size_t, 3> kPooledTexts = {63, 127, 191};

// Memory of a heap text is used again if at most this much of it stays unused, bytes.
constexpr std::size_t kMaxUnusedText = 32;

bool IsPooled(std::size_t length) noexcept
{
    return length <= kPooledTexts.back();
}

// Capacity that is reserved for a text of this length.
std::size_t ReservedFor(std::size_t length) noexcept
{
    return IsPooled(length) ? *std::lower_bound(kPooledTexts.begin(), kPooledTexts.end(), length)
                            : length;
}

} // namespace

void LogHistory::Insert(std::int64_t number, const LogHistoryEntry& entry)
{
    const auto table = table_.Lock();
    auto& entries = table->entries;
    if (!table->InsertInPlaceOfOldest(number, entry)) {
        entries.insert_or_assign(entries.end(), number, table->Store(entry));
    }
    while (entries.size() > kCapacity) {
        entries.erase(entries.begin());
    }
}

// Stores the entry in the memory of the oldest one, which has to leave anyway. Returns false, with
// nothing changed, if the history is not full or that memory does not fit. Allocates nothing, so it
// cannot fail.
bool LogHistory::Table::InsertInPlaceOfOldest(std::int64_t number, const LogHistoryEntry& entry)
{
    if (entries.size() < kCapacity || entries.empty() || number <= entries.rbegin()->first) {
        return false;
    }
    const std::size_t length = entry.date.size() + entry.text.size();
    const std::size_t available = entries.begin()->second.dateAndText.capacity();
    const std::size_t usable = ReservedFor(length) + (IsPooled(length) ? 0 : kMaxUnusedText);
    if (available < length || available > usable) {
        return false;
    }
    auto node = entries.extract(entries.begin());
    node.key() = number;
    Stored& stored = node.mapped();
    stored.time = entry.time;
    stored.level = entry.level;
    stored.dateLength = static_cast<std::uint32_t>(entry.date.size());
    stored.dateAndText.assign(entry.date).append(entry.text);
    entries.insert(entries.end(), std::move(node));
    return true;
}

LogHistory::Stored LogHistory::Table::Store(const LogHistoryEntry& entry)
{
    const std::size_t length = entry.date.size() + entry.text.size();
    Stored stored{entry.time, entry.level, static_cast<std::uint32_t>(entry.date.size()),
                  std::pmr::string(&pool)};
    stored.dateAndText.reserve(ReservedFor(length));
    stored.dateAndText.append(entry.date).append(entry.text);
    return stored;
}

void LogHistory::RemoveFrom(std::int64_t number) noexcept
{
    const auto table = table_.Lock();
    table->entries.erase(table->entries.lower_bound(number), table->entries.end());
}

void LogHistory::Clear() noexcept
{
    table_.Lock()->entries.clear();
}

// Turns a number that counts back from the newest record into the number of that record. A damaged
// file can bring any number into the table: the sum wraps instead of overflowing.
std::int64_t LogHistory::Table::Resolve(std::int64_t number) const noexcept
{
    if (number >= 0) {
        return number;
    }
    const auto newest = static_cast<std::uint64_t>(entries.rbegin()->first);
    return static_cast<std::int64_t>(newest + 1 + static_cast<std::uint64_t>(number));
}

bool LogHistory::GetRange(std::int64_t first, std::int64_t last, std::int64_t& outFirst,
                          std::int64_t& outLast)
{
    const auto table = table_.Lock();
    const auto& entries = table->entries;
    if (entries.empty()) {
        throw std::runtime_error("History is empty");
    }
    outFirst = std::max(table->Resolve(first), entries.begin()->first);
    outLast = std::min(table->Resolve(last), entries.rbegin()->first);
    return outLast >= outFirst;
}

ILogRetriever::Entries LogHistory::GetEntries(std::int64_t first, std::int64_t last)
{
    ILogRetriever::Entries result;
    const auto table = table_.Lock();
    const auto& entries = table->entries;
    if (entries.empty()) {
        return result;
    }
    const std::int64_t lowest = table->Resolve(first);
    const std::int64_t highest = table->Resolve(last);
    for (auto entry = entries.lower_bound(lowest);
         entry != entries.end() && entry->first <= highest; ++entry) {
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
