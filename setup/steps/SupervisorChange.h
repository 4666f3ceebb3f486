#pragma once

#include "Conversation.h"
#include "FormerProcess.h"
#include "HiddenProgram.h"
#include "win32/UniqueHandle.h"

#include <functional>
#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// Ends the running supervisor, starts one with the same account and rights, and hands the daemons
/// over. daemonctl does the calls. The class identifies supervisors by their processes, because
/// another program may have published the object.
class SupervisorChange {
public:
    /// Finds the supervisors that run: processes of the installed program, run by an expected user.
    /// @param client  returns the full path of daemonctl.exe, which moves while files are replaced
    /// @throws SetupError if Windows does not list the processes
    SupervisorChange(Conversation& conversation, std::function<std::string()> client);

    /// Finds the supervisors that run now. @throws SetupError as the constructor
    [[nodiscard]] SupervisorChange LookAgain() const { return {conversation_, client_}; }

    /// Joins a later look to this one. The supervisor that was found first counts: its account, its
    /// program and its list of the daemons stay, and the list of a second supervisor is deleted. If
    /// this look found none, it takes over what the later look found and ended. Overlooked()
    /// becomes that of the later look.
    void Follow(SupervisorChange&& later);

    /// Whether a supervisor ran when this object was made.
    [[nodiscard]] bool Ran() const noexcept { return !former_.empty(); }

    /// Whether End() has ended it.
    [[nodiscard]] bool Ended() const noexcept { return ended_; }

    /// Names the processes that may be a supervisor, and which this object does not end: their file
    /// cannot be found out, or somebody runs the installed program who is not expected to.
    /// @return lines, each with "\n"; empty if there are none
    [[nodiscard]] const std::string& Overlooked() const noexcept { return overlooked_; }

    /// Returns the account of the supervisor that ran; empty if it ran as SYSTEM or as
    /// administrator, or if none ran.
    [[nodiscard]] std::string LimitedAccountSid() const;

    /// Makes sure that Windows starts a program with the rights of the supervisor that runs.
    /// @param program  it is not run
    /// @throws SetupError if not; the supervisor still runs
    void TestRights(const std::string& program) const;

    /// Lists the daemons and ends the supervisor; they run on. Returns after its process has ended.
    /// @param listing     the file for the list; it must not exist. If this function fails, or
    ///                    daemonctl cannot list the daemons, nothing is left of the file
    /// @param ifNotFound  called if the process runs, but daemonctl does not find its object: it
    ///                    may run in the session of the services
    /// @throws SetupError if the process did not end within four minutes; the text says whether it
    ///         runs on or ends later
    void End(const std::string& listing, const std::function<void()>& ifNotFound);

    /// Starts a supervisor with the account and the rights of the one that ran, and waits until it
    /// answers.
    /// @throws SetupError if it could not be started; CameNotUp if it ended or did not answer
    void Start(const std::string& program);

    /// Starts the program of the supervisor that ran, as Start(). A supervisor that answers already
    /// counts as started: a guard may have been faster.
    /// @throws SetupError as Start
    void StartFormer();

    /// Ends a supervisor that Start() has started. Does nothing if there is none.
    void EndStarted() noexcept;

    /// Hands the daemons of the list, or of the log, over to the supervisor that runs.
    /// @param trust  believe the log, whoever may have written it
    /// @param fleet  UTF-8 path of the guard's fleet file, for the arguments of services; empty: no
    ///               such file. If the file cannot be used, the services get no arguments.
    /// @return whether all were handed over and a supervisor that Start() has started still runs.
    ///         If it has ended, another program may have answered in its place
    [[nodiscard]] bool HandOver(bool trust, const std::string& fleet);

    /// Runs "daemonctl autostart". Says what it has done, with its warnings, or what failed.
    /// @return false if it failed; true also if there was nothing to do, or a warning
    [[nodiscard]] bool Autostart(const std::vector<std::string>& arguments) const;

    /// Returns the file with the list of the daemons; empty if there is none.
    [[nodiscard]] const std::string& Listing() const noexcept { return listing_; }

    /// Returns the program of the supervisor that ran; empty if none ran.
    [[nodiscard]] std::string FormerProgram() const;

    /// Returns the supervisor that ran; null if none ran.
    [[nodiscard]] const FormerProcess* Former() const noexcept
    {
        return former_.empty() ? nullptr : &former_.front();
    }

    /// Returns the full path of daemonctl.exe.
    [[nodiscard]] std::string ClientProgram() const { return client_(); }

private:
    [[nodiscard]] ProgramAnswer Client(const std::vector<std::string>& arguments) const;
    [[nodiscard]] bool Answers() const;
    [[nodiscard]] std::string WhyItRuns() const; ///< after an order to exit
    [[nodiscard]] bool WaitForAll(DWORD limitMs) const;

    Conversation& conversation_;
    std::function<std::string()> client_;
    std::vector<FormerProcess> former_;
    std::string overlooked_;
    std::string listing_;
    bool ended_ = false;
    system::win32::v1::UniqueKernelHandle started_;
};

} // namespace vqrx::setup::v0
