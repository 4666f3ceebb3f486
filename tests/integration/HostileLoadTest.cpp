// Clients that load the real supervisor: many calls, huge strings, many processes at once.
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "SupervisorProcess.h"
#include "code_page/CodePage.h"
#include "com/UniqueBstr.h"

#include <windows.h>

#include <oleauto.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace vqrx::test {
namespace {

using system::code_page::v1::NarrowToWide;
using system::com::v1::UniqueBstr;

class HostileLoad : public testing::Test {
protected:
    /// Expects that the supervisor answers and ends in order.
    void ExpectNormalOperation()
    {
        EXPECT_TRUE(supervisor_.Answers());
        EXPECT_EQ(supervisor_.Exit(), 0U);
    }
    HRESULT Launch(const std::wstring& path, SAFEARRAY** array, DWORD& id) const
    {
        const UniqueBstr text(path);
        return supervisor_.Control()->Launch(text.Get(), array, &id);
    }

    SupervisorProcess supervisor_;
    std::wstring program_ = NarrowToWide(TestProgram("no_windows"), CP_UTF8);
};

TEST_F(HostileLoad, Launch_and_Attach_refuse_every_malformed_array)
{
    constexpr std::array types = {VT_I1,    VT_I2,      VT_I4,     VT_I8,   VT_UI1,      VT_UI2,
                                  VT_UI4,   VT_UI8,     VT_INT,    VT_UINT, VT_R4,       VT_R8,
                                  VT_CY,    VT_DATE,    VT_BSTR,   VT_BOOL, VT_DISPATCH, VT_UNKNOWN,
                                  VT_ERROR, VT_VARIANT, VT_DECIMAL};
    int tried = 0;
    for (const auto type : types) {
        for (UINT dimensions = 1; dimensions <= 3; ++dimensions) {
            for (const LONG lower : {0L, 1L, -1L, 0x7FFFFFF0L, -0x7FFFFFFFL}) {
                if (type == VT_BSTR && dimensions == 1 && lower == 0) {
                    continue; // the only valid array
                }
                std::vector<SAFEARRAYBOUND> bounds(dimensions, {2, lower});
                SAFEARRAY* array =
                    SafeArrayCreate(static_cast<VARTYPE>(type), dimensions, bounds.data());
                if (array == nullptr) {
                    continue;
                }
                DWORD id = 4711;
                EXPECT_TRUE(FAILED(Launch(program_, &array, id)))
                    << type << ' ' << dimensions << ' ' << lower;
                EXPECT_TRUE(
                    FAILED(supervisor_.Control()->Attach(GetCurrentProcessId(), &array, &id)))
                    << type << ' ' << dimensions << ' ' << lower;
                SafeArrayDestroy(array);
                ++tried;
            }
        }
    }
    EXPECT_LT(200, tried);
    DWORD id = 4711;
    EXPECT_EQ(Launch(program_, nullptr, id), S_OK);
    EXPECT_GE(static_cast<DWORD>(tried), id); // An attach that reaches the supervisor uses an id.
    EXPECT_NE(supervisor_.WaitForStart(id), 0U);
    ExpectNormalOperation();
    EXPECT_TRUE(supervisor_.WaitForLog(1, "1 Processes still registered"));
}

TEST_F(HostileLoad, Strings_of_16_MiB_arrive_and_do_not_disturb_other_daemons)
{
    const std::wstring huge(8U << 20, L'x'); // A character has two bytes.
    DWORD path = 4711;
    EXPECT_EQ(Launch(huge, nullptr, path), S_OK);
    SAFEARRAY* array = SafeArrayCreateVector(VT_BSTR, 0, 1);
    LONG first = 0;
    SafeArrayPutElement(array, &first, UniqueBstr(huge).Get());
    DWORD argument = 4711;
    EXPECT_EQ(Launch(program_, &array, argument), S_OK);
    DWORD same = 4711;
    EXPECT_EQ(Launch(program_, &array, same), S_FALSE);
    EXPECT_EQ(same, argument);
    SafeArrayDestroy(array);

    DWORD id = 4711;
    EXPECT_EQ(Launch(program_, nullptr, id), S_OK);
    const DWORD process = supervisor_.WaitForStart(id);
    ASSERT_NE(process, 0U);
    KillProcess(process);
    EXPECT_NE(supervisor_.WaitForStart(id, process), 0U);
    // Neither program can be started. The log shows this in a line that is cut to the maximum
    // length.
    const std::string line = "Unable to start " + std::string(1040 - 16, 'x');
    EXPECT_TRUE(supervisor_.WaitForLog(1, line));
    EXPECT_TRUE(supervisor_.Client().Stop(path));
    EXPECT_TRUE(supervisor_.Client().Stop(argument));
    ExpectNormalOperation();
}

TEST_F(HostileLoad, Exit_ends_the_supervisor_in_order_while_other_clients_launch)
{
    std::vector<std::thread> launchers;
    for (int number = 0; number < 4; ++number) {
        launchers.emplace_back([this, number] {
            const system::com::v1::ComApartment apartment;
            DWORD id = 0;
            for (int count = 0;; ++count) {
                const std::wstring path =
                    L"C:\\missing_" + std::to_wstring(number) + L"_" + std::to_wstring(count);
                if (FAILED(Launch(path, nullptr, id))) { // The supervisor has ended.
                    return;
                }
            }
        });
    }
    EXPECT_TRUE(supervisor_.WaitForLog(1, "Unable to start C:\\missing_3_0 "));
    EXPECT_EQ(supervisor_.Exit(), 0U);
    for (std::thread& launcher : launchers) {
        launcher.join();
    }
    EXPECT_EQ(OrderlyLog(supervisor_.Log()).back().text, "Deamon Thread is exiting...");
}

TEST_F(HostileLoad, A_thousand_references_of_a_client_do_not_delay_the_exit)
{
    std::vector<system::com::v1::ComPtr<IUnknown>> references;
    for (int number = 0; number < 1000; ++number) {
        references.push_back(FindPublished());
        ASSERT_TRUE(references.back());
    }
    ExpectNormalOperation();
}

// Returns the number of passes in the first records. Each pass logs one failed start of a missing
// program.
std::size_t CountPasses(const std::vector<RingRecord>& records, std::size_t end)
{
    std::size_t passes = 0;
    for (std::size_t index = 0; index < end; ++index) {
        passes += records[index].text == "Unable to start C:\\missing.exe " ? 1U : 0U;
    }
    return passes;
}

TEST_F(HostileLoad, Eight_processes_that_call_without_a_pause_do_not_delay_a_restart)
{
    constexpr unsigned kDaemons = 200;
    constexpr unsigned kCallers = 8;
    DWORD id = 0;
    ASSERT_EQ(Launch(L"C:\\missing.exe", nullptr, id), S_OK); // logs a line in each pass
    const std::wstring program = NarrowToWide(TestProgram("endurance_daemon"), CP_UTF8);
    for (unsigned number = 1; number < kDaemons; ++number) {
        id = supervisor_.Client().Launch(program, {L"steady", std::to_wstring(number)}).daemonId;
    }
    const DWORD process = supervisor_.WaitForStart(id); // the last daemon of the table
    ASSERT_NE(process, 0U);

    const ReadyEvent end;
    std::vector<std::unique_ptr<ReadyEvent>> ready;
    std::vector<std::unique_ptr<CapturedProgram>> callers;
    for (unsigned number = 0; number < kCallers; ++number) {
        ready.push_back(std::make_unique<ReadyEvent>());
        callers.push_back(std::make_unique<CapturedProgram>(
            TestProgram("hostile_caller") + " " + ready.back()->Name() + " " + end.Name()));
    }
    for (const auto& event : ready) {
        ASSERT_TRUE(event->Wait());
    }
    const ULONGLONG start = GetTickCount64();

    const std::vector<RingRecord> before = supervisor_.Log();
    KillProcess(process);
    const ULONGLONG killed = GetTickCount64();
    EXPECT_NE(supervisor_.WaitForStart(id, process), 0U);
    const ULONGLONG restarted = GetTickCount64();
    const std::vector<RingRecord> after = supervisor_.Log();
    std::size_t restart = after.size();
    for (std::size_t index = 0; index < after.size(); ++index) {
        if (after[index].text.starts_with("Start DaemonId(" + std::to_string(id) + ")")) {
            restart = index;
        }
    }
    // The pass that was running may have examined the daemon already, and its line may not be in
    // the log yet.
    EXPECT_GE(2U, CountPasses(after, restart) - CountPasses(before, before.size()));

    end.Signal();
    unsigned long calls = 0;
    for (const auto& caller : callers) {
        EXPECT_EQ(caller->ExitCode(), 0U);
        const std::string count = caller->Output();
        calls += count.empty() ? 0 : std::stoul(count);
    }
    const ULONGLONG elapsed = std::max<ULONGLONG>(1, GetTickCount64() - start);
    EXPECT_LT(0U, calls);
    std::cout << kCallers << " processes made " << calls * 1000 / elapsed
              << " calls per second; the daemon was restarted after " << restarted - killed
              << " ms\n";
    ExpectNormalOperation();
}

} // namespace
} // namespace vqrx::test
