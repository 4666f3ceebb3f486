#pragma once

#include "DaemonStatus.h"
#include "WaitCondition.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vqrx::client::v0 {

/// A change that somebody should be told: trouble that began, or that ended.
struct Trouble {
    enum class Kind {
        kSupervisorLost,
        kSupervisorBack,
        kCrashLoopBegan,
        kCrashLoopEnded,
        kCannotStart,
        kStartsAgain,
        kDown, ///< the daemon has had no process for as long as the watch was told to wait
        kUpAgain
    };
    Kind kind = Kind::kSupervisorLost;
    std::int64_t timeMs = 0; ///< when it was seen, milliseconds since 1970, UTC
    // The other members are set only for a daemon.
    bool isGone = false; ///< the trouble ended because the supervisor no longer has the daemon
    /// If isGone: another supervisor runs than at the look before. Otherwise a client stopped or
    /// detached the daemon.
    bool isOtherRun = false;
    std::optional<std::uint32_t> daemonId; ///< nothing: no record of the log shows it
    std::string command;                   ///< path and arguments, without the blank at the end
    std::size_t restartsLastHour = 0;
    std::string lastExit; ///< reason of the last end, in ReadableReason()'s words; empty: not known
};

/// Finds in a series of looks what somebody should be told. Trouble that is there at the first look
/// counts as begun then. Trouble ends for a daemon that the supervisor no longer has. While no
/// supervisor answers, nothing is known of the daemons, and they count as new when it is back. A
/// daemon that could never be started has no id; it is the same daemon when it gets one. Pure.
class TroubleWatch {
public:
    /// @param downMs  how long a daemon may be without a process, milliseconds
    explicit TroubleWatch(std::int64_t downMs) noexcept
        : downMs_(downMs)
    {
    }

    /// Takes the next look.
    /// @param nowMs    milliseconds since 1970, UTC
    /// @param daemons  nothing if no supervisor answers
    /// @param run      the run of the supervisor that has the daemons; nothing if it is not known
    /// @return what has changed since the look before
    [[nodiscard]] std::vector<Trouble> Look(std::int64_t nowMs,
                                            const std::optional<std::vector<DaemonStatus>>& daemons,
                                            const std::optional<RunMark>& run = std::nullopt);

    /// Takes a look at a supervisor whose daemons cannot be seen, because its log cannot be read.
    /// What is known of the daemons stays as it is.
    /// @param nowMs  milliseconds since 1970, UTC
    [[nodiscard]] std::vector<Trouble> LookAtSupervisor(std::int64_t nowMs);

private:
    using Key = std::pair<std::optional<std::uint32_t>, std::string>;

    struct Known {
        bool inCrashLoop = false;
        bool cannotStart = false;
        std::optional<std::int64_t> downSinceMs;
        bool isDown = false; // and somebody was told
        std::size_t restartsLastHour = 0;
        std::string lastExit; // reason, in the words of the log
    };

    [[nodiscard]] std::vector<Trouble> NoteSupervisor(std::int64_t nowMs, bool isThere);
    void LookAt(const DaemonStatus& daemon, std::int64_t nowMs, Known& known,
                std::vector<Trouble>& found) const;
    [[nodiscard]] static Trouble ChangeOfGone(const Key& gone, const Known& known, bool isOtherRun,
                                              std::int64_t nowMs);
    static void EndTroubleOf(const Known& known, const Trouble& change,
                             std::vector<Trouble>& found);

    std::int64_t downMs_;
    std::optional<bool> isThere_; // the supervisor, at the look before
    std::optional<RunMark> run_;  // the last one that was known
    std::map<Key, Known> known_;
};

/// Returns the name of a change for programs, for example "crash-loop-began".
[[nodiscard]] std::string_view NameOf(Trouble::Kind kind) noexcept;

/// Describes a change in a sentence for people.
[[nodiscard]] std::string DescribeChange(const Trouble& trouble);

/// Writes changes for programs: one JSON object and a line feed after it. docs/daemonctl.md
/// describes the fields, whose names are fixed. Letters beyond ASCII are escaped.
/// @param nowMs  milliseconds since 1970, UTC
[[nodiscard]] std::string TroublesJson(const std::vector<Trouble>& troubles, std::int64_t nowMs,
                                       const std::string& version);

} // namespace vqrx::client::v0
