#pragma once

#include "Ledger.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace vqrx::test::anomaly {

/// Where a failed call leaves the number of its error.
enum class ErrorPlace : std::uint8_t { kNone, kLastError, kErrnoValue };

/// How a function fails, as the product sees it.
struct CallKind {
    const char* name;
    std::uint64_t result; ///< what the function returns when it fails
    ErrorPlace place;
    std::uint32_t error; ///< a plausible error for this place
    /// Null: a failure must be visible in the log, in a result or in an exception. Otherwise the
    /// reason why a failure may stay without a trace.
    const char* quiet = nullptr;
    /// The function does its work also when it fails. An example is fclose, which always closes.
    bool worksAllTheSame = false;
};

/// A function of the product in which the failure of a call may stay without a trace.
struct QuietPlace {
    const char* place; ///< end of the function's name, as SymbolNames.h gives it
    const char* call;  ///< empty: each call that leads through the place
    const char* reason;
};

/// A function of a library that ends the process if a call in it fails. Nothing that the product
/// does could change that.
struct FatalPlace {
    const char* place; ///< part of the name by which the linker knows the function
    const char* reason;
};

/// A function that cannot fail when the product calls it, and why.
struct SureCall {
    const char* name;
    const char* reason;
};

/// Where a call has the thing that it acquires or gives back.
enum class Where : std::uint8_t {
    kResult,           ///< it is the result
    kParameter,        ///< it is a parameter
    kThroughParameter, ///< a parameter points to it
    kThread,           ///< it is the calling thread
};

/// Which results of an acquiring call mean that it succeeded.
enum class Success : std::uint8_t { kAlways, kHandle, kNotZero, kZero, kNotNegative };

/// What a function acquires, or gives back.
struct Ownership {
    const char* name;
    Resource resource;
    bool acquires;
    Where where;
    int number = 0; ///< of the parameter, from 1
    Success success = Success::kAlways;
};

/// Returns how a function fails; null if it is not in the table of functions that can fail.
[[nodiscard]] const CallKind* KindOf(std::string_view function) noexcept;

/// Returns the known quiet places.
[[nodiscard]] std::span<const QuietPlace> QuietPlaces() noexcept;

/// Returns the functions whose calls are left out, because no process survives their failure.
[[nodiscard]] std::span<const FatalPlace> FatalPlaces() noexcept;

/// Returns why a function cannot fail; null if it is not in the table of such functions.
[[nodiscard]] const char* WhySure(std::string_view function) noexcept;

/// Reports whether only the test calls a function: GoogleTest, the start of the program, or a step
/// of a scenario. The product does not call it.
[[nodiscard]] bool IsOfTheTest(std::string_view function) noexcept;

/// Returns what a function acquires and gives back.
[[nodiscard]] std::span<const Ownership> OwnershipsOf(std::string_view function) noexcept;

} // namespace vqrx::test::anomaly
