#include "StopRequest.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace vqrx::kit {
namespace {

constexpr const wchar_t* kName = L"Global\\DaemonManagerTestKit of a test";

TEST(OneAtATime, A_second_runner_is_refused_until_the_first_one_has_ended)
{
    {
        const OneAtATime first(kName);
        EXPECT_THROW(OneAtATime{kName}, std::runtime_error);
    }
    EXPECT_NO_THROW(OneAtATime{kName});
}

// As the runner of an administrator looks to one of a user.
TEST(OneAtATime, A_second_runner_that_may_not_open_the_mutex_of_the_first_one_is_refused)
{
    ACL nobody{};
    ASSERT_TRUE(InitializeAcl(&nobody, sizeof nobody, ACL_REVISION));
    SECURITY_DESCRIPTOR descriptor{};
    ASSERT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, &nobody, FALSE));
    SECURITY_ATTRIBUTES attributes{sizeof(SECURITY_ATTRIBUTES), &descriptor, FALSE};
    const system::win32::v1::UniqueKernelHandle first(CreateMutexW(&attributes, FALSE, kName));
    ASSERT_TRUE(first);
    EXPECT_THROW(OneAtATime{kName}, std::runtime_error);
}

} // namespace
} // namespace vqrx::kit
