#include "InstallationSteps.h"

#include "AutostartStep.h"
#include "EndSupervisorAndGuards.h"
#include "Installation.h"
#include "InstallationNotes.h"
#include "InstalledFiles.h"
#include "ProcessFacts.h"
#include "ProtectedObjects.h"
#include "ProxyRegistration.h"
#include "RandomName.h"
#include "SetupError.h"
#include "SystemPlaces.h"
#include "installation/InstallationPaths.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <functional>
#include <iterator>
#include <numeric>

namespace vqrx::setup::v0 {
namespace {

namespace installation = system::installation::v1;
using client::v0::FolderUse;

constexpr const char* kSupervisor = "\\DaemonManager.exe";
constexpr const char* kProxy = "\\DaemonMgrPS.dll";

std::string LogFileOf(const FirmwarePlace& place)
{
    return installation::LogFile(place.root);
}

// The account that may write into \Logs beside administrators: the one that was named now, that of
// the supervisor that runs, or the one that was named before.
std::string FindAccount(const std::string& name, const std::string& running)
{
    if (!name.empty()) {
        std::string sid = client::v0::SidOfAccount(name);
        if (sid.empty()) {
            throw SetupError("There is no account " + name + ".");
        }
        return sid;
    }
    return running.empty() ? InstallationKey().Text(kAccountNote) : running;
}

std::vector<std::string> NamesOf(const std::vector<PayloadFile>& files)
{
    std::vector<std::string> names;
    std::transform(files.begin(), files.end(), std::back_inserter(names),
                   [](const PayloadFile& file) { return file.name; });
    return names;
}

std::uint64_t SizeOf(const std::vector<PayloadFile>& files)
{
    return std::accumulate(
        files.begin(), files.end(), std::uint64_t{0},
        [](std::uint64_t bytes, const PayloadFile& file) { return bytes + file.content.size(); });
}

} // namespace

InstallationSteps::InstallationSteps(const SetupOptions& options,
                                     const std::vector<PayloadFile>& files,
                                     Conversation& conversation)
    : options_(options)
    , files_(files)
    , conversation_(conversation)
    , folder_(ProgramFolderFor(options.folder))
    , place_(FindFirmwarePlace(options.root.empty() ? options.root : FullPath(options.root)))
    , swap_(folder_)
    , change_(conversation, [this] { return swap_.PlaceOf("daemonctl.exe"); })
    , guard_(InstallationKey().Text(kFolderNote))
    , accountSid_(FindAccount(options.account, change_.LimitedAccountSid()))
{
}

void InstallationSteps::Prepare()
{
    conversation_.Say("Programs: " + folder_ + "\nFirmware: " + place_.root + "\n" +
                      change_.Overlooked());
    PrepareFolders();
    conversation_.Say("Unpacking.\n");
    swap_.Unpack(files_);
    if (!options_.noStart) {
        try {
            change_.TestRights(swap_.PlaceOf("daemonctl.exe"));
        } catch (const SetupError& error) {
            throw SetupError(
                std::string(error.what()) +
                "\nThe supervisor that runs was not disturbed. Run the installer as its "
                "user, or give /NOSTART and start the new supervisor yourself.");
        }
    }
}

void InstallationSteps::PrepareFolders()
{
    folders_.emplace(accountSid_, options_.allowWeak);
    logExisted_ = IsOnDisk(LogFileOf(place_));
    folders_->Prepare(folder_, FolderUse::kPrograms);
    folders_->Prepare(place_.root, FolderUse::kPrograms);
    folders_->Prepare(installation::AppFolder(place_.root), FolderUse::kPrograms);
    folders_->Prepare(installation::LogFolder(place_.root), FolderUse::kLogs);
    conversation_.Say(folders_->WarningOfContents(folder_));
    conversation_.Say(folders_->WarningOfContents(installation::AppFolder(place_.root)));
    conversation_.Say(folders_->WarningOfReaders(installation::LogFolder(place_.root)));
    folders_->Check(LogFileOf(place_), FolderUse::kLogs); // the hand-over believes it
    folders_->Check(installation::GuardLogFile(place_.root), FolderUse::kLogs);
    std::vector<std::string> replaced = NamesOf(files_);
    const std::vector<std::string> former = NamesToReplace();
    replaced.insert(replaced.end(), former.begin(), former.end());
    for (const std::string& folder : FoldersInside(replaced)) {
        folders_->Check(folder_ + "\\" + folder, FolderUse::kPrograms);
    }
    CheckRegisteredProxy(*folders_);
}

std::vector<std::string> InstallationSteps::NamesToReplace() const
{
    const MachineKey notes = InstallationKey();
    std::vector<std::string> names;
    if (notes.Text(kFolderNote) == folder_) {
        names = notes.List(kFilesNote);
        std::erase_if(names, [](const std::string& name) { return !IsNameBelow(name); });
    }
    return names;
}

void InstallationSteps::EndSupervisor()
{
    const auto newListing = [this] {
        return installation::LogFolder(place_.root) + "\\" + RandomName("before-setup-") + ".json";
    };
    EndSupervisorAndGuards(change_, InstallationKey().Text(kFolderNote), newListing, endedGuard_);
}

void InstallationSteps::Replace()
{
    conversation_.Say("Replacing the files.\n");
    const MachineKey notes = InstallationKey();
    formerNotes_ = notes.Values();
    formerEvents_ = EventSourceKey().Values();
    formerProxy_ = RegisteredProxy();
    swap_.SwapIn(NamesToReplace());
    wroteRegistry_ = true;
    RegisterProxy(folder_ + kProxy);
    if (!options_.account.empty()) {
        notes.SetText(kAccountNote, accountSid_);
    }
    if (!place_.isRegistered) {
        RegisterFirmwareRoot(place_.root);
    }
}

void InstallationSteps::StartSupervisor()
{
    if (change_.Ran() && !options_.noStart) {
        change_.Start(folder_ + kSupervisor);
    }
}

void InstallationSteps::Keep()
{
    const MachineKey notes = InstallationKey();
    const std::string formerFolder = notes.Text(kFolderNote);
    const std::vector<std::string> formerFiles = notes.List(kFilesNote);
    WriteInstallationNotes({folder_, place_.root, NamesOf(files_), SizeOf(files_), folders_->Made(),
                            logExisted_, options_.allowWeak});
    swap_.Keep();
    // Nothing is deleted in a folder that cannot be opened: it may be this one. IsSameFile() is
    // false for such a folder, also for two equal names.
    const bool isAnother = client::v0::IsSameFile(formerFolder, formerFolder) &&
                           !client::v0::IsSameFile(formerFolder, folder_);
    if (isAnother) {
        Try([&] { // nobody keeps them up to date any more; an error must not lead to GoBack()
            for (const std::string& left :
                 RemoveInstalledFiles(formerFolder, formerFiles, options_.allowWeak)) {
                conversation_.Say(left + "\n");
            }
        });
    }
}

int InstallationSteps::HandOver()
{
    const int done = change_.Overlooked().empty() ? kSetupDone : kSetupIncomplete;
    if (change_.Ran() && options_.noStart) {
        conversation_.Say(
            change_.Overlooked() + "Installed. Start the supervisor, then: daemonctl reattach" +
            (change_.Listing().empty() ? std::string() : " --from \"" + change_.Listing() + "\"") +
            "\n");
        return done;
    }
    if (change_.Ran() && !change_.HandOver(options_.allowWeak, FleetOfPresentGuard())) {
        conversation_.Say("Installed.\n" + change_.Overlooked());
        return kSetupIncomplete;
    }
    DeleteOrLater(change_.Listing());
    conversation_.Say("Installed.\n" + change_.Overlooked());
    return done;
}

bool InstallationSteps::SetUpAutostart()
{
    return v0::SetUpAutostart(options_, change_, guard_, endedGuard_, conversation_);
}

void InstallationSteps::GoBack() noexcept
{
    change_.EndStarted();
    RestoreRegistry();
    if (const std::string left = swap_.TakeBack(); !left.empty()) {
        conversation_.Say(left);
    }
    if (change_.Ended()) {
        StartFormer();
    }
    if (change_.Ended() || endedGuard_) { // a guard also ends with its supervisor
        Try([this] { static_cast<void>(guard_.Start(change_, conversation_)); });
    }
    swap_.Discard();
    if (folders_) {
        folders_->RemoveMade();
    }
}

void InstallationSteps::StartFormer() noexcept
{
    try {
        change_.StartFormer();
        if (change_.HandOver(options_.allowWeak, FleetOfPresentGuard())) {
            DeleteOrLater(change_.Listing());
        }
        conversation_.Say("The former supervisor runs again.\n");
    } catch (const std::exception& error) {
        conversation_.Say(
            std::string("No supervisor runs now: ") + error.what() +
            "\nStart it, then: daemonctl reattach" +
            (change_.Listing().empty() ? std::string() : " --from \"" + change_.Listing() + "\"") +
            "\n");
    }
}

// Runs while the new files are in their places, because a library must be loaded to be
// unregistered.
void InstallationSteps::RestoreRegistry() noexcept
{
    if (!wroteRegistry_) {
        return;
    }
    const std::string proxy = folder_ + kProxy;
    if (formerProxy_.empty()) {
        UnregisterProxy(proxy);
    } else if (!client::v0::IsSameFile(formerProxy_, proxy)) {
        Try([&] { RegisterFormerProxy(formerProxy_, proxy, *folders_); });
    }
    if (!place_.isRegistered) {
        RemoveRegisteredRoot();
    }
    Try([&] { InstallationKey().Restore(formerNotes_); });
    Try([&] { EventSourceKey().Restore(formerEvents_); });
}

void InstallationSteps::Try(const std::function<void()>& step) noexcept
{
    try {
        step();
    } catch (const std::exception& error) {
        conversation_.Say(std::string(error.what()) + "\n");
    }
}

} // namespace vqrx::setup::v0
