#include "InstallationChecks.h"

#include "ErrorText.h"
#include "PasteableText.h"
#include "ring_format/RingHeader.h"

namespace vqrx::client::v0 {
namespace {

constexpr std::uint32_t kFileNotFound = 2;
constexpr std::uint32_t kPathNotFound = 3;
constexpr std::uint32_t kMoreData = 234;
// Twice the size to which the log grows, bytes.
constexpr std::uint64_t kRoomForLog = 2ULL * system::ring_format::v1::kRingSizeLimit;

constexpr const char* kRootUnknown =
    "the folder is not known, because the registry does not name the firmware root";
constexpr const char* kRegistryFirst = "First follow the advice for the check registry.";

bool IsMissing(std::uint32_t error)
{
    return error == kFileNotFound || error == kPathNotFound;
}

Finding WithWarning(const Finding& log, const std::string& text, const std::string& remedy)
{
    return Warning(log.check.c_str(), log.text + "\n" + text,
                   (log.remedy.empty() ? "" : log.remedy + " ") + remedy);
}

// Adds to the finding about the log that a damaged log lies beside it.
Finding WithDamagedLog(const Finding& log, const std::string& damagedLog)
{
    return WithWarning(
        log, damagedLog + ": the supervisor could not read this log and began a new one",
        AdviceFor(
            "Read the damaged log, then delete it: daemonctl log --file ", damagedLog,
            "Read the damaged log with daemonctl log and its option --file, then delete it."));
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
        return Ok(check, "this command runs as administrator");
    }
    return Warning(
        check, "this command does not run as administrator: the results below hold for this user",
        "Run the supervisor as administrator, and run this command as the same user.");
}

Finding JudgeRegistry(const InstallationFacts& facts)
{
    constexpr const char* check = "registry";
    const RegistryKeyFacts& current = facts.currentKey;
    const RegistryKeyFacts& older = facts.olderKey;
    const std::string add = "As administrator, with the path of your own folder: reg add " +
                            current.name + " /v Pathname /d C:\\FIRMWARE\\App";
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
            text += "; " + older.name +
                    " has this value, but the supervisor does not read it while " + used.name +
                    " exists";
        }
        return Failure(check, text, add);
    }
    const std::string found =
        used.name + ", Pathname " + used.pathname + ": the firmware root is " + facts.root;
    if (!IsAbsolute(facts.root)) {
        return Warning(check, found + ", which is not a full path",
                       "Write the drive and the folder into the value.");
    }
    if (olderIgnored && older.pathname != used.pathname) {
        return Warning(check,
                       found + "; " + older.name + " says " + older.pathname +
                           ", which the supervisor does not read",
                       "Give both keys the same value, or remove the older key.");
    }
    return Ok(check, found);
}

Finding JudgeApp(const InstallationFacts& facts)
{
    constexpr const char* check = "app-folder";
    const FolderFacts& app = facts.app;
    if (facts.root.empty()) {
        return Failure(check, kRootUnknown, kRegistryFirst);
    }
    if (app.error != 0) {
        return Failure(check, app.path + ": " + ErrorNumberText(app.error),
                       IsMissing(app.error)
                           ? "Create the folder, or correct the registry value Pathname."
                           : "Give the supervisor's user access to the folder.");
    }
    if (!app.isFolder) {
        return Failure(check, app.path + " is not a folder", "Replace the file by the folder.");
    }
    return Ok(check, app.path);
}

Finding JudgeLog(const InstallationFacts& facts)
{
    constexpr const char* check = "log-folder";
    const FolderFacts& logs = facts.logs;
    if (facts.root.empty()) {
        return Failure(check, kRootUnknown, kRegistryFirst);
    }
    if (IsMissing(logs.error)) {
        return Warning(
            check, logs.path + " does not exist yet",
            "Nothing to do: the supervisor creates the folder when it starts, if its user may.");
    }
    if (logs.error != 0) {
        return Failure(check, logs.path + " cannot be written to: " + ErrorNumberText(logs.error),
                       "Give the supervisor's user the right to create files in this folder.");
    }
    if (!logs.isFolder) {
        return Failure(check, logs.path + " is not a folder", "Replace the file by a folder.");
    }
    if (facts.logFileError != 0 && !IsMissing(facts.logFileError)) {
        return Failure(
            check, facts.logFile + " cannot be written: " + ErrorNumberText(facts.logFileError),
            "Remove the read-only attribute of the file, or end the program that keeps the file "
            "open.");
    }
    if (!facts.logIsCurrent.value_or(true)) {
        return Failure(check,
                       facts.logFile +
                           " holds no record of the running supervisor: the supervisor cannot read "
                           "or write it\nuntil it holds one, daemonctl apply and the guard attach "
                           "and launch nothing: they could start a program twice",
                       "Its console shows the reason. Move the file to another folder: the "
                       "supervisor then begins a new one.");
    }
    Finding finding = Ok(check, logs.path + " can be written to");
    if (facts.freeBytes && *facts.freeBytes < kRoomForLog) {
        finding = Warning(check,
                          "only " + std::to_string(*facts.freeBytes) +
                              " bytes are free on the disk of " + facts.logFile,
                          "Free disk space: the log grows to 1 MiB.");
    }
    if (!facts.logDamage.empty()) {
        finding = WithWarning(finding, facts.logFile + ": " + facts.logDamage,
                              "The rest of the log can be read, and newer records overwrite the "
                              "damage. If damage comes again, look at disk and power supply.");
    }
    if (!facts.logUnreadable.empty()) {
        finding =
            WithWarning(finding, facts.logUnreadable,
                        "Another program may have held the log for a moment: run daemonctl doctor "
                        "again. The check file-rights shows who may read it.");
    }
    for (const std::string& damagedLog : facts.damagedLogs) {
        finding = WithDamagedLog(finding, damagedLog);
    }
    return finding;
}

} // namespace vqrx::client::v0
