#include "CommandMachine.h"

#include "PublishedControl.h"
#include "RingModel.h"
#include "StandInFirewall.h"
#include "StandInWmi.h"
#include "com/ComApartment.h"
#include "installation/FirmwareRoot.h"
#include "installation/InstallationPaths.h"
#include "win32/FileTime.h"

#include <cstdint>
#include <fstream>

namespace vqrx::test::anomaly {
namespace {

namespace installation = system::installation::v1;

std::string ThisProgram()
{
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    return path;
}

std::int64_t ThisProcessCreatedMs()
{
    FILETIME created{};
    FILETIME other{};
    GetProcessTimes(GetCurrentProcess(), &created, &other, &other, &other);
    return system::win32::v1::UnixMilliseconds(created);
}

// The log that the commands find through the registry.
class LogOfTheRuns {
public:
    void Begin()
    {
        ring_ = RingModel();
        ring_.SetTime(ThisProcessCreatedMs());
        attaches_ = 0;
    }
    void BeginSupervisor()
    {
        Write("Connecting to WMI resource ...");
        Write("Deamon Thread started");
    }
    void Write(const std::string& text, int level = 2) { ring_.Write(text, level); }
    // @param what  "Start" or "Attach"
    void WriteThisProcess(const std::string& what, int daemonId)
    {
        Write(what + " DaemonId(" + std::to_string(daemonId) + ") PId(" +
              std::to_string(GetCurrentProcessId()) + ") : " + ThisProgram() + " ");
    }
    void Save() const
    {
        std::string root;
        installation::GetFirmwareRoot(root);
        std::ofstream(installation::LogFile(root), std::ios::binary) << ring_.Bytes();
    }
    void Attach(int daemonId)
    {
        ++attaches_;
        WriteThisProcess("Attach", daemonId);
        Save();
    }
    [[nodiscard]] int Attaches() const { return attaches_; }

private:
    RingModel ring_;
    int attaches_ = 0;
};

LogOfTheRuns theLog;

struct CommandsMachine {
    system::com::v1::ComApartment apartment;
    StandInFirewall firewall;
    StandInWmi wmi;
    PublishedControl supervisor{[](DWORD daemonId) { theLog.Attach(static_cast<int>(daemonId)); }};
};

} // namespace

void MakeCommandMachine()
{
    static const CommandsMachine machine;
    TheWmiScript() = WmiScript();
    EraseAllFirewallRules();
    StoreFirewallRule(L"allowing C:\\gone.exe", {L"C:\\gone.exe"});
}

int AttachesSoFar()
{
    return theLog.Attaches();
}

void WriteLogOfOneRun()
{
    theLog.Begin();
    theLog.BeginSupervisor();
    theLog.WriteThisProcess("Start", 0);
    theLog.Write("Start DaemonId(1) PId(4) : C:\\App\\ends.exe -x ");
    theLog.Write("Exception caught in : Access violation", 0);
    theLog.Write("Start DaemonId(1) PId(8) : C:\\App\\ends.exe -x ", 1);
    theLog.Save();
}

void WriteLogOfTwoRuns()
{
    theLog.Begin();
    theLog.BeginSupervisor();
    theLog.WriteThisProcess("Start", 0);
    theLog.Write("Exit");
    theLog.Write("Deamon Thread is exiting...");
    theLog.BeginSupervisor();
    theLog.Save();
}

} // namespace vqrx::test::anomaly
