#include "Commands.h"

#include "ContentRights.h"
#include "ExitCode.h"
#include "ObjectRights.h"
#include "PasteableText.h"
#include "PrintText.h"
#include "Printable.h"
#include "ProtectedObjects.h"

#include <windows.h>

#include <cstdint>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace vqrx::client::v0 {
namespace {

struct RightsOptions {
    std::vector<std::string> paths;
    std::string make;
    std::string account;
    bool below = false;
};

void PrintVerdict(const std::string& path, const std::vector<std::string>& weaknesses)
{
    PrintText((weaknesses.empty() ? "ok    " : "weak  ") + Printable(path) + "\n");
    for (const std::string& weakness : weaknesses) {
        PrintText("      " + Printable(weakness) + "\n");
    }
}

// Prints the weaknesses of a path. @return whether it has none
bool PrintWeaknesses(const std::string& path, const TrustedSids& trusted)
{
    const std::vector<std::string> found = WeaknessesOfPath(path, trusted);
    PrintVerdict(path, found);
    return found.empty();
}

// Prints what lies below a path and has a weakness. @return whether nothing has
bool PrintWeakContent(const std::string& path, const TrustedSids& trusted)
{
    bool isSound = true;
    const std::vector<std::string> way = WayTo(path);
    if (way.empty()) {
        return false; // it lies on a network, which was said before
    }
    EachBelow(way.front(), [&](const ObjectRights& rights) {
        if (const std::vector<std::string> found = Weaknesses(rights, trusted); !found.empty()) {
            isSound = false;
            PrintVerdict(rights.path, found);
        }
        return true;
    });
    return isSound;
}

constexpr const char* kExamples = "For examples: daemonctl rights --help";

// @param step  what to do next, one sentence
int Refuse(const std::string& text, const std::string& step)
{
    std::cerr << "daemonctl: " << Printable(text) << "\n  " << Printable(step) << std::endl;
    return kRefused;
}

// Makes one folder, if the folders above it are sound.
int Make(const std::string& path, FolderUse use, const std::string& accountSid)
{
    const std::size_t end = path.find_last_of("\\/");
    if (end == std::string::npos || end < 2) {
        return Refuse(path + " is no full path of a folder", kExamples);
    }
    const std::string parent = end == 2 ? path.substr(0, 3) : path.substr(0, end);
    for (const std::string& weakness : WeaknessesOfParentPath(parent, TrustedAdministrators())) {
        return Refuse(std::string(path).append(" was not made: ").append(weakness),
                      AdviceFor("To see who may change it: daemonctl rights ", parent,
                                "To see who may change it, run daemonctl rights on the folder "
                                "above."));
    }
    const std::uint32_t error = MakeProtectedFolder(path, use, accountSid);
    if (error == ERROR_ALREADY_EXISTS) {
        return Refuse(path + " exists already",
                      AdviceFor("To check it: daemonctl rights ", path,
                                "To check it, run daemonctl rights on this folder."));
    }
    if (error != 0) {
        return Refuse(path + " cannot be made (Windows error " + std::to_string(error) + ")",
                      kExamples);
    }
    return kDone;
}

int Rights(const RightsOptions& options)
{
    std::string accountSid;
    if (!options.account.empty()) {
        accountSid = SidOfAccount(options.account);
        if (accountSid.empty()) {
            return Refuse("there is no account " + options.account, kExamples);
        }
    }
    int exitCode = kDone;
    const TrustedSids trusted = TrustedAdministrators();
    for (const std::string& path : options.paths) {
        if (options.make.empty()) {
            bool isSound = PrintWeaknesses(path, trusted);
            isSound = (!options.below || PrintWeakContent(path, trusted)) && isSound;
            exitCode = isSound ? exitCode : static_cast<int>(kNothingToDo);
        } else if (const int made =
                       Make(path, options.make == "logs" ? FolderUse::kLogs : FolderUse::kPrograms,
                            accountSid);
                   made != kDone) {
            return made;
        }
    }
    return exitCode;
}

} // namespace

void AddRightsCommand(const CommandDefinition& app, int& exitCode)
{
    const auto options = std::make_shared<RightsOptions>();
    const CommandDefinition command = app.Command(
        "rights",
        "Show who else than administrators may change a file or folder, or make a folder");
    command.Option("PATH", options->paths, "Full path of a file or a folder").Required();
    const OptionDefinition below =
        command.Flag("--below", options->below,
                     "Also look at everything below, and show what others may change; links are "
                     "not entered");
    command
        .Option("--make", options->make,
                "Make the folder with rights of its own. programs: users may read and "
                "execute; logs: only SYSTEM, administrators and the account may enter")
        .OneOf({"programs", "logs"})
        .Excludes(below);
    command.Option("--account", options->account,
                   "Account of the supervisor, if it is no administrator; for --make logs");
    command.Footer(
        "Examples:\n"
        "  daemonctl rights C:\\FIRMWARE\\App\n"
        "  daemonctl rights --below C:\\FIRMWARE\\App\n"
        "  daemonctl rights --make programs C:\\FIRMWARE C:\\FIRMWARE\\App\n"
        "  daemonctl rights --make logs --account video C:\\FIRMWARE\\Logs\n"
        "The command also looks at all folders above. Trusted are SYSTEM, administrators, Windows'\n"
        "own installer, and the administrator who runs the command.\n"
        "Exit code 1: somebody else can change a path, or with --below something below it; 4: a folder\n"
        "was not made.");
    command.OnChosen([&exitCode, options] { exitCode = Rights(*options); });
}

} // namespace vqrx::client::v0
