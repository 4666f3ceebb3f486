#pragma once

#include <cstdint>
#include <map>
#include <vector>

namespace vqrx::test::anomaly {

struct CallPath;

/// What a call acquires and another call gives back.
enum class Resource : std::uint8_t {
    kMemory,
    kHandle,
    kProcess, ///< the handle of a process that was started
    kServiceHandle,
    kRegistryKey,
    kText, ///< BSTR
    kCriticalSection,
    kLocalMemory,
    kFile,
    kSearch,
    kTimer,
    kApartment, ///< a thread's membership
    kArrayLock,
};

/// Returns a word for a resource, for the text of a finding.
[[nodiscard]] const char* NameOf(Resource resource) noexcept;

/// Notes that the product acquired something. Any thread; allocates nothing.
/// @param value  the handle or address; for an apartment the thread's id
/// @param path   the call that acquired it
void NoteAcquired(Resource resource, std::uint64_t value, const CallPath* path) noexcept;

/// Notes that something was given back. Does nothing if it was not noted, for example because the
/// test acquired it. Any thread; allocates nothing.
void NoteReleased(Resource resource, std::uint64_t value) noexcept;

/// Empties the ledger.
void ForgetAcquired() noexcept;

/// Things of one kind that one path of calls acquired and nobody gave back.
struct Leftover {
    Resource resource;
    const CallPath* path;
    bool operator<(const Leftover& other) const
    {
        return resource != other.resource ? resource < other.resource : path < other.path;
    }
};

/// Returns how many things are in the ledger, by kind and path.
[[nodiscard]] std::map<Leftover, int> Leftovers();

} // namespace vqrx::test::anomaly
