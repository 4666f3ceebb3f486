#include "ProcessInfo.h"

#include "AllocationFault.h"

#include <gtest/gtest.h>

#include <new>
#include <utility>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::DaemonDescription;
using system::daemon::daemon_mgr::v0::ProcessInfo;

ProcessInfo FilledDaemon(HANDLE process)
{
    ProcessInfo daemon;
    daemon.executablePath = "a.exe";
    daemon.arguments = {"-x"};
    daemon.process.Reset(process);
    daemon.processId = 7;
    daemon.isService = true;
    daemon.serviceName = "Svc";
    daemon.attached = true;
    daemon.restarts = 5;
    daemon.daemonId = 9;
    return daemon;
}

} // namespace

TEST(ProcessInfoTest, Default_has_unset_ids_and_is_empty_otherwise)
{
    const ProcessInfo daemon;
    EXPECT_EQ(0xFFFFFFFFU, daemon.processId);
    EXPECT_EQ(0xFFFFFFFFU, daemon.daemonId);
    EXPECT_FALSE(daemon.process);
    EXPECT_FALSE(daemon.service);
    EXPECT_FALSE(daemon.isService);
    EXPECT_FALSE(daemon.attached);
    EXPECT_EQ(0U, daemon.restarts);
    EXPECT_EQ("", daemon.executablePath);
    EXPECT_EQ("", daemon.serviceName);
    EXPECT_TRUE(daemon.arguments.empty());
}

TEST(ProcessInfoTest, Move_transfers_the_handles_and_copies_the_rest)
{
    const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    ProcessInfo source = FilledDaemon(event);
    ProcessInfo target(std::move(source));
    EXPECT_EQ(event, target.process.Get());
    EXPECT_FALSE(source.process); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ("a.exe", source.executablePath);
    EXPECT_EQ("a.exe", target.executablePath);
    EXPECT_EQ("-x", target.arguments.at(0));
    EXPECT_EQ(7U, target.processId);
    EXPECT_TRUE(target.isService);
    EXPECT_EQ("Svc", target.serviceName);
    EXPECT_TRUE(target.attached);
    EXPECT_EQ(5U, target.restarts);
    EXPECT_EQ(9U, target.daemonId);
}

TEST(ProcessInfoTest, Assignment_closes_the_earlier_handle)
{
    const HANDLE first = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    ProcessInfo target = FilledDaemon(first);
    target = FilledDaemon(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    DWORD flags = 0;
    EXPECT_FALSE(GetHandleInformation(first, &flags));
    EXPECT_TRUE(target.process);
}

TEST(ProcessInfoTest, Destruction_closes_the_process_handle)
{
    const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    {
        const ProcessInfo daemon = FilledDaemon(event);
    }
    DWORD flags = 0;
    EXPECT_FALSE(GetHandleInformation(event, &flags));
}

TEST(ProcessInfoTest, Description_of_a_service_shows_its_name_and_no_command)
{
    EXPECT_EQ("DaemonId(9) PId(7) : Svc", DaemonDescription(FilledDaemon(nullptr)));
}

TEST(ProcessInfoTest, Description_that_runs_out_of_memory_throws_and_is_never_cut_off)
{
    ProcessInfo daemon;
    daemon.daemonId = 3;
    daemon.processId = 7;
    daemon.executablePath = "C:\\a folder with a long name\\a.exe";
    bool happened = true;
    for (std::size_t succeeding = 0; happened; ++succeeding) {
        std::string text;
        bool raised = false;
        {
            const AllocationFault fault(succeeding);
            try {
                text = DaemonDescription(daemon);
            } catch (const std::bad_alloc&) {
                raised = true;
            }
            happened = fault.Happened();
        }
        EXPECT_EQ(happened, raised) << succeeding;
        EXPECT_EQ(raised ? "" : "DaemonId(3) PId(7) : C:\\a folder with a long name\\a.exe ", text);
        ASSERT_GT(100U, succeeding);
    }
}

} // namespace vqrx::test
