#include "RightsChecks.h"

#include "FirmwareRegistry.h"
#include "ImportPatch.h"
#include "OpenToAll.h"
#include "TempFolder.h"

#include <windows.h>

#include <aclapi.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;
using Role = PlaceFacts::Role;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class RightsFactsTest : public ::testing::Test {
protected:
    RightsFactsTest()
    {
        std::filesystem::create_directory(folder_.Path() / "App");
        std::filesystem::create_directory(folder_.Path() / "Logs");
        std::ofstream(Log()) << "x";
        std::ofstream(Worker()) << "x";
        std::ofstream(Fleet()) << "x";
    }

    [[nodiscard]] std::string Root() const { return folder_.Path().string(); }
    [[nodiscard]] std::string App() const { return Root() + "\\App"; }
    [[nodiscard]] std::string Log() const { return Root() + "\\Logs\\DaemonManager.log"; }
    [[nodiscard]] std::string Fleet() const { return App() + "\\fleet.txt"; }
    [[nodiscard]] std::string Worker() const { return App() + "\\worker.exe"; }

    TempFolder folder_;
};

// Returns the index of the place; the number of places if it is not there.
std::size_t IndexOf(const RightsFacts& facts, const std::string& path, Role role)
{
    const auto found =
        std::find_if(facts.places.begin(), facts.places.end(), [&](const PlaceFacts& place) {
            return place.rights.path == path && place.role == role;
        });
    return static_cast<std::size_t>(found - facts.places.begin());
}

bool HasEverybodysKey(const std::string& key)
{
    std::string name = "MACHINE\\" + key;
    return SetNamedSecurityInfoA(name.data(), SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr,
                                 nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

TEST_F(RightsFactsTest, Each_place_is_there_once_and_the_folders_above_come_first)
{
    const RightsFacts facts = GatherRightsFacts(Root(), {Worker(), Worker()});
    const std::size_t number = facts.places.size();
    std::size_t lastAbove = 0;
    for (const std::string& above : {std::string("C:\\"), Root()}) {
        ASSERT_LT(IndexOf(facts, above, Role::kAbove), number) << above;
        lastAbove = IndexOf(facts, above, Role::kAbove);
    }
    for (const std::size_t index :
         {IndexOf(facts, App(), Role::kPrograms), IndexOf(facts, Root() + "\\Logs", Role::kLogs),
          IndexOf(facts, Log(), Role::kLogFile), IndexOf(facts, Worker(), Role::kProgram)}) {
        ASSERT_LT(index, number);
        EXPECT_LT(lastAbove, index);
    }
    for (std::size_t index = 0; index < number; ++index) {
        const PlaceFacts& place = facts.places[index];
        EXPECT_EQ(IndexOf(facts, place.rights.path, place.role), index) << place.rights.path;
    }
    EXPECT_EQ(facts.places[IndexOf(facts, Log(), Role::kLogFile)].rights.error, 0U);
}

TEST_F(RightsFactsTest, A_program_or_a_folder_that_everybody_may_change_is_found)
{
    EXPECT_THAT(JudgeFileRights(GatherRightsFacts(Root(), {Worker()})).text,
                Not(HasSubstr("may write to " + Root())));
    OpenToAll(App());
    EXPECT_THAT(JudgeFileRights(GatherRightsFacts(Root(), {})).text,
                HasSubstr("may write to " + App()));
    OpenToAll(Fleet());
    EXPECT_THAT(JudgeFileRights(GatherRightsFacts(Root(), {})).text,
                HasSubstr("may write to " + Fleet()));
    OpenToAll(Worker());
    EXPECT_THAT(JudgeFileRights(GatherRightsFacts(Root(), {Worker()})).text,
                HasSubstr("may write to " + Worker()));
    EXPECT_THAT(JudgeFileRights(GatherRightsFacts(Root(), {Worker()})).remedy,
                HasSubstr("icacls \"" + Worker() + "\" /reset"));
}

TEST_F(RightsFactsTest,
       What_lies_below_the_app_folder_is_looked_at_and_not_what_lies_below_the_logs)
{
    std::filesystem::create_directory(folder_.Path() / "App" / "plugins");
    const std::string library = App() + "\\plugins\\a.dll";
    std::ofstream(library) << "x";
    OpenToAll(library);
    std::ofstream(Root() + "\\Logs\\old.txt") << "x";
    OpenToAll(Root() + "\\Logs\\old.txt");
    const Finding finding = JudgeFileRights(GatherRightsFacts(Root(), {}));
    EXPECT_THAT(finding.text, HasSubstr("may write to " + library));
    EXPECT_THAT(finding.text, Not(HasSubstr("old.txt")));
    EXPECT_THAT(finding.remedy, HasSubstr("icacls \"" + library + "\" /reset"));
}

TEST_F(RightsFactsTest, The_folder_of_the_installed_programs_is_looked_at_once_also_inside_App)
{
    constexpr const char* kKey =
        R"(SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall\DaemonManager)";
    std::filesystem::create_directory(folder_.Path() / "Programs");
    std::filesystem::create_directory(folder_.Path() / "App" / "inner");
    const auto contentsFor = [&](const std::string& programs) {
        std::ofstream(programs + "\\DaemonManager.exe") << "x";
        EXPECT_EQ(RegSetKeyValueA(HKEY_LOCAL_MACHINE, kKey, "InstallLocation", REG_SZ,
                                  programs.c_str(), static_cast<DWORD>(programs.size() + 1)),
                  ERROR_SUCCESS);
        std::vector<std::string> folders;
        for (const client::v0::ContentRights& content : GatherRightsFacts(Root(), {}).contents) {
            folders.push_back(content.folder);
        }
        return folders;
    };
    EXPECT_THAT(contentsFor(App()), ElementsAre(App()));
    EXPECT_THAT(contentsFor(App() + "\\inner"), ElementsAre(App()));
    const std::string programs = Root() + "\\Programs";
    EXPECT_THAT(contentsFor(programs), ElementsAre(App(), programs));
    EXPECT_EQ(RegDeleteKeyA(HKEY_LOCAL_MACHINE, kKey), ERROR_SUCCESS);
}

// A test must not register another proxy/stub for the machine: these values come from here.
constexpr const wchar_t* kProxyClass = L"{00000000-1111-2222-3333-444444444444}";
std::wstring registeredLibrary;
decltype(RegGetValueW)* readRegistry = nullptr;

LSTATUS WINAPI AnswerWithLibrary(HKEY root, LPCWSTR key, LPCWSTR value, DWORD flags, LPDWORD type,
                                 PVOID data, LPDWORD size)
{
    const std::wstring name = key != nullptr ? key : L"";
    const std::wstring library =
        std::wstring(L"SOFTWARE\\Classes\\CLSID\\") + kProxyClass + L"\\InprocServer32";
    if (!name.ends_with(L"\\ProxyStubClsid32") && name != library) {
        return readRegistry(root, key, value, flags, type, data, size);
    }
    const std::wstring text = name == library ? registeredLibrary : kProxyClass;
    EXPECT_LT(text.size() * sizeof(wchar_t), *size);
    std::wcscpy(static_cast<wchar_t*>(data), text.c_str());
    return ERROR_SUCCESS;
}

TEST_F(RightsFactsTest, A_registered_proxy_that_everybody_may_change_is_found_wherever_it_lies)
{
    const std::string library = folder_.File("elsewhere.dll");
    std::ofstream(library) << "x";
    registeredLibrary.assign(library.begin(), library.end());
    const ImportPatch patch("RegGetValueW", AnswerWithLibrary, readRegistry);
    const RightsFacts sound = GatherRightsFacts("", {});
    EXPECT_LT(IndexOf(sound, library, Role::kProgram), sound.places.size());
    OpenToAll(library);
    const Finding finding = JudgeFileRights(GatherRightsFacts("", {}));
    EXPECT_THAT(finding.text, HasSubstr("may write to " + library));
    EXPECT_THAT(finding.remedy, HasSubstr("icacls \"" + library + "\" /reset"));
}

// Windows loads what the library imports from there.
TEST_F(RightsFactsTest, The_folder_of_a_registered_proxy_is_for_administrators_alone_to_add_files)
{
    std::filesystem::create_directory(folder_.File("elsewhere"));
    const std::string folder = folder_.File("elsewhere");
    const std::string library = folder + "\\a.dll";
    std::ofstream(library) << "x";
    registeredLibrary.assign(library.begin(), library.end());
    const ImportPatch patch("RegGetValueW", AnswerWithLibrary, readRegistry);
    const RightsFacts facts = GatherRightsFacts("", {});
    EXPECT_LT(IndexOf(facts, folder, Role::kPrograms), IndexOf(facts, library, Role::kProgram));
    EXPECT_LT(IndexOf(facts, library, Role::kProgram), facts.places.size());
}

TEST_F(RightsFactsTest, A_log_that_everybody_may_read_is_found)
{
    OpenToAll(Log());
    EXPECT_THAT(JudgeFileRights(GatherRightsFacts(Root(), {})).text,
                HasSubstr("may read " + Log()));
}

TEST_F(RightsFactsTest, A_program_on_a_network_proves_nothing)
{
    const RightsFacts facts = GatherRightsFacts("", {R"(\\server\share\worker.exe)"});
    EXPECT_THAT(facts.unjudged, ElementsAre(R"(\\server\share\worker.exe)"));
}

TEST_F(RightsFactsTest, The_account_that_was_noted_for_the_supervisor_may_write_the_log)
{
    constexpr const char* kParent = R"(SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall)";
    constexpr const char* kKey =
        R"(SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall\DaemonManager)";
    constexpr char kSid[] = "S-1-5-21-1-2-3-1001";
    ASSERT_EQ(GatherRightsFacts("", {}).supervisorSid, "");
    ASSERT_EQ(RegSetKeyValueA(HKEY_LOCAL_MACHINE, kKey, "Account", REG_SZ, kSid, sizeof kSid),
              ERROR_SUCCESS);
    EXPECT_EQ(GatherRightsFacts("", {}).supervisorSid, kSid);
    HKEY parent = nullptr;
    ASSERT_EQ(RegOpenKeyA(HKEY_LOCAL_MACHINE, kParent, &parent), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyA(parent, "DaemonManager"), ERROR_SUCCESS);
    RegCloseKey(parent);
}

TEST_F(RightsFactsTest, The_key_of_the_service_that_starts_the_guard_is_looked_at)
{
    constexpr const char* kKey = R"(SYSTEM\CurrentControlSet\Services\DaemonGuard)";
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyA(HKEY_LOCAL_MACHINE, kKey, &key), ERROR_SUCCESS);
    RegCloseKey(key);
    const bool isOpen = HasEverybodysKey(kKey);
    const Finding finding = JudgeKeyRights(GatherRightsFacts("", {}));
    EXPECT_EQ(RegDeleteKeyA(HKEY_LOCAL_MACHINE, kKey), ERROR_SUCCESS);
    ASSERT_TRUE(isOpen);
    EXPECT_THAT(finding.text, HasSubstr(std::string("may write to HKLM\\") + kKey));
}

TEST_F(RightsFactsTest, A_registry_key_without_an_access_list_is_found)
{
    FirmwareRegistry registry;
    registry.SetPathname(FirmwareRegistry::kCurrent, App());
    const Finding sound = JudgeKeyRights(GatherRightsFacts("", {}));
    EXPECT_EQ(sound.verdict, Verdict::kOk) << sound.text;
    ASSERT_TRUE(HasEverybodysKey(R"(SOFTWARE\UnitWarden\CurrentVersion)"));
    EXPECT_THAT(JudgeKeyRights(GatherRightsFacts("", {})).text,
                HasSubstr(R"(may write to HKLM\SOFTWARE\UnitWarden\CurrentVersion)"));
}

} // namespace
} // namespace vqrx::test
