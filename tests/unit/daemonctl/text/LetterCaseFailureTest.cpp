// Windows cannot convert letters, for example because memory ran out.
#include "ImportPatch.h"
#include "LetterCase.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using client::v0::WithoutCase;

int WINAPI RefuseToConvert(LCID, DWORD, const wchar_t*, int, wchar_t*, int)
{
    return 0;
}

TEST(LetterCaseFailure, Names_that_cannot_be_converted_do_not_become_equal)
{
    const ImportPatch patch("LCMapStringW", RefuseToConvert);
    EXPECT_EQ(WithoutCase("vidéo.exe"), "vidéo.exe");
    EXPECT_NE(WithoutCase("vidéo.exe"), WithoutCase("audiö.exe"));
}

} // namespace
} // namespace vqrx::test
