#pragma once

#include "DaemonStatus.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Writes a time for people.
using TimeWriter = std::function<std::string(std::int64_t timeMs)>;

/// How a table of daemons looks.
struct TableStyle {
    std::int64_t nowMs = 0;           ///< milliseconds since 1970, UTC
    TimeWriter timeText;              ///< "2026-11-21 08:40:42"
    std::optional<std::size_t> width; ///< characters of a line of the terminal; nothing: no limit
    /// The daemons at an earlier look; null: none. Then CPU is the share of the time since that
    /// look, and behind MEMORY stands the change since then.
    const std::vector<DaemonStatus>* before = nullptr;
    std::int64_t beforeMs = 0; ///< of that look
};

/// A line of the table, UTF-8, without a line end. Control characters are visible ("\x1B"), so that
/// no argument of a program commands the terminal.
struct TableLine {
    std::string text;
    /// Level of a record whose colour fits the state: kErrorRecord for a daemon in trouble,
    /// kWarningRecord for one that does not run, -1 for all other lines.
    int level = -1;
};

/// Writes the daemons as a table for people: a line of titles, and a line for each daemon. If the
/// table is wider than the terminal, it has no last exits, no folders of programs, and short times.
/// A line that is still too long is cut. Pure except for timeText.
[[nodiscard]] std::vector<TableLine> TableOf(const std::vector<DaemonStatus>& daemons,
                                             const TableStyle& style);

/// Returns the share of one processor in percent; 0 for a negative time. Less than a second counts
/// as a second: Windows counts processor time in ticks of 15 ms, so a process that was just created
/// would show more than all processors.
[[nodiscard]] double CpuPercent(std::int64_t cpuBeforeMs, std::int64_t cpuMs, std::int64_t timeMs);

/// Counts the characters of a text.
/// @param utf8  valid UTF-8
[[nodiscard]] std::size_t CharactersOf(const std::string& utf8);

/// Cuts a text to a number of characters. "…" stands at the end of a text that was longer.
/// @param utf8  valid UTF-8
[[nodiscard]] std::string CutTo(const std::string& utf8, std::size_t characters);

} // namespace vqrx::client::v0
