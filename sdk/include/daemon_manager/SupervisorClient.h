#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

struct IDaemonMgrControl;

namespace daemon_manager {

/// A request failed; carries the COM result code. what() is the code and the system's text for it.
class SupervisorError : public std::runtime_error {
public:
    SupervisorError(const std::string& text, long result)
        : std::runtime_error(text)
        , result_(result)
    {
    }
    /// The HRESULT.
    long Result() const noexcept { return result_; }

private:
    long result_;
};

/// No supervisor is published on this machine.
class SupervisorNotRunning : public SupervisorError {
public:
    using SupervisorError::SupervisorError;
};

/// The supervisor is there, but DaemonMgrPS.dll, which carries the calls, is not registered.
class ProxyNotRegistered : public SupervisorError {
public:
    using SupervisorError::SupervisorError;
};

/// What a request came to.
struct DaemonRequest {
    std::uint32_t daemonId; ///< meaningful unless done is false for Attach
    bool done;              ///< false: there was nothing to do
};

/// A connection to the machine's supervisor. Paths and arguments are UTF-16; the supervisor keeps
/// them in its ANSI code page. Any thread that has initialised COM as the connecting one did may
/// use it (in the multithreaded apartment: any thread). Every method throws SupervisorError when
/// the call fails, for example because the supervisor has ended meanwhile.
class SupervisorClient {
public:
    /// Finds the supervisor. The calling thread must have initialised COM.
    /// @throws SupervisorNotRunning, ProxyNotRegistered, SupervisorError
    SupervisorClient();
    SupervisorClient(SupervisorClient&&) noexcept;
    SupervisorClient& operator=(SupervisorClient&&) noexcept;
    SupervisorClient(const SupervisorClient&) = delete;
    SupervisorClient& operator=(const SupervisorClient&) = delete;
    ~SupervisorClient();

    /// Has a program started and kept running. done is false when the same program with the same
    /// arguments was registered already; daemonId is then the old one.
    DaemonRequest Launch(const std::wstring& path, const std::vector<std::wstring>& arguments = {});

    /// Ends a daemon; may take a minute. False: unknown, attached, or it could not be ended.
    bool Stop(std::uint32_t daemonId);

    /// Hands a running process over. done is false when it could not be inspected.
    /// @param arguments  for a restart; used only when the process is a Windows service
    DaemonRequest Attach(std::uint32_t processId, const std::vector<std::wstring>& arguments = {});

    /// Takes an attached process back; it runs on. False: unknown or not attached.
    bool Detach(std::uint32_t daemonId);

    /// Ends the supervisor; its daemons run on.
    void Exit();

private:
    struct Releaser {
        void operator()(IDaemonMgrControl* control) const noexcept;
    };
    std::unique_ptr<IDaemonMgrControl, Releaser> control_;
};

} // namespace daemon_manager
