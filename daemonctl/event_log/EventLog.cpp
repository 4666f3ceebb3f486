#include "EventLog.h"

#include "Printable.h"
#include "code_page/CodePage.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <stdexcept>
#include <string>

namespace vqrx::client::v0 {
namespace {

constexpr std::size_t kLongestText = 31000; // characters
constexpr DWORD kInformation = 0x40000000;  // severity bits of a message id (winerror.h)
constexpr DWORD kError = 0xC0000000;

[[noreturn]] void ThrowRefused(const char* what)
{
    throw std::runtime_error(std::string("the event log ") + what + ", Windows error " +
                             std::to_string(GetLastError()));
}

} // namespace

EventOfKind EventOf(Trouble::Kind kind) noexcept
{
    switch (kind) {
    case Trouble::Kind::kSupervisorLost:
        return {EVENTLOG_ERROR_TYPE, kError | 1};
    case Trouble::Kind::kSupervisorBack:
        return {EVENTLOG_INFORMATION_TYPE, kInformation | 2};
    case Trouble::Kind::kCrashLoopBegan:
        return {EVENTLOG_ERROR_TYPE, kError | 3};
    case Trouble::Kind::kCrashLoopEnded:
        return {EVENTLOG_INFORMATION_TYPE, kInformation | 4};
    case Trouble::Kind::kCannotStart:
        return {EVENTLOG_ERROR_TYPE, kError | 5};
    case Trouble::Kind::kStartsAgain:
        return {EVENTLOG_INFORMATION_TYPE, kInformation | 6};
    case Trouble::Kind::kDown:
        return {EVENTLOG_ERROR_TYPE, kError | 7};
    default:
        return {EVENTLOG_INFORMATION_TYPE, kInformation | 8};
    }
}

EventLog::EventLog()
    : source_(RegisterEventSourceW(nullptr, L"DaemonManager"))
{
    if (!source_) {
        ThrowRefused("cannot be opened");
    }
}

EventOfKind EventOfFailedGuard() noexcept
{
    return {EVENTLOG_ERROR_TYPE, kError | 9};
}

void EventLog::Write(const Trouble& trouble)
{
    Write(EventOf(trouble.kind), DescribeChange(trouble));
}

void EventLog::Write(const EventOfKind& event, const std::string& text)
{
    std::wstring shown = system::code_page::v1::NarrowToWide(Printable(text), CP_UTF8);
    shown.resize(std::min(shown.size(), kLongestText));
    LPCWSTR inserts[] = {shown.c_str()};
    if (!ReportEventW(source_.Get(), event.type, 0, event.id, nullptr, 1, 0, inserts, nullptr)) {
        ThrowRefused("refuses an event");
    }
}

void EventLog::WriteAll(const std::vector<Trouble>& troubles)
{
    std::exception_ptr first;
    for (const Trouble& trouble : troubles) {
        try {
            Write(trouble);
        } catch (const std::runtime_error&) {
            if (!first) {
                first = std::current_exception();
            }
        }
    }
    if (first) {
        std::rethrow_exception(first);
    }
}

} // namespace vqrx::client::v0
