#include "GatherAutostart.h"

#include "FirmwareRegistry.h"
#include "ImportPatch.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::AutostartFacts;
using client::v0::ReadFleetFacts;

DWORD WINAPI DriveIsNotReady(LPCWSTR)
{
    SetLastError(ERROR_NOT_READY);
    return INVALID_FILE_ATTRIBUTES;
}

TEST(GatherAutostart, Fleet_file_that_cannot_be_read_is_not_taken_for_a_missing_one)
{
    FirmwareRegistry registry;
    registry.SetPathname(FirmwareRegistry::kCurrent, "C:\\FW\\App");
    AutostartFacts missing;
    ReadFleetFacts("C:\\no\\such.txt", missing);
    EXPECT_FALSE(missing.fleetThere);
    const ImportPatch patch("GetFileAttributesW", DriveIsNotReady);
    AutostartFacts unreadable;
    ReadFleetFacts("C:\\no\\such.txt", unreadable);
    EXPECT_TRUE(unreadable.fleetThere);
    EXPECT_EQ(unreadable.fleetErrors, std::vector<std::string>{"C:\\no\\such.txt cannot be read"});
}

} // namespace
} // namespace vqrx::test
