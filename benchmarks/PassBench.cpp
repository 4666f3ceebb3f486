// Duration of a supervision pass over running daemons.
#include "Measure.h"
#include "SharedChild.h"
#include "SupervisionPass.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::bench {
namespace {

using namespace system::daemon::daemon_mgr::v0;
using system::win32::v1::UniqueKernelHandle;

class NoLogger final : public log::i_logger::v0::ILogger {
public:
    void Log(int, const char*, ...) override {}
};

DaemonTable LiveDaemons(DWORD count, const std::vector<UniqueKernelHandle>& processes)
{
    DaemonTable table;
    for (DWORD id = 0; id < count; ++id) {
        ProcessInfo record;
        record.executablePath = kDaemonPath;
        record.arguments = {std::to_string(id)};
        record.daemonId = id;
        HANDLE process = nullptr;
        DuplicateHandle(GetCurrentProcess(), processes[id % processes.size()].Get(),
                        GetCurrentProcess(), &process, 0, FALSE, DUPLICATE_SAME_ACCESS);
        record.process.Reset(process);
        table.emplace(id, std::move(record));
    }
    return table;
}

} // namespace

void PassBench(const Settings& settings)
{
    static const Children children;
    static const std::vector<UniqueKernelHandle> processes = [] {
        std::vector<UniqueKernelHandle> started;
        for (int i = 0; i < 4; ++i) {
            started.push_back(Children::Start());
            if (!children.WaitForStart()) {
                throw std::runtime_error("a child has not started within two minutes");
            }
        }
        return started;
    }();
    NoLogger logger;
    for (const DWORD count : {10, 100, 1000, 10000}) {
        if (settings.quick && count > 1000) {
            continue;
        }
        const std::string suffix = "." + std::to_string(count);
        DaemonTable table = LiveDaemons(count, processes);
        SupervisionPass(table, logger); // The first pass uses every handle for the first time.
        const int passes = static_cast<int>(std::max<DWORD>(1, 1000 / count));
        const Stopwatch ours;
        for (int pass = 0; pass < passes; ++pass) {
            SupervisionPass(table, logger);
        }
        Report("pass.us" + suffix, ours.Seconds() / passes * 1e6);
        const Stopwatch theirs;
        DWORD alive = 0;
        for (const auto& [id, record] : table) {
            DWORD code = 0;
            alive += GetExitCodeProcess(record.process.Get(), &code) != FALSE && code == 259;
        }
        Report("pass.exit_codes_us" + suffix, theirs.Seconds() * 1e6);
        Keep(alive);
    }
}

} // namespace vqrx::bench
