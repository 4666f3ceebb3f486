#pragma once

#include "CapturingSink.h"
#include "ImportPatch.h"
#include "SimulatedTicks.h"
#include "log_perf/LibLogPerf.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace vqrx::test {

inline constexpr const char* kHeader =
    "Cpu,TotalCpu,WorkingSet,PrivateBytes,NumBufferFull,NumResync,NumTsDiscontinuity,KernelTime,"
    "UserTime,Date,NumDecPictures,VirtualSize,HandleCount,NumPoliticChoices,"
    "LastDeltaNumOverAllBufferFull,NumPeriodThresholdReached,NeedRestart,";

inline std::vector<std::string> Fields(const std::string& row)
{
    std::vector<std::string> fields;
    std::istringstream stream(row);
    for (std::string field; std::getline(stream, field, ',');) {
        fields.push_back(field);
    }
    return fields;
}

/// Keeps the figures of each call as one text.
class CapturingObserver : public log::log_perf::v2::IPerformanceObserver {
public:
    void OnPerformance(std::int32_t cpu, std::int32_t committedPercent, std::int32_t workingSetMiB,
                       std::int32_t choicesPerSecond) override
    {
        std::ostringstream text;
        text << cpu << ' ' << committedPercent << ' ' << workingSetMiB << ' ' << choicesPerSecond;
        const log::log_perf::v2::Timestamp now{};
        calls.Write(0, &now, text.str().c_str());
    }
    CapturingSink calls;
};

// Figures that the replacements of system functions return.
inline std::atomic<std::uint64_t> systemIdle{0};
inline std::atomic<std::uint64_t> systemBusyStep{0};
inline std::atomic<std::uint64_t> systemBusy{0};
inline std::atomic<int> systemAsked{0};

inline FILETIME TimeOf(std::uint64_t value)
{
    return {static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
}

/// Each call adds systemBusyStep to the busy time: half of it kernel time, half user time. A
/// quarter of it is idle time.
inline BOOL WINAPI SystemTimesInSteps(FILETIME* idle, FILETIME* kernel, FILETIME* user)
{
    ++systemAsked;
    systemBusy += systemBusyStep;
    systemIdle += systemBusyStep / 4;
    *idle = TimeOf(systemIdle);
    *kernel = TimeOf(systemBusy / 2);
    *user = TimeOf(systemBusy / 2);
    return TRUE;
}

inline std::uint64_t processTime = 0; // used by the worker thread only

inline BOOL WINAPI ProcessTimesInSteps(HANDLE, FILETIME*, FILETIME*, FILETIME* kernel,
                                       FILETIME* user)
{
    processTime += 1000;
    *kernel = TimeOf(processTime);
    *user = TimeOf(2 * processTime);
    return TRUE;
}

inline BOOL WINAPI HundredHandles(HANDLE, DWORD* count)
{
    *count = 100;
    return TRUE;
}

inline BOOL WINAPI SixtyPercentCommitted(MEMORYSTATUSEX* status)
{
    if (status->dwLength != 64) {
        return FALSE;
    }
    status->ullTotalPageFile = 1000;
    status->ullAvailPageFile = 400;
    return TRUE;
}

/// A logger on a machine with known figures. Time is simulated, so that reports follow each other
/// without a real wait.
class LibLogPerfReport : public testing::Test {
protected:
    // Resets the figures before the worker reads them for the first time.
    struct Figures {
        Figures()
        {
            systemBusyStep = 40000;
            systemAsked = 0;
            processTime = 0;
        }
    };

    /// Waits until the logger has written a report. The worker may just be making one, whose
    /// figures are older than this call. A sink that the test sets afterwards gets only newer
    /// reports.
    void AwaitEndOfReport()
    {
        logger.SetPerformanceSink(&others);
        ASSERT_TRUE(others.WaitForCount(1));
    }

    Figures figures;
    SimulatedTicks ticks{5000, SimulatedTicks::Mode::kRuns};
    ImportPatch systemTimes{"GetSystemTimes", &SystemTimesInSteps};
    ImportPatch processTimes{"GetProcessTimes", &ProcessTimesInSteps};
    ImportPatch handleCount{"GetProcessHandleCount", &HundredHandles};
    ImportPatch memoryStatus{"GlobalMemoryStatusEx", &SixtyPercentCommitted};
    CapturingSink rows; // these outlive the logger
    CapturingSink others;
    CapturingObserver observer;
    log::log_perf::v2::LibLogPerf logger;
};

} // namespace vqrx::test
