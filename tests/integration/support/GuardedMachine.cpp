#include "GuardedMachine.h"

#include "SupervisorProcess.h"

#include <tlhelp32.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace vqrx::test {

std::vector<ListedProgram> ProcessesNamed(const std::string& fileName)
{
    std::vector<ListedProgram> found;
    const system::win32::v1::UniqueKernelHandle snapshot(
        CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32First(snapshot.Get(), &entry); more != FALSE;
         more = Process32Next(snapshot.Get(), &entry)) {
        if (lstrcmpiA(entry.szExeFile, fileName.c_str()) == 0) {
            found.push_back({entry.th32ProcessID, entry.th32ParentProcessID});
        }
    }
    return found;
}

bool HasConsoleWindow(DWORD processId)
{
    FreeConsole();
    EXPECT_NE(AttachConsole(processId), FALSE);
    const bool hasWindow = GetConsoleWindow() != nullptr;
    FreeConsole();
    return hasWindow;
}

GuardedMachine::GuardedMachine()
{
    static_cast<void>(GetDesktopWindow()); // see SupervisorProcess
    std::filesystem::create_directory(App());
    registry_.SetPathname(FirmwareRegistry::kCurrent, App());
}

GuardedMachine::~GuardedMachine()
{
    guards_.clear();
    for (const std::string& program :
         {std::string("DaemonGuard.exe"), std::string("DaemonManager.exe")}) {
        for (const ListedProgram& process : ProcessesNamed(program)) {
            KillProcess(process.processId);
        }
    }
    const std::filesystem::path programs =
        std::filesystem::path(TestProgram("no_windows")).parent_path();
    for (const auto& file : std::filesystem::directory_iterator(programs)) {
        for (const ListedProgram& process : ProcessesNamed(file.path().filename().string())) {
            KillProcess(process.processId);
        }
    }
}

void GuardedMachine::WriteFleet(const std::string& text) const
{
    std::ofstream(App() + "\\fleet.txt", std::ios::binary) << text;
}

CapturedProgram& GuardedMachine::StartGuard(const std::string& arguments)
{
    guards_.push_back(std::make_unique<CapturedProgram>('"' + ProductProgram("DaemonGuard.exe") +
                                                        "\" --session " + arguments));
    return *guards_.back();
}

void GuardedMachine::KillGuard()
{
    guards_.back()->Kill();
    guards_.back()->Wait();
}

std::string GuardedMachine::WaitForGuardLog(const std::string& beginning, std::size_t count) const
{
    std::string last;
    const bool found = WaitUntil([&] {
        std::size_t seen = 0;
        for (const RingRecord& record : ReadRingFile(GuardLog())) {
            if (record.text.starts_with(beginning) && ++seen == count) {
                last = record.text;
            }
        }
        return seen >= count;
    });
    return found ? last : "";
}

bool GuardedMachine::WaitForTakeOver(std::size_t count) const
{
    return WaitUntil([&] {
        std::size_t seen = 0;
        for (const RingRecord& record : ReadRingFile(GuardLog())) {
            const bool isSum =
                record.text.starts_with("Fleet: ") &&
                (record.text.ends_with(" not") || record.text.starts_with("Fleet: there is no ") ||
                 record.text == "Fleet: nothing was launched");
            seen += isSum ? 1U : 0U;
        }
        return seen >= count;
    });
}

DWORD GuardedMachine::WaitForSupervisor()
{
    DWORD processId = 0;
    WaitUntil([&] {
        const auto found = ProcessesNamed("DaemonManager.exe");
        processId = found.size() == 1 ? found.front().processId : 0;
        return processId != 0;
    });
    return processId;
}

} // namespace vqrx::test
