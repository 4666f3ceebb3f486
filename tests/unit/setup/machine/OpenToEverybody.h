#pragma once

#include <windows.h>

#include <sddl.h>

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {

/// Gives everybody, and nobody else, rights to a file or a folder. Without a second argument all
/// rights, as many data drives do.
/// @param rights  as SDDL spells them: "FA" all, "FR" read
inline void OpenToEverybody(const std::string& path, const std::string& rights = "FA")
{
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorA(
        ("D:P(A;OICI;" + rights + ";;;WD)").c_str(), SDDL_REVISION_1, &descriptor, nullptr));
    EXPECT_TRUE(SetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, descriptor));
    LocalFree(descriptor);
}

} // namespace vqrx::test
