// The query to WMI, and how its answers become path and arguments.
#include "AllocationFault.h"
#include "ChildProcess.h"
#include "ImportPatch.h"
#include "InspectionFixture.h"
#include "ThreadLocale.h"
#include "exception_utils/AtlException.h"
#include "exception_utils/COMException.h"

#include <gtest/gtest.h>

#include <iostream>
#include <new>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::InspectAttachingProcess;
using system::daemon::daemon_mgr::v0::QueryProcess;

class AttachInspectionQueryTest : public InspectionFixture {
protected:
    // Inspects this process. @return the code of the COMException, S_OK without one
    HRESULT FailureOfInspection(ProcessInfo& daemon)
    {
        daemon.processId = GetCurrentProcessId();
        try {
            static_cast<void>(InspectAttachingProcess(*wmi_, daemon));
            return S_OK;
        } catch (const COMException& exception) {
            return exception.Code();
        }
    }
};

LPWSTR* WINAPI RefuseToSplit(LPCWSTR, int*)
{
    return nullptr;
}

} // namespace

TEST_F(AttachInspectionQueryTest, Query_fails_for_a_process_that_WMI_does_not_know)
{
    const StandInWmi standIn;
    TheWmiScript().processes = [](DWORD) { return std::vector<ProcessAnswer>{}; };
    Connect();
    ProcessInfo daemon;
    daemon.processId = GetCurrentProcessId();
    EXPECT_EQ(1, InspectAttachingProcess(*wmi_, daemon));
}

TEST_F(AttachInspectionQueryTest, Null_command_line_gives_no_arguments)
{
    const StandInWmi standIn;
    Answer(Text(L"C:\\a.exe"), Null());
    Connect();
    ProcessInfo daemon;
    std::vector<std::string> arguments;
    EXPECT_EQ(0, QueryProcess(*wmi_, 5, daemon, arguments));
    EXPECT_EQ("C:\\a.exe", daemon.executablePath);
    EXPECT_TRUE(arguments.empty());
}

TEST_F(AttachInspectionQueryTest, Null_path_gives_the_empty_path)
{
    const StandInWmi standIn;
    Answer(Null(), Text(L"a.exe -x"));
    Connect();
    ProcessInfo daemon;
    daemon.executablePath = "old";
    std::vector<std::string> arguments;
    EXPECT_EQ(0, QueryProcess(*wmi_, 5, daemon, arguments));
    EXPECT_EQ("", daemon.executablePath);
    EXPECT_EQ((std::vector<std::string>{"-x"}), arguments);
}

TEST_F(AttachInspectionQueryTest, Text_property_with_a_null_string_gives_the_empty_text)
{
    const StandInWmi standIn;
    PropertyAnswer null;
    null.nullText = true;
    Answer(null, null);
    Connect();
    ProcessInfo daemon;
    std::vector<std::string> arguments;
    EXPECT_EQ(0, QueryProcess(*wmi_, 5, daemon, arguments));
    EXPECT_EQ("", daemon.executablePath);
    EXPECT_TRUE(arguments.empty());
}

TEST_F(AttachInspectionQueryTest, Quoted_arguments_lose_their_quotes)
{
    const StandInWmi standIn;
    Answer(Text(L"C:\\a.exe"), Text(L"\"C:\\a.exe\" -x \"two words\" last"));
    Connect();
    ProcessInfo daemon;
    std::vector<std::string> arguments;
    EXPECT_EQ(0, QueryProcess(*wmi_, 5, daemon, arguments));
    EXPECT_EQ((std::vector<std::string>{"-x", "two words", "last"}), arguments);
}

TEST_F(AttachInspectionQueryTest, Texts_are_converted_to_the_code_page_of_the_thread)
{
    const RussianThread thread;
    const StandInWmi standIn;
    Answer(Text(L"C:\\caf\u0439.exe"), Text(L"caf\u0439.exe -\u0439"));
    Connect();
    ProcessInfo daemon;
    std::vector<std::string> arguments;
    EXPECT_EQ(0, QueryProcess(*wmi_, 5, daemon, arguments));
    EXPECT_EQ("C:\\caf\xE9.exe", daemon.executablePath);
    EXPECT_EQ((std::vector<std::string>{"-\xE9"}), arguments);
}

TEST_F(AttachInspectionQueryTest, Only_the_first_object_of_the_answer_is_read)
{
    const StandInWmi standIn;
    TheWmiScript().processes = [](DWORD) {
        return std::vector<ProcessAnswer>{{Text(L"first.exe"), Text(L"first.exe 1")},
                                          {Text(L"second.exe"), Text(L"second.exe 2")}};
    };
    Connect();
    ProcessInfo daemon;
    std::vector<std::string> arguments;
    EXPECT_EQ(0, QueryProcess(*wmi_, 5, daemon, arguments));
    EXPECT_EQ("first.exe", daemon.executablePath);
    EXPECT_EQ((std::vector<std::string>{"1"}), arguments);
}

TEST_F(AttachInspectionQueryTest, Failure_of_the_query_is_thrown)
{
    const StandInWmi standIn;
    TheWmiScript().query = kRefused;
    Connect();
    ProcessInfo daemon;
    EXPECT_EQ(kRefused, FailureOfInspection(daemon));
}

TEST_F(AttachInspectionQueryTest, Failure_of_the_second_Next_is_thrown_and_every_object_is_released)
{
    const StandInWmi standIn;
    TheWmiScript().failAtNext = 2;
    Connect();
    ProcessInfo daemon;
    EXPECT_EQ(E_ABORT, FailureOfInspection(daemon));
    wmi_.reset();
    EXPECT_EQ(0, TheWmiScript().liveObjects); // includes the first object and the enumerator
}

TEST_F(AttachInspectionQueryTest, Failure_to_read_a_property_is_thrown)
{
    const StandInWmi standIn;
    PropertyAnswer missing;
    missing.result = static_cast<HRESULT>(0x80041002);
    Answer(missing, Text(L"a.exe"));
    Connect();
    ProcessInfo daemon;
    EXPECT_EQ(static_cast<HRESULT>(0x80041002), FailureOfInspection(daemon));
}

TEST_F(AttachInspectionQueryTest, Property_of_another_type_throws_E_FAIL)
{
    const StandInWmi standIn;
    PropertyAnswer number;
    number.type = VT_I4;
    Answer(Text(L"a.exe"), number);
    Connect();
    ProcessInfo daemon;
    EXPECT_EQ(E_FAIL, FailureOfInspection(daemon));
    EXPECT_EQ("a.exe", daemon.executablePath);
}

TEST_F(AttachInspectionQueryTest, Query_fails_with_the_path_set_if_the_command_line_cannot_be_split)
{
    const StandInWmi standIn;
    Answer(Text(L"C:\\a.exe"), Text(L"a.exe"));
    Connect();
    const ImportPatch patch("CommandLineToArgvW", RefuseToSplit);
    ProcessInfo daemon;
    std::vector<std::string> arguments;
    EXPECT_EQ(1, QueryProcess(*wmi_, 5, daemon, arguments));
    EXPECT_EQ("C:\\a.exe", daemon.executablePath);
}

TEST_F(AttachInspectionQueryTest, Query_that_runs_out_of_memory_never_asks_for_another_process)
{
    const StandInWmi standIn;
    Answer(Text(L"C:\\a.exe"), Text(L"a.exe"));
    Connect();
    bool happened = true;
    for (std::size_t succeeding = 0; happened; ++succeeding) {
        ProcessInfo daemon;
        std::vector<std::string> arguments;
        TheWmiScript().lastQuery.clear();
        {
            const AllocationFault fault(succeeding);
            try {
                static_cast<void>(QueryProcess(*wmi_, 4294967295U, daemon, arguments));
            } catch (const std::bad_alloc&) {
                daemon.executablePath.clear();
            } catch (const ATL::CAtlException&) {
                daemon.executablePath.clear();
            }
            happened = fault.Happened();
        }
        const std::wstring asked = TheWmiScript().lastQuery;
        EXPECT_TRUE(asked.empty() ||
                    asked == L"SELECT * FROM Win32_Process WHERE ProcessId=4294967295")
            << succeeding << ": " << std::string(asked.begin(), asked.end());
        ASSERT_GT(100U, succeeding);
    }
}

TEST_F(AttachInspectionQueryTest, Query_works_with_the_WMI_of_this_machine)
{
    Connect();
    ASSERT_NE(nullptr, wmi_->Services());
    ProcessInfo daemon;
    const HRESULT failure = FailureOfInspection(daemon);
    if (failure == static_cast<HRESULT>(0x80041002)) {
        std::cout << "the host's WMI has no ExecutablePath\n";
        EXPECT_EQ("", daemon.executablePath);
    } else {
        std::cout << "the host's WMI is complete\n";
        EXPECT_EQ(S_OK, failure);
        EXPECT_EQ(OwnFolder(), daemon.executablePath.substr(0, OwnFolder().size()));
    }
}

} // namespace vqrx::test
