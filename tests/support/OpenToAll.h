#pragma once

#include "win32/LocalMemory.h"

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {

/// Lets everybody write to a file or a folder.
inline void OpenToAll(const std::string& path)
{
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorA(
        "D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;FA;;;WD)", SDDL_REVISION_1, &descriptor,
        nullptr));
    const system::win32::v1::UniqueLocalMemory<void> owner(descriptor);
    BOOL present = FALSE;
    BOOL byDefault = FALSE;
    PACL list = nullptr;
    ASSERT_TRUE(GetSecurityDescriptorDacl(descriptor, &present, &list, &byDefault));
    std::string name = path;
    ASSERT_EQ(0U, SetNamedSecurityInfoA(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION,
                                        nullptr, nullptr, list, nullptr));
}

/// Returns the access list of a file or a folder in Windows' text form; "WD" is everybody.
inline std::string AccessListOf(const std::string& path)
{
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    char* text = nullptr;
    std::string name = path;
    if (GetNamedSecurityInfoA(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                              nullptr, nullptr, nullptr, &descriptor) != 0 ||
        ConvertSecurityDescriptorToStringSecurityDescriptorA(
            descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr) == FALSE) {
        LocalFree(descriptor);
        return "cannot be read;;;WD)";
    }
    const system::win32::v1::UniqueLocalMemory<void> owner(descriptor);
    const system::win32::v1::UniqueLocalMemory<char> textOwner(text);
    return text;
}

} // namespace vqrx::test
