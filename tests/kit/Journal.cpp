#include "Journal.h"

#include <nlohmann/json.hpp>

#include <stdexcept>

namespace vqrx::kit {
namespace {

using Json = nlohmann::ordered_json;

Json JsonOf(const RegistryTree& tree)
{
    Json item{{"exists", tree.exists}, {"values", Json::array()}, {"keys", Json::array()}};
    for (const RegistryValue& value : tree.values) {
        item["values"].push_back(
            {{"name", value.name}, {"type", value.type}, {"bytes", value.bytes}});
    }
    for (const auto& [name, below] : tree.keys) {
        item["keys"].push_back({{"name", name}, {"content", JsonOf(below)}});
    }
    return item;
}

RegistryTree ReadTree(const Json& item)
{
    RegistryTree tree;
    item.at("exists").get_to(tree.exists);
    for (const Json& value : item.at("values")) {
        tree.values.push_back({value.at("name").get<std::string>(),
                               value.at("type").get<std::uint32_t>(),
                               value.at("bytes").get<std::vector<std::uint8_t>>()});
    }
    for (const Json& key : item.at("keys")) {
        tree.keys.emplace_back(key.at("name").get<std::string>(), ReadTree(key.at("content")));
    }
    return tree;
}

} // namespace

std::string NameOf(const WatchedKey& key)
{
    return (key.ofMachine ? "HKLM\\" : "HKCU\\") + key.path;
}

std::vector<WatchedKey> KeysThatTestsChange()
{
    std::vector<WatchedKey> keys = {
        // Name the firmware root.
        {true, R"(SOFTWARE\UnitWarden)", true},
        {true, R"(SOFTWARE\VANTORO_QRX)", true},
        // The installation with its account, the start of the guard, and the access to COM servers.
        {true, R"(SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall\DaemonManager)", true},
        {true, R"(SOFTWARE\Microsoft\Windows\CurrentVersion\Run)", false},
        {true, R"(SYSTEM\CurrentControlSet\Services\DaemonGuard)", true},
        {true, R"(SOFTWARE\Microsoft\Ole)", false},
        // Decide whether Windows shows a box for a crashed program.
        {true, R"(SOFTWARE\Microsoft\Windows\Windows Error Reporting)", false},
        {true, R"(SYSTEM\CurrentControlSet\Control\Windows)", false},
        // Windows keeps the settings of new consoles here.
        {false, "Console", true},
        // The stand-ins keep their rules and orders here.
        {false, R"(Software\DaemonManagerTest)", true},
        // Made by tests of the code that reads and writes keys.
        {true, R"(SOFTWARE\DmMachineKeyTest)", true},
        {false, R"(Software\DaemonManagerKitTest)", true},
        {false, R"(Software\prepared classes of this test)", true},
    };
    // The proxy of the supervisor's interface, and the classes of Windows that stand-ins replace:
    // three of the firewall, one of WMI.
    const std::string classes = R"(SOFTWARE\Classes\)";
    keys.push_back({true, classes + "Interface\\{C307E9F6-67C0-4C74-B1BD-37EFB9882701}", true});
    for (const char* id :
         {"{C307E9F6-67C0-4C74-B1BD-37EFB9882701}", "{304CE942-6E39-40D8-943A-B913C40C9CD4}",
          "{E2B3C97F-6AE1-41AC-817A-F6F92166D7DD}", "{2C5BC43E-3369-4C33-AB0C-BE9469677AF4}",
          "{4590F811-1D3A-11D0-891F-00AA004B2E24}"}) {
        keys.push_back({true, classes + "CLSID\\" + id, true});
    }
    // What a user has prepared against the proxy, and the keys above it, which a new user has not.
    const std::string proxy = "\\{C307E9F6-67C0-4C74-B1BD-37EFB9882701}";
    for (const char* kind : {"Interface", "CLSID"}) {
        keys.push_back({false, R"(Software\Classes\)" + (kind + proxy), true});
        keys.push_back({false, std::string(R"(Software\Classes\)") + kind, false});
    }
    keys.push_back({false, R"(Software\Classes)", false});
    return keys;
}

std::string JournalText(const Journal& journal)
{
    Json keys = Json::array();
    for (const SavedKey& saved : journal.keys) {
        keys.push_back({{"ofMachine", saved.key.ofMachine},
                        {"path", saved.key.path},
                        {"withKeysBelow", saved.key.withKeysBelow},
                        {"before", JsonOf(saved.before)}});
    }
    return Json{{"keys", keys}}.dump(1) + "\n";
}

Journal ReadJournal(std::string_view text)
{
    try {
        Journal journal;
        const Json content = Json::parse(text);
        for (const Json& item : content.at("keys")) {
            journal.keys.push_back(
                {{item.at("ofMachine").get<bool>(), item.at("path").get<std::string>(),
                  item.at("withKeysBelow").get<bool>()},
                 ReadTree(item.at("before"))});
        }
        return journal;
    } catch (const Json::exception& error) {
        throw std::runtime_error(std::string("the journal cannot be read: ") + error.what());
    }
}

} // namespace vqrx::kit
