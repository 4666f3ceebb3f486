#include "LastWords.h"

#include "CallPath.h"
#include "Injection.h"
#include "SymbolNames.h"

#include <process.h>
#include <tlhelp32.h>

#include <csignal>
#include <exception>
#include <utility>
#include <vector>

namespace vqrx::test::anomaly {
namespace {

constexpr DWORD kLookMs = 250;
constexpr UINT kEndedEarly = 98;
constexpr std::uint32_t kShownFrames = 24;

LastWords* theLastWords = nullptr;

std::string Place(CONTEXT context)
{
    std::uint32_t frames[kShownFrames] = {};
    const std::uint32_t count = FramesFrom(&context, frames, kShownFrames);
    return NamesOf(frames, count);
}

std::string PlaceOfCaller()
{
    CONTEXT context;
    RtlCaptureContext(&context);
    return Place(context);
}

struct Frames {
    std::uint32_t offsets[kShownFrames] = {};
    std::uint32_t count = 0;
};

// While the thread is suspended, nothing may be allocated: it may hold the lock of the heap.
Frames FramesOfThread(DWORD id)
{
    Frames frames;
    const HANDLE thread = OpenThread(THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT, FALSE, id);
    if (thread == nullptr) {
        return frames;
    }
    SuspendThread(thread);
    CONTEXT context{};
    context.ContextFlags = CONTEXT_FULL;
    if (GetThreadContext(thread, &context) != FALSE) {
        frames.count = FramesFrom(&context, frames.offsets, kShownFrames);
    }
    ResumeThread(thread);
    CloseHandle(thread);
    return frames;
}

std::vector<DWORD> OtherThreads()
{
    std::vector<DWORD> ids;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Thread32First(snapshot, &entry); more != FALSE;
         more = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID == GetCurrentProcessId() &&
            entry.th32ThreadID != GetCurrentThreadId()) {
            ids.push_back(entry.th32ThreadID);
        }
    }
    CloseHandle(snapshot);
    return ids;
}

std::string WhereAllThreadsAre()
{
    std::string text;
    for (const DWORD id : OtherThreads()) {
        const Frames frames = FramesOfThread(id);
        if (frames.count != 0) {
            text += "  a thread is\n" + NamesOf(frames.offsets, frames.count);
        }
    }
    return text;
}

} // namespace

LastWords::LastWords(std::function<void(const std::string&)> write)
    : write_(std::move(write))
    , stop_(CreateEventA(nullptr, TRUE, FALSE, nullptr))
{
    theLastWords = this;
    SetUnhandledExceptionFilter(OnException);
    std::set_terminate(OnTerminate);
    std::signal(SIGABRT, OnAbort);
    static_cast<void>(LinkNameAt(0)); // reads the names while all is well
    const auto created = _beginthreadex(nullptr, 0, Watch, this, 0, nullptr);
    thread_ = reinterpret_cast<HANDLE>(created); // NOLINT(performance-no-int-to-ptr)
}

LastWords::~LastWords()
{
    SetEvent(stop_);
    WaitForSingleObject(thread_, INFINITE);
    CloseHandle(thread_);
    CloseHandle(stop_);
    theLastWords = nullptr;
}

void LastWords::BeginDeadline(DWORD milliseconds, std::function<std::string()> step)
{
    step_ = std::move(step);
    deadline_ = GetTickCount64() + milliseconds;
}

void LastWords::EndDeadline()
{
    deadline_ = 0;
}

void LastWords::End(const std::string& text)
{
    write_(text);
    TerminateProcess(GetCurrentProcess(), kEndedEarly);
    for (;;) {
        Sleep(INFINITE);
    }
}

unsigned __stdcall LastWords::Watch(void* self)
{
    const OfTheTest mark;
    static_cast<LastWords*>(self)->WatchDeadline();
    return 0;
}

void LastWords::WatchDeadline()
{
    while (WaitForSingleObject(stop_, kLookMs) == WAIT_TIMEOUT) {
        const ULONGLONG deadline = deadline_;
        if (deadline != 0 && GetTickCount64() > deadline) {
            End("hangs; the step: " + step_() + "\n" + WhereAllThreadsAre());
        }
    }
}

LONG WINAPI LastWords::OnException(EXCEPTION_POINTERS* exception)
{
    const OfTheTest mark;
    char code[16] = {};
    _ultoa(exception->ExceptionRecord->ExceptionCode, code, 16);
    theLastWords->End(std::string("crashes with exception 0x") + code + "\n" +
                      Place(*exception->ContextRecord));
}

void LastWords::OnTerminate()
{
    const OfTheTest mark;
    theLastWords->End("ends by std::terminate\n" + PlaceOfCaller());
}

void LastWords::OnAbort(int)
{
    const OfTheTest mark;
    theLastWords->End("ends by abort\n" + PlaceOfCaller());
}

} // namespace vqrx::test::anomaly
