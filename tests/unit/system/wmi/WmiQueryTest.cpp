#include "wmi/WmiQuery.h"

#include "StandInWmi.h"
#include "com/ComApartment.h"
#include "exception_utils/COMException.h"
#include "wmi/ConnectWmi.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace system::wmi::v1;

const std::wstring kQuery = L"SELECT * FROM Win32_Process WHERE ProcessId=5";

struct WmiQueryTest : testing::Test {
    WmiQueryTest()
        : services(OpenNamespace(MakeLocator().Get()))
    {
    }

    static void Answer(const std::vector<PropertyAnswer>& paths)
    {
        TheWmiScript().processes = [=](DWORD) {
            std::vector<ProcessAnswer> processes;
            for (const PropertyAnswer& path : paths) {
                processes.push_back({path, {}});
            }
            return processes;
        };
    }

    HRESULT FailureOfPath() const
    {
        try {
            const auto objects = ExecuteQuery(services.Get(), kQuery);
            static_cast<void>(ReadStringProperty(objects.at(0).Get(), L"ExecutablePath"));
            return S_OK;
        } catch (const COMException& exception) {
            return exception.Code();
        }
    }

    const system::com::v1::ComApartment apartment;
    const StandInWmi standIn;
    const system::com::v1::ComPtr<IWbemServices> services;
};

} // namespace

TEST_F(WmiQueryTest, Query_returns_every_object_of_the_result)
{
    PropertyAnswer first;
    first.text = L"a.exe";
    PropertyAnswer second;
    second.text = L"b.exe";
    Answer({first, second});
    const auto objects = ExecuteQuery(services.Get(), kQuery);
    ASSERT_EQ(2U, objects.size());
    EXPECT_EQ(L"a.exe", ReadStringProperty(objects[0].Get(), L"ExecutablePath").View());
    EXPECT_EQ(L"b.exe", ReadStringProperty(objects[1].Get(), L"ExecutablePath").View());
    EXPECT_EQ(L"WQL", TheWmiScript().lastLanguage);
    EXPECT_EQ(kQuery, TheWmiScript().lastQuery);
    EXPECT_EQ(0, TheWmiScript().lastQueryFlags);
    EXPECT_EQ(-1, TheWmiScript().lastNextTimeout); // WBEM_INFINITE
    EXPECT_EQ(1U, TheWmiScript().lastNextCount);
    EXPECT_EQ(0, TheWmiScript().lastGetFlags);
    EXPECT_TRUE(TheWmiScript().lastGetIsPlain);
}

TEST_F(WmiQueryTest, Query_without_a_result_returns_no_object)
{
    Answer({});
    EXPECT_TRUE(ExecuteQuery(services.Get(), kQuery).empty());
}

TEST_F(WmiQueryTest, A_process_is_found_by_its_id)
{
    PropertyAnswer path;
    path.text = L"a.exe";
    Answer({path});
    const auto process = FindProcess(services.Get(), 4294967295);
    ASSERT_TRUE(process);
    EXPECT_EQ(L"a.exe", ReadStringProperty(process.Get(), kExecutablePath).View());
    EXPECT_EQ(L"SELECT * FROM Win32_Process WHERE ProcessId=4294967295", TheWmiScript().lastQuery);
}

TEST_F(WmiQueryTest, A_process_that_WMI_does_not_know_is_not_found)
{
    Answer({});
    EXPECT_FALSE(FindProcess(services.Get(), 5));
}

TEST_F(WmiQueryTest, Null_property_gives_the_empty_text)
{
    PropertyAnswer null;
    null.type = VT_NULL;
    Answer({null});
    const auto objects = ExecuteQuery(services.Get(), kQuery);
    EXPECT_EQ(L"", ReadStringProperty(objects.at(0).Get(), L"ExecutablePath").View());
}

TEST_F(WmiQueryTest, Property_of_another_type_throws_E_FAIL)
{
    PropertyAnswer number;
    number.type = VT_I4;
    Answer({number});
    EXPECT_EQ(E_FAIL, FailureOfPath());
}

TEST_F(WmiQueryTest, Missing_property_throws_the_failure_of_the_object)
{
    PropertyAnswer missing;
    missing.result = static_cast<HRESULT>(0x80041002);
    Answer({missing});
    EXPECT_EQ(static_cast<HRESULT>(0x80041002), FailureOfPath());
}

TEST_F(WmiQueryTest, Failures_of_the_query_and_of_Next_are_thrown)
{
    Answer({PropertyAnswer{}});
    TheWmiScript().failAtNext = 2; // after the one object
    EXPECT_EQ(E_ABORT, FailureOfPath());
    TheWmiScript().query = E_ACCESSDENIED;
    EXPECT_EQ(E_ACCESSDENIED, FailureOfPath());
}

} // namespace vqrx::test
