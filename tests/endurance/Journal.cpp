#include "Journal.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace vqrx::test {

JournalWriter::JournalWriter(const std::string& path)
    : path_(path)
{
}

void JournalWriter::Line(const std::string& text)
{
    std::ofstream(path_, std::ios::app | std::ios::binary) << text + "\n" << std::flush;
}

// "begin launch NAME KIND", "end launch NAME ID", "begin stop NAME", "end stop NAME", likewise
// attach and detach; "begin other", "end other"; "fail TEXT".
Journal ReadJournal(const std::string& path)
{
    using State = JournalDaemon::State;
    static const std::map<std::string, State> states = {
        {"begin launch", State::launching}, {"end launch", State::launched},
        {"begin stop", State::stopping},    {"end stop", State::stopped},
        {"begin attach", State::attaching}, {"end attach", State::attached},
        {"begin detach", State::detaching}, {"end detach", State::detached},
    };
    Journal journal;
    std::ifstream file(path, std::ios::binary);
    std::string line;
    while (std::getline(file, line) && !file.eof()) { // a line without its end is being written
        std::istringstream fields(line);
        std::string when;
        std::string what;
        std::string name;
        fields >> when >> what >> name;
        if (when == "fail") {
            journal.failure = line;
            continue;
        }
        journal.inCall = when == "begin";
        if (what == "other") {
            continue;
        }
        const auto state = states.find(when + " " + what);
        if (state == states.end()) {
            throw std::runtime_error("not a line of a journal: " + line);
        }
        JournalDaemon& daemon = journal.daemons[name];
        daemon.state = state->second;
        if (when == "begin" && daemon.kind.empty()) {
            fields >> daemon.kind;
        } else if (state->second == State::launched || state->second == State::attached) {
            fields >> daemon.id;
        }
    }
    return journal;
}

} // namespace vqrx::test
