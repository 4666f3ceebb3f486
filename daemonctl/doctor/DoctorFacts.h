#pragma once

#include "ProcessList.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// What `daemonctl doctor` finds out about a machine, without changing anything on it. Texts are
/// UTF-8. Errors are Windows error numbers, 0 for none; results are HRESULTs.

/// One of the two registry keys that can name the firmware root.
struct RegistryKeyFacts {
    std::string name; ///< with "HKLM\" in front
    std::uint32_t openError = 0;
    std::uint32_t valueError = 0; ///< of reading "Pathname"
    std::string pathname;
};

struct FolderFacts {
    std::string path;
    std::uint32_t error = 0; ///< of opening it as it will be used
    bool isFolder = false;
};

struct InstallationFacts {
    bool administrator = false;
    RegistryKeyFacts currentKey;
    RegistryKeyFacts olderKey;
    std::string root; ///< empty when no key gives one
    FolderFacts app;
    FolderFacts logs;                       ///< opened for adding files
    std::string logFile;                    ///< its path
    std::uint32_t logFileError = 0;         ///< of opening it for writing
    std::optional<std::uint64_t> freeBytes; ///< on the log's volume
};

struct ProxyFacts {
    std::uint32_t interfaceError = 0; ///< of reading the interface's proxy/stub class
    std::uint32_t libraryError = 0;   ///< of reading that class's library
    ImageFacts library;
    bool libraryThere = false;
};

struct SupervisorFacts {
    enum class Answer { answers, notRunning, proxyNotRegistered, silent, failed };
    Answer answer = Answer::notRunning;
    std::string detail;                ///< the failure's text
    std::vector<ImageFacts> processes; ///< that run under the supervisor's file name
};

struct FirewallServiceFacts {
    std::uint32_t managerError = 0;
    std::uint32_t serviceError = 0; ///< of opening MpsSvc and, where there is none, SharedAccess
    std::uint32_t queryError = 0;
    std::string name;
    std::uint32_t startType = 0; ///< SERVICE_DISABLED is 4
    std::uint32_t state = 0;     ///< SERVICE_RUNNING is 4
};

struct FirewallRuleFacts {
    enum class Program { there, gone, unknown }; ///< unknown: its drive is not there
    std::string name;
    std::string application;
    Program program = Program::unknown;
};

struct FirewallRulesFacts {
    long result = 0;
    std::vector<FirewallRuleFacts> rules; ///< those whose names begin with "allowing "
    /// What the running supervisor looks after, path and arguments: such a program may be missing
    /// for a moment only, and its rule would not be made again.
    std::vector<std::string> commandsInUse;
};

struct WmiFacts {
    bool answered = false;      ///< false: it did not within the time it was given
    std::string connectFailure; ///< empty: connected
    long queryResult = 0;
    bool knowsThisProcess = false;
    long executablePathResult = 0;
    long commandLineResult = 0;
    bool executablePathFits = false;
};

/// Registry values that say whether a crash puts a window on the screen; empty: not set.
struct CrashDialogFacts {
    bool reportingDisabled = false; ///< for the machine, by policy or setting
    bool dialogsOff = false;        ///< for the machine
    bool offForThisUser = false;    ///< either, but for this user alone
    std::string debugger;           ///< that is started for a crash
    std::uint32_t errorMode = 0;    ///< 2: the system shows no error boxes
};

struct DoctorFacts {
    std::string version; ///< daemonctl's own
    InstallationFacts installation;
    ProxyFacts proxy;
    SupervisorFacts supervisor;
    FirewallServiceFacts firewallService;
    FirewallRulesFacts firewallRules;
    WmiFacts wmi;
    CrashDialogFacts crashDialogs;
};

} // namespace vqrx::client::v0
