// What clients, the pass and the end of the manager do to each other when they meet.
#include "DaemonManager.h"
#include "StandInProcesses.h"
#include "com/ComPtr.h"
#include "com/UniqueBstr.h"
#include "log_perf/LibLogPerf.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

using system::com::v1::ComPtr;
using system::com::v1::UniqueBstr;
using system::daemon::daemon_mgr::v0::DaemonManager;
using system::daemon::daemon_mgr::v0::ManagerOptions;
using system::win32::v1::UniqueKernelHandle;

template <typename Condition>
bool WaitUntil(Condition condition)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return condition();
}

class Race : public ::testing::Test {
protected:
    Race()
    {
        machine::Reset();
        ManagerOptions options;
        options.stopTimings.quitWaitMs = 100;
        options.releasedEvent = released_.Get();
        manager_ = new DaemonManager(1, 1, &logger_, options);
        manager_->AddRef();
    }
    ~Race() override
    {
        machine::BeforeStart(nullptr);
        End();
        machine::Reset();
    }

    /// As the program ends it: on the thread that made it, when nobody uses it any more.
    void End()
    {
        DaemonManager* const manager = std::exchange(manager_, nullptr);
        if (manager != nullptr && manager->Release() != 0) {
            EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(released_.Get(), 60000));
            manager->Destroy();
        }
    }

    DWORD Launch(const std::string& path)
    {
        const UniqueBstr text(std::wstring(path.begin(), path.end()));
        DWORD id = 0;
        EXPECT_EQ(S_OK, manager_->Launch(text.Get(), nullptr, &id));
        return id;
    }
    DWORD LaunchAndWait(const std::string& path)
    {
        const DWORD id = Launch(path);
        EXPECT_TRUE(WaitUntil([&] { return machine::Running(path) == 1; }));
        return id;
    }
    /// Two passes have begun and ended since.
    void TwoPassesLater()
    {
        const std::string path = "mark" + std::to_string(++marks_);
        const DWORD id = LaunchAndWait(path);
        for (unsigned starts = 2; starts <= 3; ++starts) {
            machine::Kill(machine::Last(path));
            EXPECT_TRUE(WaitUntil([&] { return machine::Started(path) == starts; }));
        }
        EXPECT_EQ(S_OK, manager_->Stop(id));
    }

    UniqueKernelHandle released_{CreateEventA(nullptr, TRUE, FALSE, nullptr)};
    log::log_perf::v2::LibLogPerf logger_;
    DaemonManager* manager_ = nullptr;
    int marks_ = 0;
};

/// Holds the pass in the middle, as it starts a process of this path.
class HeldPass {
public:
    explicit HeldPass(const std::string& path)
    {
        machine::BeforeStart([this, path](const std::string& started) {
            if (started == path && !reached_.exchange(true)) {
                in_.set_value();
                may_.get_future().wait();
            }
        });
    }
    void WaitUntilReached() { in_.get_future().wait(); }
    void LetGo() { may_.set_value(); }

private:
    std::atomic<bool> reached_ = false;
    std::promise<void> in_;
    std::promise<void> may_;
};

} // namespace

TEST_F(Race, of_all_operations_leaves_every_daemon_running_once_or_not_at_all)
{
    constexpr int kThreads = 6;
    constexpr int kRounds = 40;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([this, thread] {
            for (int round = 0; round < kRounds; ++round) {
                const std::string name = std::to_string(thread) + "_" + std::to_string(round);
                const DWORD kept = Launch("kept" + name);
                const DWORD stopped = Launch((round % 2 == 0 ? "window" : "console") + name);
                const DWORD process = machine::Start("adopted" + name);
                DWORD attached = 0;
                EXPECT_EQ(S_OK, manager_->Attach(process, nullptr, &attached));
                machine::Kill(machine::Last("kept" + name));
                EXPECT_EQ(S_OK, manager_->Detach(attached));
                EXPECT_EQ(S_OK, manager_->Stop(stopped));
                EXPECT_EQ(S_FALSE, manager_->Stop(stopped));
                EXPECT_EQ(S_FALSE, manager_->Detach(kept));
                EXPECT_TRUE(machine::Runs(process));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    TwoPassesLater();
    for (int thread = 0; thread < kThreads; ++thread) {
        for (int round = 0; round < kRounds; ++round) {
            const std::string name = std::to_string(thread) + "_" + std::to_string(round);
            EXPECT_EQ(1U, machine::Running("kept" + name)) << name;
            EXPECT_EQ(0U, machine::Running("window" + name)) << name;
            EXPECT_EQ(0U, machine::Running("console" + name)) << name;
        }
    }
}

TEST_F(Race, of_a_stop_with_a_pass_waits_for_the_pass)
{
    const DWORD first = LaunchAndWait("first");
    HeldPass held("second");
    Launch("second");
    held.WaitUntilReached();
    auto stop = std::async(std::launch::async, [&] { return manager_->Stop(first); });
    EXPECT_EQ(std::future_status::timeout, stop.wait_for(std::chrono::milliseconds(50)));
    held.LetGo();
    EXPECT_EQ(S_OK, stop.get());
    TwoPassesLater();
    EXPECT_EQ(0U, machine::Running("first"));
    EXPECT_EQ(1U, machine::Started("first"));
}

TEST_F(Race, of_a_stop_with_the_start_of_the_same_daemon_ends_it)
{
    HeldPass held("daemon");
    const DWORD id = Launch("daemon");
    held.WaitUntilReached();
    auto stop = std::async(std::launch::async, [&] { return manager_->Stop(id); });
    held.LetGo();
    EXPECT_EQ(S_OK, stop.get());
    TwoPassesLater();
    EXPECT_EQ(0U, machine::Running("daemon"));
    EXPECT_EQ(1U, machine::Started("daemon"));
}

TEST_F(Race, of_two_stops_of_one_daemon_lets_one_of_them_do_it)
{
    for (int round = 0; round < 20; ++round) {
        const std::string path = (round == 0 ? "deaf" : "window") + std::to_string(round);
        const DWORD id = LaunchAndWait(path);
        auto one = std::async(std::launch::async, [&] { return manager_->Stop(id); });
        auto other = std::async(std::launch::async, [&] { return manager_->Stop(id); });
        const HRESULT results[] = {one.get(), other.get()};
        EXPECT_EQ(1, results[0] + results[1]) << round; // S_OK and S_FALSE
        EXPECT_EQ(0U, machine::Running(path)) << round;
    }
}

TEST_F(Race, of_a_detach_with_the_death_of_the_process_starts_nothing_afterwards)
{
    for (int round = 0; round < 50; ++round) {
        const DWORD process = machine::Start("adopted");
        DWORD id = 0;
        ASSERT_EQ(S_OK, manager_->Attach(process, nullptr, &id));
        std::thread killer([process] { machine::Kill(process); });
        EXPECT_EQ(S_OK, manager_->Detach(id));
        const unsigned started = machine::Started("attached.exe");
        killer.join();
        if (round % 10 == 0) {
            TwoPassesLater();
            EXPECT_EQ(started, machine::Started("attached.exe")) << round;
        }
    }
}

TEST_F(Race, of_the_end_with_a_stop_in_its_wait_lets_the_stop_finish)
{
    const DWORD id = LaunchAndWait("deaf");
    const DWORD process = machine::Last("deaf");
    std::thread stopper([own = ComPtr<DaemonManager>::Share(manager_), id]() mutable {
        EXPECT_EQ(S_OK, own->Stop(id));
        own.Reset(); // as a call's own
    });
    EXPECT_TRUE(WaitUntil([&] { return machine::WasAskedToQuit(process); }));
    EXPECT_EQ(S_OK, manager_->Exit());
    End();
    stopper.join();
    EXPECT_FALSE(machine::Runs(process));
}

TEST_F(Race, of_the_end_with_a_pass_lets_the_pass_finish_and_the_daemons_run)
{
    LaunchAndWait("first");
    HeldPass held("second");
    Launch("second");
    held.WaitUntilReached();
    std::atomic<bool> ended = false;
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50)); // for an end that did not wait
        EXPECT_FALSE(ended);
        held.LetGo();
    });
    End();
    ended = true;
    release.join();
    EXPECT_EQ(1U, machine::Running("first"));
    EXPECT_EQ(1U, machine::Running("second"));
}

TEST_F(Race, of_the_end_with_many_clients_ends_with_the_last_of_them)
{
    std::vector<std::thread> clients;
    for (int client = 0; client < 6; ++client) {
        clients.emplace_back([own = ComPtr<DaemonManager>::Share(manager_), client]() mutable {
            for (int round = 0; round < 30; ++round) {
                const UniqueBstr path(L"client" + std::to_wstring(client) + L"_" +
                                      std::to_wstring(round));
                DWORD id = 0;
                EXPECT_EQ(S_OK, own->Launch(path.Get(), nullptr, &id));
                EXPECT_EQ(S_OK, own->Exit());
                EXPECT_EQ(S_OK, own->Stop(id));
            }
            own.Reset();
        });
    }
    End();
    for (std::thread& client : clients) {
        client.join();
    }
}

} // namespace vqrx::test
