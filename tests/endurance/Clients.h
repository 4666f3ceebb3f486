#pragma once

#include "CapturedProgram.h"
#include "Journal.h"
#include "TempFolder.h"
#include "win32/UniqueHandle.h"

#include <memory>
#include <string>
#include <vector>

namespace vqrx::test {

/// Owns the client processes, and the journals of running and killed clients. For one thread.
class Clients {
public:
    static constexpr unsigned kCount = 8;

    /// Starts kCount clients.
    Clients();

    /// Kills one of the first two clients and starts a new client in its place. Waits at most 5 s
    /// for the beginning of a call, so that the client most likely dies in the call.
    void KillOne();
    /// Lets each client finish its call and end.
    /// @return the failure of a client; empty if there is none
    [[nodiscard]] std::string End();

    /// Returns the daemons of running and killed clients, by the name of the daemon.
    /// @throws std::runtime_error  if a client has failed
    [[nodiscard]] std::map<std::string, JournalDaemon> Daemons() const;
    [[nodiscard]] unsigned Killed() const { return killed_; }
    [[nodiscard]] unsigned KilledInCall() const { return killedInCall_; }

private:
    struct Client {
        std::unique_ptr<CapturedProgram> process;
        std::string journal;
    };
    [[nodiscard]] Client Start();

    TempFolder folder_;
    std::string endName_;
    system::win32::v1::UniqueKernelHandle end_;
    std::vector<Client> clients_;
    std::vector<Client> past_; // killed
    unsigned started_ = 0;
    unsigned killed_ = 0;
    unsigned killedInCall_ = 0;
};

/// Returns the path of the program for a kind of daemon.
[[nodiscard]] std::string EnduranceProgram(const std::string& kind);

} // namespace vqrx::test
