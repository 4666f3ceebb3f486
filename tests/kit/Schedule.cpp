#include "Schedule.h"

#include <algorithm>
#include <utility>

namespace vqrx::kit {

Schedule::Schedule(std::vector<TestProgram> programs)
{
    std::stable_sort(
        programs.begin(), programs.end(),
        [](const TestProgram& left, const TestProgram& right) { return left.cost > right.cost; });
    for (TestProgram& program : programs) {
        entries_.push_back({std::move(program), State::kWaiting});
    }
}

std::optional<std::size_t> Schedule::Take()
{
    for (std::size_t number = 0; number < entries_.size(); ++number) {
        Entry& entry = entries_[number];
        if (entry.state == State::kWaiting && !SharesLockWithRunning(entry.program)) {
            entry.state = State::kRunning;
            return number;
        }
    }
    return std::nullopt;
}

void Schedule::Ended(std::size_t number)
{
    entries_.at(number).state = State::kEnded;
}

std::vector<TestProgram> Schedule::Waiting() const
{
    std::vector<TestProgram> waiting;
    for (const Entry& entry : entries_) {
        if (entry.state == State::kWaiting) {
            waiting.push_back(entry.program);
        }
    }
    return waiting;
}

bool Schedule::SharesLockWithRunning(const TestProgram& program) const
{
    return std::any_of(entries_.begin(), entries_.end(), [&](const Entry& other) {
        return other.state == State::kRunning &&
               std::find_first_of(other.program.locks.begin(), other.program.locks.end(),
                                  program.locks.begin(),
                                  program.locks.end()) != other.program.locks.end();
    });
}

} // namespace vqrx::kit
