#include "CommandScenario.h"

#include "ExitCode.h"
#include "FinishOutput.h"
#include "PrintedText.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <exception>
#include <iostream>
#include <optional>
#include <sstream>
#include <utility>

namespace vqrx::test::anomaly {
namespace {

// What the command of this process usually leaves behind, digits replaced. Its first run is never
// disturbed.
std::optional<CommandOutcome> usual;

CommandOutcome Plain(const CommandOutcome& outcome)
{
    return {outcome.exitCode, WithoutNumbers(outcome.output), WithoutNumbers(outcome.errors)};
}

void NoteLines(RunNotes& notes, const std::string& where, const std::string& text)
{
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        notes.Saw(where + line);
    }
}

} // namespace

CommandScenario::CommandScenario(RunNotes& notes, AddCommand add,
                                 std::vector<std::string> arguments)
    : notes_(notes)
    , add_(std::move(add))
    , arguments_(std::move(arguments))
{
}

CommandOutcome CommandScenario::RunCommand(const std::string& step)
{
    notes_.Begin(step);
    CLI::App app("Control the DaemonManager supervisor of this machine", "daemonctl");
    CommandOutcome outcome;
    add_(app, outcome.exitCode);
    std::vector<std::string> arguments(arguments_.rbegin(), arguments_.rend());
    const PrintedText output(std::cout);
    const PrintedText errors(std::cerr);
    std::optional<OfTheProduct> command;
    app.parse_complete_callback([&] { command.emplace(); });
    try { // as the client's main function
        app.parse(arguments);
        outcome.exitCode = client::v0::FinishOutput("daemonctl", outcome.exitCode);
    } catch (const std::exception& exception) {
        std::cerr << "daemonctl: " << exception.what() << std::endl;
        outcome.exitCode = client::v0::kRefused;
    } catch (...) {
        std::cerr << "daemonctl: an error without a description" << std::endl;
        outcome.exitCode = client::v0::kRefused;
    }
    command.reset();
    outcome.output = output.Text() + TakeFiles();
    outcome.errors = errors.Text();
    return outcome;
}

void CommandScenario::Run()
{
    const CommandOutcome outcome = Plain(RunCommand("the command"));
    if (!usual) {
        usual = outcome;
    }
    notes_.Saw(std::string("exit code ") + static_cast<char>('a' + outcome.exitCode));
    NoteLines(notes_, "error: ", outcome.errors);
    NoteLines(notes_, "output: ", outcome.output);
    const bool hasComplained = outcome.errors != usual->errors;
    if (outcome.exitCode != usual->exitCode) {
        Expect(notes_, hasComplained || outcome.output != usual->output,
               "the command fails without a word");
    } else if (!hasComplained && !MayLackFigures()) {
        Expect(notes_, outcome.output == usual->output,
               "the command succeeds, but its output is not the usual one:\n" + outcome.output);
    }
}

void CommandScenario::Verify()
{
    const CommandOutcome next = Plain(RunCommand("the next command"));
    Expect(notes_, next.exitCode == usual->exitCode && next.errors == usual->errors,
           "the next command ends with exit code " + std::to_string(next.exitCode) + ": " +
               next.errors);
    Expect(notes_, MayLackFigures() || next.output == usual->output,
           "the output of the next command is not the usual one:\n" + next.output);
}

} // namespace vqrx::test::anomaly
