// Client program that launches, stops, attaches and detaches daemons at random until an event is
// signalled. Arguments: its name, the seed, its journal, the program of daemons without a window,
// the program of daemons with a window, the event.
#include "ChildProcess.h"
#include "Journal.h"
#include "code_page/CodePage.h"
#include "com/ComApartment.h"
#include "daemon_manager/SupervisorClient.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <vector>

namespace vqrx::test {
namespace {

std::wstring Wide(const std::string& text)
{
    return system::code_page::v1::NarrowToWide(text, CP_UTF8);
}

class RandomClient {
public:
    RandomClient(char** arguments)
        : name_(arguments[1])
        , random_(static_cast<unsigned>(std::stoul(arguments[2])))
        , journal_(arguments[3])
        , daemon_(arguments[4])
        , window_(arguments[5])
    {
    }

    /// Returns the milliseconds until the next request.
    [[nodiscard]] DWORD Pause() { return 2000 + random_() % 8000; }

    void Request()
    {
        switch (random_() % 10) {
        case 0:
        case 1:
        case 2:
            launched_.size() < 3 ? Launch() : Stop();
            break;
        case 3:
        case 4:
        case 5:
            launched_.empty() ? Launch() : Stop();
            break;
        case 6:
        case 7:
            child_ ? Detach() : Attach();
            break;
        case 8:
            LaunchAgain();
            break;
        default:
            MakeUselessRequests();
        }
    }

    void Fail(const std::string& text) { journal_.Line("fail " + name_ + ": " + text); }

private:
    struct Launched {
        std::string name;
        std::string kind;
        std::uint32_t id;
    };

    std::string NewName() { return name_ + "_" + std::to_string(counter_++); }
    void Expect(bool condition, const char* failure)
    {
        if (!condition) {
            throw std::runtime_error(failure);
        }
    }
    std::wstring ProgramOf(const std::string& kind)
    {
        return Wide(kind == "windowed" ? window_ : daemon_);
    }

    void Launch()
    {
        const std::string name = NewName();
        const std::string kind = random_() % 4 == 0 ? "windowed" : "steady";
        journal_.Line("begin launch " + name + " " + kind);
        const auto request = supervisor_.Launch(ProgramOf(kind), {Wide(kind), Wide(name)});
        Expect(request.done, "the supervisor answers that it knows a new daemon");
        journal_.Line("end launch " + name + " " + std::to_string(request.daemonId));
        launched_.push_back({name, kind, request.daemonId});
    }

    void Stop()
    {
        const auto chosen =
            std::next(launched_.begin(), static_cast<std::ptrdiff_t>(random_() % launched_.size()));
        const Launched daemon = *chosen;
        launched_.erase(chosen);
        journal_.Line("begin stop " + daemon.name);
        Expect(supervisor_.Stop(daemon.id), "the supervisor does not know a launched daemon");
        journal_.Line("end stop " + daemon.name);
    }

    void LaunchAgain()
    {
        if (launched_.empty()) {
            return;
        }
        const Launched& daemon = launched_.front();
        journal_.Line("begin other");
        const auto request =
            supervisor_.Launch(ProgramOf(daemon.kind), {Wide(daemon.kind), Wide(daemon.name)});
        Expect(!request.done && request.daemonId == daemon.id,
               "a second launch of a daemon returned another id");
        journal_.Line("end other");
    }

    void MakeUselessRequests()
    {
        journal_.Line("begin other");
        Expect(!supervisor_.Stop(0xFFFFFF00), "the supervisor stopped an unknown daemon");
        if (!launched_.empty()) {
            Expect(!supervisor_.Detach(launched_.front().id),
                   "the supervisor detached a launched daemon");
        }
        journal_.Line("end other");
    }

    void Attach()
    {
        childName_ = NewName();
        child_.emplace("\"" + daemon_ + "\" steady " + childName_);
        journal_.Line("begin attach " + childName_ + " steady");
        const auto request = supervisor_.Attach(child_->Pid());
        Expect(request.done, "the supervisor refuses to attach a running program");
        childId_ = request.daemonId;
        journal_.Line("end attach " + childName_ + " " + std::to_string(childId_));
    }

    void Detach()
    {
        journal_.Line("begin detach " + childName_);
        Expect(supervisor_.Detach(childId_), "the supervisor refuses to detach an attached daemon");
        child_.reset(); // Ends the process. The supervisor does not restart a detached daemon.
        journal_.Line("end detach " + childName_);
    }

    std::string name_;
    std::mt19937 random_;
    JournalWriter journal_;
    std::string daemon_;
    std::string window_;
    system::com::v1::ComApartment apartment_;
    daemon_manager::SupervisorClient supervisor_;
    std::vector<Launched> launched_;
    std::optional<ChildProcess> child_;
    std::string childName_;
    std::uint32_t childId_ = 0;
    unsigned counter_ = 0;
};

} // namespace
} // namespace vqrx::test

int main(int argc, char** argv)
{
    if (argc != 7) {
        return 2;
    }
    const vqrx::system::win32::v1::UniqueKernelHandle end(OpenEventA(SYNCHRONIZE, FALSE, argv[6]));
    vqrx::test::RandomClient client(argv);
    try {
        while (WaitForSingleObject(end.Get(), client.Pause()) == WAIT_TIMEOUT) {
            client.Request();
        }
    } catch (const std::exception& exception) {
        client.Fail(exception.what());
        return 1;
    }
    ExitProcess(0); // Skips the destructors, so that an attached process keeps running.
}
