// The ring file without the logger: the least two writes for each record, the sink alone, the
// opening of a full ring, the history in memory, and the clock.
#include "HeapBytes.h"
#include "LogLevel.h"
#include "Measure.h"
#include "log_perf/ring/LogFileSink.h"
#include "log_perf/time/Clock.h"
#include "win32/UniqueHandle.h"

#include <fstream>
#include <memory>
#include <string>
#include <thread>

#include <windows.h>

#include <sys/timeb.h>

namespace vqrx::bench {
namespace {

using namespace log::log_perf::v2;
using log::i_logger::v0::kLevelInformation;
using system::win32::v1::UniqueKernelHandle;

constexpr std::uint32_t kRingSize = 0x100000;
constexpr int kHistory = 50000;

std::string Text()
{
    return std::string("Start DaemonId(7) PId(1234) : ") + kDaemonPath + " ";
}

void RawWrites(const std::string& name, int records)
{
    std::ofstream(name) << "0x00000000\n";
    std::fstream file(name, std::ios::in | std::ios::out);
    const std::string line = "123456;Sat Nov 21 04:52:16.427;1795236736427;2;" + Text() + "\n";
    std::streamoff position = 12;
    file.seekp(position);
    // Starts a second thread as a logger does, because a file operation costs more in a process
    // with two threads.
    const UniqueKernelHandle end(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    std::thread second([&] { WaitForSingleObject(end.Get(), INFINITE); });
    const Stopwatch watch;
    for (int i = 0; i < records; ++i) {
        file << line << std::flush;
        position += static_cast<std::streamoff>(line.size()) + 1;
        if (position > kRingSize) {
            position = 12;
        }
        file.seekp(0);
        file << "0x0000000C\n";
        file.seekp(position);
    }
    Report("file.records_per_second.raw_two_writes", records / watch.Seconds());
    SetEvent(end.Get());
    second.join();
}

void SinkAlone(const std::string& name, int records)
{
    LogFileSink sink;
    sink.SetFileName(name);
    sink.SetSizeLimit(kRingSize);
    const std::string text = Text();
    Timestamp timestamp = CurrentTimestamp();
    sink.Write(kLevelInformation, &timestamp, text.c_str());
    const Stopwatch watch;
    for (int i = 0; i < records; ++i) {
        timestamp.millitm = static_cast<unsigned short>(i % 1000);
        timestamp.time += i % 1000 == 0 ? 1 : 0;
        sink.Write(kLevelInformation, &timestamp, text.c_str());
    }
    Report("file.records_per_second.sink_alone", records / watch.Seconds());
}

void Reload(const std::string& name)
{
    {
        std::ifstream file(name);
        std::string line;
        std::size_t bytes = 0;
        const Stopwatch watch;
        while (std::getline(file, line)) {
            bytes += line.size();
        }
        Report("ring.read_lines_ms", watch.Seconds() * 1e3);
        Keep(bytes);
    }
    LogFileSink sink;
    sink.SetFileName(name);
    sink.SetSizeLimit(kRingSize);
    const Timestamp timestamp = CurrentTimestamp();
    const Stopwatch watch;
    // The first record opens and reads the file.
    sink.Write(kLevelInformation, &timestamp, "opened");
    Report("ring.reload_ms", watch.Seconds() * 1e3);
}

void History()
{
    const std::size_t before = HeapBytes();
    const auto sink = std::make_unique<LogFileSink>(); // without a file, only in memory
    const std::string text = Text();
    const Timestamp timestamp = CurrentTimestamp();
    const Stopwatch watch;
    for (int i = 0; i < kHistory; ++i) {
        sink->Write(kLevelInformation, &timestamp, text.c_str());
    }
    Report("history.insert_ns", watch.Seconds() / kHistory * 1e9);
    Report("history.bytes_an_entry", static_cast<double>(HeapBytes() - before) / kHistory);
    const Stopwatch whenFull;
    for (int i = 0; i < kHistory; ++i) {
        sink->Write(kLevelInformation, &timestamp, text.c_str());
    }
    Report("history.insert_when_full_ns", whenFull.Seconds() / kHistory * 1e9);
}

void Clock()
{
    constexpr int kCalls = 20000;
    Timestamp timestamp{};
    const Stopwatch runtime;
    for (int i = 0; i < kCalls; ++i) {
        _ftime64(&timestamp);
        Keep(timestamp);
    }
    Report("clock.ns.ftime64", runtime.Seconds() / kCalls * 1e9);
    const Stopwatch ours;
    for (int i = 0; i < kCalls; ++i) {
        timestamp = CurrentTimestamp();
        Keep(timestamp);
    }
    Report("clock.ns.ours", ours.Seconds() / kCalls * 1e9);
}

} // namespace

void RingBench(const Settings& settings)
{
    const int records = settings.quick ? 10000 : 50000;
    RawWrites(settings.scratch + "\\raw.log", records);
    SinkAlone(settings.scratch + "\\ring.log", records);
    Reload(settings.scratch + "\\ring.log");
    History();
    Clock();
}

} // namespace vqrx::bench
