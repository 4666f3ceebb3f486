#include "TrustedSources.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

using client::v0::AccountOfSupervisor;
using client::v0::TrustedSids;
using daemon_manager::SupervisorProcess;

SupervisorProcess RunBy(const std::wstring& sid)
{
    SupervisorProcess process;
    process.installedProgram = true;
    process.userKnown = true;
    process.expectedUser = true;
    process.userSid = sid;
    return process;
}

TEST(TrustedSources, The_account_of_the_supervisor_is_trusted_also_while_a_former_one_ends)
{
    EXPECT_EQ(TrustedSids{"S-1-5-21-7"},
              AccountOfSupervisor({RunBy(L"S-1-5-21-7"), RunBy(L"S-1-5-21-7")}));
}

TEST(TrustedSources, A_process_of_another_program_or_of_an_unexpected_user_makes_nobody_trusted)
{
    SupervisorProcess other = RunBy(L"S-1-5-21-8");
    other.installedProgram = false;
    SupervisorProcess unexpected = RunBy(L"S-1-5-21-9");
    unexpected.expectedUser = false;
    SupervisorProcess unknown = RunBy(L"S-1-5-21-10");
    unknown.userKnown = false;
    EXPECT_EQ(TrustedSids{"S-1-5-21-7"},
              AccountOfSupervisor({other, unexpected, RunBy(L"S-1-5-21-7"), unknown}));
}

// A former account of the supervisor may still write the log, and may run the installed program.
TEST(TrustedSources, Nobody_is_trusted_if_two_accounts_run_the_installed_program)
{
    EXPECT_EQ(TrustedSids{}, AccountOfSupervisor({RunBy(L"S-1-5-18"), RunBy(L"S-1-5-21-7")}));
}

} // namespace
} // namespace vqrx::test
