#include "Options.h"

#include <stdexcept>

namespace vqrx::test {
namespace {

unsigned Seconds(const std::string& text)
{
    std::size_t digits = 0;
    const auto number = static_cast<unsigned>(std::stoul(text, &digits));
    const std::string unit = text.substr(digits);
    if (unit.empty() || unit == "s") {
        return number;
    }
    if (unit == "m") {
        return number * 60;
    }
    if (unit == "h") {
        return number * 3600;
    }
    throw std::invalid_argument("--duration: write 90s, 20m or 4h, not " + text);
}

} // namespace

EnduranceOptions ReadOptions(int argc, char** argv)
{
    EnduranceOptions options;
    for (int index = 1; index + 1 < argc; index += 2) {
        const std::string name = argv[index];
        const std::string value = argv[index + 1];
        if (name == "--duration") {
            options.seconds = Seconds(value);
        } else if (name == "--daemons") {
            options.daemons = static_cast<unsigned>(std::stoul(value));
        } else if (name == "--output") {
            options.output = value;
        } else {
            throw std::invalid_argument("unknown option: " + name);
        }
    }
    if (argc % 2 == 0) {
        throw std::invalid_argument(std::string("missing value of option ") + argv[argc - 1]);
    }
    return options;
}

} // namespace vqrx::test
