#pragma once

#include "GuardedMachine.h"
#include "RingFile.h"
#include "Watch.h"
#include "com/ComApartment.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

namespace vqrx::test {

/// The guard's watch in this program, with short times and the real supervisor. A case starts the
/// watch; the end of the case stops it.
class GuardWatch : public ::testing::Test {
protected:
    GuardWatch()
    {
        std::filesystem::create_directory(machine_.Root() + "\\Logs");
        log_ = std::make_shared<guard::v0::GuardLog>(machine_.GuardLog());
    }
    ~GuardWatch() override { StopWatch(); }
    GuardWatch(const GuardWatch&) = delete;
    GuardWatch& operator=(const GuardWatch&) = delete;

    void StartWatch(const std::string& program = ProductProgram("DaemonManager.exe"))
    {
        guard::v0::WatchSettings settings;
        settings.program = program;
        settings.fleet = machine_.App() + "\\fleet.txt";
        settings.dumpFile = Dump();
        settings.times.checkMs = 100;
        settings.times.answerMs = 1000;
        settings.times.dumpMs = 150000; // less than the deadline of WaitUntil()
        settings.times.stillStartingMs = 100;
        settings.times.tryAgainMs = tryAgainMs_;
        settings.onEnding = [this] { ++endings_; };
        thread_ = std::thread([this, settings] {
            const system::com::v1::ComApartment apartment;
            guard::v0::Watch(settings, log_, stop_.Get()).Run();
        });
    }

    void StopWatch()
    {
        SetEvent(stop_.Get());
        if (thread_.joinable()) {
            thread_.join();
        }
    }

    bool Logged(const std::string& text) const { return CountOfRecords(text) != 0; }

    // Returns how many records of the guard's log are this text.
    std::ptrdiff_t CountOfRecords(const std::string& text) const
    {
        const auto log = ReadRingFile(machine_.GuardLog());
        return std::count_if(log.begin(), log.end(),
                             [&](const RingRecord& record) { return record.text == text; });
    }

    std::string Dump() const { return machine_.Root() + "\\Logs\\DaemonManager.dmp"; }

    GuardedMachine machine_;
    std::shared_ptr<guard::v0::GuardLog> log_;
    const system::win32::v1::UniqueKernelHandle stop_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    int endings_ = 0;
    DWORD tryAgainMs_ = guard::v0::WatchTimes().tryAgainMs; // of the watch that is started next
    std::thread thread_;
};

} // namespace vqrx::test
