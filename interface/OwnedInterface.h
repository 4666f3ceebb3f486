#pragma once

#include <memory>

namespace daemon_manager {

/// Releases an interface of COM.
template <typename Interface>
struct InterfaceReleaser {
    void operator()(Interface* object) const noexcept { object->Release(); }
};

/// Owns one reference to an object of COM. May be empty.
template <typename Interface>
using OwnedInterface = std::unique_ptr<Interface, InterfaceReleaser<Interface>>;

} // namespace daemon_manager
