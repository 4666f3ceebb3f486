#include "system_library/SystemLibrary.h"

#include "ImportPatch.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

using cpp_utils::system_library::v1::FindFunction;
using cpp_utils::system_library::v1::LoadSystemLibrary;

UINT lengthOfFolder = 0;

UINT WINAPI FolderOfThatLength(LPWSTR buffer, UINT size)
{
    for (UINT index = 0; index < lengthOfFolder && index < size; ++index) {
        buffer[index] = L'x';
    }
    return lengthOfFolder;
}

std::wstring SystemFolder()
{
    wchar_t folder[MAX_PATH] = {};
    GetSystemDirectoryW(folder, MAX_PATH);
    return folder;
}

} // namespace

TEST(SystemLibrary, A_library_is_loaded_from_the_system_folder)
{
    const HMODULE library = LoadSystemLibrary(L"version.dll");
    ASSERT_NE(nullptr, library);
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(library, path, MAX_PATH);
    EXPECT_EQ(0, lstrcmpiW(path, (SystemFolder() + L"\\version.dll").c_str())) << path;
}

TEST(SystemLibrary, A_library_that_the_system_folder_lacks_is_not_loaded)
{
    EXPECT_EQ(nullptr, LoadSystemLibrary(L"dm_no_such_library.dll"));
}

TEST(SystemLibrary, A_path_that_does_not_fit_is_not_loaded)
{
    const ImportPatch patch("GetSystemDirectoryW", FolderOfThatLength);
    for (const UINT length : {0U, UINT{MAX_PATH} - 12U, UINT{MAX_PATH} - 1U, 4000U}) {
        lengthOfFolder = length;
        EXPECT_EQ(nullptr, LoadSystemLibrary(L"version.dll")) << length;
    }
}

TEST(SystemLibrary, A_function_that_is_missing_is_null)
{
    using Nothing = void();
    EXPECT_EQ(nullptr, FindFunction<Nothing>(nullptr, "GetTickCount"));
    const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    EXPECT_EQ(nullptr, FindFunction<Nothing>(kernel, "NoSuchFunction"));
    using Ticks = DWORD WINAPI();
    EXPECT_EQ(reinterpret_cast<void*>(GetProcAddress(kernel, "GetTickCount")),
              reinterpret_cast<void*>(FindFunction<Ticks>(kernel, "GetTickCount")));
}

} // namespace vqrx::test
