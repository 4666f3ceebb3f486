#include "SetupOptions.h"

#include "SetupError.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace vqrx::setup::v0 {
namespace {

// "C:\" keeps its separator: without it, it would mean the working folder of the drive.
std::string WithoutLastSeparators(std::string path)
{
    constexpr std::size_t kDriveRoot = 3;
    while (path.size() > kDriveRoot && path.back() == '\\') {
        path.pop_back();
    }
    return path;
}

// Sets the text of an option "/NAME=". @return whether the argument is this option
bool TakeText(std::string_view argument, std::string_view name, std::string& text)
{
    if (!argument.starts_with(name)) {
        return false;
    }
    text = argument.substr(name.size());
    return true;
}

bool TakeFlag(std::string_view argument, std::string_view name, bool& flag)
{
    if (argument != name) {
        return false;
    }
    flag = true;
    return true;
}

bool Take(std::string_view argument, SetupOptions& options)
{
    return TakeFlag(argument, "/S", options.silent) ||
           TakeFlag(argument, "/NOSTART", options.noStart) ||
           TakeFlag(argument, "/ALLOWWEAK", options.allowWeak) ||
           TakeFlag(argument, "/DOWNGRADE", options.downgrade) ||
           TakeFlag(argument, "/KEEPLOG", options.keepLog) ||
           TakeText(argument, "/ROOT=", options.root) ||
           TakeText(argument, "/ACCOUNT=", options.account) ||
           TakeText(argument, "/AUTOSTART=", options.autostart);
}

} // namespace

SetupOptions ReadSetupOptions(const std::vector<std::string>& arguments)
{
    SetupOptions options;
    bool isFolder = false;
    for (const std::string& argument : arguments) {
        if (isFolder) {
            options.folder += " " + argument;
        } else if (TakeText(argument, "/D=", options.folder)) {
            isFolder = true;
        } else if (!Take(argument, options)) {
            throw SetupError(
                "Unknown option: " + argument +
                "\nOptions: /S /ROOT=FOLDER /ACCOUNT=NAME /AUTOSTART=service|session|none "
                "/NOSTART /ALLOWWEAK /DOWNGRADE /KEEPLOG /D=FOLDER (the last one)");
        }
    }
    constexpr std::string_view kKnown[] = {"", "service", "session", "none"};
    if (std::ranges::find(kKnown, options.autostart) == std::end(kKnown)) {
        throw SetupError("Unknown value: /AUTOSTART=" + options.autostart +
                         "\nIt is one of service, session, none.");
    }
    if (options.autostart == "service" && !options.account.empty()) {
        throw SetupError(
            "/ACCOUNT= and /AUTOSTART=service exclude each other: the supervisor of a service runs as "
            "SYSTEM. With another account in \\Logs the guard would hand no daemon over.");
    }
    options.root = WithoutLastSeparators(options.root);
    options.folder = WithoutLastSeparators(options.folder);
    return options;
}

} // namespace vqrx::setup::v0
