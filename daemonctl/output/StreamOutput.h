#pragma once

#include "LineOutput.h"

#include <string>

namespace vqrx::client::v0 {

/// Lines as a stream of bytes, coloured by escape sequences or not.
class StreamOutput : public LineOutput {
public:
    explicit StreamOutput(bool coloured) noexcept
        : coloured_(coloured)
    {
    }

    void Write(int level, const std::string& utf8) override;
    bool Flush() override;

private:
    bool coloured_;
    std::string waiting_;
};

/// A line as a terminal shows it in the colour of its level.
std::string Coloured(int level, const std::string& utf8);

} // namespace vqrx::client::v0
