#pragma once

#include "DaemonStatus.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Writes what a reader of the listing needs to know besides it: what the log no longer shows, and
/// how to learn an id that no record shows. Pure.
/// @param run  the run of the supervisor whose daemons these are
/// @return a sentence or two each, without a line end; empty if there is nothing to say
[[nodiscard]] std::vector<std::string> ListingNotes(const std::vector<DaemonStatus>& daemons,
                                                    const SupervisorRun& run);

/// Writes the daemons for programs: one JSON object and a line feed after it. docs/daemonctl.md
/// describes the fields, whose names are fixed. Letters beyond ASCII are escaped ("\u00fc"), so
/// that a shell that converts the text does not lose them. Bytes that are no UTF-8 become U+FFFD.
/// Pure.
/// @param nowMs    the current time, milliseconds since 1970, UTC
/// @param version  the version of daemonctl
[[nodiscard]] std::string ListingJson(const std::vector<DaemonStatus>& daemons, std::int64_t nowMs,
                                      const std::string& version);

/// A process of a listing that ListingJson() wrote: it ran at that moment. Texts are UTF-8.
struct ListedProcess {
    std::optional<std::uint32_t> id; ///< of the daemon; nothing: not known
    std::uint32_t processId = 0;
    std::int64_t createdMs = 0; ///< when the process was created, milliseconds since 1970, UTC
    std::string image;          ///< full path of the program
    std::string command;        ///< path and arguments, without the blank at the end
    bool service = false;       ///< the daemon is a Windows service

    bool operator==(const ListedProcess&) const = default;
};

/// Reads the running processes from a listing that ListingJson() wrote. Pure.
/// @throws std::runtime_error if the text is not such a listing
[[nodiscard]] std::vector<ListedProcess> ParseListing(const std::string& json);

} // namespace vqrx::client::v0
