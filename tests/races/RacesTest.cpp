// Client calls, the supervision pass and the shutdown of the manager at the same time, natively on
// the fake Windows. ThreadSanitizer runs this program too.
#include "DaemonManager.h"
#include "FakeProcesses.h"
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
[[nodiscard]] bool WaitUntil(Condition condition)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return condition();
}

class Races : public ::testing::Test {
protected:
    Races()
    {
        machine::Reset();
        ManagerOptions options;
        options.stopTimings.quitWaitMs = 100;
        options.releasedEvent = released_.Get();
        manager_ = new DaemonManager(1, 1, &logger_, options);
        manager_->AddRef();
    }
    ~Races() override
    {
        machine::BeforeStart(nullptr);
        ShutDown();
        machine::Reset();
    }

    /// Shuts the manager down as the program does: on the thread that made it, after the last
    /// client has released it.
    void ShutDown()
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
    /// Waits until two passes have begun and ended after the call.
    void WaitForTwoPasses()
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

/// Blocks the pass when it starts a process with this path, until Release.
class BlockedPass {
public:
    explicit BlockedPass(const std::string& path)
    {
        machine::BeforeStart([this, path](const std::string& started) {
            if (started == path && !reached_.exchange(true)) {
                atStart_.set_value();
                mayContinue_.get_future().wait();
            }
        });
    }
    void WaitUntilReached() { atStart_.get_future().wait(); }
    void Release() { mayContinue_.set_value(); }

private:
    std::atomic<bool> reached_ = false;
    std::promise<void> atStart_;
    std::promise<void> mayContinue_;
};

TEST_F(Races, Daemons_run_once_or_not_at_all_after_all_operations_at_the_same_time)
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
    WaitForTwoPasses();
    for (int thread = 0; thread < kThreads; ++thread) {
        for (int round = 0; round < kRounds; ++round) {
            const std::string name = std::to_string(thread) + "_" + std::to_string(round);
            EXPECT_EQ(1U, machine::Running("kept" + name)) << name;
            EXPECT_EQ(0U, machine::Running("window" + name)) << name;
            EXPECT_EQ(0U, machine::Running("console" + name)) << name;
        }
    }
}

TEST_F(Races, Stop_waits_for_a_running_pass)
{
    const DWORD first = LaunchAndWait("first");
    BlockedPass pass("second");
    Launch("second");
    pass.WaitUntilReached();
    auto stop = std::async(std::launch::async, [&] { return manager_->Stop(first); });
    EXPECT_EQ(std::future_status::timeout, stop.wait_for(std::chrono::milliseconds(50)));
    pass.Release();
    EXPECT_EQ(S_OK, stop.get());
    WaitForTwoPasses();
    EXPECT_EQ(0U, machine::Running("first"));
    EXPECT_EQ(1U, machine::Started("first"));
}

TEST_F(Races, Stop_ends_a_daemon_that_the_pass_is_starting)
{
    BlockedPass pass("daemon");
    const DWORD id = Launch("daemon");
    pass.WaitUntilReached();
    auto stop = std::async(std::launch::async, [&] { return manager_->Stop(id); });
    pass.Release();
    EXPECT_EQ(S_OK, stop.get());
    WaitForTwoPasses();
    EXPECT_EQ(0U, machine::Running("daemon"));
    EXPECT_EQ(1U, machine::Started("daemon"));
}

TEST_F(Races, One_of_two_stops_of_a_daemon_returns_S_OK_and_the_other_S_FALSE)
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

TEST_F(Races, No_process_starts_after_a_detach_while_the_process_ends)
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
            WaitForTwoPasses();
            EXPECT_EQ(started, machine::Started("attached.exe")) << round;
        }
    }
}

TEST_F(Races, Shutdown_lets_a_waiting_stop_finish)
{
    const DWORD id = LaunchAndWait("deaf");
    const DWORD process = machine::Last("deaf");
    std::thread stopper([own = ComPtr<DaemonManager>::Share(manager_), id]() mutable {
        EXPECT_EQ(S_OK, own->Stop(id));
        own.Reset(); // as COM does after the call
    });
    EXPECT_TRUE(WaitUntil([&] { return machine::WasAskedToQuit(process); }));
    EXPECT_EQ(S_OK, manager_->Exit());
    ShutDown();
    stopper.join();
    EXPECT_FALSE(machine::Runs(process));
}

TEST_F(Races, Shutdown_lets_the_pass_finish_and_leaves_the_daemons_running)
{
    LaunchAndWait("first");
    BlockedPass pass("second");
    Launch("second");
    pass.WaitUntilReached();
    std::atomic<bool> ended = false;
    std::thread release([&] {
        // Gives a shutdown that does not wait the time to end.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_FALSE(ended);
        pass.Release();
    });
    ShutDown();
    ended = true;
    release.join();
    EXPECT_EQ(1U, machine::Running("first"));
    EXPECT_EQ(1U, machine::Running("second"));
}

TEST_F(Races, Shutdown_ends_after_the_last_client_releases_the_manager)
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
    ShutDown();
    for (std::thread& client : clients) {
        client.join();
    }
}

} // namespace
} // namespace vqrx::test
