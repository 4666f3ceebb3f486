#include "LogFollower.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace vqrx::test {
namespace {

constexpr std::uint64_t kRingStart = 12;

// @return false if the line is not a whole record
[[nodiscard]] bool ParseRecord(const std::string& line, RingRecord& record)
{
    std::istringstream fields(line);
    std::string number;
    std::string date;
    std::string time;
    std::string level;
    if (!std::getline(fields, number, ';') || !std::getline(fields, date, ';') ||
        !std::getline(fields, time, ';') || !std::getline(fields, level, ';')) {
        return false;
    }
    try {
        record.sequence = std::stoll(number);
        record.level = std::stoi(level);
    } catch (const std::logic_error&) {
        return false;
    }
    record.text.clear();
    std::getline(fields, record.text, '\r');
    return true;
}

std::string Read(std::ifstream& file, std::uint64_t from, std::uint64_t to)
{
    std::string bytes(static_cast<std::size_t>(to - from), '\0');
    file.clear();
    file.seekg(static_cast<std::streamoff>(from));
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

} // namespace

LogFollower::LogFollower(const std::string& path)
    : path_(path)
{
}

void LogFollower::Take(const std::string& bytes, bool untilGap, std::vector<RingRecord>& found)
{
    std::istringstream lines(bytes);
    std::string line;
    while (std::getline(lines, line)) {
        RingRecord record{};
        const bool whole = ParseRecord(line, record);
        if (untilGap && (!whole || record.sequence != next_)) {
            return; // This record is older than the wrap.
        }
        if (!whole || record.sequence != next_) {
            throw std::runtime_error("the log lacks record " + std::to_string(next_) +
                                     ". Found instead: " + line);
        }
        ++next_;
        found.push_back(std::move(record));
    }
}

std::vector<RingRecord> LogFollower::Poll()
{
    std::vector<RingRecord> found;
    std::ifstream file(path_, std::ios::binary);
    std::uint64_t end = 0;
    if (!(file >> std::hex >> end) || end < kRingStart) {
        return found;
    }
    if (end < position_) {
        file.clear();
        file.seekg(0, std::ios::end);
        const auto length = static_cast<std::uint64_t>(file.tellg());
        Take(Read(file, position_, length), true, found);
        position_ = kRingStart;
        ++wraps_;
    }
    Take(Read(file, position_, end), false, found);
    position_ = end;
    return found;
}

} // namespace vqrx::test
