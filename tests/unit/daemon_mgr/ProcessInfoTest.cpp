#include "ProcessInfo.h"

#include "AllocationFault.h"

#include <gtest/gtest.h>

#include <new>

#include <utility>

namespace vqrx::test {

using system::daemon::daemon_mgr::v0::DaemonDescription;
using system::daemon::daemon_mgr::v0::ProcessInfo;

TEST(ProcessInfo, made_by_default_has_no_process_no_id_and_nothing_else)
{
    const ProcessInfo record;
    EXPECT_EQ(0xFFFFFFFFU, record.processId);
    EXPECT_EQ(0xFFFFFFFFU, record.daemonId);
    EXPECT_FALSE(record.process);
    EXPECT_FALSE(record.service);
    EXPECT_FALSE(record.isService);
    EXPECT_FALSE(record.attached);
    EXPECT_EQ(0U, record.restarts);
    EXPECT_EQ("", record.executablePath);
    EXPECT_EQ("", record.serviceName);
    EXPECT_TRUE(record.arguments.empty());
}

ProcessInfo FilledRecord(HANDLE process)
{
    ProcessInfo record;
    record.executablePath = "a.exe";
    record.arguments = {"-x"};
    record.process.Reset(process);
    record.processId = 7;
    record.isService = true;
    record.serviceName = "Svc";
    record.attached = true;
    record.restarts = 5;
    record.daemonId = 9;
    return record;
}

TEST(ProcessInfo, moved_hands_over_its_handles_and_copies_the_rest)
{
    const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    ProcessInfo source = FilledRecord(event);
    ProcessInfo target(std::move(source));
    EXPECT_EQ(event, target.process.Get());
    EXPECT_FALSE(source.process); // NOLINT(bugprone-use-after-move): promised
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

TEST(ProcessInfo, assigned_closes_the_handle_it_had)
{
    const HANDLE first = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    ProcessInfo target = FilledRecord(first);
    target = FilledRecord(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    DWORD flags = 0;
    EXPECT_FALSE(GetHandleInformation(first, &flags));
    EXPECT_TRUE(target.process);
}

TEST(ProcessInfo, destroyed_closes_its_process_handle)
{
    const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    {
        const ProcessInfo record = FilledRecord(event);
    }
    DWORD flags = 0;
    EXPECT_FALSE(GetHandleInformation(event, &flags));
}

TEST(ProcessInfo, describes_a_service_by_its_name_alone)
{
    EXPECT_EQ("DaemonId(9) PId(7) : Svc", DaemonDescription(FilledRecord(nullptr)));
}

TEST(ProcessInfo, is_described_whole_or_not_at_all_when_memory_runs_out)
{
    ProcessInfo record;
    record.daemonId = 3;
    record.processId = 7;
    record.executablePath = "C:\\a folder with a long name\\a.exe";
    bool happened = true;
    for (std::size_t succeeding = 0; happened; ++succeeding) {
        std::string text;
        bool raised = false;
        {
            const AllocationFault fault(succeeding);
            try {
                text = DaemonDescription(record);
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
