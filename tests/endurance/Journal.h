#pragma once

#include <windows.h>

#include <cstdint>
#include <map>
#include <string>

namespace vqrx::test {

/// What a client did, a line before every call and one behind it: also what a client was killed in
/// is known. Written line by line without a buffer.
class JournalWriter {
public:
    explicit JournalWriter(const std::string& path);
    void Line(const std::string& text);

private:
    std::string path_;
};

/// A daemon as the journals tell of it.
struct JournalDaemon {
    enum class State {
        launching, ///< the call has not returned
        launched,
        stopping,
        stopped,
        attaching,
        attached,
        detaching,
        detached,
    };
    State state = State::launching;
    std::string kind;
    std::uint32_t id = 0;
};

/// All that one client has said. The names are unique among all clients.
struct Journal {
    std::map<std::string, JournalDaemon> daemons; ///< by name
    std::string failure;                          ///< empty: none
    bool inCall = false;                          ///< the last line is the beginning of a call
};

/// @throws std::runtime_error for a line that no client writes
Journal ReadJournal(const std::string& path);

} // namespace vqrx::test
