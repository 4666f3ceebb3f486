#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vqrx::test::anomaly {

struct CallKind;
struct Ownership;

/// What the harness does besides noting resources.
enum class Structure : std::uint8_t { kNone, kStartedProcess, kStartedThread, kClearedVariant };

/// One function or method whose calls go through a thunk.
struct ThunkedCall {
    void* original = nullptr; ///< the function itself; CallThunk.cpp knows its offset 0
    std::uint64_t result = 0; ///< what a failing call returns; CallThunk.cpp knows its offset 8
    const char* name = "";    ///< function, or class and number of the method
    const CallKind* kind = nullptr; ///< null: its calls never fail and are only watched
    bool isStandIn = false;         ///< a method of a stand-in: what it calls belongs to the test
    bool isOfTheTest = false;       ///< the product does not call it
    std::span<const Ownership> ownerships; ///< what it acquires and gives back
    Structure structure = Structure::kNone;
};

/// What becomes of one call.
enum class Decision : std::uint64_t {
    kPass = 0,         ///< the function is called
    kFail = 1,         ///< the function is not called
    kPassThenFail = 2, ///< the function is called, and its result is replaced
};

struct CallPath;

/// The stack frame of a thunk while it handles one call. CallThunk.cpp relies on all offsets.
struct CallFrame {
    std::uint64_t home[4];         ///< scratch space of the functions that the thunk calls
    std::uint64_t stackPassed[12]; ///< copy of the arguments after the fourth
    ThunkedCall* call;
    std::uint64_t result;                    ///< of the function, after it returned
    alignas(16) unsigned char registers[64]; ///< xmm0 to xmm3
    Decision decision;
    CallPath* path; ///< the path of a counted call; null: the call is not counted
    std::uint64_t unused[7];
    const void* caller;          ///< where the call returns to
    std::uint64_t arguments[16]; ///< the caller's: four from registers, the others from the stack
};

/// Called by a thunk before the function. Defined in Injection.cpp.
extern "C" void AnomalyDecide(CallFrame* frame) noexcept;
/// Called by a thunk after the function has returned. Defined in Injection.cpp.
extern "C" void AnomalyReturned(CallFrame* frame) noexcept;

/// Makes machine code that may stand in place of call->original: it asks AnomalyDecide, then calls
/// the function or returns call->result.
/// @param call  must live as long as the process
[[nodiscard]] void* MakeThunk(ThunkedCall* call);

} // namespace vqrx::test::anomaly
