#pragma once

#include "Manifest.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace vqrx::kit {

/// Decides which program starts next: programs of a high cost first, and never two programs with a
/// common lock at the same time. Starts nothing itself. Not for several threads.
class Schedule {
public:
    explicit Schedule(std::vector<TestProgram> programs);

    /// Takes the next program that may start beside those that run.
    /// @return its number (see Program); empty if none may start now
    [[nodiscard]] std::optional<std::size_t> Take();

    /// Notes the end of a program, which gives its locks back.
    void Ended(std::size_t number);

    /// Returns the programs that were not taken, in their order.
    [[nodiscard]] std::vector<TestProgram> Waiting() const;

    /// Returns a program by its number, which is also its place in the order. Valid as long as this
    /// object.
    [[nodiscard]] const TestProgram& Program(std::size_t number) const
    {
        return entries_.at(number).program;
    }
    [[nodiscard]] std::size_t Count() const { return entries_.size(); }

private:
    enum class State { kWaiting, kRunning, kEnded };
    struct Entry {
        TestProgram program;
        State state = State::kWaiting;
    };

    [[nodiscard]] bool SharesLockWithRunning(const TestProgram& program) const;

    std::vector<Entry> entries_;
};

} // namespace vqrx::kit
