#include "RotRegistration.h"

#include "AnsweringTable.h"
#include "CapturingLogger.h"
#include "ImportPatch.h"
#include "PublishedObject.h"
#include "com/ComApartment.h"
#include "exception_utils/COMException.h"

#include <windows.h>

#include <objbase.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace vqrx::test {
namespace {

using app::v0::MakeRotRegistration;
using testing::AllOf;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

using RegistrationPointer = std::unique_ptr<app::v0::RotRegistration>;

HRESULT WINAPI RefuseTable(DWORD, IRunningObjectTable** table)
{
    *table = nullptr;
    return E_ACCESSDENIED;
}

HRESULT WINAPI RefuseMoniker(LPCOLESTR, LPCOLESTR, IMoniker** moniker)
{
    *moniker = nullptr;
    return E_OUTOFMEMORY;
}

HRESULT securityAnswer = S_OK;

HRESULT WINAPI AnswerSecurity(PSECURITY_DESCRIPTOR, LONG, SOLE_AUTHENTICATION_SERVICE*, void*,
                              DWORD authentication, DWORD impersonation, void*, DWORD capabilities,
                              void*)
{
    EXPECT_EQ(authentication, 1U);
    EXPECT_EQ(impersonation, 3U);
    EXPECT_EQ(capabilities, 0U);
    return securityAnswer;
}

struct RotRegistrationTest : testing::Test {
    /// Publishes. @return the text of the std::runtime_error; empty without one
    std::string Publish(RegistrationPointer& registration)
    {
        try {
            MakeRotRegistration(registration, &object, logger);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

    system::com::v1::ComApartment apartment;
    PlainObject object;
    CapturingLogger logger;
};

TEST_F(RotRegistrationTest, Object_is_published_while_the_registration_lives)
{
    ASSERT_FALSE(FindPublished());
    {
        RegistrationPointer registration;
        EXPECT_EQ(Publish(registration), "");
        ASSERT_TRUE(registration);
        EXPECT_EQ(FindPublished().Get(), &object);
        EXPECT_GT(object.References(), 1U); // the table holds a reference
    }
    EXPECT_FALSE(FindPublished());
    EXPECT_EQ(object.References(), 1U);
    EXPECT_THAT(logger.Lines(), IsEmpty());
}

TEST_F(RotRegistrationTest, Second_registration_is_refused_and_leaves_no_entry_in_the_table)
{
    RegistrationPointer first;
    ASSERT_EQ(Publish(first), "");
    PlainObject other;
    RegistrationPointer second;
    try {
        MakeRotRegistration(second, &other, logger);
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), AllOf(StartsWith("A registration with this name already exists: "
                                                   "\"DaemonManager\" ("),
                                        EndsWith(")")));
    }
    EXPECT_FALSE(second);
    EXPECT_EQ(other.References(), 1U);
    EXPECT_EQ(FindPublished().Get(), &object);
    first.reset();
    EXPECT_FALSE(FindPublished());
}

TEST_F(RotRegistrationTest, Registration_keeps_the_object_alive_and_revokes_its_own_cookie)
{
    AnsweringTable table(S_OK);
    answeringTable = &table;
    const ImportPatch patch("GetRunningObjectTable", GiveAnsweringTable);
    {
        RegistrationPointer registration;
        EXPECT_EQ(Publish(registration), "");
        EXPECT_EQ(table.registeredFlags, 1U); // ROTFLAGS_REGISTRATIONKEEPSALIVE
        EXPECT_THAT(table.revoked, IsEmpty());
        EXPECT_EQ(table.references, 1U);
    }
    EXPECT_THAT(table.revoked, testing::ElementsAre(4711U));
    EXPECT_EQ(table.references, 0U);
}

TEST_F(RotRegistrationTest, Every_success_code_but_S_OK_is_refused)
{
    for (const HRESULT answer : {S_FALSE, static_cast<HRESULT>(0x000401E7)}) {
        AnsweringTable table(answer);
        answeringTable = &table;
        const ImportPatch patch("GetRunningObjectTable", GiveAnsweringTable);
        RegistrationPointer registration;
        EXPECT_THAT(
            Publish(registration),
            StartsWith("A registration with this name already exists: \"DaemonManager\" ("));
        EXPECT_FALSE(registration);
        EXPECT_THAT(table.revoked, testing::ElementsAre(4711U)); // the table had made an entry
        EXPECT_EQ(table.references, 0U);
    }
}

TEST_F(RotRegistrationTest, Failure_code_of_the_table_is_refused_with_the_same_text)
{
    AnsweringTable table(E_ACCESSDENIED);
    answeringTable = &table;
    const ImportPatch patch("GetRunningObjectTable", GiveAnsweringTable);
    RegistrationPointer registration;
    EXPECT_THAT(Publish(registration),
                StartsWith("A registration with this name already exists: \"DaemonManager\" ("));
    EXPECT_THAT(table.revoked, IsEmpty());
    EXPECT_EQ(table.references, 0U);
}

TEST_F(RotRegistrationTest, Missing_table_is_logged_and_start_up_goes_on)
{
    const ImportPatch patch("GetRunningObjectTable", RefuseTable);
    RegistrationPointer registration;
    EXPECT_EQ(Publish(registration), "");
    EXPECT_FALSE(registration);
    const auto lines = logger.Lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].first, 0);
    EXPECT_THAT(lines[0].second, StartsWith("RotRegistration errror COM Error 80070005: "));
}

TEST_F(RotRegistrationTest, Missing_moniker_is_logged_and_the_table_is_released)
{
    AnsweringTable table(S_OK);
    answeringTable = &table;
    const ImportPatch tablePatch("GetRunningObjectTable", GiveAnsweringTable);
    const ImportPatch monikerPatch("CreateItemMoniker", RefuseMoniker);
    RegistrationPointer registration;
    EXPECT_EQ(Publish(registration), "");
    EXPECT_FALSE(registration);
    const auto lines = logger.Lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines[0].second, StartsWith("RotRegistration errror COM Error 8007000e: "));
    EXPECT_EQ(table.references, 0U);
}

TEST_F(RotRegistrationTest, Pointer_is_null_after_a_failed_registration)
{
    RegistrationPointer registration;
    ASSERT_EQ(Publish(registration), "");
    const ImportPatch patch("GetRunningObjectTable", RefuseTable);
    EXPECT_EQ(Publish(registration), "");
    EXPECT_FALSE(registration);
}

TEST_F(RotRegistrationTest, Security_that_is_already_set_is_not_logged)
{
    securityAnswer = RPC_E_TOO_LATE;
    const ImportPatch patch("CoInitializeSecurity", AnswerSecurity);
    RegistrationPointer registration;
    EXPECT_EQ(Publish(registration), "");
    EXPECT_TRUE(registration);
    EXPECT_THAT(logger.Lines(), IsEmpty());
}

TEST_F(RotRegistrationTest, Failure_to_set_the_security_is_logged_and_start_up_goes_on)
{
    securityAnswer = E_OUTOFMEMORY;
    const ImportPatch patch("CoInitializeSecurity", AnswerSecurity);
    RegistrationPointer registration;
    EXPECT_EQ(Publish(registration), "");
    EXPECT_TRUE(registration);
    const auto lines = logger.Lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].first, 0);
    EXPECT_THAT(lines[0].second, StartsWith("CoInitializeSecurity error "));
}

} // namespace
} // namespace vqrx::test
