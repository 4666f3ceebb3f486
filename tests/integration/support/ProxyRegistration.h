#pragma once

#include <windows.h>

namespace vqrx::test {

/// Registers DaemonMgrPS.dll, so that other processes can call the supervisor. The destructor
/// removes the registration.
class ProxyRegistration {
public:
    /// @throws std::runtime_error  if the library cannot be loaded or does not register
    ProxyRegistration();
    ProxyRegistration(const ProxyRegistration&) = delete;
    ProxyRegistration& operator=(const ProxyRegistration&) = delete;
    ~ProxyRegistration();

private:
    HRESULT Call(const char* function) const;

    HMODULE library_;
};

} // namespace vqrx::test
