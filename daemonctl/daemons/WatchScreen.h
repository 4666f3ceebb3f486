#pragma once

#include "Attribution.h"
#include "DaemonStatus.h"
#include "StatusTable.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// What `ps --watch` sees at one moment.
struct WatchLook {
    std::int64_t nowMs = 0; ///< milliseconds since 1970, UTC
    std::string problem;    ///< why the daemons cannot be shown; empty if they can
    std::string note; ///< a line above the table: a trouble of the supervisor; empty: no such line
    std::vector<DaemonStatus> daemons;
    std::vector<AttributedRecord> records; ///< the newest ones about daemons, the newest last
};

/// The size of a window, in characters.
struct ScreenSize {
    std::size_t width = 80;
    std::size_t height = 25;
};

/// A line of the window, UTF-8, at most as wide as the window.
struct ScreenLine {
    std::string text;
    int level = -1;      ///< level of a record whose colour the line has; -1: none
    bool marked = false; ///< the line has changed since the look before
};

/// Composes the content of a window: a line about the watch, the note, the table of the daemons,
/// and below it the newest records as far as the window has room. If it has no room for all
/// daemons, the last line says how many are missing, and how many of these are in trouble. Pure
/// except for timeText.
/// @param before    the look before; null: none. Daemons whose state, process or number of restarts
///                  is another one are marked, and so are the records that are new
/// @param timeText  writes a time for people
/// @return at most size.height lines
[[nodiscard]] std::vector<ScreenLine> ComposeScreen(const WatchLook* before, const WatchLook& now,
                                                    const ScreenSize& size,
                                                    std::uint32_t everySeconds,
                                                    const TimeWriter& timeText);

/// Returns whether a record is about a daemon or about the supervisor's start or end, so that a
/// watcher wants to see it. Pure.
[[nodiscard]] bool IsWorthWatching(const AttributedRecord& record);

} // namespace vqrx::client::v0
