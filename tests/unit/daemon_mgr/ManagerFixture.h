#pragma once

#include "CapturingSink.h"
#include "ChildProcess.h"
#include "DaemonManager.h"
#include "com/ComApartment.h"
#include "com/ComPtr.h"
#include "com/UniqueBstr.h"
#include "log_perf/LibLogPerf.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {

/// Owns an array of BSTR, as a client's request carries it.
class Arguments {
public:
    explicit Arguments(const std::vector<std::string>& texts, LONG lowerBound = 0)
    {
        SAFEARRAYBOUND bound{static_cast<ULONG>(texts.size()), lowerBound};
        array_ = SafeArrayCreate(VT_BSTR, 1, &bound);
        for (std::size_t index = 0; index < texts.size(); ++index) {
            LONG position = lowerBound + static_cast<LONG>(index);
            const system::com::v1::UniqueBstr text(
                std::wstring(texts[index].begin(), texts[index].end()));
            SafeArrayPutElement(array_, &position, text.Get());
        }
    }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;
    ~Arguments() { SafeArrayDestroy(array_); }
    SAFEARRAY** Put() { return &array_; }
    SAFEARRAY* Get() const { return array_; }
    SAFEARRAY* Release() { return std::exchange(array_, nullptr); }

private:
    SAFEARRAY* array_;
};

/// A real DaemonManager with a real logger and a short time between two passes. Ends every process
/// for which the log has a "Start" line.
class ManagerFixture : public ::testing::Test {
protected:
    using DaemonManager = system::daemon::daemon_mgr::v0::DaemonManager;
    using ManagerOptions = system::daemon::daemon_mgr::v0::ManagerOptions;
    static constexpr DWORD kInterval = 50; // milliseconds
    static constexpr DWORD kNoPasses =
        INFINITE; // as an interval: the supervision thread never makes a pass

    ManagerFixture() { logger_.AddSink(&sink_); }

    void Make(DWORD interval = kInterval, const ManagerOptions& options = {})
    {
        manager_ = system::com::v1::ComPtr<DaemonManager>::Share(
            new DaemonManager(GetCurrentThreadId(), interval, &logger_, options));
        sink_.WaitForPrefix("Deamon Thread started");
    }

    ~ManagerFixture() override
    {
        manager_.Reset();
        for (const auto& record : sink_.Records()) {
            if (record.text.rfind("Start ", 0) == 0) {
                KillProcess(PidIn(record.text));
            }
        }
    }

    /// The process id in the description of a daemon; 0 if it has none.
    static DWORD PidIn(const std::string& text)
    {
        const std::size_t position = text.find("PId(");
        return position == std::string::npos ? 0 : std::stoul(text.substr(position + 4));
    }

    HRESULT Launch(const std::string& path, const std::vector<std::string>& texts, DWORD* daemonId)
    {
        const system::com::v1::UniqueBstr bstr(std::wstring(path.begin(), path.end()));
        Arguments arguments(texts);
        return manager_->Launch(bstr.Get(), arguments.Put(), daemonId);
    }

    /// Launches a test program and waits until the program is ready and its start is in the log.
    /// @return the daemon id
    DWORD LaunchAndWait(const std::string& program, const ReadyEvent& ready, DWORD& processId)
    {
        DWORD daemonId = 0;
        EXPECT_EQ(S_OK, Launch(TestProgram(program), {ready.Name()}, &daemonId));
        EXPECT_TRUE(ready.Wait());
        processId =
            PidIn(sink_.WaitForPrefix("Start DaemonId(" + std::to_string(daemonId) + ")").text);
        return daemonId;
    }

    /// The description of a daemon as the log shows it.
    static std::string Description(DWORD daemonId, DWORD processId, const std::string& command)
    {
        return "DaemonId(" + std::to_string(daemonId) + ") PId(" + std::to_string(processId) +
               ") : " + command + " ";
    }

    system::com::v1::ComApartment apartment_;
    CapturingSink sink_;
    log::log_perf::v2::LibLogPerf logger_;
    system::com::v1::ComPtr<DaemonManager> manager_;
};

} // namespace vqrx::test
