#include "EventLog.h"

#include "ImportPatch.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::EventLog;
using client::v0::EventOf;
using client::v0::Trouble;

constexpr Trouble::Kind kKinds[] = {Trouble::Kind::kSupervisorLost, Trouble::Kind::kSupervisorBack,
                                    Trouble::Kind::kCrashLoopBegan, Trouble::Kind::kCrashLoopEnded,
                                    Trouble::Kind::kCannotStart,    Trouble::Kind::kStartsAgain,
                                    Trouble::Kind::kDown,           Trouble::Kind::kUpAgain};

std::vector<std::pair<DWORD, std::wstring>> reported; // id and text
bool refuse = false;
DWORD refusedId = 0; // 0: none

BOOL WINAPI NoteReport(HANDLE, WORD, WORD, DWORD id, PSID, WORD count, DWORD, LPCWSTR* inserts,
                       LPVOID)
{
    if (refuse) {
        SetLastError(ERROR_EVENTLOG_FILE_CORRUPT);
        return FALSE;
    }
    if (id == refusedId) {
        SetLastError(ERROR_LOG_FILE_FULL);
        return FALSE;
    }
    reported.emplace_back(id, count == 1 ? inserts[0] : L"");
    return TRUE;
}

HANDLE WINAPI RefuseSource(LPCWSTR, LPCWSTR)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
}

template <typename Call>
std::string ErrorOf(Call call)
{
    try {
        call();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return {};
}

// Returns the text that the event viewer shows.
std::wstring Shown(DWORD id, const wchar_t* insert)
{
    DWORD_PTR arguments[] = {reinterpret_cast<DWORD_PTR>(insert)};
    wchar_t text[64] = {};
    FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY, nullptr, id, 0,
                   text, 64, reinterpret_cast<va_list*>(arguments));
    return text;
}

} // namespace

TEST(EventLog, Every_kind_of_change_has_an_event_of_its_own_with_a_text_in_the_program)
{
    std::set<DWORD> ids;
    for (const Trouble::Kind kind : kKinds) {
        const auto event = EventOf(kind);
        EXPECT_EQ(L"a sentence\r\n", Shown(event.id, L"a sentence")) << event.id;
        EXPECT_EQ(event.type == EVENTLOG_ERROR_TYPE, event.id >> 30 == 3) << event.id;
        ids.insert(event.id & 0xFFFF);
    }
    EXPECT_EQ((std::set<DWORD>{1, 2, 3, 4, 5, 6, 7, 8}), ids);
    EXPECT_EQ(L"a sentence\r\n", Shown(client::v0::EventOfFailedGuard().id, L"a sentence"));
    EXPECT_EQ(0xC0000009, client::v0::EventOfFailedGuard().id);
}

TEST(EventLog, Writes_the_sentence_and_shortens_what_Windows_would_refuse)
{
    reported.clear();
    refuse = false;
    const ImportPatch patch("ReportEventW", NoteReport);
    EventLog eventLog;
    Trouble trouble;
    trouble.kind = Trouble::Kind::kDown;
    trouble.daemonId = 3;
    trouble.command = "C:\\a\xC3\xA4.exe";
    eventLog.Write(trouble);
    trouble.command.assign(40000, 'x');
    eventLog.Write(trouble);
    ASSERT_EQ(2U, reported.size());
    EXPECT_EQ(0xC0000007, reported[0].first);
    EXPECT_NE(std::wstring::npos, reported[0].second.find(L"C:\\a\u00E4.exe")) << reported[0].first;
    EXPECT_EQ(31000U, reported[1].second.size());
}

TEST(EventLog, Tries_each_event_of_a_list_and_names_the_first_error)
{
    reported.clear();
    refuse = false;
    refusedId = EventOf(Trouble::Kind::kCannotStart).id;
    const ImportPatch patch("ReportEventW", NoteReport);
    EventLog eventLog;
    std::vector<Trouble> troubles(4);
    troubles[0].kind = Trouble::Kind::kDown;
    troubles[1].kind = Trouble::Kind::kCannotStart;
    troubles[2].kind = Trouble::Kind::kSupervisorLost;
    troubles[3].kind = Trouble::Kind::kCannotStart;
    EXPECT_EQ("the event log refuses an event, Windows error 1502",
              ErrorOf([&] { eventLog.WriteAll(troubles); }));
    refusedId = 0;
    ASSERT_EQ(2U, reported.size());
    EXPECT_EQ(EventOf(Trouble::Kind::kDown).id, reported[0].first);
    EXPECT_EQ(EventOf(Trouble::Kind::kSupervisorLost).id, reported[1].first);
    EXPECT_EQ("", ErrorOf([&] { eventLog.WriteAll(troubles); }));
    EXPECT_EQ(6U, reported.size());
}

TEST(EventLog, Names_the_error_of_Windows)
{
    EventLog eventLog;
    const ImportPatch report("ReportEventW", NoteReport);
    refuse = true;
    EXPECT_EQ("the event log refuses an event, Windows error 1500",
              ErrorOf([&] { eventLog.Write({}); }));
    const ImportPatch source("RegisterEventSourceW", RefuseSource);
    EXPECT_EQ("the event log cannot be opened, Windows error 5", ErrorOf([] { EventLog(); }));
}

} // namespace vqrx::test
