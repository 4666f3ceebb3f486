#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

struct IDaemonMgrControl;

namespace daemon_manager {

/// No daemon ever has this id. Detach(kNoDaemonId) changes nothing: if it returns, the supervisor
/// has answered.
inline constexpr std::uint32_t kNoDaemonId = 0xFFFFFFFF;

/// A request failed. what() contains the result code and the system's text for it.
class SupervisorError : public std::runtime_error {
public:
    SupervisorError(const std::string& text, long result)
        : std::runtime_error(text)
        , result_(result)
    {
    }
    /// The result code of COM, an HRESULT.
    [[nodiscard]] long Result() const noexcept { return result_; }

private:
    long result_;
};

/// No supervisor is running on this machine, it does not answer, or it has ended before or during
/// the call. In the last case nobody knows whether it did what was asked.
class SupervisorNotRunning : public SupervisorError {
public:
    using SupervisorError::SupervisorError;
};

/// The supervisor runs, but DaemonMgrPS.dll, which carries the calls between processes, is not
/// registered.
class ProxyNotRegistered : public SupervisorError {
public:
    using SupervisorError::SupervisorError;
};

/// The object in the Running Object Table belongs to somebody else than the installed supervisor.
/// what() says why.
class SupervisorNotTrusted : public SupervisorError {
public:
    using SupervisorError::SupervisorError;
};

/// A path or an argument would not reach the program as it is; what() says why. Nothing was asked
/// of the supervisor.
class UnsafeArgument : public SupervisorError {
public:
    using SupervisorError::SupervisorError;
};

/// Whether a connection is refused if somebody else than the installed supervisor answers.
enum class Answerer {
    kInstalled, ///< refuse a stranger; see SupervisorTrust in SupervisorIdentity.h
    kAnybody    ///< do not look; for a supervisor that is not installed
};

/// What becomes of arguments that would not reach the program as they are.
enum class ArgumentCheck {
    kRefuse, ///< throw UnsafeArgument; ArgumentRules.h has the rules
    kNone    ///< send them as they are
};

/// The answer of the supervisor to Launch and Attach.
struct DaemonRequest {
    std::uint32_t daemonId; ///< number of the daemon; not valid if Attach answers with done = false
    bool done;              ///< see Launch and Attach
};

/// A connection to the supervisor of this machine.
/// Paths and arguments are UTF-16; the supervisor converts them to its ANSI code page.
/// Threads: any thread of the multithreaded apartment may use a connection that was made there. A
/// connection made in a single-threaded apartment belongs to that thread.
/// Time: a call returns when the supervisor has answered. There is no limit: a supervisor that
/// hangs, or that waits for the firewall or for WMI, keeps its callers waiting.
/// Errors: every method throws SupervisorNotRunning if the supervisor has ended, SupervisorError if
/// the call fails for another reason, and std::bad_alloc.
/// A connection is never renewed: after the next start of the supervisor make a new object.
class SupervisorClient {
public:
    /// Connects to the supervisor. The calling thread must have initialised COM; otherwise COM may
    /// refuse, and the constructor throws SupervisorError. All calls are encrypted, and the
    /// supervisor learns who calls but may not act as the caller.
    /// @throws SupervisorNotRunning, ProxyNotRegistered, SupervisorNotTrusted, SupervisorError
    explicit SupervisorClient(Answerer answerer = Answerer::kInstalled);
    SupervisorClient(SupervisorClient&&) noexcept;
    SupervisorClient& operator=(SupervisorClient&&) noexcept;
    SupervisorClient(const SupervisorClient&) = delete;
    SupervisorClient& operator=(const SupervisorClient&) = delete;
    ~SupervisorClient();

    /// Registers a program; the supervisor starts it and keeps it running.
    /// @param path       full path of the program
    /// @param arguments  one element for each argument, without quotes
    /// @return done is false if this program is registered with these arguments already; daemonId
    ///         is the number of that daemon
    /// @throws UnsafeArgument
    DaemonRequest Launch(const std::wstring& path, const std::vector<std::wstring>& arguments = {},
                         ArgumentCheck check = ArgumentCheck::kRefuse);

    /// Ends the process of a daemon and removes the daemon. May take a minute.
    /// @return true: the daemon is removed, and its process has ended or is about to end. Only the
    ///         process of an SNMP agent that has no window runs on.
    ///         false: the id is unknown, the daemon was attached, or Windows refused to end its
    ///         process. In the last two cases the daemon is removed and its process runs on
    bool Stop(std::uint32_t daemonId);

    /// Registers a running process as a daemon.
    /// @param arguments  arguments for a restart; used only if the process is a Windows service
    /// @return done is false if the supervisor could not inspect the process
    /// @throws UnsafeArgument
    DaemonRequest Attach(std::uint32_t processId, const std::vector<std::wstring>& arguments = {},
                         ArgumentCheck check = ArgumentCheck::kRefuse);

    /// Removes an attached daemon; its process keeps running.
    /// @return false if no daemon has this number or the daemon is not attached
    bool Detach(std::uint32_t daemonId);

    /// Ends the supervisor; its daemons keep running. Usually returns before the supervisor has
    /// ended. An answer that is lost because the supervisor has ended already is no error.
    void Exit();

private:
    struct Releaser {
        void operator()(IDaemonMgrControl* control) const noexcept;
    };
    std::unique_ptr<IDaemonMgrControl, Releaser> control_;
};

} // namespace daemon_manager
