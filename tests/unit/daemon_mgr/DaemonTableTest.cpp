#include "DaemonTable.h"

#include <gtest/gtest.h>

#include <atomic>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::DaemonTable;
using system::daemon::daemon_mgr::v0::GiveFreeId;
using system::daemon::daemon_mgr::v0::KeepOrGiveFreeId;
using system::daemon::daemon_mgr::v0::ProcessInfo;

DaemonTable::node_type Entry(DWORD id)
{
    DaemonTable staging;
    ProcessInfo record;
    record.daemonId = id;
    staging.emplace(id, std::move(record));
    return staging.extract(id);
}

struct FreeId : testing::Test {
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

TEST_F(FreeId, is_the_next_number)
{
    EXPECT_EQ(0U, Give());
    EXPECT_EQ(1U, Give());
    EXPECT_EQ(2U, next);
}

TEST_F(FreeId, is_never_that_of_a_daemon_which_has_it_since_the_numbers_began_anew)
{
    table.insert(Entry(0));
    table.insert(Entry(2));
    next = 0xFFFFFFFE;
    EXPECT_EQ(0xFFFFFFFEU, Give());
    EXPECT_EQ(1U, Give());
    EXPECT_EQ(3U, Give());
}

TEST_F(FreeId, is_never_the_one_that_stands_for_no_daemon)
{
    next = 0xFFFFFFFF;
    EXPECT_EQ(0U, Give());
}

TEST_F(FreeId, is_looked_for_only_where_the_one_at_hand_cannot_be_used)
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

} // namespace vqrx::test
