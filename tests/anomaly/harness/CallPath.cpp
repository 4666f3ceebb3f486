#include "CallPath.h"

#include <windows.h>

#include <cstdlib>
#include <cstring>

namespace vqrx::test::anomaly {
namespace {

constexpr std::size_t kMaxPaths = 16384; // a power of two: the table of a hash
constexpr int kMaxSteps = 64;            // frames of this program and of Windows together

CallPath table[kMaxPaths];
std::atomic_flag tableLock = ATOMIC_FLAG_INIT;

struct Image {
    std::uint64_t base;
    std::uint64_t size;

    [[nodiscard]] bool Contains(std::uint64_t address) const { return address - base < size; }
};

Image OwnImage() noexcept
{
    auto* const base = reinterpret_cast<unsigned char*>(GetModuleHandleA(nullptr));
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    return {reinterpret_cast<std::uint64_t>(base), nt->OptionalHeader.SizeOfImage};
}

const Image ownImage = OwnImage(); // no local static: its guard would call functions with thunks

// Goes to the caller of the function that the context stands in. @return false at the first one
bool StepOut(CONTEXT& context) noexcept
{
    DWORD64 base = 0;
    PRUNTIME_FUNCTION const function = RtlLookupFunctionEntry(context.Rip, &base, nullptr);
    const DWORD64 before = context.Rsp;
    if (function == nullptr) { // a function without a stack frame: its return address lies on top
        context.Rip = *reinterpret_cast<const DWORD64*>(context.Rsp);
        context.Rsp += sizeof(DWORD64);
    } else {
        void* handlerData = nullptr;
        DWORD64 establisher = 0;
        RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, function, &context, &handlerData,
                         &establisher, nullptr);
    }
    return context.Rip != 0 && context.Rsp > before;
}

void Walk(CallPath& path, const void* caller, const void* root) noexcept
{
    const std::uint64_t limit =
        root == nullptr ? ~std::uint64_t{0} : reinterpret_cast<std::uint64_t>(root);
    CONTEXT context; // NOLINT: RtlCaptureContext fills what is used
    RtlCaptureContext(&context);
    bool reached = false; // frames of the harness come first
    for (int step = 0;
         step < kMaxSteps && path.depth < kMaxFrames && StepOut(context) && context.Rsp < limit;
         ++step) {
        reached = reached || context.Rip == reinterpret_cast<std::uint64_t>(caller);
        if (reached && ownImage.Contains(context.Rip)) {
            path.frames[path.depth++] = static_cast<std::uint32_t>(context.Rip - ownImage.base);
        }
    }
}

std::uint64_t Mix(std::uint64_t hash, std::uint64_t value) noexcept
{
    return (hash ^ value) * 0x100000001B3; // FNV
}

std::uint64_t KeyOf(const CallPath& path) noexcept
{
    std::uint64_t key = 0xCBF29CE484222325;
    for (const char* letter = path.name; *letter != '\0'; ++letter) {
        key = Mix(key, static_cast<unsigned char>(*letter));
    }
    for (std::uint32_t frame = 0; frame < path.depth; ++frame) {
        key = Mix(key, path.frames[frame]);
    }
    return key == 0 ? 1 : key;
}

class TableHold {
public:
    TableHold() noexcept
    {
        while (tableLock.test_and_set(std::memory_order_acquire)) {
            SwitchToThread();
        }
    }
    TableHold(const TableHold&) = delete;
    TableHold& operator=(const TableHold&) = delete;
    ~TableHold() { tableLock.clear(std::memory_order_release); }
};

} // namespace

std::uint32_t OffsetInProgram(std::uint64_t address) noexcept
{
    return static_cast<std::uint32_t>(address - ownImage.base);
}

std::uint32_t FramesFrom(void* context, std::uint32_t* frames, std::uint32_t room) noexcept
{
    CONTEXT& place = *static_cast<CONTEXT*>(context);
    std::uint32_t count = 0;
    for (int step = 0; step < kMaxSteps && count < room; ++step) {
        if (ownImage.Contains(place.Rip)) {
            frames[count++] = OffsetInProgram(place.Rip);
        }
        if (!StepOut(place)) {
            break;
        }
    }
    return count;
}

CallPath& PathTo(const char* name, const void* caller, const void* root) noexcept
{
    CallPath path;
    path.name = name;
    Walk(path, caller, root);
    path.key = KeyOf(path);
    const TableHold hold;
    for (std::size_t probe = 0; probe < kMaxPaths; ++probe) {
        CallPath& entry = table[(path.key + probe) % kMaxPaths];
        if (entry.key == path.key) {
            return entry;
        }
        if (entry.key == 0) {
            entry.key = path.key;
            entry.name = path.name;
            entry.depth = path.depth;
            std::memcpy(entry.frames, path.frames, sizeof entry.frames);
            return entry;
        }
    }
    std::abort(); // more paths than the table has room for: enlarge it
}

void ForgetCalls() noexcept
{
    for (CallPath& path : table) {
        path.calls = 0;
        path.failedAnyway = 0;
    }
}

std::vector<const CallPath*> TakenPaths()
{
    std::vector<const CallPath*> taken;
    for (const CallPath& path : table) {
        if (path.calls != 0) {
            taken.push_back(&path);
        }
    }
    return taken;
}

} // namespace vqrx::test::anomaly
