#include "com/ClientApartment.h"

#include "ImportPatch.h"

#include <windows.h>

#include <objbase.h>

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

constexpr CLSID kOptionsOfCom{0x0000034B, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

int askedForOptions = 0;

HRESULT WINAPI NoteClass(REFCLSID classId, IUnknown*, DWORD, REFIID, void** object)
{
    askedForOptions += classId == kOptionsOfCom ? 1 : 0;
    *object = nullptr;
    return E_OUTOFMEMORY;
}

bool IsMemberOfCom()
{
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    return CoGetApartmentType(&type, &qualifier) == S_OK && type == APTTYPE_MTA &&
           qualifier == APTTYPEQUALIFIER_NONE;
}

} // namespace

TEST(ClientApartment, The_first_one_asks_for_the_policy_and_a_refusal_keeps_nobody_out)
{
    const ImportPatch patch("CoCreateInstance", NoteClass);
    for (int times = 0; times < 2; ++times) {
        const system::com::v1::ClientApartment apartment;
        EXPECT_TRUE(IsMemberOfCom());
        EXPECT_EQ(1, askedForOptions);
    }
    EXPECT_FALSE(IsMemberOfCom());
}

} // namespace vqrx::test
