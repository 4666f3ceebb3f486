#include "Manifest.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <stdexcept>

namespace vqrx::kit {
namespace {

TestProgram ReadProgram(const nlohmann::json& item)
{
    TestProgram program;
    item.at("name").get_to(program.name);
    item.at("program").get_to(program.program);
    item.at("arguments").get_to(program.arguments);
    item.at("locks").get_to(program.locks);
    item.at("timeoutSeconds").get_to(program.timeoutSeconds);
    item.at("cost").get_to(program.cost);
    item.at("takesLong").get_to(program.takesLong);
    item.at("googleTest").get_to(program.googleTest);
    return program;
}

} // namespace

Manifest ReadManifest(std::string_view json)
{
    try {
        const auto content = nlohmann::json::parse(json);
        Manifest manifest;
        content.at("version").get_to(manifest.version);
        content.at("commit").get_to(manifest.commit);
        for (const auto& item : content.at("programs")) {
            manifest.programs.push_back(ReadProgram(item));
        }
        for (const auto& item : content.at("notInKit")) {
            manifest.notInKit.push_back({item.at("name"), item.at("reason")});
        }
        return manifest;
    } catch (const nlohmann::json::exception& error) {
        throw std::runtime_error(std::string("manifest.json cannot be read: ") + error.what());
    }
}

bool NeedsAdministrator(const TestProgram& program)
{
    return std::any_of(program.locks.begin(), program.locks.end(), [](const std::string& lock) {
        return lock == "registry" || lock == "services" || lock == "firewall";
    });
}

} // namespace vqrx::kit
