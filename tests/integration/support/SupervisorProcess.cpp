#include "SupervisorProcess.h"

#include "ChildProcess.h"
#include "FileContent.h"
#include "PausedLooks.h"
#include "Wine.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace vqrx::test {
namespace {

using system::com::v1::ComPtr;

constexpr ULONGLONG kDeadlineMs = 180000; // only a failure reaches it
constexpr const char* kComHung = "Shutdown given up: COM has not released the main thread in time";

} // namespace

DWORD OrderlyExitCode(const CapturedProgram& supervisor, const std::string& logFile)
{
    constexpr DWORD kShutdownGivenUp = 2;
    const DWORD exitCode = supervisor.ExitCode();
    const bool comHung = exitCode == kShutdownGivenUp && RunsUnderWine() &&
                         ReadText(logFile).find(kComHung) != std::string::npos;
    return comHung ? 0 : exitCode;
}

std::vector<RingRecord> OrderlyLog(std::vector<RingRecord> log)
{
    if (RunsUnderWine() && !log.empty() && log.back().text == kComHung) {
        log.pop_back();
    }
    return log;
}

bool WaitUntil(const std::function<bool()>& condition)
{
    PausedLooks looks(kDeadlineMs);
    while (!condition()) {
        if (looks.IsOver()) {
            return condition();
        }
        looks.Pause();
    }
    return true;
}

std::string WaitForNote(const std::string& file)
{
    std::string text; // The file exists a moment before it can be opened.
    WaitUntil([&] {
        text = ReadText(file);
        return !text.empty();
    });
    return text;
}

void SupervisorProcess::InstalledInApp(FirmwareRegistry& registry, const std::string& root)
{
    registry.SetPathname(FirmwareRegistry::kCurrent, root + "\\App\\bin");
}

SupervisorProcess::SupervisorProcess(const Configure& configure)
{
    // Under Wine the first program on a desktop gets explorer.exe as its child. That must be this
    // program: a child of the supervisor looks like a daemon.
    static_cast<void>(GetDesktopWindow());
    std::filesystem::create_directory(App());
    configure(registry_, Root());
    process_ = std::make_unique<CapturedProgram>(ProductProgram("DaemonManager.exe"));
    ComPtr<IUnknown> object;
    const bool published = WaitUntil([&] {
        object = FindPublished();
        return object || !process_->Running();
    });
    if (!published || !object) {
        throw std::runtime_error("the supervisor is not published:\n" + process_->Error());
    }
    control_ = object.Query<IDaemonMgrControl>();
    client_ = std::make_unique<daemon_manager::SupervisorClient>();
}

std::string SupervisorProcess::Write(const std::string& name, const std::string& text) const
{
    std::string path = Root() + "\\" + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

std::size_t SupervisorProcess::CountLog(int level, const std::string& text) const
{
    const std::vector<RingRecord> records = Log();
    return static_cast<std::size_t>(
        std::count_if(records.begin(), records.end(), [&](const RingRecord& record) {
            return record.level == level && record.text == text;
        }));
}

bool SupervisorProcess::WaitForLog(int level, const std::string& text, std::size_t count) const
{
    return WaitUntil([&] { return CountLog(level, text) >= count; });
}

DWORD SupervisorProcess::WaitForStart(DWORD daemonId, DWORD afterPid) const
{
    const std::string start = "Start DaemonId(" + std::to_string(daemonId) + ") PId(";
    DWORD found = 0;
    WaitUntil([&] {
        for (const RingRecord& record : Log()) {
            if (record.text.starts_with(start)) {
                found = static_cast<DWORD>(std::stoul(record.text.substr(start.size())));
            }
        }
        return found != 0 && found != afterPid;
    });
    return found != afterPid ? found : 0;
}

bool SupervisorProcess::Terminate()
{
    process_->Kill();
    return process_->Wait() && WaitUntil([] { return !FindPublished(); });
}

DWORD SupervisorProcess::Exit()
{
    client_->Exit();
    return ExitCode();
}

} // namespace vqrx::test
