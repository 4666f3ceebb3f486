#include "Clients.h"

#include "ChildProcess.h"

#include <stdexcept>
#include <utility>

namespace vqrx::test {

std::string EnduranceProgram(const std::string& kind)
{
    return TestProgram(kind == "windowed" ? "endurance_window" : "endurance_daemon");
}

Clients::Clients()
    : endName_("dm_endurance_end_" + std::to_string(GetCurrentProcessId()))
    , end_(CreateEventA(nullptr, TRUE, FALSE, endName_.c_str()))
{
    for (unsigned number = 0; number < kCount; ++number) {
        clients_.push_back(Start());
    }
}

Clients::Client Clients::Start()
{
    const std::string name = "client" + std::to_string(started_++);
    Client client;
    client.journal = folder_.File(name + ".journal");
    client.process = std::make_unique<CapturedProgram>(
        TestProgram("endurance_client") + " " + name + " " + std::to_string(started_) + " " +
        client.journal + " " + EnduranceProgram("steady") + " " + EnduranceProgram("windowed") +
        " " + endName_);
    return client;
}

void Clients::KillOne()
{
    Client& victim = clients_[killed_ % 2];
    const ULONGLONG start = GetTickCount64();
    while (!ReadJournal(victim.journal).inCall && GetTickCount64() - start < 5000) {
        Sleep(1);
    }
    victim.process->Kill();
    victim.process->Wait();
    ++killed_;
    killedInCall_ += ReadJournal(victim.journal).inCall ? 1 : 0;
    past_.push_back(std::exchange(victim, Start()));
}

std::string Clients::End()
{
    SetEvent(end_.Get());
    for (const Client& client : clients_) {
        if (client.process->ExitCode() != 0) {
            return "a client ended with exit code " + std::to_string(client.process->ExitCode()) +
                   ": " + ReadJournal(client.journal).failure + client.process->Error();
        }
    }
    return {};
}

std::map<std::string, JournalDaemon> Clients::Daemons() const
{
    std::map<std::string, JournalDaemon> all;
    for (const auto* group : {&clients_, &past_}) {
        for (const Client& client : *group) {
            Journal journal = ReadJournal(client.journal);
            if (!journal.failure.empty()) {
                throw std::runtime_error(journal.failure);
            }
            all.merge(journal.daemons);
        }
    }
    return all;
}

} // namespace vqrx::test
