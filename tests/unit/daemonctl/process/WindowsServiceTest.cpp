#include "WindowsService.h"

#include "TestService.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(WindowsService, Service_exists_from_its_creation_to_its_removal)
{
    {
        const TestService service("DmWindowsServiceTest");
        EXPECT_TRUE(ServiceExists("DmWindowsServiceTest"));
        EXPECT_TRUE(ServiceExists("dmwindowsservicetest"));
    }
    EXPECT_FALSE(ServiceExists("DmWindowsServiceTest"));
}

TEST(WindowsService, Stopped_service_is_started_and_a_running_one_stays_as_it_is)
{
    const TestService service("DmWindowsServiceTest");
    const std::uint32_t started = RunService("DmWindowsServiceTest", {"-x"});
    EXPECT_NE(started, 0U);
    EXPECT_EQ(started, service.ProcessId());
    EXPECT_EQ(RunService("DmWindowsServiceTest", {}), started);
}

TEST(WindowsService, Unknown_and_disabled_services_are_refused_with_the_reason)
{
    const TestService disabled("DmWindowsServiceTest", SERVICE_WIN32_OWN_PROCESS, SERVICE_DISABLED);
    try {
        static_cast<void>(RunService("DmNoSuchService", {}));
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "the service cannot be opened: error 1060");
    }
    try {
        static_cast<void>(RunService("DmWindowsServiceTest", {}));
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "the service cannot be started: error 1058");
    }
}

} // namespace
} // namespace vqrx::test
