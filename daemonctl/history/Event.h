#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// What the supervisor's messages tell.
enum class EventKind {
    kOther, ///< a message of no meaning here

    kFirewallDetected,  ///< first line of most runs
    kFirewallStarting,  ///< the firewall at start-up: looked for, waited for, not to be had
    kFirewall,          ///< the firewall later: a rule made or removed in vain
    kComSecurityFailed, ///< "CoInitializeSecurity error ..."
    kWmiConnecting,
    kWmiConnected,
    kWmiFailed,
    kPublicationFailed,  ///< "RotRegistration errror ..."
    kSupervisionStarted, ///< "Deamon Thread started"

    kStarted,     ///< a daemon's process was started
    kStartFailed, ///< Windows did not start it
    kEnded,       ///< a daemon's process was found ended; the message does not say whose
    kStopped,     ///< a client asked to stop it, and it ended
    kStopFailed,  ///< ... and it could not be ended; it is no longer supervised
    kAttached,
    kAttachFailed,
    kDetached,

    kExitRequested,    ///< a client asked the supervisor to end
    kStillRegistered,  ///< it ends while daemons are registered; their processes run on
    kSupervisionEnded, ///< "Deamon Thread is exiting..."
    kQueueOverflow     ///< what was logged after this until the queue was empty is lost
};

struct Event {
    EventKind kind = EventKind::kOther;
    std::optional<std::uint32_t> daemonId;
    std::optional<std::uint32_t> processId;
    std::string command; ///< of a daemon's description: path and arguments with the trailing blank,
                         ///< or a service's name without one
    std::string service; ///< kEnded: the service's name, empty for an ordinary program
    std::string reason;  ///< kEnded: the exit code in words
    std::uint32_t count = 0; ///< kStopped: the method, 0 to 2; kStillRegistered: how many

    bool operator==(const Event&) const = default;
};

/// Understands a message. Pure; any text is allowed.
Event EventOf(std::string_view text);

/// The name of an event in machine-readable output, "started" for kStarted; empty for kOther.
std::string_view NameOf(EventKind kind) noexcept;

} // namespace vqrx::client::v0
