#include "LogLedger.h"

namespace vqrx::test {
namespace {

// Returns the number after a word in the text; 0 if the text does not contain the word.
DWORD NumberAfter(const std::string& text, const std::string& word)
{
    const std::size_t position = text.find(word);
    return position == std::string::npos
               ? 0
               : static_cast<DWORD>(std::stoul(text.substr(position + word.size())));
}

} // namespace

void LogLedger::Add(const std::vector<RingRecord>& records)
{
    const std::lock_guard hold(mutex_);
    for (const RingRecord& record : records) {
        ++records_;
        last_ = record.text;
        const std::string& text = record.text;
        if (text.find("DaemonId(") == std::string::npos) {
            ++texts_[text];
            continue;
        }
        DaemonLines& lines = daemons_[NumberAfter(text, "DaemonId(")];
        if (text.starts_with("Start ")) {
            ++(record.level == 2 ? lines.firstStarts : lines.restarts);
            restarts_ += record.level == 2 ? 0 : 1;
            lines.processId = NumberAfter(text, "PId(");
            ++handles_;
        } else if (text.starts_with("Stop (")) {
            ++lines.stops;
            --handles_;
        } else if (text.starts_with("Attach ")) {
            ++lines.attaches;
            lines.processId = NumberAfter(text, "PId(");
            ++handles_;
        } else if (text.starts_with("Detached ")) {
            ++lines.detaches;
            --handles_;
        } else {
            ++texts_[text];
        }
    }
}

DaemonLines LogLedger::Of(DWORD daemonId) const
{
    const std::lock_guard hold(mutex_);
    const auto found = daemons_.find(daemonId);
    return found == daemons_.end() ? DaemonLines{} : found->second;
}

std::set<DWORD> LogLedger::IdsUsedTwice() const
{
    std::set<DWORD> ids;
    const std::lock_guard hold(mutex_);
    for (const auto& [id, lines] : daemons_) {
        if (lines.firstStarts + lines.attaches > 1) {
            ids.insert(id);
        }
    }
    return ids;
}

std::size_t LogLedger::Count(const std::string& text) const
{
    const std::lock_guard hold(mutex_);
    const auto found = texts_.find(text);
    return found == texts_.end() ? 0 : found->second;
}

std::size_t LogLedger::Records() const
{
    const std::lock_guard hold(mutex_);
    return records_;
}

std::size_t LogLedger::Restarts() const
{
    const std::lock_guard hold(mutex_);
    return restarts_;
}

long long LogLedger::ProcessHandles() const
{
    const std::lock_guard hold(mutex_);
    return handles_;
}

std::string LogLedger::LastText() const
{
    const std::lock_guard hold(mutex_);
    return last_;
}

} // namespace vqrx::test
