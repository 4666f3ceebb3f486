#include "Ledger.h"

#include <windows.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>

namespace vqrx::test::anomaly {
namespace {

constexpr std::size_t kMaxEntries = 65536;
constexpr std::size_t kBuckets = 8192;

struct LedgerEntry {
    std::uint64_t value = 0;
    const CallPath* path = nullptr;
    LedgerEntry* next = nullptr;
    Resource resource = Resource::kMemory;
};

LedgerEntry entries[kMaxEntries];
LedgerEntry* buckets[kBuckets];
LedgerEntry* unused = nullptr;
std::size_t handedOut = 0; // entries that were ever used since ForgetAcquired
std::atomic_flag ledgerLock = ATOMIC_FLAG_INIT;

class LedgerHold {
public:
    LedgerHold() noexcept
    {
        while (ledgerLock.test_and_set(std::memory_order_acquire)) {
            SwitchToThread();
        }
    }
    LedgerHold(const LedgerHold&) = delete;
    LedgerHold& operator=(const LedgerHold&) = delete;
    ~LedgerHold() { ledgerLock.clear(std::memory_order_release); }
};

LedgerEntry*& BucketOf(Resource resource, std::uint64_t value) noexcept
{
    const std::uint64_t mixed = (value >> 4) ^ (value >> 17) ^ static_cast<std::uint64_t>(resource);
    return buckets[mixed % kBuckets];
}

LedgerEntry* TakeUnused() noexcept
{
    if (unused != nullptr) {
        LedgerEntry* const entry = unused;
        unused = entry->next;
        return entry;
    }
    if (handedOut == kMaxEntries) {
        std::abort(); // the scenario holds more at once than the ledger has room for: enlarge it
    }
    return &entries[handedOut++];
}

} // namespace

const char* NameOf(Resource resource) noexcept
{
    static constexpr const char* kNames[] = {"block of memory",
                                             "handle",
                                             "handle of a started process",
                                             "service handle",
                                             "registry key",
                                             "BSTR",
                                             "critical section",
                                             "block of local memory",
                                             "file",
                                             "search",
                                             "timer",
                                             "membership of COM",
                                             "lock of an array"};
    return kNames[static_cast<std::size_t>(resource)];
}

void NoteAcquired(Resource resource, std::uint64_t value, const CallPath* path) noexcept
{
    const LedgerHold hold;
    LedgerEntry* const entry = TakeUnused();
    LedgerEntry*& bucket = BucketOf(resource, value);
    *entry = {value, path, bucket, resource};
    bucket = entry;
}

void NoteReleased(Resource resource, std::uint64_t value) noexcept
{
    const LedgerHold hold;
    for (LedgerEntry** link = &BucketOf(resource, value); *link != nullptr; link = &(*link)->next) {
        LedgerEntry* const entry = *link;
        if (entry->resource == resource && entry->value == value) {
            *link = entry->next;
            entry->next = unused;
            unused = entry;
            return;
        }
    }
}

void ForgetAcquired() noexcept
{
    const LedgerHold hold;
    for (LedgerEntry*& bucket : buckets) {
        bucket = nullptr;
    }
    unused = nullptr;
    handedOut = 0;
}

std::map<Leftover, int> Leftovers()
{
    std::vector<Leftover> found;
    found.reserve(kMaxEntries); // no allocation while the ledger is locked
    {
        const LedgerHold hold;
        for (const LedgerEntry* entry : buckets) {
            for (; entry != nullptr; entry = entry->next) {
                found.push_back({entry->resource, entry->path});
            }
        }
    }
    std::map<Leftover, int> counts;
    for (const Leftover& leftover : found) {
        ++counts[leftover];
    }
    return counts;
}

} // namespace vqrx::test::anomaly
