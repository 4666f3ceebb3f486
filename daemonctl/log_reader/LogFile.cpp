#include "LogFile.h"

#include "InputFile.h"
#include "RecordFolder.h"
#include "Snapshot.h"

#include <memory>
#include <optional>
#include <utility>

namespace vqrx::client::v0 {

ScanSummary ReadLogFile(const std::string& path, TextEncoding encoding,
                        const RecordCallback& onRecord)
{
    const RecordCallback convert = [&](Record record) {
        record.date = ToUtf8(record.date, encoding);
        record.text = ToUtf8(record.text, encoding);
        onRecord(std::move(record));
    };
    if (IsRecordFolder(path)) {
        return ReadRecordFolder(path, onRecord);
    }
    const auto open = [&path] { return InputFile::Open(path); };
    if (const std::optional<std::string> bytes = Snapshot(open)) {
        MemorySource source(*bytes);
        return ScanRing(source, convert);
    }
    const std::unique_ptr<InputFile> file = open();
    return ScanRing(*file, convert);
}

std::vector<Record> ReadLogFile(const std::string& path)
{
    std::vector<Record> records;
    static_cast<void>(ReadLogFile(path, TextEncoding::kAuto, [&records](Record record) {
        records.push_back(std::move(record));
    }));
    return records;
}

} // namespace vqrx::client::v0
