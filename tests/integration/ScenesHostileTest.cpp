// Clients that attach one process many times, the supervisor itself, or a system process.
#include "GuardedMachine.h"
#include "Scene.h"

#include <windows.h>

#include <set>
#include <vector>

namespace vqrx::test {
namespace {

class HostileAttach : public Scene {};

} // namespace

TEST_F(HostileAttach,
       A_thousand_attaches_of_one_process_make_a_thousand_daemons_that_can_be_detached)
{
    const ReadyEvent ready;
    const ChildProcess child("\"" + TestProgram("no_windows") + "\" " + ready.Name());
    ASSERT_TRUE(ready.Wait());
    std::set<DWORD> ids;
    for (int number = 0; number < 1000; ++number) {
        const auto request = supervisor_.Client().Attach(child.Pid());
        ASSERT_TRUE(request.done) << number;
        EXPECT_TRUE(ids.insert(request.daemonId).second) << request.daemonId;
    }
    EXPECT_EQ(1000U, HandlesOf(child.Pid()));
    for (const DWORD id : ids) {
        ASSERT_TRUE(supervisor_.Client().Detach(id)) << id;
    }
    EXPECT_EQ(0U, HandlesOf(child.Pid()));
    EXPECT_TRUE(child.Running());
    EXPECT_EQ(0U, supervisor_.Exit());
}

TEST_F(HostileAttach,
       Attach_and_Stop_of_the_supervisor_itself_neither_end_it_nor_start_a_second_one)
{
    const DWORD own = supervisor_.Process().Pid();
    const auto request = supervisor_.Client().Attach(own);
    ASSERT_TRUE(request.done);
    EXPECT_TRUE(OnePassLater(supervisor_));
    EXPECT_FALSE(supervisor_.Client().Stop(request.daemonId));
    EXPECT_TRUE(supervisor_.Process().Running());
    // Stop removed the entry from the table.
    EXPECT_FALSE(supervisor_.Client().Detach(request.daemonId));
    EXPECT_EQ(0U, supervisor_.Exit());
}

TEST_F(HostileAttach, Attach_and_Stop_of_a_system_process_do_not_end_it)
{
    const std::vector<ListedProgram> found = ProcessesNamed("services.exe");
    ASSERT_FALSE(found.empty());
    const DWORD services = found.front().processId;
    DWORD id = 4711;
    const HRESULT hr = supervisor_.Control()->Attach(services, nullptr, &id);
    const bool mayOpen = static_cast<bool>(
        system::win32::v1::UniqueKernelHandle(OpenProcess(PROCESS_ALL_ACCESS, FALSE, services)));
    EXPECT_EQ(mayOpen ? S_OK : S_FALSE, hr);
    EXPECT_FALSE(supervisor_.Client().Stop(id)); // attached, or unknown
    EXPECT_TRUE(IsRunning(services));
    EXPECT_EQ(0U, supervisor_.Exit());
}

} // namespace vqrx::test
