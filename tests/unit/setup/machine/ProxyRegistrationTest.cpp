#include "ProxyRegistration.h"

#include "ImportPatch.h"
#include "OpenToEverybody.h"
#include "SetupError.h"
#include "TempFolder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using setup::v0::SafeFolders;
using setup::v0::SetupError;

// A test must not register another proxy/stub for the machine, nor load one: these answers come
// from here.
std::wstring registered;
std::vector<std::string> loaded;

LSTATUS WINAPI AnswerWithRegistered(HKEY, LPCWSTR, LPCWSTR, DWORD, LPDWORD, PVOID data,
                                    LPDWORD size)
{
    const auto bytes = static_cast<DWORD>((registered.size() + 1) * sizeof(wchar_t));
    if (data != nullptr && bytes <= *size) {
        std::memcpy(data, registered.c_str(), bytes);
    }
    *size = bytes;
    return ERROR_SUCCESS;
}

HMODULE WINAPI NoteLibrary(LPCWSTR path, HANDLE, DWORD)
{
    loaded.push_back(std::filesystem::path(path).string());
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

class ProxyRegistration : public testing::Test {
protected:
    ProxyRegistration()
    {
        loaded.clear();
        for (const char* const name : {"former", "new"}) {
            std::filesystem::create_directory(temp_.File(name));
        }
        std::ofstream(former_) << "x";
    }

    void SetRegistered(const std::string& library)
    {
        registered.assign(library.begin(), library.end());
    }

    [[nodiscard]] std::string ReasonAgainstFormer() const
    {
        try {
            RegisterFormerProxy(former_, new_, SafeFolders("", false));
        } catch (const SetupError& error) {
            return error.what();
        }
        return "registered";
    }

    const TempFolder temp_;
    const std::string former_ = temp_.File("former\\DaemonMgrPS.dll");
    const std::string new_ = temp_.File("new\\DaemonMgrPS.dll");

private:
    const ImportPatch registry_{"RegGetValueW", AnswerWithRegistered};
    const ImportPatch loader_{"LoadLibraryExW", NoteLibrary};
};

TEST_F(ProxyRegistration, Library_where_others_may_add_files_is_refused_with_a_command)
{
    SetRegistered(former_);
    EXPECT_NO_THROW(CheckRegisteredProxy(SafeFolders("", false)));
    OpenToEverybody(temp_.File("former"));
    try {
        CheckRegisteredProxy(SafeFolders("", false));
        ADD_FAILURE() << "accepted";
    } catch (const SetupError& error) {
        const std::string text = error.what();
        EXPECT_NE(std::string::npos, text.find("registered proxy/stub " + former_)) << text;
        EXPECT_NE(std::string::npos, text.find(setup::v0::CommandToForgetProxy())) << text;
    }
    EXPECT_NO_THROW(CheckRegisteredProxy(SafeFolders("", true)));
    SetRegistered("");
    EXPECT_NO_THROW(CheckRegisteredProxy(SafeFolders("", false)));
    EXPECT_EQ(std::vector<std::string>(), loaded);
}

TEST_F(ProxyRegistration, Former_one_that_others_may_change_is_not_loaded_and_the_other_one_goes)
{
    SetRegistered(new_);
    OpenToEverybody(temp_.File("former"));
    EXPECT_EQ("The former proxy/stub " + former_ +
                  " is not registered again: others may change it or its folder.",
              ReasonAgainstFormer());
    EXPECT_EQ(std::vector<std::string>{new_}, loaded);
}

TEST_F(ProxyRegistration, Sound_former_one_is_registered)
{
    SetRegistered(new_);
    const std::string reason = ReasonAgainstFormer();
    EXPECT_TRUE(reason.starts_with(former_ + " cannot be registered")) << reason;
    EXPECT_EQ((std::vector<std::string>{former_, new_}), loaded);
}

} // namespace
} // namespace vqrx::test
