// Clients that call the real supervisor with wrong arguments, or die during a call.
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "SupervisorProcess.h"
#include "code_page/CodePage.h"
#include "com/UniqueBstr.h"

#include <windows.h>

#include <oleauto.h>

#include <gtest/gtest.h>

#include <initializer_list>
#include <iostream>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using system::code_page::v1::NarrowToWide;
using system::com::v1::UniqueBstr;

/// Owns an array that a client passes to a call.
class Array {
public:
    Array(VARTYPE type, std::initializer_list<SAFEARRAYBOUND> bounds)
        : array_(SafeArrayCreate(type, static_cast<UINT>(bounds.size()),
                                 std::vector<SAFEARRAYBOUND>(bounds).data()))
    {
    }
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;
    ~Array() { SafeArrayDestroy(array_); }

    SAFEARRAY** Pointer() { return &array_; }

private:
    SAFEARRAY* array_;
};

class HostileClient : public testing::Test {
protected:
    HRESULT Launch(SAFEARRAY** array, DWORD& id) const
    {
        return supervisor_.Control()->Launch(path_.Get(), array, &id);
    }

    /// Expects that the supervisor answers and that it has no daemon yet.
    void ExpectNothingRegistered()
    {
        DWORD id = 4711;
        EXPECT_EQ(Launch(nullptr, id), S_OK);
        EXPECT_EQ(id, 0U);
        EXPECT_NE(supervisor_.WaitForStart(0), 0U);
    }
    /// Expects that the supervisor answers and ends in order.
    void ExpectNormalOperation()
    {
        EXPECT_TRUE(supervisor_.Answers());
        EXPECT_EQ(supervisor_.Exit(), 0U);
    }

    SupervisorProcess supervisor_;
    UniqueBstr path_{NarrowToWide(TestProgram("no_windows"), CP_UTF8)};
};

TEST_F(HostileClient, Launch_with_an_array_of_numbers_returns_E_INVALIDARG)
{
    Array numbers(VT_I4, {{3, 0}});
    DWORD id = 4711;
    EXPECT_EQ(Launch(numbers.Pointer(), id), E_INVALIDARG);
    ExpectNothingRegistered();
}

TEST_F(HostileClient, Launch_with_an_array_of_variants_returns_E_INVALIDARG)
{
    Array variants(VT_VARIANT, {{3, 0}});
    DWORD id = 4711;
    EXPECT_EQ(Launch(variants.Pointer(), id), E_INVALIDARG);
    ExpectNothingRegistered();
}

TEST_F(HostileClient, Launch_with_an_array_of_objects_returns_E_INVALIDARG)
{
    Array objects(VT_UNKNOWN, {{3, 0}});
    DWORD id = 4711;
    EXPECT_EQ(Launch(objects.Pointer(), id), E_INVALIDARG);
    ExpectNothingRegistered();
}

TEST_F(HostileClient, Launch_with_an_array_that_begins_at_1_returns_E_INVALIDARG)
{
    Array shifted(VT_BSTR, {{3, 1}});
    DWORD id = 4711;
    EXPECT_EQ(Launch(shifted.Pointer(), id), E_INVALIDARG);
    ExpectNothingRegistered();
}

TEST_F(HostileClient, Launch_with_an_array_that_begins_below_0_returns_E_INVALIDARG)
{
    Array shifted(VT_BSTR, {{1, -1}});
    DWORD id = 4711;
    EXPECT_EQ(Launch(shifted.Pointer(), id), E_INVALIDARG);
    ExpectNothingRegistered();
}

TEST_F(HostileClient, Launch_with_an_array_of_two_dimensions_returns_E_INVALIDARG)
{
    Array square(VT_BSTR, {{2, 0}, {2, 0}});
    DWORD id = 4711;
    EXPECT_EQ(Launch(square.Pointer(), id), E_INVALIDARG);
    ExpectNothingRegistered();
}

TEST_F(HostileClient, A_hundred_launches_with_a_malformed_array_do_no_harm)
{
    for (int count = 0; count < 100; ++count) {
        Array shifted(VT_BSTR, {{3, 1}});
        DWORD id = 4711;
        EXPECT_EQ(Launch(shifted.Pointer(), id), E_INVALIDARG);
    }
    ExpectNothingRegistered();
}

TEST_F(HostileClient, Launch_treats_null_strings_as_empty_strings)
{
    Array empty(VT_BSTR, {{2, 0}}); // The elements are null.
    DWORD id = 4711;
    EXPECT_EQ(Launch(empty.Pointer(), id), S_OK);
    EXPECT_EQ(id, 0U);
    const DWORD process = supervisor_.WaitForStart(0);
    EXPECT_TRUE(supervisor_.WaitForLog(2, "Start DaemonId(0) PId(" + std::to_string(process) +
                                              ") : " + TestProgram("no_windows") + "   "));
}

TEST_F(HostileClient, Launch_without_a_path_returns_E_POINTER)
{
    DWORD id = 4711;
    EXPECT_EQ(supervisor_.Control()->Launch(nullptr, nullptr, &id), E_POINTER);
    ExpectNothingRegistered();
}

TEST_F(HostileClient, Attach_with_a_malformed_array_returns_E_INVALIDARG_and_uses_an_id)
{
    Array shifted(VT_BSTR, {{3, 1}});
    DWORD id = 4711;
    EXPECT_EQ(supervisor_.Control()->Attach(GetCurrentProcessId(), shifted.Pointer(), &id),
              E_INVALIDARG);
    EXPECT_EQ(Launch(nullptr, id), S_OK);
    EXPECT_EQ(id, 1U);
}

TEST_F(HostileClient, Stop_and_Detach_of_an_unknown_id_return_S_FALSE)
{
    for (const DWORD id : {0UL, 1UL, 4711UL, 0x7FFFFFFFUL, 0xFFFFFFFFUL}) {
        EXPECT_EQ(supervisor_.Control()->Stop(id), S_FALSE) << id;
        EXPECT_EQ(supervisor_.Control()->Detach(id), S_FALSE) << id;
    }
    ExpectNothingRegistered();
}

TEST_F(HostileClient, Attach_of_the_idle_process_returns_S_FALSE)
{
    DWORD id = 4711;
    EXPECT_EQ(supervisor_.Control()->Attach(0, nullptr, &id), S_FALSE);
    EXPECT_TRUE(supervisor_.WaitForLog(1, "Unable to attach  "));
    EXPECT_EQ(Launch(nullptr, id), S_OK);
    EXPECT_EQ(id, 1U); // The failed attach used id 0.
}

TEST_F(HostileClient, Attach_of_a_process_that_does_not_exist_returns_S_FALSE)
{
    DWORD id = 4711;
    EXPECT_EQ(supervisor_.Control()->Attach(0xFFFFFFF0, nullptr, &id), S_FALSE);
    EXPECT_TRUE(supervisor_.WaitForLog(1, "Unable to attach DaemonId(0) PId(4294967280) :  "));
    ExpectNormalOperation();
}

TEST_F(HostileClient, A_stop_takes_effect_although_its_client_dies_during_the_call)
{
    const ReadyEvent ready;
    const ReadyEvent quit;
    const ReadyEvent mayEnd;
    const std::string program = TestProgram("signals_quit");
    const auto wide = [](const std::string& text) {
        return std::wstring(text.begin(), text.end());
    };
    supervisor_.Client().Launch(NarrowToWide(program, CP_UTF8),
                                {wide(ready.Name()), wide(quit.Name()), wide(mayEnd.Name())});
    const DWORD process = supervisor_.WaitForStart(0);
    ASSERT_TRUE(ready.Wait());

    const CapturedProgram client(ProductProgram("daemonctl.exe") + " stop 0");
    ASSERT_TRUE(quit.Wait()); // The call waits for the end of the daemon.
    client.Kill();
    ASSERT_TRUE(client.Wait());
    EXPECT_TRUE(supervisor_.Answers());
    mayEnd.Signal();
    EXPECT_TRUE(supervisor_.WaitForLog(1, "Stop (1) DaemonId(0) PId(" + std::to_string(process) +
                                              ") : " + program + " " + ready.Name() + " " +
                                              quit.Name() + " " + mayEnd.Name() + " "));
    ExpectNormalOperation();
}

TEST_F(HostileClient, A_reference_that_a_client_never_releases_does_not_delay_the_exit)
{
    const auto reference = FindPublished();
    ASSERT_TRUE(reference);
    EXPECT_EQ(supervisor_.Exit(), 0U);
    EXPECT_EQ(OrderlyLog(supervisor_.Log()).back().text, "Deamon Thread is exiting...");
}

} // namespace
} // namespace vqrx::test
