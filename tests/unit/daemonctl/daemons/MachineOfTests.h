#pragma once

#include "DaemonStatus.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vqrx::test {

/// The processes of a machine that a test makes up.
struct MachineOfTests {
    std::map<std::uint32_t, client::v0::ProcessFacts> processes;
    std::map<std::string, std::string> services;
    std::map<std::string, std::string> links; ///< path to the file that it leads to

    void Run(std::uint32_t processId, const std::string& image, std::int64_t createdMs)
    {
        client::v0::ProcessFacts facts;
        facts.processId = processId;
        facts.state = client::v0::ProcessFacts::State::running;
        facts.image = image;
        facts.createdMs = createdMs;
        processes[processId] = facts;
    }

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

/// Records of a log, made one after another a second apart.
class LogOfTests {
public:
    LogOfTests& Add(int level, const std::string& text)
    {
        client::v0::Record record;
        record.number = static_cast<std::int64_t>(records_.size());
        record.timeMs = nowMs_;
        record.level = level;
        record.text = text;
        records_.push_back(record);
        nowMs_ += 1000;
        return *this;
    }
    LogOfTests& Begin()
    {
        return Add(2, "Connecting to WMI resource ...").Add(2, "Deamon Thread started");
    }
    LogOfTests& End() { return Add(2, "Exit").Add(2, "Deamon Thread is exiting..."); }

    /// When the next record would be written.
    std::int64_t NowMs() const { return nowMs_; }
    client::v0::Timeline Timeline() const { return client::v0::BuildTimeline(records_); }

private:
    std::vector<client::v0::Record> records_;
    std::int64_t nowMs_ = 1'000'000'000'000;
};

} // namespace vqrx::test
