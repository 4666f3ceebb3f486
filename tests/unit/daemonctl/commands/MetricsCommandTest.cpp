#include "Commands.h"

#include "CommandDefinition.h"
#include "FullDisk.h"
#include "ImportPatch.h"

#include <CLI/CLI.hpp>

#include <windows.h>

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using SnapshotFunction = HANDLE WINAPI(DWORD, DWORD);

int refusals = 0; // that are still to come
SnapshotFunction* originalSnapshot = nullptr;

HANDLE WINAPI RefuseFirstSnapshots(DWORD flags, DWORD processId)
{
    if (refusals == 0) {
        return originalSnapshot(flags, processId);
    }
    --refusals;
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return INVALID_HANDLE_VALUE;
}

TEST(MetricsCommand, A_list_of_processes_that_cannot_be_read_once_does_not_end_the_writing)
{
    CLI::App app("test", "daemonctl");
    int exitCode = -1;
    client::v0::AddMetricsCommand(client::v0::CommandDefinition(app), exitCode);
    refusals = 1;
    const ImportPatch refuse("CreateToolhelp32Snapshot", RefuseFirstSnapshots, originalSnapshot);
    testing::internal::CaptureStderr();
    {
        const FullDisk output; // the first text ends the writing
        EXPECT_NO_THROW(app.parse("metrics --every 1"));
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "daemonctl: the list of processes cannot be read: Windows error 8\n"
              "  To find out more: daemonctl doctor\n");
    EXPECT_EQ(refusals, 0);
    EXPECT_EQ(exitCode, 0);
}

} // namespace
} // namespace vqrx::test
