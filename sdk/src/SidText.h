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

} // namespace daemon_manager
