#include "StreamOutput.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <iostream>

namespace vqrx::client::v0 {
namespace {

constexpr std::size_t kMostWaitingBytes = std::size_t{64} * 1024;

// One colour for each level: bright red, bright yellow, that of the terminal, bright green. A
// console of Windows shows the same colours.
constexpr std::array<const char*, 4> kSequences = {"\x1b[91m", "\x1b[93m", "", "\x1b[92m"};

} // namespace

bool IsColoured(LineOutput::Colour colour, bool isTerminal)
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no thread of this program changes the environment
    const char* const noColour = std::getenv("NO_COLOR");
    return colour == LineOutput::Colour::kAlways ||
           (colour == LineOutput::Colour::kAuto && isTerminal &&
            (noColour == nullptr || *noColour == '\0'));
}

std::string Coloured(int level, const std::string& utf8)
{
    const auto index = static_cast<std::size_t>(level);
    if (index >= kSequences.size() || *kSequences.at(index) == '\0') {
        return utf8;
    }
    return kSequences.at(index) + utf8 + "\x1b[0m";
}

void StreamOutput::Write(int level, const std::string& utf8)
{
    waiting_.append(coloured_ ? Coloured(level, utf8) : utf8).append(1, '\n');
    if (waiting_.size() >= kMostWaitingBytes) {
        static_cast<void>(Flush()); // a failure stays in std::cout until the last Flush()
    }
}

bool StreamOutput::Flush()
{
    std::cout << waiting_ << std::flush;
    waiting_.clear();
    return std::cout.good();
}

} // namespace vqrx::client::v0
