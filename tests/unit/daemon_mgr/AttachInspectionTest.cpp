#include "AttachInspection.h"

#include "AllocationFault.h"
#include "CapturingLogger.h"
#include "ChildProcess.h"
#include "ImportPatch.h"
#include "StandInWmi.h"
#include "TestService.h"
#include "com/ComApartment.h"
#include "exception_utils/AtlException.h"
#include "exception_utils/COMException.h"
#include "exception_utils/HResultText.h"

#include <gtest/gtest.h>

#include <objbase.h>

#include <memory>
#include <new>
#include <set>

namespace vqrx::test {
namespace {

using cpp_utils::exception_utils::v1::HResultText;
using system::daemon::daemon_mgr::v0::InspectAttachingProcess;
using system::daemon::daemon_mgr::v0::ProcessInfo;
using system::daemon::daemon_mgr::v0::QueryProcess;
using system::daemon::daemon_mgr::v0::WmiConnection;
using Line = CapturingLogger::Line;
using Lines = std::vector<Line>;

constexpr auto kRefused = static_cast<HRESULT>(0x800706BA); // the RPC server is unavailable

class Inspection : public ::testing::Test {
protected:
    void Connect()
    {
        wmi_ = std::make_unique<WmiConnection>();
        wmi_->Connect(logger_);
    }

    // Answers one query with one object.
    void Answer(const PropertyAnswer& path, const PropertyAnswer& commandLine)
    {
        TheWmiScript().processes = [=](DWORD) {
            return std::vector<ProcessAnswer>{{path, commandLine}};
        };
    }

    static PropertyAnswer Text(const std::wstring& text)
    {
        PropertyAnswer answer;
        answer.text = text;
        return answer;
    }

    HRESULT Failure(ProcessInfo& record)
    {
        try {
            static_cast<void>(InspectAttachingProcess(*wmi_, record));
            return S_OK;
        } catch (const COMException& exception) {
            return exception.Code();
        }
    }

    system::com::v1::ComApartment apartment_;
    CapturingLogger logger_;
    std::unique_ptr<WmiConnection> wmi_;
};

HRESULT WINAPI SecurityRefused(PSECURITY_DESCRIPTOR, LONG, SOLE_AUTHENTICATION_SERVICE*, void*,
                               DWORD, DWORD, void*, DWORD, void*)
{
    return E_ACCESSDENIED;
}

DWORD authentication = 0;
DWORD impersonation = 0;
HRESULT WINAPI SecurityTooLate(PSECURITY_DESCRIPTOR, LONG, SOLE_AUTHENTICATION_SERVICE*, void*,
                               DWORD authenticationLevel, DWORD impersonationLevel, void*, DWORD,
                               void*)
{
    authentication = authenticationLevel;
    impersonation = impersonationLevel;
    return RPC_E_TOO_LATE;
}

std::set<SC_HANDLE> closedServices;
decltype(&CloseServiceHandle) closeServiceHandle = nullptr;
BOOL WINAPI NoteAndClose(SC_HANDLE handle)
{
    closedServices.insert(handle);
    return closeServiceHandle(handle);
}

} // namespace

TEST_F(Inspection, connects_to_the_namespace_of_processes_and_says_so)
{
    const StandInWmi standIn;
    Connect();
    EXPECT_EQ((Lines{{2, "Connecting to WMI resource ..."}, {2, "Connected to WMI resource"}}),
              logger_.Lines());
    EXPECT_EQ(L"root\\cimv2", TheWmiScript().connectedTo);
    EXPECT_EQ(0x80, TheWmiScript().connectFlags);
    EXPECT_EQ((std::vector<DWORD>{10, 0, 3, 3, 0}), TheWmiScript().blanketAsked);
    EXPECT_NE(nullptr, wmi_->Services());
}

TEST_F(Inspection, connects_also_when_the_security_was_set_before)
{
    const StandInWmi standIn;
    const ImportPatch patch("CoInitializeSecurity", SecurityTooLate);
    Connect();
    EXPECT_NE(nullptr, wmi_->Services());
    EXPECT_EQ(2U, authentication);
    EXPECT_EQ(3U, impersonation);
}

TEST_F(Inspection, goes_without_wmi_when_the_security_cannot_be_set)
{
    const StandInWmi standIn;
    const ImportPatch patch("CoInitializeSecurity", SecurityRefused);
    Connect();
    EXPECT_EQ((Lines{{0, "CoInitializeSecurity error " + HResultText(E_ACCESSDENIED)}}),
              logger_.Lines());
    EXPECT_EQ(nullptr, wmi_->Services());
}

TEST_F(Inspection, goes_without_wmi_when_there_is_no_locator)
{
    const StandInWmi standIn(kRefused);
    Connect();
    EXPECT_EQ((Lines{{0, std::string("Init WMI errror ") + COMException(kRefused).what()}}),
              logger_.Lines());
    EXPECT_EQ(nullptr, wmi_->Services());
}

TEST_F(Inspection, goes_without_wmi_when_the_connection_is_refused)
{
    const StandInWmi standIn;
    TheWmiScript().connect = kRefused;
    Connect();
    EXPECT_EQ((Lines{{2, "Connecting to WMI resource ..."},
                     {0, std::string("Init WMI errror ") + COMException(kRefused).what()}}),
              logger_.Lines());
    EXPECT_EQ(nullptr, wmi_->Services());
}

TEST_F(Inspection, keeps_the_connection_whose_security_cannot_be_set_and_says_so)
{
    const StandInWmi standIn;
    TheWmiScript().blanket = E_ACCESSDENIED;
    Connect();
    EXPECT_EQ((Line{0, std::string("Init WMI errror ") + COMException(E_ACCESSDENIED).what()}),
              logger_.Lines().at(2));
    EXPECT_NE(nullptr, wmi_->Services());
}

TEST_F(Inspection, learns_path_and_arguments_of_a_running_program)
{
    const StandInWmi standIn; // answers from the live system
    Connect();
    const ReadyEvent ready;
    const ChildProcess child("\"" + TestProgram("no_windows") + "\" " + ready.Name() +
                             " \"two words\"");
    ASSERT_TRUE(ready.Wait());
    ProcessInfo record;
    record.processId = child.Pid();
    record.arguments = {"given"};
    EXPECT_EQ(0, InspectAttachingProcess(*wmi_, record));
    EXPECT_EQ(TestProgram("no_windows"), record.executablePath);
    EXPECT_EQ((std::vector<std::string>{ready.Name(), "two words"}), record.arguments);
    EXPECT_EQ(child.Pid(), GetProcessId(record.process.Get()));
    EXPECT_FALSE(record.isService);
    EXPECT_EQ(L"WQL", TheWmiScript().lastLanguage);
    EXPECT_EQ(L"SELECT * FROM Win32_Process WHERE ProcessId=" + std::to_wstring(child.Pid()),
              TheWmiScript().lastQuery);
    EXPECT_EQ(0, TheWmiScript().lastQueryFlags);
}

TEST_F(Inspection, keeps_the_given_arguments_of_a_service_and_names_it)
{
    const StandInWmi standIn;
    Connect();
    TestService service("DmTestAttached");
    service.Start();
    ProcessInfo record;
    record.processId = service.ProcessId();
    record.arguments = {"given"};
    EXPECT_EQ(0, InspectAttachingProcess(*wmi_, record));
    EXPECT_TRUE(record.isService);
    EXPECT_EQ("DmTestAttached", record.serviceName);
    EXPECT_TRUE(record.service);
    EXPECT_EQ((std::vector<std::string>{"given"}), record.arguments);
    EXPECT_EQ(TestProgram("test_service"), record.executablePath);
}

TEST_F(Inspection, replaces_and_closes_the_service_handle_that_the_record_had)
{
    const StandInWmi standIn;
    Connect();
    TestService service("DmTestAttached");
    service.Start();
    ProcessInfo record;
    record.processId = service.ProcessId();
    const SC_HANDLE previous = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT);
    record.service.Reset(previous);
    closedServices.clear();
    const ImportPatch patch("CloseServiceHandle", NoteAndClose);
    closeServiceHandle = patch.Original<BOOL WINAPI(SC_HANDLE)>();
    EXPECT_EQ(0, InspectAttachingProcess(*wmi_, record));
    EXPECT_TRUE(record.service);
    EXPECT_EQ(1U, closedServices.count(previous));
}

TEST_F(Inspection, of_an_ordinary_program_leaves_what_the_record_says_of_a_service)
{
    const StandInWmi standIn;
    Connect();
    TestService other("DmTestOther");
    other.Start(); // so that there is something to list
    ProcessInfo record;
    record.processId = GetCurrentProcessId();
    record.isService = true;
    record.serviceName = "Svc";
    record.arguments = {"given"};
    EXPECT_EQ(0, InspectAttachingProcess(*wmi_, record));
    EXPECT_TRUE(record.isService);
    EXPECT_EQ("Svc", record.serviceName);
    EXPECT_EQ((std::vector<std::string>{"given"}), record.arguments);
}

TEST_F(Inspection, fails_for_a_process_that_has_ended)
{
    const StandInWmi standIn;
    Connect();
    ProcessInfo record;
    record.processId = 0xFFFFFFF0U;
    EXPECT_EQ(1, InspectAttachingProcess(*wmi_, record));
    EXPECT_FALSE(record.process);
}

TEST_F(Inspection, replaces_and_closes_the_handle_that_the_record_had)
{
    const StandInWmi standIn;
    Connect();
    ProcessInfo record;
    record.processId = 0xFFFFFFF0U;
    const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    record.process.Reset(event);
    EXPECT_EQ(1, InspectAttachingProcess(*wmi_, record));
    DWORD flags = 0;
    EXPECT_FALSE(GetHandleInformation(event, &flags));
}

TEST_F(Inspection, fails_without_a_connection_and_the_handle_it_opened_is_the_records)
{
    const StandInWmi standIn;
    TheWmiScript().connect = kRefused;
    Connect();
    ProcessInfo record;
    record.processId = GetCurrentProcessId();
    EXPECT_EQ(1, InspectAttachingProcess(*wmi_, record));
    EXPECT_TRUE(record.process); // closed with the record
}

TEST_F(Inspection, fails_for_a_process_that_wmi_does_not_know)
{
    const StandInWmi standIn;
    TheWmiScript().processes = [](DWORD) { return std::vector<ProcessAnswer>{}; };
    Connect();
    ProcessInfo record;
    record.processId = GetCurrentProcessId();
    EXPECT_EQ(1, InspectAttachingProcess(*wmi_, record));
}

TEST_F(Inspection, reads_a_null_command_line_as_no_arguments)
{
    const StandInWmi standIn;
    PropertyAnswer null;
    null.type = VT_NULL;
    Answer(Text(L"C:\\a.exe"), null);
    Connect();
    ProcessInfo record;
    std::vector<std::string> arguments;
    EXPECT_EQ(0, QueryProcess(*wmi_, 5, record, arguments));
    EXPECT_EQ("C:\\a.exe", record.executablePath);
    EXPECT_TRUE(arguments.empty());
}

TEST_F(Inspection, reads_a_null_path_as_the_empty_path)
{
    const StandInWmi standIn;
    PropertyAnswer null;
    null.type = VT_NULL;
    Answer(null, Text(L"a.exe -x"));
    Connect();
    ProcessInfo record;
    record.executablePath = "old";
    std::vector<std::string> arguments;
    EXPECT_EQ(0, QueryProcess(*wmi_, 5, record, arguments));
    EXPECT_EQ("", record.executablePath);
    EXPECT_EQ((std::vector<std::string>{"-x"}), arguments);
}

TEST_F(Inspection, reads_a_text_property_with_a_null_string)
{
    const StandInWmi standIn;
    PropertyAnswer null;
    null.nullText = true;
    Answer(null, null);
    Connect();
    ProcessInfo record;
    std::vector<std::string> arguments;
    EXPECT_EQ(0, QueryProcess(*wmi_, 5, record, arguments));
    EXPECT_EQ("", record.executablePath);
    EXPECT_TRUE(arguments.empty());
}

TEST_F(Inspection, reads_quoted_arguments_without_their_quotes)
{
    const StandInWmi standIn;
    Answer(Text(L"C:\\a.exe"), Text(L"\"C:\\a.exe\" -x \"two words\" last"));
    Connect();
    ProcessInfo record;
    std::vector<std::string> arguments;
    EXPECT_EQ(0, QueryProcess(*wmi_, 5, record, arguments));
    EXPECT_EQ((std::vector<std::string>{"-x", "two words", "last"}), arguments);
}

TEST_F(Inspection, looks_at_the_first_object_only)
{
    const StandInWmi standIn;
    TheWmiScript().processes = [](DWORD) {
        return std::vector<ProcessAnswer>{{Text(L"first.exe"), Text(L"first.exe 1")},
                                          {Text(L"second.exe"), Text(L"second.exe 2")}};
    };
    Connect();
    ProcessInfo record;
    std::vector<std::string> arguments;
    EXPECT_EQ(0, QueryProcess(*wmi_, 5, record, arguments));
    EXPECT_EQ("first.exe", record.executablePath);
    EXPECT_EQ((std::vector<std::string>{"1"}), arguments);
}

TEST_F(Inspection, raises_the_failure_of_a_query)
{
    const StandInWmi standIn;
    TheWmiScript().query = kRefused;
    Connect();
    ProcessInfo record;
    record.processId = GetCurrentProcessId();
    EXPECT_EQ(kRefused, Failure(record));
}

TEST_F(Inspection, raises_the_failure_of_the_second_next)
{
    const StandInWmi standIn;
    TheWmiScript().failAtNext = 2;
    Connect();
    ProcessInfo record;
    record.processId = GetCurrentProcessId();
    EXPECT_EQ(E_ABORT, Failure(record));
    wmi_.reset();
    EXPECT_EQ(0, TheWmiScript().liveObjects); // the first object and the enumerator included
}

TEST_F(Inspection, raises_the_failure_of_a_property_that_is_missing)
{
    const StandInWmi standIn;
    PropertyAnswer missing;
    missing.result = static_cast<HRESULT>(0x80041002);
    Answer(missing, Text(L"a.exe"));
    Connect();
    ProcessInfo record;
    record.processId = GetCurrentProcessId();
    EXPECT_EQ(static_cast<HRESULT>(0x80041002), Failure(record));
}

TEST_F(Inspection, raises_a_failure_for_a_property_of_another_type)
{
    const StandInWmi standIn;
    PropertyAnswer number;
    number.type = VT_I4;
    Answer(Text(L"a.exe"), number);
    Connect();
    ProcessInfo record;
    record.processId = GetCurrentProcessId();
    EXPECT_EQ(E_FAIL, Failure(record));
    EXPECT_EQ("a.exe", record.executablePath);
}

namespace {

LPWSTR* WINAPI RefuseToSplit(LPCWSTR, int*)
{
    return nullptr;
}

} // namespace

TEST_F(Inspection, fails_for_a_command_line_that_does_not_split_with_the_path_set)
{
    const StandInWmi standIn;
    Answer(Text(L"C:\\a.exe"), Text(L"a.exe"));
    Connect();
    const ImportPatch patch("CommandLineToArgvW", RefuseToSplit);
    ProcessInfo record;
    std::vector<std::string> arguments;
    EXPECT_EQ(1, QueryProcess(*wmi_, 5, record, arguments));
    EXPECT_EQ("C:\\a.exe", record.executablePath);
}

TEST_F(Inspection, never_asks_for_another_process_when_memory_runs_out)
{
    const StandInWmi standIn;
    Answer(Text(L"C:\\a.exe"), Text(L"a.exe"));
    Connect();
    bool happened = true;
    for (std::size_t succeeding = 0; happened; ++succeeding) {
        ProcessInfo record;
        std::vector<std::string> arguments;
        TheWmiScript().lastQuery.clear();
        {
            const AllocationFault fault(succeeding);
            try {
                static_cast<void>(QueryProcess(*wmi_, 4294967295U, record, arguments));
            } catch (const std::bad_alloc&) {
                record.executablePath.clear();
            } catch (const ATL::CAtlException&) {
                record.executablePath.clear();
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

TEST_F(Inspection, leaves_no_object_behind)
{
    const StandInWmi standIn;
    Connect();
    ProcessInfo record;
    record.processId = GetCurrentProcessId();
    static_cast<void>(InspectAttachingProcess(*wmi_, record));
    wmi_.reset();
    EXPECT_EQ(0, TheWmiScript().liveObjects);
}

TEST_F(Inspection, asks_the_hosts_own_wmi_where_its_answer_is_complete)
{
    Connect();
    ASSERT_NE(nullptr, wmi_->Services());
    ProcessInfo record;
    record.processId = GetCurrentProcessId();
    const HRESULT failure = Failure(record);
    if (failure == static_cast<HRESULT>(0x80041002)) {
        std::cout << "the host's WMI has no ExecutablePath\n";
        EXPECT_EQ("", record.executablePath);
    } else {
        std::cout << "the host's WMI is complete\n";
        EXPECT_EQ(S_OK, failure);
        EXPECT_EQ(OwnFolder(), record.executablePath.substr(0, OwnFolder().size()));
    }
}

} // namespace vqrx::test
