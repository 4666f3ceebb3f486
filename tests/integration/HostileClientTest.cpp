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

/// What a client sends and frees.
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

    /// The supervisor answers, and whatever was tried has registered nothing.
    void ExpectNothingRegistered()
    {
        DWORD id = 4711;
        EXPECT_EQ(Launch(nullptr, id), S_OK);
        EXPECT_EQ(id, 0U);
        EXPECT_NE(supervisor_.WaitForStart(0), 0U);
    }
    void ExpectToGoOn()
    {
        EXPECT_FALSE(supervisor_.Client().Detach(4711));
        EXPECT_EQ(supervisor_.Exit(), 0U);
    }

    SupervisorProcess supervisor_;
    UniqueBstr path_{NarrowToWide(TestProgram("no_windows"), CP_UTF8)};
};

TEST_F(HostileClient, who_sends_an_array_of_numbers_gets_E_INVALIDARG)
{
    Array numbers(VT_I4, {{3, 0}});
    DWORD id = 4711;
    EXPECT_EQ(Launch(numbers.Pointer(), id), E_INVALIDARG);
    ExpectNothingRegistered();
}

TEST_F(HostileClient, who_sends_an_array_of_variants_gets_E_INVALIDARG)
{
    Array variants(VT_VARIANT, {{3, 0}});
    DWORD id = 4711;
    EXPECT_EQ(Launch(variants.Pointer(), id), E_INVALIDARG);
    ExpectNothingRegistered();
}

TEST_F(HostileClient, who_sends_an_array_of_objects_gets_E_INVALIDARG)
{
    Array objects(VT_UNKNOWN, {{3, 0}});
    DWORD id = 4711;
    EXPECT_EQ(Launch(objects.Pointer(), id), E_INVALIDARG);
    ExpectNothingRegistered();
}

TEST_F(HostileClient, who_sends_an_array_that_begins_at_1_gets_E_INVALIDARG)
{
    Array shifted(VT_BSTR, {{3, 1}});
    DWORD id = 4711;
    EXPECT_EQ(Launch(shifted.Pointer(), id), E_INVALIDARG);
    ExpectNothingRegistered();
}

TEST_F(HostileClient, who_sends_an_array_that_begins_below_0_gets_E_INVALIDARG)
{
    Array shifted(VT_BSTR, {{1, -1}});
    DWORD id = 4711;
    EXPECT_EQ(Launch(shifted.Pointer(), id), E_INVALIDARG);
    ExpectNothingRegistered();
}

TEST_F(HostileClient, who_sends_an_array_of_two_dimensions_gets_E_INVALIDARG)
{
    Array square(VT_BSTR, {{2, 0}, {2, 0}});
    DWORD id = 4711;
    EXPECT_EQ(Launch(square.Pointer(), id), E_INVALIDARG);
    ExpectNothingRegistered();
}

TEST_F(HostileClient, who_sends_a_malformed_array_a_hundred_times_does_no_harm)
{
    for (int count = 0; count < 100; ++count) {
        Array shifted(VT_BSTR, {{3, 1}});
        DWORD id = 4711;
        EXPECT_EQ(Launch(shifted.Pointer(), id), E_INVALIDARG);
    }
    ExpectNothingRegistered();
}

TEST_F(HostileClient, who_sends_null_strings_has_sent_empty_ones)
{
    Array empty(VT_BSTR, {{2, 0}}); // its elements are null
    DWORD id = 4711;
    EXPECT_EQ(Launch(empty.Pointer(), id), S_OK);
    EXPECT_EQ(id, 0U);
    const DWORD process = supervisor_.WaitForStart(0);
    EXPECT_TRUE(supervisor_.WaitForLog(2, "Start DaemonId(0) PId(" + std::to_string(process) +
                                              ") : " + TestProgram("no_windows") + "   "));
}

TEST_F(HostileClient, who_sends_no_path_gets_E_POINTER)
{
    DWORD id = 4711;
    EXPECT_EQ(supervisor_.Control()->Launch(nullptr, nullptr, &id), E_POINTER);
    ExpectNothingRegistered();
}

TEST_F(HostileClient, who_attaches_with_a_malformed_array_gets_E_INVALIDARG_and_uses_an_id_up)
{
    Array shifted(VT_BSTR, {{3, 1}});
    DWORD id = 4711;
    EXPECT_EQ(supervisor_.Control()->Attach(GetCurrentProcessId(), shifted.Pointer(), &id),
              E_INVALIDARG);
    EXPECT_EQ(Launch(nullptr, id), S_OK);
    EXPECT_EQ(id, 1U);
}

TEST_F(HostileClient, who_names_ids_that_were_never_given_out_gets_S_FALSE)
{
    for (const DWORD id : {0UL, 1UL, 4711UL, 0x7FFFFFFFUL, 0xFFFFFFFFUL}) {
        EXPECT_EQ(supervisor_.Control()->Stop(id), S_FALSE) << id;
        EXPECT_EQ(supervisor_.Control()->Detach(id), S_FALSE) << id;
    }
    ExpectNothingRegistered();
}

TEST_F(HostileClient, who_attaches_the_idle_process_gets_S_FALSE)
{
    DWORD id = 4711;
    EXPECT_EQ(supervisor_.Control()->Attach(0, nullptr, &id), S_FALSE);
    EXPECT_TRUE(supervisor_.WaitForLog(1, "Unable to attach  "));
    EXPECT_EQ(Launch(nullptr, id), S_OK);
    EXPECT_EQ(id, 1U); // the first one is used up
}

TEST_F(HostileClient, who_attaches_a_process_that_does_not_exist_gets_S_FALSE)
{
    DWORD id = 4711;
    EXPECT_EQ(supervisor_.Control()->Attach(0xFFFFFFF0, nullptr, &id), S_FALSE);
    EXPECT_TRUE(supervisor_.WaitForLog(1, "Unable to attach DaemonId(0) PId(4294967280) :  "));
    ExpectToGoOn();
}

TEST_F(HostileClient, who_attaches_the_supervisor_itself_cannot_stop_it_by_that)
{
    DWORD id = 4711;
    const HRESULT hr = supervisor_.Control()->Attach(supervisor_.Process().Pid(), nullptr, &id);
    if (hr == S_OK) {
        EXPECT_EQ(id, 0U);
        EXPECT_EQ(supervisor_.Control()->Stop(id), S_FALSE);
    } else {
        std::cout << "this host's WMI does not tell executable paths: 0x" << std::hex << hr << '\n';
        EXPECT_TRUE(hr == S_FALSE || FAILED(hr));
    }
    ExpectToGoOn();
}

TEST_F(HostileClient, who_dies_in_the_middle_of_a_call_is_not_missed)
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
    ASSERT_TRUE(quit.Wait()); // the call waits for the daemon's end
    client.Kill();
    ASSERT_TRUE(client.Wait());
    EXPECT_FALSE(supervisor_.Client().Detach(4711));
    mayEnd.Signal();
    EXPECT_TRUE(supervisor_.WaitForLog(1, "Stop (1) DaemonId(0) PId(" + std::to_string(process) +
                                              ") : " + program + " " + ready.Name() + " " +
                                              quit.Name() + " " + mayEnd.Name() + " "));
    ExpectToGoOn();
}

TEST_F(HostileClient, who_never_lets_go_does_not_keep_the_supervisor)
{
    const auto reference = FindPublished();
    ASSERT_TRUE(reference);
    EXPECT_EQ(supervisor_.Exit(), 0U);
    EXPECT_EQ(supervisor_.Log().back().text, "Deamon Thread is exiting...");
}

} // namespace
} // namespace vqrx::test
