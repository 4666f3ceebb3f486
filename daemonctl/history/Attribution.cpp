#include "Attribution.h"

#include <cstddef>
#include <string_view>
#include <utility>

namespace vqrx::client::v0 {
namespace {

constexpr std::string_view kUnableToStart = "Unable to start ";
constexpr std::size_t kMostWaitingRecords = 256; // other threads write few between end and start

bool BeginsRun(EventKind kind)
{
    return kind == EventKind::kFirewallDetected || kind == EventKind::kWmiConnecting ||
           kind == EventKind::kSupervisionStarted;
}

// A daemon that starts for the first time had no process that can have ended. A restart is a
// warning.
bool IsFirstStart(const Event& start, int level)
{
    return start.kind == EventKind::kStarted && level >= kInformationRecord;
}

// The command of a service is its name. The command of a program ends in a blank.
bool CanBelong(const Event& end, const Event& start)
{
    if (!start.daemonId) {
        return false; // this daemon never had a process, so none of its processes can have ended
    }
    return end.service.empty() ? start.command.ends_with(' ') : start.command == end.service;
}

} // namespace

Attributor::Attributor(Found found)
    : found_(std::move(found))
{
}

void Attributor::Add(Record record)
{
    AttributedRecord added{std::move(record), {}, Attribution::kNone};
    added.event = EventOf(added.record.text);
    Event& event = added.event;
    const bool beginsRun = BeginsRun(event.kind);
    if (beginsRun) {
        Flush();
        processes_.clear();
        withoutProcess_.clear();
        running_.clear();
        removed_.clear();
    }
    NoteLoss(added);
    complete_ = complete_ || beginsRun;
    if (IsPathOfClient(event)) {
        event.daemonId.reset();
        event.processId.reset();
        event.command = added.record.text.substr(kUnableToStart.size());
    }
    if (event.daemonId) {
        added.attribution = Attribution::kStated;
    }
    if (event.kind == EventKind::kSupervisionError) {
        Flush(); // the daemon's start message will not come
        running_.clear();
    }
    if (event.kind == EventKind::kStarted || event.kind == EventKind::kStartFailed) {
        Pair(event, added.record.level);
    }
    NoteProcess(event);
    if (event.kind == EventKind::kEnded) {
        if (!waiting_.empty()) {
            running_.clear(); // no start belongs to the end before
        }
        Flush();
        lost_ = false;
        waiting_.push_back(std::move(added));
        return;
    }
    if (waiting_.empty()) {
        found_(std::move(added));
        return;
    }
    waiting_.push_back(std::move(added));
    if (waiting_.front().attribution != Attribution::kNone ||
        waiting_.size() >= kMostWaitingRecords) {
        Flush();
    }
}

// Notes whether records are missing between the record before and this one.
void Attributor::NoteLoss(const AttributedRecord& added)
{
    const std::optional<std::int64_t> number = added.record.number;
    const bool marksLoss =
        added.event.kind == EventKind::kQueueOverflow || added.event.kind == EventKind::kLogOutage;
    if (marksLoss || !lastNumber_ || !number ||
        static_cast<std::uint64_t>(*number) != static_cast<std::uint64_t>(*lastNumber_) + 1) {
        lost_ = true;
        complete_ = false;
        withoutProcess_.clear(); // a start may be among the missing records
        running_.clear();
        removed_.clear(); // a new run may have begun there
    }
    lastNumber_ = number;
}

bool Attributor::IsPathOfClient(const Event& event) const
{
    if (event.kind != EventKind::kStartFailed || !event.daemonId) {
        return false;
    }
    const bool endBefore = !waiting_.empty() && CanBelong(waiting_.front().event, event);
    const bool unknown = complete_ && !processes_.contains(*event.daemonId);
    return unknown || removed_.contains(*event.daemonId) ||
           (!endBefore && running_.contains(*event.daemonId));
}

void Attributor::NoteProcess(const Event& event)
{
    if (!event.daemonId || !event.processId || event.kind == EventKind::kAttachFailed) {
        return;
    }
    processes_[*event.daemonId] = *event.processId;
    if (event.kind == EventKind::kStopped || event.kind == EventKind::kStopFailed ||
        event.kind == EventKind::kDetached) {
        removed_.insert(*event.daemonId);
    }
    if (event.kind == EventKind::kStarted || event.kind == EventKind::kAttached) {
        running_.insert(*event.daemonId);
    } else {
        running_.erase(*event.daemonId);
    }
    if (event.kind == EventKind::kStartFailed) {
        withoutProcess_.insert(*event.daemonId);
    } else {
        withoutProcess_.erase(*event.daemonId);
    }
}

void Attributor::Pair(const Event& start, int level)
{
    if (waiting_.empty()) {
        return;
    }
    AttributedRecord& end = waiting_.front();
    if (IsFirstStart(start, level) || !CanBelong(end.event, start) ||
        withoutProcess_.contains(*start.daemonId)) {
        Flush();
        running_.clear(); // the end may be that of any daemon
        return;
    }
    end.attribution = lost_ ? Attribution::kLikely : Attribution::kPaired;
    end.event.daemonId = start.daemonId;
    end.event.command = start.command;
    if (start.kind == EventKind::kStartFailed) {
        end.event.processId = start.processId; // a failed start names the old process
    } else if (const auto known = processes_.find(*start.daemonId); known != processes_.end()) {
        end.event.processId = known->second;
    }
}

void Attributor::Flush()
{
    for (AttributedRecord& record : std::exchange(waiting_, {})) {
        found_(std::move(record));
    }
}

} // namespace vqrx::client::v0
