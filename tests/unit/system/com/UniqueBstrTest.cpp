#include "com/UniqueBstr.h"

#include "ImportPatch.h"

#include <gtest/gtest.h>

#include <vector>

namespace vqrx::test {
namespace {

using system::com::v1::UniqueBstr;

void(WINAPI* realFreeString)(BSTR) = nullptr;
std::vector<BSTR> freed; // null is left out

void WINAPI NoteFreed(BSTR text)
{
    if (text != nullptr) {
        freed.push_back(text);
    }
    realFreeString(text);
}

} // namespace

TEST(UniqueBstr, The_length_and_zero_characters_are_kept)
{
    const UniqueBstr text(std::wstring_view(L"a\0b", 3));
    EXPECT_EQ(3U, SysStringLen(text.Get()));
    EXPECT_EQ(std::wstring_view(L"a\0b", 3), text.View());
    EXPECT_EQ(L"", UniqueBstr().View());
}

TEST(UniqueBstr, Frees_its_text_once_and_not_after_handing_it_out)
{
    freed.clear();
    const ImportPatch patch("SysFreeString", NoteFreed, realFreeString);
    UniqueBstr text(L"first");
    BSTR const first = text.Get();
    *text.Put() = SysAllocString(L"second");
    EXPECT_EQ(freed, std::vector<BSTR>{first});
    BSTR const second = text.Release();
    EXPECT_EQ(nullptr, text.Get());
    text = UniqueBstr();
    EXPECT_EQ(1U, freed.size());
    UniqueBstr::Adopt(second) = UniqueBstr(L"third");
    EXPECT_EQ(3U, freed.size());
    EXPECT_EQ(second, freed.at(1));
}

} // namespace vqrx::test
