#include "FirmwarePlace.h"

#include "MachineKey.h"
#include "SetupError.h"
#include "SystemPlaces.h"
#include "TextEncoding.h"
#include "installation/FirmwareRoot.h"
#include "installation/InstallationPaths.h"

#include <windows.h>

#include <optional>

namespace vqrx::setup::v0 {
namespace {

namespace installation = system::installation::v1;
using installation::RootKey;

constexpr const char* kProduct = R"(SOFTWARE\UnitWarden)";
constexpr const char* kFirmware = R"(SOFTWARE\UnitWarden\CurrentVersion)";

// Returns the root that a key names; nothing if it has no value.
std::optional<std::string> RootOf(RootKey key)
{
    const installation::RegisteredPathname value = installation::ReadPathname(key);
    if (value.openError != ERROR_SUCCESS || value.valueError == ERROR_FILE_NOT_FOUND) {
        return std::nullopt;
    }
    if (value.valueError != ERROR_SUCCESS) {
        throw SetupError("The value Pathname of " + installation::NameOf(key) +
                         " cannot be read (Windows error " + std::to_string(value.valueError) +
                         ").");
    }
    std::string root = client::v0::AnsiToUtf8(installation::RootFromPathname(value.pathname));
    if (root.empty()) {
        throw SetupError("The value Pathname of " + installation::NameOf(key) +
                         " names no firmware root.");
    }
    return root;
}

} // namespace

FirmwarePlace FindFirmwarePlace(const std::string& wantedRoot)
{
    if (const auto root = RootOf(RootKey::kCurrent)) {
        return {*root, true};
    }
    if (const auto root = RootOf(RootKey::kOlder)) {
        // The supervisor does not read the older key if the current one exists.
        return {*root, installation::ReadPathname(RootKey::kCurrent).openError != ERROR_SUCCESS};
    }
    return {wantedRoot.empty() ? DefaultFirmwareRoot() : wantedRoot, false};
}

void RegisterFirmwareRoot(const std::string& root)
{
    const MachineKey notes = InstallationKey();
    const MachineKey firmware(kFirmware);
    if (!MachineKey(kProduct).Exists()) {
        notes.SetText("MadeProductKey", kProduct);
    }
    if (!firmware.Exists()) {
        notes.SetText("MadeFirmwareKey", kFirmware);
    }
    firmware.SetText("Pathname", installation::AppFolder(root));
    notes.SetText("MadePathname", installation::AppFolder(root));
}

void RemoveRegisteredRoot()
{
    const MachineKey notes = InstallationKey();
    const MachineKey firmware(kFirmware);
    const std::string made = notes.Text("MadePathname");
    if (made.empty() || made != firmware.Text("Pathname")) {
        return;
    }
    firmware.RemoveValue("Pathname");
    if (!notes.Text("MadeFirmwareKey").empty()) {
        firmware.RemoveIfEmpty();
    }
    if (!notes.Text("MadeProductKey").empty()) {
        MachineKey(kProduct).RemoveIfEmpty();
    }
}

} // namespace vqrx::setup::v0
