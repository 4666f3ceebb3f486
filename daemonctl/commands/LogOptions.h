#pragma once

#include "RingScan.h"
#include "TextEncoding.h"

#include <CLI/CLI.hpp>

#include <string>

namespace vqrx::client::v0 {

/// Which file a command reads, and how.
struct LogOptions {
    std::string program; ///< what is asked, for its error messages: daemonctl or daemonctl-log
    std::string file;    ///< UTF-8; empty for this machine's
    TextEncoding encoding = TextEncoding::kAuto;
};

/// Adds --file and --encoding to a command of a program, and takes down that program's name.
/// @param hasDefault  whether --file may be left out
void AddLogOptions(CLI::App& command, LogOptions& options, bool hasDefault);

/// Says on standard error what could not be done.
void TellError(const LogOptions& options, const std::string& text);

/// Says on standard error what of a file could not be read.
/// @return kDone or kLogUnreadable
int TellDamage(const LogOptions& options, const std::string& path, const ScanSummary& summary);

} // namespace vqrx::client::v0
