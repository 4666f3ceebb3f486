#include "RingModel.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace vqrx::test {

using client::v0::Record;

RingModel::RingModel(std::size_t limit, std::int64_t firstNumber)
    : limit_(limit)
    , number_(firstNumber)
{
}

std::string RingModel::NextLine(const std::string& text, int level)
{
    timeMs_ += 7;
    std::array<char, 32> date{};
    const int second = static_cast<int>(timeMs_ / 1000 % 60);
    const int minute = static_cast<int>(timeMs_ / 60000 % 60);
    const int hour = static_cast<int>(timeMs_ / 3600000 % 24);
    std::snprintf(date.data(), date.size(), "Sun Nov 16 %02d:%02d:%02d.%03d", hour, minute, second,
                  static_cast<int>(timeMs_ % 1000));
    last_ = {number_++, timeMs_, level, date.data(), text};
    return std::to_string(*last_.number) + ";" + last_.date + ";" + std::to_string(timeMs_) + ";" +
           std::to_string(level) + ";" + text + "\r\n";
}

void RingModel::Put(const std::string& line)
{
    const std::size_t end = position_ + line.size();
    bytes_.resize(std::max(bytes_.size(), end));
    bytes_.replace(position_, line.size(), line);
    std::erase_if(placed_, [&](const Placed& placed) {
        return bytes_[placed.begin - 1] != '\n' ||
               bytes_.compare(placed.begin, placed.line.size(), placed.line) != 0;
    });
}

void RingModel::PutHeader()
{
    std::array<char, 16> header{};
    std::snprintf(header.data(), header.size(), "0x%.8X\r\n", static_cast<unsigned>(position_));
    bytes_.replace(0, 12, header.data());
}

void RingModel::Write(const std::string& text, int level)
{
    const std::string line = NextLine(text, level);
    Put(line);
    placed_.push_back({last_, position_, line});
    position_ += line.size();
    if (limit_ != 0 && position_ > limit_) {
        position_ = 12;
    }
    PutHeader();
}

void RingModel::BeginWrite(const std::string& text, std::size_t bytes, int level)
{
    Put(NextLine(text, level).substr(0, bytes));
}

std::vector<Record> RingModel::Intact() const
{
    std::vector<Record> records;
    for (const Placed& placed : placed_) {
        // A reader cannot tell the record at the write position from a part of another one's text.
        if (placed.begin != position_ || position_ == 12) {
            records.push_back(placed.record);
        }
    }
    return records;
}

} // namespace vqrx::test
