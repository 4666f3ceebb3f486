#pragma once

#include "Scenario.h"

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vqrx::test::anomaly {

/// What a command of daemonctl left behind.
struct CommandOutcome {
    int exitCode = 0;
    std::string output; ///< on standard output, and in the files that the command wrote
    std::string errors; ///< on standard error
};

/// Runs one command of daemonctl as its main function does. Reading the command line is work of the
/// test; the product begins where the command begins.
class CommandScenario : public Scenario {
public:
    /// Adds the command to the command line, as the functions of Commands.h do.
    using AddCommand = std::function<void(CLI::App& app, int& exitCode)>;

    /// @param arguments  of daemonctl, the name of the command first
    CommandScenario(RunNotes& notes, AddCommand add, std::vector<std::string> arguments);

    /// Runs the command. If it ends as it usually does, its output must be complete, and if it does
    /// not, it must have said why.
    void Run() override;
    /// Runs the command again, which must end as it usually does.
    void Verify() override;
    void Finish() override {}

protected:
    /// Returns what the command wrote to files, and removes the files.
    [[nodiscard]] virtual std::string TakeFiles() { return {}; }
    /// Returns whether a figure that the command could not find out may be missing in the output.
    [[nodiscard]] virtual bool MayLackFigures() const { return false; }

    CommandOutcome RunCommand(const std::string& step);

    RunNotes& notes_;

private:
    AddCommand add_;
    std::vector<std::string> arguments_;
};

} // namespace vqrx::test::anomaly
