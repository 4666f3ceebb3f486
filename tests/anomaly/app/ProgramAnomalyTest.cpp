// The whole program from its start to Ctrl+C, each time with another call that fails: it runs and
// ends in order, or it says why it cannot; afterwards it is not published, and the next start
// succeeds.
#include "ConsoleControl.h"
#include "PrintedText.h"
#include "ProgramBody.h"
#include "PublishedObject.h"
#include "Scenario.h"
#include "StandInFirewall.h"
#include "StandInWmi.h"
#include "com/ComApartment.h"
#include "installation/FirmwareRoot.h"
#include "installation/InstallationPaths.h"
#include "thread/Thread.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

namespace vqrx::test::anomaly {
namespace {

constexpr DWORD kLookMs = 10;

// What all runs of the process share.
struct ProgramsMachine {
    ProgramsMachine() { static_cast<void>(FindPublished()); } // see ConnectToTable of unit_app
    system::com::v1::ComApartment apartment;
    StandInFirewall firewall;
    StandInWmi wmi;
};

class WholeProgram : public Scenario {
public:
    explicit WholeProgram(RunNotes& notes)
        : notes_(notes)
        , error_(std::cerr)
    {
        static const ProgramsMachine machine;
        TheWmiScript() = WmiScript();
        system::installation::v1::GetFirmwareRoot(root_);
        std::filesystem::remove_all(system::installation::v1::LogFolder(root_));
    }

    void Run() override
    {
        const int exitCode = RunUntilCtrlC();
        notes_.Saw(exitCode == 0 ? "exit code zero" : "exit code not zero");
        NoteLines();
        Expect(notes_, exitCode == 0 || HasPrinted("occured"), "the program fails without a word");
        Expect(notes_, exitCode != 0 || wasPublished_ || HasPrinted(kUnpublished),
               "the program runs unpublished without a word");
        ExpectNotPublished();
    }

    void Verify() override
    {
        Expect(notes_, RunUntilCtrlC() == 0, "the next start fails: " + error_.Text());
        Expect(notes_, wasPublished_, "the next program is not published");
        ExpectNotPublished();
    }

    void Finish() override
    {
        Expect(notes_, TheFirewallScript().liveObjects == 0, "a reference to the firewall is left");
        Expect(notes_, TheWmiScript().liveObjects == 0, "a reference to WMI is left");
    }

private:
    static constexpr const char* kUnpublished = "RotRegistration errror";

    // Runs the program on this thread. A user on another thread presses Ctrl+C again and again
    // after the program is published, or has printed why it is not.
    int RunUntilCtrlC()
    {
        wasPublished_ = false;
        printedBefore_ = error_.Text().size();
        std::atomic<bool> ended = false;
        notes_.Begin("the program runs");
        const system::thread::v1::Thread user([&] {
            const OfTheTest mark;
            const system::com::v1::ComApartment apartment;
            for (bool isUp = false; !ended; Sleep(kLookMs)) {
                const bool published = static_cast<bool>(FindPublished());
                wasPublished_ = wasPublished_ || published;
                isUp = isUp || published || HasPrinted(kUnpublished);
                if (isUp) {
                    const OfTheProduct handler;
                    app::v0::ConsoleCtrlHandler(CTRL_C_EVENT);
                }
            }
        });
        int exitCode = 0;
        {
            const OfTheProduct mark;
            exitCode = app::v0::RunProgram();
        }
        ended = true;
        notes_.Begin("the user's thread ends");
        WaitForSingleObject(user.Handle(), INFINITE);
        MSG message{}; // of a further Ctrl+C
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        }
        return exitCode;
    }

    // Whether the last program, or the one that runs, has printed this.
    [[nodiscard]] bool HasPrinted(const std::string& text) const
    {
        return error_.Text().find(text, printedBefore_) != std::string::npos;
    }

    void NoteLines()
    {
        const std::string printed = error_.Text();
        for (std::size_t begin = 0; begin < printed.size();) {
            const std::size_t end = std::min(printed.find('\n', begin), printed.size());
            notes_.Saw("printed: " + WithoutDate(printed.substr(begin, end - begin)));
            begin = end + 1;
        }
        std::ifstream log(system::installation::v1::LogFile(root_));
        for (std::string line; std::getline(log, line);) {
            const std::size_t text = line.rfind(';');
            notes_.Saw("in the log: " + (text == std::string::npos ? "" : line.substr(text)));
        }
    }

    // A line of the console begins with a date such as "Sun Nov 22 05:36:10.123 ".
    static std::string WithoutDate(const std::string& line)
    {
        constexpr std::size_t dateLength = 24;
        return line.size() > dateLength && line[19] == '.' ? line.substr(dateLength) : line;
    }

    void ExpectNotPublished()
    {
        Expect(notes_, !FindPublished(), "the program is still published after its end");
    }

    RunNotes& notes_;
    PrintedText error_;
    std::string root_;
    std::size_t printedBefore_ = 0; // characters, by the programs before
    std::atomic<bool> wasPublished_ = false;
};

TEST(ProgramAnomaly, Start_publication_and_end_of_the_program_survive_the_failure_of_each_call)
{
    ExpectThatEachCallMayFail(
        [](RunNotes& notes) { return std::make_unique<WholeProgram>(notes); });
}

} // namespace
} // namespace vqrx::test::anomaly
