#include "RotRegistration.h"

#include "AnsweringTable.h"
#include "CapturingLogger.h"
#include "ImportPatch.h"
#include "ObjectOrigin.h"
#include "PublishedObject.h"
#include "com/ComApartment.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

namespace vqrx::test {
namespace {

using app::v0::MakeRotRegistration;
using app::v0::RotRegistration;
using testing::StartsWith;

struct RotRegistrationMark : testing::Test {
    system::com::v1::ComApartment apartment;
    PlainObject object;
    CapturingLogger logger;
};

bool HasMark(IUnknown* object)
{
    std::uint64_t exporterId = 0;
    EXPECT_EQ(S_OK, daemon_manager::ReadExporterId(object, exporterId));
    const std::wstring name = daemon_manager::OriginMarkName(exporterId);
    return static_cast<bool>(
        system::win32::v1::UniqueKernelHandle(OpenEventW(READ_CONTROL, FALSE, name.c_str())));
}

HANDLE WINAPI RefuseMark(LPSECURITY_ATTRIBUTES, BOOL, BOOL, LPCWSTR)
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

// Clients look for the mark as soon as they find the object.
TEST_F(RotRegistrationMark, A_mark_of_the_origin_is_there_before_the_object_is_published)
{
    AnsweringTable table(S_OK);
    bool sawMark = false;
    table.onRegister = [&] { sawMark = HasMark(&object); };
    answeringTable = &table;
    const ImportPatch patch("GetRunningObjectTable", GiveAnsweringTable);
    std::unique_ptr<RotRegistration> registration;
    MakeRotRegistration(registration, &object, logger);
    EXPECT_TRUE(sawMark);
    EXPECT_TRUE(HasMark(&object));
    registration.reset();
    EXPECT_FALSE(HasMark(&object));
}

TEST_F(RotRegistrationMark, Failure_to_make_the_mark_is_logged_and_the_object_is_published)
{
    const ImportPatch patch("CreateEventW", RefuseMark);
    std::unique_ptr<RotRegistration> registration;
    MakeRotRegistration(registration, &object, logger);
    EXPECT_TRUE(registration);
    const auto lines = logger.Lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].first, 0);
    EXPECT_THAT(
        lines[0].second,
        StartsWith("The published object has no mark of its origin, so clients refuse it: "));
}

} // namespace
} // namespace vqrx::test
