#pragma once

#include "ProcessFacts.h"

#include <cstdint>
#include <functional>
#include <string>

namespace vqrx::client::v0 {

/// The process of a daemon, as a record of the log describes it.
struct LoggedProcess {
    std::uint32_t processId = 0;
    std::int64_t loggedMs = 0; ///< time of the record, milliseconds since 1970, UTC
    bool attached = false;     ///< true: the process ran before; false: it was started just then
    std::string command;       ///< path and arguments, with a blank after each; UTF-8
    std::int64_t latestMs = 0; ///< see ProcessInterval; 0: not known
};

/// How the process that has an id now relates to the process of a log record.
enum class ProcessFit {
    kSame,         ///< the process of the record still runs
    kGone,         ///< no process has the id
    kHidden,       ///< this user may not open the process that has the id
    kOtherTime,    ///< the process that has the id was created at another time
    kOtherProgram, ///< the process that has the id runs another program
};

/// Returns whether two paths lead to one file.
using SameFile = std::function<bool(const std::string& left, const std::string& right)>;

/// Returns the path of a program as the supervisor takes it: a relative path begins in \App. Pure.
[[nodiscard]] std::string AbsolutePath(const std::string& path, const std::string& appFolder);

/// Returns whether a path is that of a batch file, which the command interpreter cmd.exe runs.
/// Pure.
[[nodiscard]] bool IsBatchFile(const std::string& path);

/// Returns whether two paths lead to one file. Letter case, the kind of slash, "." and ".." do not
/// count. Pure except for sameFile, which is called if the two paths differ as texts.
/// @param path   may be relative to \App; a question mark in it stands for any character, as in a
///               path of the log
/// @param image  full path
[[nodiscard]] bool IsSamePath(const std::string& path, const std::string& image,
                              const std::string& appFolder, const SameFile& sameFile);

/// Finds out whether the process that has the id of a logged process is that process.
///
/// Windows gives an id again, but not while the process runs or somebody holds a handle of it. The
/// supervisor held a handle when it wrote the record. So a process that was created more than
/// a second after the record is another one. The process of a start is at most 60 seconds older
/// than its record; that of an attach may be of any age. The clock may have been set back before an
/// attach: then the process may be as new as the latest record before it (latestMs). It may be set
/// back later, too, so the programs are compared as well. Pure except for sameFile.
///
/// @param facts      of the process that has the id now
/// @param appFolder  the supervisor's working folder, to which a relative path in the command
///                   refers
/// @param sameFile   called if the two paths differ as texts
[[nodiscard]] ProcessFit FitProcess(const LoggedProcess& logged, const ProcessFacts& facts,
                                    const std::string& appFolder, const SameFile& sameFile);

/// Returns whether a command begins with the path of this program. The log does not quote paths, so
/// the path may end at each blank of the command. The program of a batch file is the command
/// interpreter, cmd.exe, which Windows starts for it.
[[nodiscard]] bool IsImageOfCommand(const std::string& image, const std::string& command,
                                    const std::string& appFolder, const SameFile& sameFile);

/// Describes why a process does not fit: "process 12 has ended".
[[nodiscard]] std::string DescribeMisfit(ProcessFit fit, const ProcessFacts& facts);

} // namespace vqrx::client::v0
