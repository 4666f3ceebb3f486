#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::test::anomaly {

struct CallPath;
struct ImportSlot;

/// One call of a scenario: the occurrence-th one of a path.
struct CallPoint {
    std::uint64_t path = 0;       ///< key of the CallPath
    std::uint32_t occurrence = 0; ///< 1 for the first call
    bool operator==(const CallPoint&) const = default;
};

/// Puts thunks into the import table and into the tables of methods of the stand-ins, once for the
/// process. From then on AnomalyDecide sees every call.
/// @throws std::runtime_error if the program imports a function that the tables of CallKinds.h do
///         not know, or has delayed imports
void InstallThunks();

/// Returns the imported functions that the tables of CallKinds.h do not know, as LIBRARY:FUNCTION.
[[nodiscard]] std::vector<std::string> UnknownImports(const std::vector<ImportSlot>& imports);

/// Begins a run. The calls of the product are counted, and resources noted, until EndRun.
/// @param fail  the call that fails; null: none fails
void BeginRun(const CallPoint* fail) noexcept;

/// Stops counting: no call fails until CountAgain. Resources are still noted.
void StopCounting() noexcept;
void CountAgain() noexcept;

/// Ends the run.
void EndRun() noexcept;

/// Returns the path of the call that failed in this run, or in the run that has just ended; null if
/// the run did not come so far.
[[nodiscard]] const CallPath* FailedCall() noexcept;

/// Returns the names of functions that the product called in this run although the tables say that
/// only tests call them.
[[nodiscard]] std::vector<std::string> UnexpectedCalls();

/// Counts an allocation with operator new. For Allocations.cpp.
/// @param caller  where operator new returns to
/// @param fails   set to whether the allocation fails
/// @return the path; null if the allocation is the test's own
[[nodiscard]] const CallPath* CountAllocation(const void* caller, bool& fails) noexcept;

/// Marks what the current thread does as the test's own work, until the destructor. Its calls are
/// not counted. A thread that never had such a mark belongs to the product.
class OfTheTest {
public:
    OfTheTest() noexcept;
    OfTheTest(const OfTheTest&) = delete;
    OfTheTest& operator=(const OfTheTest&) = delete;
    ~OfTheTest();
};

/// Marks what the current thread does as work of the product, until the destructor. A step of a
/// scenario makes one around its call of the product.
class OfTheProduct {
public:
    OfTheProduct() noexcept;
    OfTheProduct(const OfTheProduct&) = delete;
    OfTheProduct& operator=(const OfTheProduct&) = delete;
    ~OfTheProduct();

private:
    void* before_;
    void* rootBefore_;
};

} // namespace vqrx::test::anomaly
