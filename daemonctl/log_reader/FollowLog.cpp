#include "FollowLog.h"

#include "InputFile.h"
#include "RingLayout.h"

#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace vqrx::client::v0 {
namespace {

// A value that changes when a record is added: the write position in the header, or the size of a
// file that has no header.
struct FileState {
    std::uint64_t size = 0;
    std::optional<std::uint64_t> header;

    bool operator==(const FileState&) const = default;
};

class Follower {
public:
    Follower(const std::string& path, TextEncoding encoding, const FollowEvents& events,
             std::vector<Record> shown)
        : path_(path)
        , encoding_(encoding)
        , events_(events)
        , shown_(std::move(shown))
    {
    }

    /// Reads the file if it has changed, and reports its new records.
    /// @throws std::runtime_error  if the file cannot be read
    void ReadIfChanged()
    {
        FileState state;
        {
            const std::unique_ptr<InputFile> file = InputFile::Open(path_);
            state = {file->Size(), ReadHeader(*file)};
        }
        if (state == state_) {
            return;
        }
        std::vector<Record> records;
        summary_ = ReadLogFile(path_, encoding_,
                               [&](Record record) { records.push_back(std::move(record)); });
        state_ = state;
        if (records.empty()) {
            return;
        }
        const NewRecords found = FindNew(shown_, records);
        if (found.lost || found.isNewLog) {
            events_.gap(found);
        }
        shown_ = std::move(records);
        for (std::size_t index = found.first; index < shown_.size(); ++index) {
            events_.record(shown_[index]);
        }
    }

    const ScanSummary& Summary() const { return summary_; }

private:
    const std::string& path_;
    TextEncoding encoding_;
    const FollowEvents& events_;
    std::optional<FileState> state_;
    std::vector<Record> shown_; // the records of the last look that had any
    ScanSummary summary_;
};

} // namespace

ScanSummary FollowLog(const std::string& path, TextEncoding encoding,
                      const FollowSettings& settings, const FollowEvents& events)
{
    Follower follower(path, encoding, events, settings.shown);
    follower.ReadIfChanged();
    auto lastSeen = std::chrono::steady_clock::now();
    while (events.goOn()) {
        std::this_thread::sleep_for(settings.period);
        try {
            follower.ReadIfChanged();
            lastSeen = std::chrono::steady_clock::now();
        } catch (const std::runtime_error&) {
            if (std::chrono::steady_clock::now() - lastSeen >= settings.patience) {
                throw;
            }
        }
    }
    return follower.Summary();
}

} // namespace vqrx::client::v0
