#pragma once

#include <windows.h>

#include <cstdint>
#include <map>
#include <string>

namespace vqrx::test {

/// Journal of a client: one line before each call and one line after it. So the journal also shows
/// the call in which a client was killed. Each line goes to the file without a buffer.
class JournalWriter {
public:
    explicit JournalWriter(const std::string& path);
    void Line(const std::string& text);

private:
    std::string path_;
};

/// A daemon in a journal.
struct JournalDaemon {
    enum class State {
        kLaunching, ///< the call has begun and has not returned; likewise for the other calls
        kLaunched,
        kStopping,
        kStopped,
        kAttaching,
        kAttached,
        kDetaching,
        kDetached,
    };
    State state = State::kLaunching;
    std::string kind;
    std::uint32_t id = 0;
};

/// Content of the journal of one client. No two clients use the same name for a daemon.
struct Journal {
    std::map<std::string, JournalDaemon> daemons; ///< by name
    std::string failure;                          ///< empty if there is none
    bool inCall = false;                          ///< the last line is the beginning of a call
};

/// Ignores a last line without its line end.
/// @throws std::runtime_error  for a line that no client writes
[[nodiscard]] Journal ReadJournal(const std::string& path);

} // namespace vqrx::test
