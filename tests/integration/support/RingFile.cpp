#include "RingFile.h"

#include "CapturedProgram.h"

#include <sstream>

namespace vqrx::test {

std::ostream& operator<<(std::ostream& stream, const RingRecord& record)
{
    return stream << record.level << ": " << record.text;
}

std::vector<RingRecord> ReadRingFile(const std::string& path)
{
    std::istringstream file(ReadText(path));
    std::vector<RingRecord> records;
    std::string line;
    std::getline(file, line); // the header
    while (std::getline(file, line) && !file.eof()) {
        std::istringstream fields(line);
        std::string sequence;
        std::string date;
        std::string time;
        std::string level;
        std::string text;
        std::getline(fields, sequence, ';');
        std::getline(fields, date, ';');
        std::getline(fields, time, ';');
        std::getline(fields, level, ';');
        std::getline(fields, text, '\0');
        records.push_back({std::stoll(sequence), std::stoi(level), text, std::stoll(time)});
    }
    return records;
}

} // namespace vqrx::test
