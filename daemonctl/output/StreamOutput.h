#pragma once

#include "LineOutput.h"

#include <string>

namespace vqrx::client::v0 {

/// Writes lines to std::cout. Keeps at most 64 KiB in memory.
class StreamOutput : public LineOutput {
public:
    /// @param coloured  whether escape sequences colour the lines
    explicit StreamOutput(bool coloured) noexcept
        : coloured_(coloured)
    {
    }

    void Write(int level, const std::string& utf8) override;
    [[nodiscard]] bool Flush() override;

private:
    bool coloured_;
    std::string waiting_;
};

/// Returns whether lines are coloured. Reads the environment variable NO_COLOR.
[[nodiscard]] bool IsColoured(LineOutput::Colour colour, bool isTerminal);

/// Adds the escape sequences that show a line in the colour of its level.
/// @param level  level of a record, 0 to 3; the line stays as it is for any other number
[[nodiscard]] std::string Coloured(int level, const std::string& utf8);

} // namespace vqrx::client::v0
