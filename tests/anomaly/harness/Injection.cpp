#include "Injection.h"

#include "Allocations.h"
#include "CallKinds.h"
#include "CallPath.h"
#include "CallThunk.h"
#include "Ledger.h"
#include "StartedThings.h"

#include <windows.h>

#include <oleauto.h>

#include <array>
#include <atomic>
#include <cerrno>

namespace vqrx::test::anomaly {
namespace {

constexpr std::size_t kMaxUnexpected = 64;

// How often the calling thread is marked as working for the test. Not thread_local: the compiler's
// run-time library would allocate for that, through thunks.
const DWORD marks = TlsAlloc();
const DWORD roots = TlsAlloc(); // the thread's innermost OfTheProduct

std::atomic<bool> running = false;  // between BeginRun and EndRun
std::atomic<bool> counting = false; // and not between StopCounting and CountAgain
CallPoint toFail;
std::atomic<const CallPath*> failed = nullptr;

std::array<std::atomic<const char*>, kMaxUnexpected> unexpected;
std::atomic<std::size_t> unexpectedCount = 0;

std::uint64_t Marks() noexcept
{
    return reinterpret_cast<std::uint64_t>(TlsGetValue(marks));
}

void SetMarks(std::uint64_t count) noexcept
{
    TlsSetValue(marks, reinterpret_cast<void*>(count)); // NOLINT(performance-no-int-to-ptr)
}

// Keeps the thread's last error while a thunk works.
class KeptError {
public:
    KeptError() noexcept
        : error_(GetLastError())
    {
    }
    KeptError(const KeptError&) = delete;
    KeptError& operator=(const KeptError&) = delete;
    ~KeptError() { SetLastError(error_); }
    void Replace(DWORD error) noexcept { error_ = error; }

private:
    DWORD error_;
};

bool Succeeded(const Ownership& ownership, std::uint64_t result) noexcept
{
    switch (ownership.success) {
    case Success::kHandle:
        return result != 0 && result != ~std::uint64_t{0};
    case Success::kNotZero:
        return result != 0;
    case Success::kZero:
        return static_cast<std::uint32_t>(result) == 0;
    case Success::kNotNegative:
        return static_cast<std::int32_t>(result) >= 0;
    default:
        return true;
    }
}

std::uint64_t ThingOf(const Ownership& ownership, const CallFrame& frame) noexcept
{
    switch (ownership.where) {
    case Where::kParameter:
        return frame.arguments[ownership.number - 1];
    case Where::kThroughParameter:
        return *reinterpret_cast<const std::uint64_t*>( // NOLINT(performance-no-int-to-ptr)
            frame.arguments[ownership.number - 1]);
    case Where::kThread:
        return GetCurrentThreadId();
    default:
        return frame.result;
    }
}

void NoteProcess(const PROCESS_INFORMATION& process, const CallPath* path) noexcept
{
    NoteAcquired(Resource::kProcess, reinterpret_cast<std::uint64_t>(process.hProcess), path);
    NoteAcquired(Resource::kHandle, reinterpret_cast<std::uint64_t>(process.hThread), path);
    NoteStartedProcess(process.hProcess);
}

void NoteReleases(const CallFrame& frame) noexcept
{
    for (const Ownership& ownership : frame.call->ownerships) {
        if (!ownership.acquires) {
            NoteReleased(ownership.resource, ThingOf(ownership, frame));
        }
    }
    if (frame.call->structure == Structure::kClearedVariant) {
        const auto* const variant = reinterpret_cast<const VARIANT*>(frame.arguments[0]);
        if (variant->vt == VT_BSTR) {
            NoteReleased(Resource::kText, reinterpret_cast<std::uint64_t>(variant->bstrVal));
        }
    }
}

void NoteUnexpected(const char* name) noexcept
{
    const std::size_t index = unexpectedCount++;
    if (index < kMaxUnexpected) {
        unexpected[index] = name;
    }
}

// Whether a call fails by itself in the way in which it is made to fail.
bool FailsAnyway(const ThunkedCall& call, std::uint64_t result) noexcept
{
    const auto low = static_cast<std::uint32_t>(result);
    if (call.isStandIn) {
        return static_cast<std::int32_t>(low) < 0;
    }
    return call.result >> 32 != 0 ? result == call.result : low == call.result;
}

void SetError(const CallKind& kind, KeptError& kept) noexcept
{
    if (kind.place == ErrorPlace::kLastError) {
        kept.Replace(kind.error);
    } else if (kind.place == ErrorPlace::kErrnoValue) {
        errno = static_cast<int>(kind.error);
    }
}

// Counts a call. @return whether it is the one that fails
bool CountCall(CallPath& path) noexcept
{
    const std::uint32_t number = ++path.calls;
    if (path.key != toFail.path || number != toFail.occurrence) {
        return false;
    }
    failed = &path;
    return true;
}

} // namespace

const CallPath* CountAllocation(const void* caller, bool& fails) noexcept
{
    fails = false;
    if (!running || Marks() != 0) {
        return nullptr;
    }
    const KeptError kept;
    CallPath& path = PathTo(kOperatorNew, caller, TlsGetValue(roots));
    fails = counting && CountCall(path);
    return &path;
}

extern "C" void AnomalyDecide(CallFrame* frame) noexcept
{
    KeptError kept;
    const ThunkedCall& call = *frame->call;
    frame->decision = Decision::kPass;
    frame->path = nullptr;
    if (running && Marks() == 0) {
        CallPath& path = PathTo(call.name, frame->caller, TlsGetValue(roots));
        frame->path = &path;
        if (call.isOfTheTest) {
            NoteUnexpected(call.name);
        } else if (counting && call.kind != nullptr && CountCall(path)) {
            frame->decision =
                call.kind->worksAllTheSame ? Decision::kPassThenFail : Decision::kFail;
        }
    }
    if (frame->decision == Decision::kFail) {
        SetError(*call.kind, kept);
        return;
    }
    NoteReleases(*frame);
    if (call.isStandIn) {
        SetMarks(Marks() + 1);
    }
}

extern "C" void AnomalyReturned(CallFrame* frame) noexcept
{
    KeptError kept;
    const ThunkedCall& call = *frame->call;
    if (call.isStandIn) {
        SetMarks(Marks() - 1);
    }
    if (frame->decision == Decision::kPassThenFail) {
        SetError(*call.kind, kept);
    }
    if (frame->path == nullptr) {
        return;
    }
    if (counting && call.kind != nullptr && FailsAnyway(call, frame->result)) {
        ++frame->path->failedAnyway;
    }
    for (const Ownership& ownership : call.ownerships) {
        if (ownership.acquires && Succeeded(ownership, frame->result)) {
            NoteAcquired(ownership.resource, ThingOf(ownership, *frame), frame->path);
        }
    }
    if (call.structure == Structure::kStartedProcess && frame->result != 0) {
        NoteProcess(*reinterpret_cast<const PROCESS_INFORMATION*>(frame->arguments[9]),
                    frame->path);
    } else if (call.structure == Structure::kStartedThread && frame->result != 0) {
        NoteStartedThread(reinterpret_cast<HANDLE>(frame->result)); // NOLINT
    }
}

void BeginRun(const CallPoint* fail) noexcept
{
    ForgetStarted();
    unexpectedCount = 0;
    ForgetCalls();
    ForgetAcquired();
    failed = nullptr;
    toFail = fail == nullptr ? CallPoint() : *fail;
    counting = true;
    running = true;
}

void StopCounting() noexcept
{
    counting = false;
}

void CountAgain() noexcept
{
    counting = true;
}

void EndRun() noexcept
{
    counting = false;
    running = false;
}

const CallPath* FailedCall() noexcept
{
    return failed;
}

std::vector<std::string> UnexpectedCalls()
{
    std::vector<std::string> names;
    for (std::size_t index = 0; index < unexpectedCount && index < kMaxUnexpected; ++index) {
        names.emplace_back(unexpected[index]);
    }
    return names;
}

OfTheTest::OfTheTest() noexcept
{
    SetMarks(Marks() + 1);
}

OfTheTest::~OfTheTest()
{
    SetMarks(Marks() - 1);
}

OfTheProduct::OfTheProduct() noexcept
    : before_(TlsGetValue(marks))
    , rootBefore_(TlsGetValue(roots))
{
    SetMarks(0);
    TlsSetValue(roots, this);
}

OfTheProduct::~OfTheProduct()
{
    TlsSetValue(marks, before_);
    TlsSetValue(roots, rootBefore_);
}

} // namespace vqrx::test::anomaly
