#pragma once

#include "TroubleWatch.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// What the event log keeps of a kind of change.
struct EventOfKind {
    WORD type = 0; ///< EVENTLOG_ERROR_TYPE or EVENTLOG_INFORMATION_TYPE
    /// The message in events.mc. Windows shows its low 16 bits.
    DWORD id = 0;
};

/// Returns the event for a kind of change. Fixed, because operators filter by it:
/// docs/daemonctl.md.
[[nodiscard]] EventOfKind EventOf(Trouble::Kind kind) noexcept;

/// Returns the event for a guard that cannot run, or that has failed. Fixed, too.
[[nodiscard]] EventOfKind EventOfFailedGuard() noexcept;

/// Writes to Windows' event log "Application", under the source "DaemonManager". Windows finds the
/// message texts through the registry key of the source, which the installer makes; without the key
/// it shows the events with a remark that the description is missing. Any thread, one at a time.
class EventLog {
public:
    /// @throws std::runtime_error with the Windows error if the event log cannot be opened
    EventLog();

    /// Writes one event with at most 31,000 characters of the text, because Windows refuses 31,839
    /// and more (ReportEvent).
    /// @param text  UTF-8
    /// @throws std::runtime_error with the Windows error; std::bad_alloc
    void Write(const EventOfKind& event, const std::string& text);

    /// Writes the event of a change. Its text is DescribeChange(trouble).
    /// @throws as the function above
    void Write(const Trouble& trouble);

    /// Writes an event for each change. If one cannot be written, tries the others all the same.
    /// @throws std::runtime_error with the first error of Windows, after all were tried;
    ///         std::bad_alloc at once
    void WriteAll(const std::vector<Trouble>& troubles);

private:
    struct SourceTraits {
        using Raw = HANDLE;
        static Raw Empty() noexcept { return nullptr; }
        static bool IsEmpty(Raw raw) noexcept { return raw == nullptr; }
        static void Close(Raw raw) noexcept { DeregisterEventSource(raw); }
    };

    system::win32::v1::UniqueHandle<SourceTraits> source_;
};

} // namespace vqrx::client::v0
