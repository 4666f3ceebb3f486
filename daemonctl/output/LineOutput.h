#pragma once

#include <memory>
#include <string>

namespace vqrx::client::v0 {

/// Where a command's lines go: standard output.
class LineOutput {
public:
    enum class Colour { kAuto, kAlways, kNever };

    LineOutput() = default;
    LineOutput(const LineOutput&) = delete;
    LineOutput& operator=(const LineOutput&) = delete;
    virtual ~LineOutput() = default;

    /// @param level  of a record: a console shows the line in its colour; -1 for none
    virtual void Write(int level, const std::string& utf8) = 0;

    /// @return false when something could not be written since the beginning
    virtual bool Flush() = 0;
};

/// Output to the console in colours, or to a file or pipe without, unless they are asked for: then
/// they are escape sequences.
std::unique_ptr<LineOutput> MakeLineOutput(LineOutput::Colour colour);

} // namespace vqrx::client::v0
