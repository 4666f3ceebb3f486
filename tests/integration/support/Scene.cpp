#include "Scene.h"

#include "HeldProcesses.h"
#include "StandInFirewall.h"
#include "com/TextConversion.h"

#include <iostream>

namespace vqrx::test {

std::unique_ptr<PrefixStandIns> Scene::standIns_;
std::unique_ptr<TestService> Scene::firewallService_;

std::string Described(DWORD daemonId, DWORD processId, const std::string& command)
{
    return "DaemonId(" + std::to_string(daemonId) + ") PId(" + std::to_string(processId) +
           ") : " + command;
}

std::wstring WideText(const std::string& text)
{
    return system::com::v1::NarrowToWide(text, CP_ACP);
}

bool TwoPassesLater(SupervisorProcess& supervisor)
{
    const auto marker =
        supervisor.Client().Launch(WideText(TestProgram("no_windows")), {L"marks", L"passes"});
    DWORD processId = supervisor.WaitForStart(marker.daemonId);
    for (int pass = 0; pass < 2 && processId != 0; ++pass) {
        KillProcess(processId);
        processId = supervisor.WaitForStart(marker.daemonId, processId);
    }
    return processId != 0 && supervisor.Client().Stop(marker.daemonId);
}

void Scene::SetUpTestSuite()
{
    standIns_ = std::make_unique<PrefixStandIns>();
    std::cout << "WMI: " << standIns_->WhoseWmi() << std::endl;
    firewallService_ = std::make_unique<TestService>("MpsSvc");
    firewallService_->Start();
}

void Scene::TearDownTestSuite()
{
    firewallService_.reset();
    standIns_.reset();
}

Scene::Scene()
{
    RecordProperty("WMI", standIns_->WhoseWmi());
    EraseAllFirewallRules();
}

std::size_t Scene::HandlesOf(DWORD processId)
{
    return HandlesHeld(supervisor_.Process().Pid(), processId);
}

} // namespace vqrx::test
