#pragma once

#include "CapturedProgram.h"
#include "Journal.h"
#include "TempFolder.h"
#include "win32/UniqueHandle.h"

#include <memory>
#include <string>
#include <vector>

namespace vqrx::test {

/// The client processes, the dead ones' journals included.
class Clients {
public:
    static constexpr unsigned kCount = 8;

    /// Starts them all.
    Clients();

    /// Ends one of the first two, if it can be done within a call, and starts another in its place.
    void KillOne();
    /// Lets all of them finish what they are doing. @return what went wrong; empty when nothing
    std::string End();

    /// Of all clients that there have been, by the names of the daemons.
    /// @throws std::runtime_error  when one of them has failed
    std::map<std::string, JournalDaemon> Daemons() const;
    unsigned Killed() const { return killed_; }
    unsigned KilledInCall() const { return killedInCall_; }

private:
    struct Client {
        std::unique_ptr<CapturedProgram> process;
        std::string journal;
    };
    Client Start();

    TempFolder folder_;
    std::string endName_;
    system::win32::v1::UniqueKernelHandle end_;
    std::vector<Client> clients_;
    std::vector<Client> past_;
    unsigned started_ = 0;
    unsigned killed_ = 0;
    unsigned killedInCall_ = 0;
};

/// The program of a kind of daemon.
std::string EnduranceProgram(const std::string& kind);

} // namespace vqrx::test
