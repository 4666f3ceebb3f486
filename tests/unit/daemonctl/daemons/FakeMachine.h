#pragma once

#include "DaemonStatus.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vqrx::test {

/// The processes, services and files of a machine that a test invents. Every process has the
/// arguments "-x" and "y z".
struct FakeMachine {
    std::map<std::uint32_t, client::v0::ProcessFacts> processes;
    std::map<std::string, std::string> services;
    std::map<std::string, std::string> links; ///< from a path to the file to which it leads

    /// Adds a running process, or replaces the process with this id.
    void Run(std::uint32_t processId, const std::string& image, std::int64_t createdMs)
    {
        client::v0::ProcessFacts facts;
        facts.processId = processId;
        facts.state = client::v0::ProcessFacts::State::kRunning;
        facts.image = image;
        facts.createdMs = createdMs;
        processes[processId] = facts;
    }

    /// Returns the answers of this machine; valid while this object lives.
    client::v0::ProcessSource Source() const
    {
        client::v0::ProcessSource source;
        source.facts = [this](std::uint32_t processId) {
            const auto found = processes.find(processId);
            client::v0::ProcessFacts gone;
            gone.processId = processId;
            return found != processes.end() ? found->second : gone;
        };
        source.sameFile = [this](const std::string& path, const std::string& image) {
            const auto found = links.find(path);
            return found != links.end() && found->second == image;
        };
        source.commandOfService = [this](const std::string& name) {
            const auto found = services.find(name);
            return found != services.end() ? found->second : std::string();
        };
        source.arguments = [](std::uint32_t) { return std::vector<std::string>{"-x", "y z"}; };
        source.appFolder = R"(C:\FW\App)";
        return source;
    }
};

} // namespace vqrx::test
