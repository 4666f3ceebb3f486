// Fuzzer for the plan of a hand-over: any bytes as the log and as the listing, up to and after the
// first NUL. Whatever they claim, only a process is attached that runs, with the program and the
// time of creation that the machine has for it, and none is attached twice.
#include "Check.h"
#include "DaemonListing.h"
#include "Reattachment.h"
#include "RingScan.h"
#include "TextEncoding.h"
#include "TimelineBuilder.h"

#include <cstdint>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

constexpr std::int64_t kCreatedMs = 1763265156000;

// A machine on which the processes 1 to 20 run, each a program of its own.
ProcessFacts FactsOf(std::uint32_t processId)
{
    ProcessFacts facts;
    facts.processId = processId;
    if (processId >= 1 && processId <= 20) {
        facts.state = ProcessFacts::State::kRunning;
        facts.image = R"(C:\FW\App\w)" + std::to_string(processId) + ".exe";
        facts.createdMs = kCreatedMs;
    }
    return facts;
}

ProcessSource FakeSource()
{
    ProcessSource source;
    source.facts = FactsOf;
    source.sameFile = [](const std::string&, const std::string&) { return false; };
    source.commandOfService = [](const std::string&) { return std::string(); };
    source.arguments = [](std::uint32_t) { return std::vector<std::string>(); };
    source.appFolder = R"(C:\FW\App)";
    return source;
}

std::vector<ListedProcess> Listed(const std::string& text)
{
    try {
        return ParseListing(text);
    } catch (const std::runtime_error&) { // the input is no listing
        return {};
    }
}

Timeline TimelineOf(const std::string& log)
{
    MemorySource source(log);
    std::vector<Record> records;
    static_cast<void>(ScanRing(source, [&](Record record) {
        record.text = ToUtf8(record.text, TextEncoding::kAuto);
        records.push_back(std::move(record));
    }));
    return BuildTimeline(records);
}

void CheckPlan(const std::vector<FormerDaemon>& plan)
{
    std::set<std::uint32_t> attached;
    for (const FormerDaemon& former : plan) {
        if (former.plan != FormerDaemon::Plan::kAttach) {
            continue;
        }
        FUZZ_CHECK(former.processId.has_value());
        const ProcessFacts facts = FactsOf(*former.processId);
        FUZZ_CHECK(facts.state == ProcessFacts::State::kRunning);
        FUZZ_CHECK(former.image == facts.image);
        FUZZ_CHECK(former.createdMs == facts.createdMs);
        FUZZ_CHECK(FitPlan(former, facts) == ProcessFit::kSame);
        FUZZ_CHECK(attached.insert(*former.processId).second);
    }
}

} // namespace
} // namespace vqrx::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vqrx::test;
    const std::string input(data, data + size);
    const std::size_t end = input.find('\0');
    const Timeline timeline = TimelineOf(input.substr(0, end));
    const SupervisorRun* const current = RunThatGoesOn(timeline);
    if (current != nullptr) {
        const std::string listing = end == std::string::npos ? "" : input.substr(end + 1);
        CheckPlan(PlanReattachment(timeline, *current, Listed(listing), FakeSource()));
    }
    return 0;
}
