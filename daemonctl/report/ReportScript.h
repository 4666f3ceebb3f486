#pragma once

namespace vqrx::client::v0 {

/// The script of a page that is written again and again: it shows how old the page is, and loads
/// it again at its address, so that the reader keeps the range of the time axis. A page that is
/// written once has no script.
extern const char* const kReportScript;

/// SHA-256 of kReportScript as the content policy of a page names it. The browser runs no other
/// script, so a text of the log can never become one.
extern const char* const kReportScriptHash;

} // namespace vqrx::client::v0
