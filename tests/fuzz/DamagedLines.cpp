#include "DamagedLines.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <sstream>
#include <vector>

namespace vqrx::test {
namespace {

constexpr std::size_t kLongestLine = std::size_t{64} * 1024;

bool IsDamaged(std::string line)
{
    line = line.substr(0, kLongestLine);
    std::istringstream stream(line);
    std::vector<std::string> fields;
    for (std::string field; fields.size() < 4 && std::getline(stream, field, ';');) {
        fields.push_back(field);
    }
    const bool complete = fields.size() == 4 && !stream.eof();
    if (!complete || line.find('\0') != std::string::npos) {
        return false;
    }
    try {
        static_cast<void>(std::stoll(fields[2]));
        static_cast<void>(std::stoi(fields[3]));
        return false;
    } catch (const std::exception&) {
        return true;
    }
}

bool HasDamagedLineFrom(const std::string& bytes, std::size_t begin)
{
    std::istringstream stream(bytes.substr(begin));
    for (std::string line; std::getline(stream, line);) {
        if (IsDamaged(line)) {
            return true;
        }
    }
    return false;
}

} // namespace

bool HasDamagedLine(const std::string& bytes)
{
    std::uint32_t position = 0;
    std::istringstream header(bytes);
    header >> std::hex >> position;
    const bool usable = !header.fail() && position >= 12 && position <= bytes.size();
    return HasDamagedLineFrom(bytes, 0) ||
           HasDamagedLineFrom(bytes, usable              ? position
                                     : bytes.size() < 12 ? bytes.size()
                                                         : 12);
}

} // namespace vqrx::test
