#pragma once

#include "Clients.h"
#include "Failures.h"
#include "Fleet.h"
#include "Followers.h"
#include "Model.h"
#include "Options.h"
#include "PrefixClass.h"
#include "Sampler.h"
#include "SupervisorProcess.h"
#include "TestService.h"
#include "win32/UniqueHandle.h"

#include <optional>
#include <vector>

namespace vqrx::test {

/// One run: start of all daemons, load, end of the clients, end of the supervisor, report.
class EnduranceRun {
public:
    explicit EnduranceRun(const EnduranceOptions& options);

    /// @return true if there was no failure
    [[nodiscard]] bool Run();

private:
    void StartUp();
    void Load();
    void KillDaemon();
    void TakeSample();
    void Finish(const Model::Registered& registered);
    void Report() const;
    [[nodiscard]] double Seconds() const;

    EnduranceOptions options_;
    system::com::v1::ComApartment apartment_;
    TestService firewallService_{"MpsSvc"};
    PrefixStandIns standIns_;
    system::win32::v1::UniqueKernelHandle ranTwice_;
    Failures failures_;
    std::optional<SupervisorProcess> supervisor_;
    std::optional<Followers> followers_;
    std::optional<Fleet> fleet_;
    std::optional<Sampler> sampler_;
    std::optional<Clients> clients_;
    std::optional<Model> model_;
    std::vector<Sample> samples_;
    ULONGLONG began_ = 0;        // tick at the beginning of the load, milliseconds
    double startUpSeconds_ = 0;  // until all daemons run
    DWORD slowestRestartMs_ = 0; // of a daemon that the test killed
    DWORD sumOfRestartMs_ = 0;
};

} // namespace vqrx::test
