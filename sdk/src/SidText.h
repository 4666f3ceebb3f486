#pragma once

#include <windows.h>

#include <sddl.h>

#include <memory>
#include <string>

namespace daemon_manager {

/// Frees what Windows allocated with LocalAlloc.
struct LocalFreer {
    void operator()(void* memory) const noexcept { LocalFree(memory); }
};

/// Returns a SID as text, "S-1-5-18"; empty if Windows cannot.
/// @throws std::bad_alloc
inline std::wstring SidText(PSID sid)
{
    wchar_t* text = nullptr;
    if (ConvertSidToStringSidW(sid, &text) == FALSE) {
        return {};
    }
    const std::unique_ptr<wchar_t, LocalFreer> owner(text);
    return text;
}

/// Whether a SID as text is that of a service's own account.
inline bool IsSidOfService(const std::wstring& sid)
{
    const std::wstring beginning = L"S-1-5-80-";
    return sid.compare(0, beginning.size(), beginning) == 0;
}

} // namespace daemon_manager
