#pragma once

#include "LineOutput.h"

#include <string>

namespace vqrx::client::v0 {

/// Writes lines to std::cout. Lines wait in memory until they are 64 KiB or more. The destructor
/// writes nothing: call Flush() first.
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

/// Returns whether lines are coloured. The environment variable NO_COLOR, set and not empty,
/// switches off kAuto only.
[[nodiscard]] bool IsColoured(LineOutput::Colour colour, bool isTerminal);

/// Adds the escape sequences that show a line in the colour of its level.
/// @param level  0, 1 or 3. The line stays as it is for level 2, which has the terminal's own
///               colour, and for any other number
[[nodiscard]] std::string Coloured(int level, const std::string& utf8);

} // namespace vqrx::client::v0
