#pragma once

#include "Finding.h"
#include "ProcessList.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// How the proxy/stub of the supervisor's interface is registered on this machine.
struct ProxyFacts {
    std::uint32_t interfaceError = 0; ///< Windows error of reading the proxy/stub class; 0 = read
    std::uint32_t libraryError = 0;   ///< Windows error of reading the library's path; 0 = read
    ImageFacts library;               ///< path and version; its process id means nothing
    bool libraryThere = false;        ///< the library file exists
    /// DaemonMgrPS.dll in the folder of this program; empty: none is there.
    std::string besideThisProgram;
};

/// A process that runs a file named DaemonManager.exe and is not the installed supervisor. UTF-8.
struct Namesake {
    std::uint32_t processId = 0;
    std::string program; ///< full path; empty: this user may not examine the process
    std::string user;    ///< "DOMAIN\name"; empty: not known
};

/// A process that can be the supervisor and runs in another session than this program. Windows
/// shows its object only to programs of its own session.
struct SupervisorElsewhere {
    std::uint32_t processId = 0;
    std::uint32_t session = 0;
    std::string user; ///< "DOMAIN\name", UTF-8; empty: not known
};

/// What a call of the supervisor showed.
struct SupervisorFacts {
    /// How the supervisor answered.
    enum class Answer {
        kAnswers,            ///< the call succeeded
        kNotRunning,         ///< no supervisor is published
        kProxyNotRegistered, ///< a supervisor is published, but its proxy/stub is not registered
        kStranger,           ///< somebody else published the object; see detail. It was not called
        kSilent,             ///< the call took longer than 10 seconds
        kFailed              ///< the call failed; see detail
    };
    Answer answer = Answer::kNotRunning;
    std::string detail;                ///< failed, stranger: text of the error, UTF-8
    std::vector<ImageFacts> processes; ///< all processes that run a file named DaemonManager.exe
    /// Those of them that run another file than the installed program, or run it as somebody who is
    /// not expected to. Empty if nothing on this machine names the installed program.
    std::vector<Namesake> namesakes;
    std::vector<SupervisorElsewhere> elsewhere; ///< those of `processes` in another session
    std::uint32_t session = 0;                  ///< the session of this program
};

/// Returns the processes that can be the supervisor: all processes of its name without the
/// namesakes. Pure.
[[nodiscard]] std::vector<ImageFacts> PossibleSupervisors(const SupervisorFacts& facts);

/// Says for people which supervisors run in other sessions, and why no call reaches them. Pure.
/// @param session  the session of this program
/// @return "process 7 runs in session 0, this program in session 1: ..."; empty if there is none
[[nodiscard]] std::string DescribeElsewhere(const std::vector<SupervisorElsewhere>& elsewhere,
                                            std::uint32_t session);

/// Finds the processes that can be the supervisor and run in another session than this program.
/// A process whose session Windows does not tell is left out. Windows only.
/// @param session  set to the session of this program
/// @throws std::bad_alloc
[[nodiscard]] std::vector<SupervisorElsewhere> FindElsewhere(std::uint32_t& session);

/// Returns the path of the proxy/stub in the folder of this program; empty if it is not there.
/// Windows only.
/// @throws std::bad_alloc
[[nodiscard]] std::string ProxyBesideThisProgram();

/// Returns the library of the proxy/stub as it is registered for all users of the machine; empty if
/// none is. Windows only.
/// @throws std::bad_alloc
[[nodiscard]] std::string ProxyOfMachine();

/// Says how to register the proxy/stub, for people: with a command that can be pasted, if the path
/// allows that. Pure.
/// @param library  full path of DaemonMgrPS.dll; empty: it is not known
[[nodiscard]] std::string HowToRegister(const std::string& library);

/// Reads the registration of the proxy/stub and the version of its library. Changes nothing.
/// Windows only.
/// @throws std::bad_alloc
[[nodiscard]] ProxyFacts GatherProxyFacts();

/// Calls the supervisor and waits at most 10 seconds for its answer. The call asks the supervisor
/// to detach a daemon id that it never gives out: that changes nothing and writes no record to the
/// log. The call runs on a thread and in a COM apartment of its own. Windows only.
/// @throws std::system_error if Windows starts no thread; ProcessListUnreadable
[[nodiscard]] SupervisorFacts GatherSupervisorFacts();

/// The check "proxy": whether a client can call the supervisor through the proxy/stub. Pure.
/// @param version  the version of daemonctl, which the library should have, too
[[nodiscard]] Finding JudgeProxy(const ProxyFacts& facts, const std::string& version);

/// Describes for people whether a supervisor runs and answers: "no supervisor is running on this
/// machine". Pure.
[[nodiscard]] std::string DescribeSupervisor(const SupervisorFacts& facts);

/// The check "supervisor": whether one supervisor runs and answers. Pure.
/// @param version  the version of daemonctl, which the supervisor should have, too
[[nodiscard]] Finding JudgeSupervisor(const SupervisorFacts& facts, const std::string& version);

} // namespace vqrx::client::v0
