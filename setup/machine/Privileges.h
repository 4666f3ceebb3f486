#pragma once

#include <initializer_list>

namespace vqrx::setup::v0 {

/// Switches privileges of this process on, as far as its user has them. A call that needs another
/// one fails, and its error is reported then.
/// @param privileges  names such as SE_DEBUG_NAME (winnt.h)
void SwitchOnPrivileges(std::initializer_list<const char*> privileges) noexcept;

} // namespace vqrx::setup::v0
