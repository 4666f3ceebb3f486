#include "OriginMark.h"

#include "ImportPatch.h"
#include "ObjectOrigin.h"
#include "PublishedObject.h"
#include "com/ComApartment.h"
#include "win32/LocalMemory.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace vqrx::test {
namespace {

using app::v0::MakeOriginMark;
using system::win32::v1::UniqueKernelHandle;

struct OriginMarkTest : testing::Test {
    // The name of the mark that clients look for when they have found the object.
    std::wstring Name()
    {
        std::uint64_t exporterId = 0;
        EXPECT_EQ(S_OK, daemon_manager::ReadExporterId(&object, exporterId));
        return daemon_manager::OriginMarkName(exporterId);
    }

    system::com::v1::ComApartment apartment;
    PlainObject object;
    UniqueKernelHandle mark;
};

HRESULT WINAPI RefuseToMarshal(LPSTREAM, REFIID, LPUNKNOWN, DWORD, LPVOID, DWORD)
{
    return E_OUTOFMEMORY;
}

HANDLE WINAPI RefuseNewEvent(LPSECURITY_ATTRIBUTES, BOOL, BOOL, LPCWSTR)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
}

BOOL WINAPI RefuseTextOfRights(LPCWSTR, DWORD, PSECURITY_DESCRIPTOR*, PULONG)
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return FALSE;
}

TEST_F(OriginMarkTest, Everybody_may_read_the_mark_and_nobody_may_change_it)
{
    ASSERT_EQ(S_OK, MakeOriginMark(&object, mark));
    const UniqueKernelHandle markOfClient(OpenEventW(READ_CONTROL, FALSE, Name().c_str()));
    ASSERT_TRUE(markOfClient);
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_EQ(0U, GetSecurityInfo(markOfClient.Get(), SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION,
                                  nullptr, nullptr, nullptr, nullptr, &descriptor));
    const system::win32::v1::UniqueLocalMemory<void> descriptorOwner(descriptor);
    char* text = nullptr;
    ASSERT_TRUE(ConvertSecurityDescriptorToStringSecurityDescriptorA(
        descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr));
    const system::win32::v1::UniqueLocalMemory<char> textOwner(text);
    EXPECT_STREQ("D:P(A;;RC;;;WD)", text);
    EXPECT_EQ(1U, object.References()); // the object is not kept
}

TEST_F(OriginMarkTest, The_mark_ends_with_its_handle)
{
    ASSERT_EQ(S_OK, MakeOriginMark(&object, mark));
    mark.Reset();
    EXPECT_FALSE(UniqueKernelHandle(OpenEventW(READ_CONTROL, FALSE, Name().c_str())));
}

TEST_F(OriginMarkTest, The_mark_of_somebody_else_is_not_taken_over)
{
    const UniqueKernelHandle foreign(CreateEventW(nullptr, TRUE, FALSE, Name().c_str()));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_ALREADY_EXISTS), MakeOriginMark(&object, mark));
    EXPECT_FALSE(mark);
}

TEST_F(OriginMarkTest, A_failure_is_returned)
{
    {
        const ImportPatch patch("CoMarshalInterface", RefuseToMarshal);
        EXPECT_EQ(E_OUTOFMEMORY, MakeOriginMark(&object, mark));
    }
    {
        const ImportPatch patch("CreateEventW", RefuseNewEvent);
        EXPECT_EQ(E_ACCESSDENIED, MakeOriginMark(&object, mark));
    }
    const ImportPatch patch("ConvertStringSecurityDescriptorToSecurityDescriptorW",
                            RefuseTextOfRights);
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY), MakeOriginMark(&object, mark));
    EXPECT_FALSE(mark);
}

} // namespace
} // namespace vqrx::test
