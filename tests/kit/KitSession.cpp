#include "KitSession.h"

#include "Journal.h"
#include "KeepAwake.h"
#include "KitFolder.h"
#include "KitProcesses.h"
#include "MachineFacts.h"
#include "RegistryText.h"
#include "RemoveTree.h"
#include "StopRequest.h"
#include "TestRun.h"
#include "Undo.h"

#include "ProcessList.h"
#include "Utf8.h"
#include "com/ComApartment.h"

#include <windows.h>

#include <iostream>
#include <stdexcept>
#include <utility>

namespace vqrx::kit {
namespace {

namespace fs = std::filesystem;
using client::v0::Utf8;

// Exit codes, see HelpText().
constexpr int kFailed = 1;
constexpr int kNothingRun = 2;
constexpr int kInterrupted = 130;
// A virus scanner may hold a file of a test open for a while.
constexpr unsigned kWorkFolderMs = 30000;
constexpr unsigned kReportMs = 10000;

/// One run of the kit.
class Session {
public:
    explicit Session(const Options& options)
        : options_(options)
        , folder_(OwnFolder())
        , folderText_(Utf8(folder_.wstring()))
        , journalFile_(folder_ / "undo.json")
    {
    }

    int Run();

private:
    void RefuseUnfitMachine() const;
    void PutBackFormerRun();
    [[nodiscard]] Journal FormerJournal() const;
    void ChoosePrograms();
    [[nodiscard]] bool IsAllowed() const;
    void RunPrograms(const StopRequest& stop);
    void PutBack();
    [[nodiscard]] bool WriteReports() const;
    [[nodiscard]] int ShowResult() const;

    Options options_;
    fs::path folder_;
    std::string folderText_;
    fs::path journalFile_;
    Journal journal_;
    std::vector<TestProgram> programs_;
    RunReport report_;
};

int Session::Run()
{
    const system::com::v1::ComApartment apartment;
    // A crashed program must end, not wait for an answer to a box. The programs inherit this mode.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    const OneAtATime alone;
    PutBackFormerRun();
    if (!report_.leftOver.empty()) {
        // A new run would note these changes as the machine's own state, and never undo them.
        std::cout
            << "Start run-tests.exe again, as an administrator. If that does not help, restart "
               "the machine first. No test was run."
            << std::endl;
        return options_.undo ? kFailed : kNothingRun;
    }
    if (options_.undo) {
        std::cout << "Nothing more is to be put back." << std::endl;
        return 0;
    }
    ChoosePrograms();
    RefuseUnfitMachine();
    report_.begin = LocalTimeText();
    report_.facts = GatherMachineFacts(folderText_);
    for (const Fact& fact : report_.facts) {
        std::cout << fact.name << ": " << fact.value << "\n";
    }
    if (!IsAllowed()) {
        std::cout << "Nothing was run." << std::endl;
        return kNothingRun;
    }
    const KeepAwake awake;
    const StopRequest stop; // until the reports are written
    RunPrograms(stop);
    const bool written = WriteReports();
    const int exitCode = ShowResult();
    return written || exitCode == kInterrupted ? exitCode : kFailed;
}

void Session::RefuseUnfitMachine() const
{
    if (const std::string objection = ObjectionTo(folderText_); !objection.empty()) {
        throw std::runtime_error("the tests cannot run in " + folderText_ + ": " + objection +
                                 ". Move this whole folder to C:\\, or unpack the ZIP to C:\\kit, "
                                 "and start run-tests.exe there");
    }
    for (const auto& process : client::v0::ProcessesOfImage(L"DaemonManager.exe")) {
        throw std::runtime_error("a supervisor runs on this machine (process " +
                                 std::to_string(process.processId) + ", " + process.path +
                                 "). Use a machine without one: the tests would disturb it");
    }
    for (const char* key :
         {R"(SOFTWARE\UnitWarden\CurrentVersion)", R"(SOFTWARE\VANTORO_QRX\CurrentVersion)"}) {
        if (const std::string root = MachineText(key, "Pathname", ""); !root.empty()) {
            throw std::runtime_error("an installation was found on this machine (" + root +
                                     "). Use a machine without one: the tests would disturb it");
        }
    }
}

Journal Session::FormerJournal() const
{
    try {
        return ReadJournal(ContentOfFile(journalFile_));
    } catch (const std::exception& error) {
        throw std::runtime_error(
            Utf8(journalFile_.wstring()) + ": " + error.what() +
            ". The file names the registry keys that the last run has changed. "
            "Please send it to us. Without the file the tests can start, but "
            "these keys stay as they are");
    }
}

void Session::PutBackFormerRun()
{
    if (fs::exists(journalFile_)) {
        std::cout << "The last run did not end in order. Putting back what it has changed ..."
                  << std::endl;
        journal_ = FormerJournal();
        PutBack();
    }
}

void Session::ChoosePrograms()
{
    Manifest manifest = ReadManifest(ContentOfFile(folder_ / "manifest.json"));
    report_.version = manifest.version;
    report_.commit = manifest.commit;
    report_.notInKit = manifest.notInKit;
    const bool administrator = IsAdministrator();
    for (TestProgram& program : Chosen(manifest, options_)) {
        if (administrator || !NeedsAdministrator(program)) {
            programs_.push_back(std::move(program));
            continue;
        }
        ProgramOutcome outcome;
        outcome.name = program.name;
        outcome.reason = "needs the rights of an administrator";
        report_.programs.push_back(outcome);
    }
}

bool Session::IsAllowed() const
{
    std::cout << "\nThis tests DaemonManager " << report_.version
              << " on this machine: " << programs_.size()
              << " programs, about a quarter of an hour.\n";
    if (!report_.programs.empty()) {
        std::cout << report_.programs.size()
                  << " more programs are left out: they need the rights of an administrator. The "
                     "report names them.\n";
    }
    std::cout << "The tests change the machine, and put back at the end:\n"
                 "  the registration of DaemonMgrPS.dll;\n"
                 "  registry keys that name the firmware root and the installation, start "
                 "DaemonGuard, limit the access to COM servers, or switch error boxes off;\n"
                 "  Windows services with programs of this folder;\n"
                 "  firewall rules for programs of this folder.\n"
                 "They start and end many processes. Ctrl+C stops the tests and puts everything "
                 "back.\n";
    if (options_.yes) {
        return true;
    }
    std::cout << "Continue? [y/N] " << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

void Session::RunPrograms(const StopRequest& stop)
{
    const ULONGLONG begin = GetTickCount64();
    journal_ = PresentState();
    if (!ReplaceContentOnDisk(journalFile_, JournalText(journal_))) {
        throw std::runtime_error(folderText_ + " cannot be written");
    }
    TestRun run(std::move(programs_), {folder_, options_.jobs, stop.Event()}, [this] {
        for (const std::string& text : UndoChanges(journal_, folderText_).undone) {
            report_.undone.push_back(text + " (after a test that did not pass)");
        }
    });
    std::vector<ProgramOutcome> outcomes = run.Run();
    report_.programs.insert(report_.programs.begin(), outcomes.begin(), outcomes.end());
    report_.interrupted = stop.Requested();
    PutBack();
    report_.seconds = static_cast<double>(GetTickCount64() - begin) / 1000;
}

void Session::PutBack()
{
    const UndoResult result = UndoChanges(journal_, folderText_);
    for (const std::string& text : result.undone) {
        std::cout << "put back: " << text << "\n";
        report_.undone.push_back(text);
    }
    report_.leftOver = result.leftOver;
    if (!RemoveTreeWithin(folder_ / "work", kWorkFolderMs)) {
        report_.leftOver.push_back("folder " + folderText_ + "\\work");
    }
    for (const std::string& text : report_.leftOver) {
        std::cout << "CANNOT BE PUT BACK: " << text << "\n";
    }
    if (report_.leftOver.empty()) {
        std::error_code ignored;
        fs::remove(journalFile_, ignored); // else the next start tries again
    }
}

// Another program may have a report open. A report that cannot be written does not keep the others
// from being written.
bool Session::WriteReports() const
{
    bool written = true;
    std::error_code ignored;
    fs::create_directories(folder_ / "report", ignored);
    for (const auto& [name, content] : {std::pair{"report.html", ReportAsHtml(report_)},
                                        std::pair{"report.json", ReportAsJson(report_)},
                                        std::pair{"junit.xml", ReportAsJUnit(report_)}}) {
        if (!ReplaceContentWithin(folder_ / "report" / name, content, kReportMs)) {
            std::cout << "CANNOT BE WRITTEN: " << folderText_ << "\\report\\" << name << "\n";
            written = false;
        }
    }
    return written;
}

int Session::ShowResult() const
{
    std::cout << "\n"
              << SummaryOf(report_) << "\nThe report: " << folderText_ << "\\report\\report.html"
              << std::endl;
    if (report_.interrupted) {
        return kInterrupted;
    }
    return IsGreen(report_) ? 0 : kFailed;
}

} // namespace

int RunKit(const Options& options)
{
    const int exitCode = Session(options).Run();
    if (!options.yes) {
        WaitForKeyOfOwnConsole();
    }
    return exitCode;
}

void WaitForKeyOfOwnConsole()
{
    DWORD processes[2] = {};
    if (GetConsoleProcessList(processes, 2) == 1) {
        std::cout << "\nPress Enter to close this window." << std::flush;
        std::string line;
        std::getline(std::cin, line);
    }
}

} // namespace vqrx::kit
