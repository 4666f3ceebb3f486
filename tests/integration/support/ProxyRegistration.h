#pragma once

#include <windows.h>

namespace vqrx::test {

/// DaemonMgrPS.dll registered for as long as this lives: other processes can call the supervisor.
class ProxyRegistration {
public:
    /// @throws std::runtime_error when the library cannot be loaded or does not register
    ProxyRegistration();
    ProxyRegistration(const ProxyRegistration&) = delete;
    ProxyRegistration& operator=(const ProxyRegistration&) = delete;
    ~ProxyRegistration();

private:
    HRESULT Call(const char* function) const;

    HMODULE library_;
};

} // namespace vqrx::test
