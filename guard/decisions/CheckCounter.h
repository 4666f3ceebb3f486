#pragma once

#include <cstdint>

namespace vqrx::guard::v0 {

/// What one check of the supervisor showed.
enum class CheckResult {
    kAnswers,   ///< a call of the supervisor succeeded
    kSilent,    ///< COM in the supervisor did not answer in time, or the call failed
    kBusy,      ///< COM answered, but the supervisor did not serve a call in time
    kWithdrawn, ///< the supervisor's process runs, but its object is not published
    kStranger,  ///< another program's object is published under the supervisor's name
    kUnknown,   ///< the call cannot be made, so nothing is known
};

/// Decides from the checks of a published supervisor whether it hangs. The checks come about every
/// 10 seconds; a check that gets no answer takes 10 seconds longer. Pure; for one thread.
///
/// | Checks one after the other | Why so many |
/// |---|---|
/// | 3 silent | COM answers at once, whatever the supervisor does |
/// | 15 busy | a pass that starts many daemons may take a minute |
/// | 15 withdrawn | a supervisor that ends waits at most 90 s for its clients and 10 s for COM |
class CheckCounter {
public:
    /// Notes the result of a check.
    /// @return whether the supervisor hangs
    [[nodiscard]] bool Notice(CheckResult result) noexcept;

    /// Returns how many checks with the last result came one after the other.
    [[nodiscard]] std::uint32_t Count() const noexcept { return count_; }

    /// Returns how many checks with this result one after the other mean that the supervisor hangs;
    /// 0 if this result never means that.
    [[nodiscard]] static std::uint32_t Limit(CheckResult result) noexcept;

private:
    CheckResult last_ = CheckResult::kAnswers;
    std::uint32_t count_ = 0;
};

} // namespace vqrx::guard::v0
