#include "DiskModel.h"

#include <algorithm>
#include <map>
#include <set>
#include <unordered_set>
#include <utility>

namespace vqrx::test {
namespace {

constexpr std::size_t kSector = 512;

/// The bytes that a sector may have, from its offset on; as many as were written to it.
using States = std::set<std::string>;

// The states of each sector that a pending record touches, by its offset.
std::map<std::size_t, States> StatesOfSectors(const std::string& flushed,
                                              const std::vector<WrittenRecord>& pending)
{
    std::map<std::size_t, States> sectors;
    std::string bytes = flushed;
    for (const WrittenRecord& record : pending) {
        const std::size_t end = record.offset + record.line.size();
        bytes.resize(std::max(bytes.size(), end));
        std::string after = bytes;
        after.replace(record.offset, record.line.size(), record.line);
        for (std::size_t sector = record.offset / kSector * kSector; sector < end;
             sector += kSector) {
            sectors[sector].insert(bytes.substr(sector, kSector));
            sectors[sector].insert(after.substr(sector, kSector));
        }
        bytes = after;
    }
    return sectors;
}

std::set<std::size_t> LengthsOf(std::size_t flushed, const std::vector<WrittenRecord>& pending)
{
    std::set<std::size_t> lengths{flushed};
    std::size_t length = flushed;
    for (const WrittenRecord& record : pending) {
        length = std::max(length, record.offset + record.line.size());
        lengths.insert(length);
    }
    return lengths;
}

std::set<std::string> HeadersOf(const std::string& flushed,
                                const std::vector<WrittenRecord>& pending)
{
    std::string before = flushed.substr(0, 12);
    before.resize(12);
    std::set<std::string> headers{before};
    for (const WrittenRecord& record : pending) {
        headers.insert(record.header);
    }
    return headers;
}

} // namespace

void ForEachImage(const std::string& flushed, const std::vector<WrittenRecord>& pending,
                  const std::function<void(const std::string& image)>& visit)
{
    const std::map<std::size_t, States> sectors = StatesOfSectors(flushed, pending);
    const std::set<std::size_t> lengths = LengthsOf(flushed.size(), pending);
    std::vector<std::string> contents{flushed};
    contents.front().resize(*lengths.rbegin());
    for (const auto& [offset, states] : sectors) {
        std::vector<std::string> more;
        for (const std::string& content : contents) {
            for (const std::string& state : states) {
                more.push_back(content);
                more.back().replace(offset, state.size(), state);
            }
        }
        contents = std::move(more);
    }
    std::unordered_set<std::string> seen;
    for (std::string& image : contents) {
        for (const std::string& header : HeadersOf(flushed, pending)) {
            image.replace(0, header.size(), header);
            for (const std::size_t length : lengths) {
                if (const auto [added, isNew] = seen.insert(image.substr(0, length)); isNew) {
                    visit(*added);
                }
            }
        }
    }
}

} // namespace vqrx::test
