#include "SafeFolders.h"

#include "ContentRights.h"
#include "ObjectRights.h"
#include "SetupError.h"
#include "SystemPlaces.h"
#include "Utf8.h"

#include <windows.h>

#include <algorithm>
#include <utility>

namespace vqrx::setup::v0 {
namespace {

using client::v0::FolderUse;
using client::v0::ObjectRights;
using client::v0::Wide;

// Without commands: other programs may need the folder above as it is.
constexpr const char* kSetRightsAbove =
    "Let only administrators own and change the folders that are named above.\n";
// Without commands: they would change what the link leads to.
constexpr const char* kRemoveLink =
    "Remove the link. Do not set rights through it: what it leads to would get them.\n";

bool IsFile(const std::string& path)
{
    const DWORD attributes = GetFileAttributesW(Wide(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool IsRootOfDrive(const std::string& path)
{
    constexpr std::size_t kLength = 3; // of "D:\\"
    return path.size() <= kLength;
}

bool IsLinked(const std::vector<std::string>& way)
{
    return std::any_of(way.begin(), way.end(), [](const std::string& path) {
        return client::v0::ReadRights(path).reparsePoint;
    });
}

// The commands that give a file or a folder the rights that a new one would get.
std::string Commands(const ObjectRights& rights, FolderUse use, const std::string& accountSid,
                     const client::v0::TrustedSids& trusted)
{
    constexpr const char* kUsers = "S-1-5-32-545";
    const std::string icacls = "  icacls \"" + rights.path + "\"";
    std::string text = icacls + " /setowner *S-1-5-32-544\n";
    if (rights.kind == ObjectRights::Kind::kFile) {
        return text + icacls + " /reset\n";
    }
    text += icacls + " /inheritance:r /grant:r *S-1-5-18:(OI)(CI)F *S-1-5-32-544:(OI)(CI)F";
    if (use == FolderUse::kPrograms) {
        text += std::string(" *") + kUsers + ":(OI)(CI)RX";
    } else if (!accountSid.empty()) {
        text += " *" + accountSid + ":(OI)(CI)F";
    }
    text += "\n";
    // The command above keeps rights that strangers were granted on the folder itself.
    std::string strangers;
    for (const client::v0::GrantedRight& right :
         use == FolderUse::kLogs ? client::v0::GrantsToReaders(rights, trusted)
                                 : client::v0::GrantsToStrangers(rights, trusted)) {
        if (use == FolderUse::kLogs || right.sid != kUsers) {
            strangers += " *" + right.sid;
        }
    }
    return strangers.empty() ? text : text + icacls + " /remove:g" + strangers + "\n";
}

std::string WithWarnings(const std::string& remedy)
{
    return "Nothing was changed. Whoever can change it can become administrator through the "
           "supervisor.\n" +
           remedy +
           "If setup lets you choose this folder, choose another one. Or accept the risk with "
           "/ALLOWWEAK.";
}

} // namespace

SafeFolders::SafeFolders(std::string accountSid, bool allowWeak)
    : accountSid_(std::move(accountSid))
    , allowWeak_(allowWeak)
    , administrators_(client::v0::TrustedAdministrators())
    , writersOfLogs_(administrators_)
{
    if (!accountSid_.empty()) {
        writersOfLogs_.insert(accountSid_);
    }
}

bool SafeFolders::Prepare(const std::string& path, FolderUse use)
{
    if (IsOnDisk(path)) {
        if (IsFile(path)) {
            throw SetupError(path + " is no folder.");
        }
        CheckPath(path, use);
        return false;
    }
    const std::string above = FolderOf(path);
    if (above.empty() || above == path) {
        throw SetupError(path + " is no full path of a folder.");
    }
    if (IsOnDisk(above)) {
        CheckAbove(above);
    } else {
        Prepare(above, FolderUse::kPrograms);
    }
    Make(path, use);
    CheckPath(path, use); // a file system without rights does not keep them
    return true;
}

void SafeFolders::Check(const std::string& path, FolderUse use) const
{
    if (!IsOnDisk(path)) {
        return;
    }
    CheckPath(path, use);
    if (!IsFile(path)) {
        return;
    }
    if (const std::string second = client::v0::SecondNameOf(path); !second.empty()) {
        Refuse(path, {second},
               "Delete the name " + path + ", which may belong to another file: del \"" + path +
                   "\"\n");
    }
}

void SafeFolders::CheckLibrary(const std::string& path) const
{
    const std::vector<std::string> way = client::v0::WayTo(path);
    if (path.find(":\\") != 1 || way.size() < 2) { // Windows searches many folders for such a name
        Refuse(path, {path + " is no full path on a drive of this machine"}, "");
        return;
    }
    const std::string& folder = way[1];
    if (!IsOnDisk(folder)) {
        Refuse(path, {folder + " does not exist, so somebody could make it"}, "");
        return;
    }
    CheckPath(folder, FolderUse::kPrograms);
    Check(path, FolderUse::kPrograms);
}

std::string SafeFolders::WarningOfReaders(const std::string& path) const
{
    const ObjectRights rights = client::v0::ReadRights(path);
    std::string text;
    for (const std::string& reader : client::v0::Readers(rights, writersOfLogs_)) {
        text += reader + ". ";
    }
    return text.empty() ? text
                        : "Warning: " + text + "To change that, as administrator:\n" +
                              Commands(rights, FolderUse::kLogs, accountSid_, writersOfLogs_);
}

std::string SafeFolders::WarningOfContents(const std::string& path) const
{
    constexpr std::size_t kMostNamed = 5;
    const client::v0::ContentRights content = client::v0::ReadContentRights(path, administrators_);
    std::string text;
    for (std::size_t index = 0; index < std::min(content.weak.size(), kMostNamed); ++index) {
        for (const std::string& weakness :
             client::v0::Weaknesses(content.weak[index], administrators_)) {
            text += weakness + ". ";
        }
    }
    if (text.empty()) {
        return text;
    }
    if (content.weak.size() > kMostNamed) {
        text += "More files and folders are like that. ";
    }
    return "Warning: " + text +
           "The supervisor gives its rights to the programs that it starts from there. \"daemonctl "
           "doctor\" shows the commands that change that.\n";
}

void SafeFolders::RemoveMade() noexcept
{
    for (; !made_.empty(); made_.pop_back()) {
        RemoveDirectoryW(Wide(made_.back()).c_str());
    }
}

void SafeFolders::Make(const std::string& path, FolderUse use)
{
    const std::uint32_t error = client::v0::MakeProtectedFolder(path, use, accountSid_);
    if (error == ERROR_ALREADY_EXISTS) {
        throw SetupError("Somebody else made " + path + " just now. Try again.");
    }
    if (error != ERROR_SUCCESS) {
        throw SetupError("The folder " + path + " cannot be made (Windows error " +
                         std::to_string(error) + ").");
    }
    made_.push_back(path);
}

void SafeFolders::CheckPath(const std::string& path, FolderUse use) const
{
    const ObjectRights rights = client::v0::ReadRights(path);
    const client::v0::TrustedSids& trusted =
        use == FolderUse::kLogs ? writersOfLogs_ : administrators_;
    const bool isWeak = !IsRootOfDrive(path) && !client::v0::Weaknesses(rights, trusted).empty();
    Refuse(path, client::v0::WeaknessesOfPath(path, trusted),
           isWeak ? "Look at what lies there, then set its rights as administrator:\n" +
                        Commands(rights, use, accountSid_, trusted) +
                        "Then restart Windows: a program that opened it before can change it "
                        "until then.\n"
                  : kSetRightsAbove);
}

void SafeFolders::CheckAbove(const std::string& path) const
{
    Refuse(path, client::v0::WeaknessesOfParentPath(path, administrators_), kSetRightsAbove);
}

void SafeFolders::Refuse(const std::string& path, const std::vector<std::string>& weaknesses,
                         const std::string& remedy) const
{
    if (allowWeak_ || weaknesses.empty()) {
        return;
    }
    std::string text = path + " is not safe:\n";
    for (const std::string& weakness : weaknesses) {
        text += "  " + weakness + "\n";
    }
    throw SetupError(text + WithWarnings(IsLinked(client::v0::WayTo(path)) ? kRemoveLink : remedy));
}

} // namespace vqrx::setup::v0
