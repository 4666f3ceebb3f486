#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace vqrx::log::log_perf::v2 {

/// Sets a damaged log file aside, and has the notice for each result ready before it touches the
/// file: a lack of memory afterwards cannot hide what became of the file. One thread.
class NoticesOfDamage {
public:
    /// @param name    of the damaged file
    /// @param reason  text of the conversion error
    /// @throws std::bad_alloc
    NoticesOfDamage(const std::string& name, const char* reason);

    /// Sets the file aside under the first of its names (DamagedRingsOf) that works. Called once.
    /// @return whether one of the names worked
    /// @throws std::bad_alloc; the file may have been set aside
    [[nodiscard]] bool SetAside();

    /// The name under which the file is kept. Only after SetAside returned true.
    [[nodiscard]] std::string& KeptAs() noexcept { return keptAs_[used_]; }

    /// The notice about the result of SetAside.
    [[nodiscard]] std::string& Notice() noexcept
    {
        return used_ < kept_.size() ? kept_[used_] : notKept_;
    }

private:
    std::string name_;
    std::array<std::string, 2> keptAs_;
    std::string notKept_;
    std::array<std::string, 2> kept_;
    std::size_t used_ = 0; // index of the name that works; beyond the last one: none
};

} // namespace vqrx::log::log_perf::v2
