#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {

/// The account that the installer notes. The destructor removes it, and the key if it was not
/// there.
class NotedAccount {
public:
    /// @param sid  as text: "S-1-5-18"
    explicit NotedAccount(const std::wstring& sid)
    {
        HKEY key = nullptr;
        existed_ = RegOpenKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, KEY_READ, &key) == ERROR_SUCCESS;
        RegCloseKey(key);
        EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKey, L"Account", REG_SZ, sid.c_str(),
                                  static_cast<DWORD>((sid.size() + 1) * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }
    NotedAccount(const NotedAccount&) = delete;
    NotedAccount& operator=(const NotedAccount&) = delete;
    ~NotedAccount()
    {
        if (existed_) {
            RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kKey, L"Account");
        } else {
            RegDeleteKeyW(HKEY_LOCAL_MACHINE, kKey);
        }
    }

private:
    static constexpr const wchar_t* kKey =
        L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\DaemonManager";
    bool existed_ = false;
};

} // namespace vqrx::test
