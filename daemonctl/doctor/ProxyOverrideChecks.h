#pragma once

#include "Finding.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// A registration of the supervisor's proxy/stub that holds for one user only. In programs of this
/// user it takes the place of the registration for the machine. Texts are UTF-8.
struct ProxyOverride {
    std::string key;  ///< "HKU\S-1-5-21-...\Software\Classes\CLSID\{...}"
    std::string user; ///< "DOMAIN\name", or the SID if it has no name
    /// The library or class that it names; empty: none that the caller may read.
    std::string library;
};

/// The registrations of all users whose part of the registry is loaded: those who are logged on.
struct ProxyOverrideFacts {
    std::vector<ProxyOverride> found;
    /// Not 0: registrations of some users may be missing, because of this Windows error.
    std::uint32_t error = 0;
};

/// Looks for such registrations. Changes nothing. Windows only.
[[nodiscard]] ProxyOverrideFacts GatherProxyOverrides();

/// The check "proxy-users": whether every user gets the machine's proxy/stub. Pure.
[[nodiscard]] Finding JudgeProxyOverrides(const ProxyOverrideFacts& facts);

} // namespace vqrx::client::v0
