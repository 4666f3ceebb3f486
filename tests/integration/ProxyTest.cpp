// The proxy and stub library between a client process and the real supervisor.
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "ProxyRegistration.h"
#include "SupervisorProcess.h"
#include "code_page/CodePage.h"
#include "com/UniqueBstr.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using system::code_page::v1::NarrowToWide;
using system::com::v1::ComApartment;
using system::com::v1::ComPtr;
using system::com::v1::UniqueBstr;

// Launches a program that writes its command line to a file. Returns the part of the command line
// after the program's path and the name of the file.
std::string Received(SupervisorProcess& supervisor, std::vector<std::wstring> arguments)
{
    const std::string program = TestProgram("writes_command_line");
    arguments.insert(arguments.begin(), L"out.txt");
    supervisor.Client().Launch(NarrowToWide(program, CP_UTF8), arguments,
                               daemon_manager::ArgumentCheck::kNone);
    const std::string text = WaitForNote(supervisor.App() + "\\out.txt");
    const std::string start = program + " out.txt ";
    return text.starts_with(start) ? text.substr(start.size()) : "unexpected: " + text;
}

// A supervisor that is published while its proxy/stub is not registered.
class WithoutProxy : public testing::Test {
protected:
    void SetUp() override
    {
        std::filesystem::create_directory(root_.Path() / "App");
        registry_.SetPathname(FirmwareRegistry::kCurrent, root_.Path().string());
        program_.emplace(ProductProgram("DaemonManager.exe"));
        ASSERT_TRUE(WaitUntil([&] { return static_cast<bool>(object_ = FindPublished()); }));
    }

    const TempFolder root_;
    FirmwareRegistry registry_;
    const ComApartment apartment_;
    std::optional<CapturedProgram> program_;
    ComPtr<IUnknown> object_;
};

TEST_F(WithoutProxy, A_client_gets_the_interface_only_while_the_proxy_is_registered)
{
    ComPtr<IDaemonMgrControl> control;
    EXPECT_EQ(object_->QueryInterface(IID_IDaemonMgrControl, control.PutVoid()), E_NOINTERFACE);
    EXPECT_EQ(control.Get(), nullptr);
    const ProxyRegistration registered;
    ASSERT_EQ(object_->QueryInterface(IID_IDaemonMgrControl, control.PutVoid()), S_OK);
    EXPECT_EQ(control->Exit(), S_OK);
    EXPECT_EQ(program_->ExitCode(), 0U);
}

TEST_F(WithoutProxy, Ps_watches_a_supervisor_that_it_cannot_call)
{
    const CapturedProgram watch(ProductProgram("daemonctl.exe") + " ps --watch 1");
    EXPECT_TRUE(WaitUntil([&] { return watch.Output().find("\nID ") != std::string::npos; }))
        << watch.Output();
}

TEST_F(WithoutProxy, A_supervisor_that_watch_cannot_call_is_not_lost)
{
    {
        const ProxyRegistration registered;
        EXPECT_EQ(Daemonctl("launch C:\\no\\such.exe").exitCode, 0U);
    }
    const CapturedProgram watch(ProductProgram("daemonctl.exe") +
                                " watch --trust --exec C:\\no\\such.exe");
    EXPECT_TRUE(WaitUntil([&] {
        return watch.Output().find("such.exe cannot be started\n") != std::string::npos;
    })) << watch.Output();
    EXPECT_EQ(watch.Output().find("supervisor"), std::string::npos) << watch.Output();
}

TEST(Proxy, A_query_for_IDispatch_returns_E_NOINTERFACE)
{
    const SupervisorProcess supervisor;
    void* dispatch = &dispatch;
    EXPECT_EQ(supervisor.Control()->QueryInterface(IID_IDispatch, &dispatch), E_NOINTERFACE);
    EXPECT_EQ(dispatch, nullptr);
}

TEST(Proxy, Null_pointers_and_empty_arrays_arrive_as_empty_argument_lists)
{
    const SupervisorProcess supervisor;
    const std::string program = TestProgram("no_windows");
    const UniqueBstr path(NarrowToWide(program, CP_UTF8));
    DWORD id = 4711;
    EXPECT_EQ(supervisor.Control()->Launch(path.Get(), nullptr, &id), S_OK);
    EXPECT_EQ(id, 0U);
    SAFEARRAY* array = nullptr;
    id = 4711;
    EXPECT_EQ(supervisor.Control()->Launch(path.Get(), &array, &id), S_FALSE);
    EXPECT_EQ(id, 0U);
    array = SafeArrayCreateVector(VT_BSTR, 0, 0);
    id = 4711;
    EXPECT_EQ(supervisor.Control()->Launch(path.Get(), &array, &id), S_FALSE);
    EXPECT_EQ(id, 0U);
    SafeArrayDestroy(array);
    const DWORD process = supervisor.WaitForStart(0);
    EXPECT_TRUE(supervisor.WaitForLog(2, "Start DaemonId(0) PId(" + std::to_string(process) +
                                             ") : " + program + " "));
}

TEST(Proxy, A_thousand_strings_arrive_in_order)
{
    SupervisorProcess supervisor;
    std::vector<std::wstring> arguments;
    std::string expected;
    for (int index = 0; index < 1000; ++index) {
        arguments.push_back(L"argument" + std::to_wstring(index));
        expected += "argument" + std::to_string(index) + " ";
    }
    EXPECT_EQ(Received(supervisor, arguments), expected);
}

TEST(Proxy, A_string_of_32000_characters_arrives_completely)
{
    SupervisorProcess supervisor;
    std::wstring argument;
    for (wchar_t index = 0; index < 32000; ++index) {
        argument += static_cast<wchar_t>(L'a' + index % 26);
    }
    EXPECT_EQ(Received(supervisor, {argument}),
              std::string(argument.begin(), argument.end()) + " ");
}

TEST(Proxy, Non_ASCII_letters_of_the_code_page_arrive)
{
    SupervisorProcess supervisor;
    EXPECT_EQ(Received(supervisor, {L"Gr\u00fc\u00dfe", L"\u00e9\u00e0 \u00e7"}),
              "Gr\xC3\xBC\xC3\x9F"
              "e \"\xC3\xA9\xC3\xA0 \xC3\xA7\" ");
}

// Windows stores a registration below HKEY_CURRENT_USER if a program of the user has prepared the
// keys there. Wine does not, so the test leads HKEY_CLASSES_ROOT to the user's classes.
TEST(Proxy, The_registration_is_for_the_machine_also_if_a_user_has_prepared_its_keys)
{
    constexpr const char* kPrepared = "Software\\prepared classes of this test";
    constexpr const char* kClass = "CLSID\\{C307E9F6-67C0-4C74-B1BD-37EFB9882701}\\InProcServer32";
    HKEY prepared = nullptr;
    ASSERT_EQ(RegCreateKeyA(HKEY_CURRENT_USER, kPrepared, &prepared), ERROR_SUCCESS);
    ASSERT_EQ(RegOverridePredefKey(HKEY_CLASSES_ROOT, prepared), ERROR_SUCCESS);
    {
        const ProxyRegistration registered;
        HKEY key = nullptr;
        EXPECT_NE(RegOpenKeyA(prepared, kClass, &key), ERROR_SUCCESS);
        EXPECT_EQ(RegOpenKeyA(HKEY_LOCAL_MACHINE,
                              (R"(SOFTWARE\Classes\)" + std::string(kClass)).c_str(), &key),
                  ERROR_SUCCESS);
        RegCloseKey(key);
    }
    RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
    RegCloseKey(prepared);
    RegDeleteTreeA(HKEY_CURRENT_USER, kPrepared);
}

} // namespace
} // namespace vqrx::test
