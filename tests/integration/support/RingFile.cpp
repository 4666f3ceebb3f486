#include "RingFile.h"

#include "FileContent.h"

#include <fstream>
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

bool OverwriteRecord(const std::string& path, const std::string& text)
{
    const std::size_t place = FileContent(path).find(text);
    std::fstream log(path, std::ios::in | std::ios::out | std::ios::binary);
    log.seekp(static_cast<std::streamoff>(place));
    return place != std::string::npos && (log << "Other").flush();
}

} // namespace vqrx::test
