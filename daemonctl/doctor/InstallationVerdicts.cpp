#include "doctor/Verdicts.h"

namespace vqrx::client::v0 {
namespace {

constexpr std::uint32_t kFileNotFound = 2;
constexpr std::uint32_t kPathNotFound = 3;
constexpr std::uint32_t kMoreData = 234;
constexpr std::uint64_t kRoomForLog = 0x200000; // the ring's limit, and as much again

bool IsMissing(std::uint32_t error)
{
    return error == kFileNotFound || error == kPathNotFound;
}

bool IsAbsolute(const std::string& path)
{
    return path.starts_with("\\\\") || (path.size() >= 2 && path[1] == ':');
}

} // namespace

Finding JudgeRights(const InstallationFacts& facts)
{
    constexpr const char* check = "rights";
    if (facts.administrator) {
        return Ok(check, "run as administrator");
    }
    return Warning(check, "not run as administrator: the answers below hold for this user",
                   "Run the supervisor as administrator, and this command as the same user.");
}

Finding JudgeRegistry(const InstallationFacts& facts)
{
    constexpr const char* check = "registry";
    const RegistryKeyFacts& current = facts.currentKey;
    const RegistryKeyFacts& older = facts.olderKey;
    const std::string add = "As administrator: reg add " + current.name +
                            " /v Pathname /d C:\\FIRMWARE\\App (your folder)";
    if (current.openError != 0 && older.openError != 0) {
        return Failure(check,
                       "neither " + current.name + " nor " + older.name +
                           " can be opened: " + ErrorNumberText(current.openError),
                       add);
    }
    const bool isCurrent = current.openError == 0;
    const RegistryKeyFacts& used = isCurrent ? current : older;
    const bool olderIgnored = isCurrent && older.openError == 0 && older.valueError == 0;
    if (used.valueError != 0) {
        std::string text = used.name + ", value Pathname: ";
        text += used.valueError == kMoreData ? "longer than 254 characters"
                                             : ErrorNumberText(used.valueError);
        if (olderIgnored) {
            text += "; " + older.name + " has one, but is not looked at while this key is there";
        }
        return Failure(check, text, add);
    }
    const std::string found =
        used.name + ", Pathname " + used.pathname + ": the firmware root is " + facts.root;
    if (!IsAbsolute(facts.root)) {
        return Warning(check, found + ", which is no full path",
                       "Write drive and folder into the value.");
    }
    if (olderIgnored && older.pathname != used.pathname) {
        return Warning(check,
                       found + "; " + older.name + " says " + older.pathname +
                           ", which is not looked at",
                       "Make both the same, or remove the older key.");
    }
    return Ok(check, found);
}

Finding JudgeApp(const InstallationFacts& facts)
{
    constexpr const char* check = "app-folder";
    const FolderFacts& app = facts.app;
    if (facts.root.empty()) {
        return Failure(check, "not known without the registry's value", "See registry.");
    }
    if (app.error != 0) {
        return Failure(check, app.path + ": " + ErrorNumberText(app.error),
                       IsMissing(app.error) ? "Create it, or mend the registry's Pathname."
                                            : "Give the supervisor's user access to it.");
    }
    if (!app.isFolder) {
        return Failure(check, app.path + " is not a folder", "Put the folder in its place.");
    }
    return Ok(check, app.path);
}

Finding JudgeLog(const InstallationFacts& facts)
{
    constexpr const char* check = "log-folder";
    const FolderFacts& logs = facts.logs;
    if (facts.root.empty()) {
        return Failure(check, "not known without the registry's value", "See registry.");
    }
    if (IsMissing(logs.error)) {
        return Warning(check, logs.path + " is not there yet",
                       "Nothing: the supervisor makes it when it starts, if it may.");
    }
    if (logs.error != 0) {
        return Failure(check, logs.path + " cannot be written to: " + ErrorNumberText(logs.error),
                       "Give the supervisor's user the right to create files in it.");
    }
    if (!logs.isFolder) {
        return Failure(check, logs.path + " is not a folder", "Put a folder in its place.");
    }
    if (facts.logFileError != 0 && !IsMissing(facts.logFileError)) {
        return Failure(check,
                       facts.logFile + " cannot be written: " + ErrorNumberText(facts.logFileError),
                       "Remove its read-only attribute, or whatever keeps it open.");
    }
    if (facts.freeBytes && *facts.freeBytes < kRoomForLog) {
        return Warning(check,
                       "only " + std::to_string(*facts.freeBytes) + " bytes are free for " +
                           facts.logFile,
                       "Make room: the log needs up to 1 MiB.");
    }
    return Ok(check, logs.path + " can be written to");
}

} // namespace vqrx::client::v0
