#include "log_reader/LogFile.h"

#include "log_reader/InputFile.h"

#include <memory>
#include <utility>

namespace vqrx::client::v0 {
namespace {

// The supervisor's own files have a little over 1 MiB. What is larger is read piece by piece.
constexpr std::uint64_t kMostInMemory = 16ULL * 1024 * 1024;
constexpr int kMostAttempts = 100; // tens of milliseconds

// The file as it was at one moment: reads it again while records are being added.
std::string Snapshot(const std::string& path, std::unique_ptr<InputFile>& file)
{
    std::string bytes;
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        const std::optional<std::uint64_t> before = ReadHeader(*file);
        bytes.resize(static_cast<std::size_t>(file->Size()));
        bytes.resize(file->ReadAt(0, bytes));
        if (ReadHeader(*file) == before) {
            break;
        }
        file = InputFile::Open(path); // it may have grown
        if (file->Size() > kMostInMemory) {
            break;
        }
    }
    return bytes;
}

} // namespace

ScanSummary ReadLogFile(const std::string& path, TextEncoding encoding,
                        const RecordFound& recordFound)
{
    const RecordFound convert = [&](Record record) {
        record.date = ToUtf8(record.date, encoding);
        record.text = ToUtf8(record.text, encoding);
        recordFound(std::move(record));
    };
    std::unique_ptr<InputFile> file = InputFile::Open(path);
    if (file->Size() > kMostInMemory) {
        return ScanRing(*file, convert);
    }
    const std::string bytes = Snapshot(path, file);
    MemorySource source(bytes);
    return ScanRing(source, convert);
}

std::vector<Record> ReadLogFile(const std::string& path)
{
    std::vector<Record> records;
    ReadLogFile(path, TextEncoding::kAuto,
                [&](Record record) { records.push_back(std::move(record)); });
    return records;
}

} // namespace vqrx::client::v0
