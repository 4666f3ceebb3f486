#include "FollowLog.h"

#include "InputFile.h"

#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace vqrx::client::v0 {
namespace {

// A record that is added moves the header's write position; only a file that is no ring grows
// without.
struct Stamp {
    std::uint64_t size = 0;
    std::optional<std::uint64_t> header;

    bool operator==(const Stamp&) const = default;
};

class Follower {
public:
    Follower(const std::string& path, TextEncoding encoding, const FollowEvents& events)
        : path_(path)
        , encoding_(encoding)
        , events_(events)
    {
    }

    /// @throws std::runtime_error
    void Look()
    {
        Stamp stamp;
        {
            const std::unique_ptr<InputFile> file = InputFile::Open(path_);
            stamp = {file->Size(), ReadHeader(*file)};
        }
        if (stamp == stamp_) {
            return;
        }
        std::vector<Record> records;
        summary_ = ReadLogFile(path_, encoding_,
                               [&](Record record) { records.push_back(std::move(record)); });
        stamp_ = stamp;
        if (records.empty()) {
            return;
        }
        const NewRecords found = FindNew(last_, records);
        if (found.lost || found.anew) {
            events_.lost(found);
        }
        last_ = records.back();
        for (std::size_t index = found.first; index < records.size(); ++index) {
            events_.record(std::move(records[index]));
        }
    }

    const ScanSummary& Summary() const { return summary_; }

private:
    const std::string& path_;
    TextEncoding encoding_;
    const FollowEvents& events_;
    std::optional<Stamp> stamp_;
    std::optional<Record> last_;
    ScanSummary summary_;
};

} // namespace

ScanSummary FollowLog(const std::string& path, TextEncoding encoding,
                      const FollowSettings& settings, const FollowEvents& events)
{
    Follower follower(path, encoding, events);
    follower.Look();
    auto seen = std::chrono::steady_clock::now();
    while (events.looked()) {
        std::this_thread::sleep_for(settings.period);
        try {
            follower.Look();
            seen = std::chrono::steady_clock::now();
        } catch (const std::runtime_error&) {
            if (std::chrono::steady_clock::now() - seen >= settings.patience) {
                throw;
            }
        }
    }
    return follower.Summary();
}

} // namespace vqrx::client::v0
