#include "Scene.h"

#include "HeldProcesses.h"
#include "StandInFirewall.h"
#include "code_page/CodePage.h"

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
    return system::code_page::v1::NarrowToWide(text, CP_ACP);
}

bool OnePassLater(SupervisorProcess& supervisor)
{
    const std::string nowhere = "C:\\nowhere\\marks a pass.exe";
    const std::string line = "Unable to start " + nowhere + " ";
    const std::size_t before = supervisor.CountLog(1, line);
    const auto marker = supervisor.Client().Launch(WideText(nowhere));
    return marker.done && supervisor.WaitForLog(1, line, before + 1) &&
           supervisor.Client().Stop(marker.daemonId);
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
