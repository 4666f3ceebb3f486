#include "DaemonTable.h"

#include <gtest/gtest.h>

#include <atomic>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::DaemonTable;
using system::daemon::daemon_mgr::v0::FindSameCommand;
using system::daemon::daemon_mgr::v0::GiveFreeId;
using system::daemon::daemon_mgr::v0::KeepOrGiveFreeId;
using system::daemon::daemon_mgr::v0::ProcessInfo;

// An entry with this key and this daemonId that is in no table.
DaemonTable::node_type Entry(DWORD id)
{
    DaemonTable staging;
    ProcessInfo daemon;
    daemon.daemonId = id;
    staging.emplace(id, std::move(daemon));
    return staging.extract(id);
}

struct DaemonTableTest : testing::Test {
    DWORD Give()
    {
        DaemonTable::node_type entry = Entry(0);
        const DWORD id = GiveFreeId(entry, table, next);
        EXPECT_EQ(id, entry.key());
        EXPECT_EQ(id, entry.mapped().daemonId);
        return id;
    }

    DaemonTable table;
    std::atomic<DWORD> next = 0;
};

} // namespace

TEST_F(DaemonTableTest, Next_number_is_the_free_id)
{
    EXPECT_EQ(0U, Give());
    EXPECT_EQ(1U, Give());
    EXPECT_EQ(2U, next);
}

TEST_F(DaemonTableTest, Ids_in_the_table_are_skipped_after_the_numbers_start_again_at_0)
{
    table.insert(Entry(0));
    table.insert(Entry(2));
    next = 0xFFFFFFFE;
    EXPECT_EQ(0xFFFFFFFEU, Give());
    EXPECT_EQ(1U, Give());
    EXPECT_EQ(3U, Give());
}

TEST_F(DaemonTableTest, Id_that_means_no_daemon_is_never_given)
{
    next = 0xFFFFFFFF;
    EXPECT_EQ(0U, Give());
}

TEST_F(DaemonTableTest, Entry_keeps_its_id_unless_the_id_is_taken_or_means_no_daemon)
{
    table.insert(Entry(7));
    next = 7;
    DaemonTable::node_type good = Entry(5);
    KeepOrGiveFreeId(good, table, next);
    EXPECT_EQ(5U, good.key());
    EXPECT_EQ(7U, next);
    for (const DWORD taken : {7U, 0xFFFFFFFFU}) {
        next = 7;
        DaemonTable::node_type entry = Entry(taken);
        KeepOrGiveFreeId(entry, table, next);
        EXPECT_EQ(8U, entry.key());
        EXPECT_EQ(8U, entry.mapped().daemonId);
    }
}

TEST_F(DaemonTableTest, Same_command_is_the_first_in_id_order_with_equal_path_and_arguments)
{
    for (const DWORD id : {4U, 2U, 9U}) {
        DaemonTable::node_type entry = Entry(id);
        entry.mapped().executablePath = "a.exe";
        entry.mapped().arguments = {id == 2 ? "other" : "x"};
        table.insert(std::move(entry));
    }
    const ProcessInfo* const found = FindSameCommand(table, "a.exe", {"x"});
    ASSERT_NE(nullptr, found);
    EXPECT_EQ(4U, found->daemonId);
    EXPECT_EQ(nullptr, FindSameCommand(table, "A.exe", {"x"}));
    EXPECT_EQ(nullptr, FindSameCommand(table, "a.exe", {}));
}

} // namespace vqrx::test
