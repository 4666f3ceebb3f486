#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// What happened, according to a message of the supervisor.
enum class EventKind {
    kOther, ///< none of the events below

    kFirewallDetected, ///< the first message of most runs
    /// At start-up: the supervisor waits for the firewall service, or cannot use the firewall.
    kFirewallStarting,
    kFirewall,          ///< later: a rule could not be made or removed
    kComSecurityFailed, ///< "CoInitializeSecurity error ..."
    kWmiConnecting,
    kWmiConnected,
    kWmiFailed,
    kPublicationFailed,  ///< "RotRegistration errror ..."
    kSupervisionStarted, ///< "Deamon Thread started"

    kStarted,     ///< a process was started for a daemon
    kStartFailed, ///< Windows did not start the process
    kEnded,       ///< a process of a daemon ended; the message does not name the daemon
    /// A client's stop succeeded. After "Stop (0)" the process of an SNMP agent may run on.
    kStopped,
    /// A client tried to stop a daemon; its process runs on unsupervised, or ended a moment before.
    kStopFailed,
    kAttached, ///< the supervisor took over a process that was running
    kAttachFailed,
    kDetached, ///< the supervisor gave a process up; it runs on

    kExitRequested,    ///< a client asked the supervisor to exit
    kStillRegistered,  ///< the supervisor exits; daemons are registered, their processes run on
    kSupervisionEnded, ///< "Deamon Thread is exiting..."
    kSupervisionError, ///< "Exception occured : ...": the work on one daemon was given up
    kQueueOverflow,    ///< messages after this one are lost, until the queue was empty
    kLogOutage         ///< messages before this one are missing: the log file could not be written
};

/// A message of the supervisor after reading.
struct Event {
    EventKind kind = EventKind::kOther;
    std::optional<std::uint32_t> daemonId;
    std::optional<std::uint32_t> processId;
    std::string command; ///< of a program: path and arguments, and a trailing blank; of a service:
                         ///< its name, no trailing blank. The log cuts a very long record: then
                         ///< the last arguments are missing, and the blank is there all the same
    std::string service; ///< kEnded: the name of the service; empty for a program
    std::string reason;  ///< kEnded: the exit code in words
    std::uint32_t count = 0; ///< kStopped: the method, 0 to 2; kStillRegistered: number of daemons;
                             ///< kLogOutage: number of messages

    bool operator==(const Event&) const = default;
};

/// Returns a command without the blank that ends the command of a program; see Event::command.
[[nodiscard]] std::string WithoutBlank(std::string command);

/// Reads a message of the supervisor. Pure.
/// @param text  UTF-8; any text
/// @return kOther for an unknown message
[[nodiscard]] Event EventOf(std::string_view text);

/// Returns the name of an event in JSON output, for example "started" for kStarted; empty for
/// kOther.
[[nodiscard]] std::string_view NameOf(EventKind kind) noexcept;

} // namespace vqrx::client::v0
