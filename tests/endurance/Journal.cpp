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

// Lines of a journal:
//   begin launch NAME KIND     begin attach NAME KIND     begin stop NAME     begin detach NAME
//   end launch NAME ID         end attach NAME ID         end stop NAME       end detach NAME
//   begin other                end other                  fail TEXT
Journal ReadJournal(const std::string& path)
{
    using State = JournalDaemon::State;
    static const std::map<std::string, State> states = {
        {"begin launch", State::kLaunching}, {"end launch", State::kLaunched},
        {"begin stop", State::kStopping},    {"end stop", State::kStopped},
        {"begin attach", State::kAttaching}, {"end attach", State::kAttached},
        {"begin detach", State::kDetaching}, {"end detach", State::kDetached},
    };
    Journal journal;
    std::ifstream file(path, std::ios::binary);
    std::string line;
    while (std::getline(file, line) && !file.eof()) { // A line without its end is not complete.
        std::istringstream fields(line);
        std::string moment;
        std::string call;
        std::string name;
        fields >> moment >> call >> name;
        if (moment == "fail") {
            journal.failure = line;
            continue;
        }
        journal.inCall = moment == "begin";
        if (call == "other") {
            continue;
        }
        const auto state = states.find(moment + " " + call);
        if (state == states.end()) {
            throw std::runtime_error("no client writes this line into a journal: " + line);
        }
        JournalDaemon& daemon = journal.daemons[name];
        daemon.state = state->second;
        if (moment == "begin" && daemon.kind.empty()) {
            fields >> daemon.kind;
        } else if (state->second == State::kLaunched || state->second == State::kAttached) {
            fields >> daemon.id;
        }
    }
    return journal;
}

} // namespace vqrx::test
