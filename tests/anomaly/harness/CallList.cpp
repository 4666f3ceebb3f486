#include "CallList.h"

#include "CallKinds.h"
#include "CallPath.h"
#include "SymbolNames.h"

#include <algorithm>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace vqrx::test::anomaly {
namespace {

bool LeadsThroughFatalPlace(const CallPath& path)
{
    return std::any_of(path.frames, path.frames + path.depth, [](std::uint32_t frame) {
        const std::string name = LinkNameAt(frame - 1); // the call may be the function's last code
        return std::ranges::any_of(FatalPlaces(), [&](const FatalPlace& fatal) {
            return name.find(fatal.place) != std::string::npos;
        });
    });
}

} // namespace

void CallList::AddTakenPaths()
{
    for (const CallPath* const taken : TakenPaths()) {
        if (LeadsThroughFatalPlace(*taken)) {
            continue;
        }
        ListedPath& path = paths_[taken->key];
        path.key = taken->key;
        path.calls = std::max(path.calls, taken->calls.load());
        path.name = taken->name;
        path.frames.assign(taken->frames, taken->frames + taken->depth);
    }
}

void CallList::Write(const std::string& fileName) const
{
    std::ofstream file(fileName);
    for (const auto& [key, path] : paths_) {
        file << key << ' ' << path.calls;
        for (const std::uint32_t frame : path.frames) {
            file << ' ' << frame;
        }
        file << '\n' << path.name << '\n';
    }
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + fileName);
    }
}

CallList CallList::Read(const std::string& fileName)
{
    CallList list;
    std::ifstream file(fileName);
    for (std::string line; std::getline(file, line);) {
        std::istringstream numbers(line);
        ListedPath path;
        numbers >> path.key >> path.calls;
        for (std::uint32_t frame = 0; numbers >> frame;) {
            path.frames.push_back(frame);
        }
        std::getline(file, path.name);
        list.paths_[path.key] = path;
    }
    return list;
}

std::vector<CallPoint> CallList::Points(std::uint32_t seed, std::uint32_t callsOfPath) const
{
    std::vector<CallPoint> points;
    for (const auto& [key, path] : paths_) {
        const std::uint32_t last = std::min(path.calls, callsOfPath);
        for (std::uint32_t occurrence = 1; occurrence <= last; ++occurrence) {
            points.push_back({key, occurrence});
        }
    }
    std::mt19937 random(seed); // its numbers are the same everywhere, those of std::shuffle are not
    for (std::size_t left = points.size(); left > 1; --left) {
        std::swap(points[left - 1], points[random() % left]);
    }
    return points;
}

std::string CallList::Describe(const CallPoint& point) const
{
    const auto found = paths_.find(point.path);
    if (found == paths_.end()) {
        return "a call that no undisturbed run made\n";
    }
    const ListedPath& path = found->second;
    return "call " + std::to_string(point.occurrence) + " of " + path.name + "\n" +
           NamesOf(path.frames.data(), path.frames.size());
}

} // namespace vqrx::test::anomaly
