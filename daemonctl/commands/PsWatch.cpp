#include "PsWatch.h"

#include "ExitCode.h"
#include "InstalledPaths.h"
#include "Interrupt.h"
#include "LineOutput.h"
#include "LiveScreen.h"
#include "LogFile.h"
#include "StatusTable.h"
#include "SupervisorAnswer.h"
#include "SupervisorProcesses.h"
#include "ThisMachine.h"
#include "TimeText.h"
#include "TimelineBuilder.h"
#include "WatchScreen.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace vqrx::client::v0 {
namespace {

constexpr std::size_t kMostRecordsOnScreen = 200;
constexpr const char* kSilentSupervisor =
    "the supervisor has not answered for 5 s; see: daemonctl doctor";

// Reads the log once: the newest records, and the timeline.
Timeline ReadLogOfLook(WatchLook& look)
{
    TimelineBuilder builder;
    Attributor attributor([&look](AttributedRecord record) {
        if (IsWorthWatching(record)) {
            look.records.push_back(std::move(record));
        }
    });
    const auto take = [&](const Record& record) {
        builder.Add(record);
        attributor.Add(record);
    };
    static_cast<void>(ReadLogFile(DefaultLogPath(), TextEncoding::kAuto, take));
    attributor.Flush();
    const std::size_t surplus =
        look.records.size() - std::min(look.records.size(), kMostRecordsOnScreen);
    look.records.erase(look.records.begin(),
                       look.records.begin() + static_cast<std::ptrdiff_t>(surplus));
    return builder.Finish();
}

// A supervisor that this user cannot call shows in the log and in the processes.
bool MaySupervisorRun(const std::optional<SupervisorAnswer>& answer)
{
    return answer.value_or(SupervisorAnswer::kNotPublished) != SupervisorAnswer::kNotPublished ||
           !SupervisorProcesses().Running().empty();
}

WatchLook TakeLook()
{
    WatchLook look;
    look.nowMs = NowMs();
    try {
        const std::optional<SupervisorAnswer> answer = GlanceAtSupervisor();
        const bool isThere = MaySupervisorRun(answer);
        if (answer == SupervisorAnswer::kSilent) {
            look.note = kSilentSupervisor;
        }
        const auto children = isThere ? ChildrenOfSupervisor() : std::vector<ProcessFacts>();
        const Timeline timeline = ReadLogOfLook(look);
        if (!isThere) {
            look.problem = "no supervisor is running on this machine; see: daemonctl doctor";
        } else {
            look.daemons = StatusOfDaemons(RunOfThisMachine(timeline), SourceOfThisMachine(),
                                           look.nowMs, children);
        }
    } catch (const std::exception& error) {
        look.problem = error.what();
    }
    return look;
}

void ShowOnScreen(LiveScreen& screen, const WatchLook* before, const WatchLook& now,
                  std::uint32_t everySeconds)
{
    const ConsoleSize size = screen.Size();
    std::vector<LiveLine> lines;
    for (ScreenLine& line :
         ComposeScreen(before, now, {size.width, size.height}, everySeconds, LocalTimeText)) {
        lines.push_back({std::move(line.text), line.level, line.marked});
    }
    screen.Show(lines);
}

void PrintLook(const WatchLook* before, const WatchLook& now, LineOutput::Colour colour)
{
    const auto output = MakeLineOutput(colour);
    output->Write(-1, LocalTimeText(now.nowMs));
    if (!now.note.empty()) {
        output->Write(kErrorRecord, now.note);
    }
    if (!now.problem.empty()) {
        output->Write(kErrorRecord, now.problem);
    } else {
        TableStyle style;
        style.nowMs = now.nowMs;
        style.timeText = LocalTimeText;
        if (before != nullptr && before->problem.empty()) {
            style.before = &before->daemons;
            style.beforeMs = before->nowMs;
        }
        for (const TableLine& line : TableOf(now.daemons, style)) {
            output->Write(line.level, line.text);
        }
    }
    if (!output->Flush()) {
        std::cout.setstate(std::ios::badbit); // a console does not set it; FinishOutput reports it
    }
}

} // namespace

int WatchDaemons(std::uint32_t everySeconds, LineOutput::Colour colour)
{
    const Interrupt interrupt;
    const std::unique_ptr<LiveScreen> screen = MakeLiveScreen(colour);
    std::optional<WatchLook> before;
    do {
        WatchLook now = TakeLook();
        if (screen) {
            ShowOnScreen(*screen, before ? &*before : nullptr, now, everySeconds);
        } else {
            PrintLook(before ? &*before : nullptr, now, colour);
        }
        before = std::move(now);
    } while (std::cout.good() && !interrupt.WaitFor(everySeconds * 1000));
    return kDone;
}

} // namespace vqrx::client::v0
