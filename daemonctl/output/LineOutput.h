#pragma once

#include <memory>
#include <string>

namespace vqrx::client::v0 {

/// Writes the lines of a command to standard output. For one thread.
class LineOutput {
public:
    /// When to colour the lines.
    enum class Colour {
        /// Colours on a console, unless the environment variable NO_COLOR is set and not empty;
        /// none in a file or a pipe.
        kAuto,
        kAlways,
        kNever
    };

    LineOutput() = default;
    LineOutput(const LineOutput&) = delete;
    LineOutput& operator=(const LineOutput&) = delete;
    virtual ~LineOutput() = default;

    /// Writes one line. The line may wait in memory until Flush().
    /// @param level  level of a record, 0 to 3, which selects the colour; -1 for no colour
    /// @param utf8   without a line end
    virtual void Write(int level, const std::string& utf8) = 0;

    /// Writes the lines that wait, and resets the colour of the console.
    /// @return false if a line of this output was lost, now or before
    [[nodiscard]] virtual bool Flush() = 0;
};

/// Makes the output for what standard output is: a console, or a file or a pipe. In a file or a
/// pipe, colours are escape sequences.
[[nodiscard]] std::unique_ptr<LineOutput> MakeLineOutput(LineOutput::Colour colour);

} // namespace vqrx::client::v0
