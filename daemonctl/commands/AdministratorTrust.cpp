#include "AdministratorTrust.h"

#include "FilePresence.h"
#include "ObjectRights.h"
#include "Printable.h"
#include "ProtectedObjects.h"
#include "RecordFolder.h"
#include "TrustedSources.h"
#include "Utf8.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <utility>
#include <vector>

namespace vqrx::client::v0 {
namespace {

void Append(std::vector<std::string>& found, std::vector<std::string> more)
{
    found.insert(found.end(), std::make_move_iterator(more.begin()),
                 std::make_move_iterator(more.end()));
}

// Makes a folder and those above it that are missing, if the folder in which they are made is
// sound.
// @return the weaknesses of that folder; empty if it is sound
std::vector<std::string> MakeMissing(const std::string& folder, const TrustedSids& trusted)
{
    const std::vector<std::string> way = WayTo(folder);
    std::size_t missing = 0;
    while (missing < way.size() && !MayBeThere(way[missing])) {
        ++missing;
    }
    if (missing == 0 || missing == way.size()) {
        return {}; // there is nothing to make, or the drive does not exist
    }
    std::vector<std::string> found = WeaknessesOfParentPath(way[missing], trusted);
    while (found.empty() && missing != 0) {
        const std::string& path = way[--missing];
        const std::uint32_t error = MakeProtectedFolder(path, FolderUse::kLogs, {});
        if (error != 0 && error != ERROR_ALREADY_EXISTS) {
            throw std::runtime_error(path + " cannot be made (Windows error " +
                                     std::to_string(error) + ")");
        }
    }
    return found;
}

// Somebody who could write to the folder before may have put a second name of another file there.
std::vector<std::string> WeaknessesOfRecordFile(const std::string& file, const TrustedSids& trusted)
{
    std::vector<std::string> found = Weaknesses(ReadRights(file), trusted);
    if (std::string second = SecondNameOf(file); !second.empty()) {
        found.push_back(std::move(second));
    }
    return found;
}

// Also looks for those who may put a library beside the program.
std::vector<std::string> WeaknessesOfProgram(const std::string& program, const TrustedSids& trusted)
{
    const std::vector<std::string> way = WayTo(program);
    if (way.size() < 2) {
        return WeaknessesOfPath(program, trusted);
    }
    std::vector<std::string> found = Weaknesses(ReadRights(program), trusted);
    Append(found, WeaknessesOfPath(way[1], trusted));
    return found;
}

bool PrintReasons(const std::vector<std::string>& weaknesses, const std::string& advice)
{
    for (const std::string& weakness : weaknesses) {
        std::cerr << "daemonctl: " << Printable(weakness) << std::endl;
    }
    if (!weaknesses.empty()) {
        std::cerr << "daemonctl: " << advice << std::endl;
    }
    return weaknesses.empty();
}

} // namespace

bool CanRecordInto(const std::string& folder)
{
    if (!IsElevated()) {
        return true;
    }
    const TrustedSids trusted = TrustedAdministrators();
    std::vector<std::string> found = MakeMissing(folder, trusted);
    if (found.empty()) {
        found = WeaknessesOfPath(folder, trusted);
    }
    if (found.empty()) {
        for (const std::string& file : RecordFilesOf(folder)) {
            Append(found, WeaknessesOfRecordFile(file, trusted));
        }
    }
    return PrintReasons(
        found, "nothing was recorded: a user who is no administrator may change the records\n"
               "  To see who may change a folder: daemonctl rights FOLDER. To record there all the "
               "same: daemonctl record --trust");
}

bool CanCall(const std::string& program)
{
    if (!IsElevated()) {
        return true;
    }
    if (!MayBeThere(program)) {
        std::cerr << "daemonctl: " << Printable(program)
                  << " does not exist, so its rights cannot be checked\n  To begin all the same: "
                     "daemonctl watch --trust"
                  << std::endl;
        return false;
    }
    return PrintReasons(
        WeaknessesOfProgram(program, TrustedAdministrators()),
        "the watch did not begin: others than administrators may change the program that it calls\n"
        "  To see who may change a file: daemonctl rights FILE. To call the program all the same: "
        "daemonctl watch --trust");
}

} // namespace vqrx::client::v0
