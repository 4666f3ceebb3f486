#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

namespace vqrx::test {

/// Replaces the library of a COM class for every process of the Wine prefix. The destructor
/// restores the host's library. The registry keeps the path of the host's library, so the next run
/// restores it even if a run was aborted.
class PrefixClass {
public:
    /// @throws HostRefusal  if the machine protects its classes, as Windows does
    /// @throws std::runtime_error  if the registry cannot be read or written
    PrefixClass(REFCLSID classId, const std::wstring& library);
    PrefixClass(const PrefixClass&) = delete;
    PrefixClass& operator=(const PrefixClass&) = delete;
    ~PrefixClass();

private:
    std::wstring key_;
};

/// Registers the stand-in firewall, and on request the stand-in WMI, in every process of the Wine
/// prefix. The destructor removes the registration.
class PrefixStandIns {
public:
    enum class Wmi {
        kAsComplete, ///< WMI of the host if it knows path and command line, else the stand-in
        kStandIn,    ///< always the stand-in
        kBroken,     ///< the class of WMI cannot be created
    };

    /// Removes all rules of the stand-in firewall.
    /// @throws HostRefusal  if the machine protects its classes, as Windows does
    /// @throws std::runtime_error  if the registry cannot be read or written
    explicit PrefixStandIns(Wmi wmi = Wmi::kAsComplete);
    PrefixStandIns(const PrefixStandIns&) = delete;
    PrefixStandIns& operator=(const PrefixStandIns&) = delete;
    ~PrefixStandIns();

    /// Returns a text for the report of the test: the WMI in use.
    [[nodiscard]] const std::string& WhoseWmi() const { return whoseWmi_; }

private:
    std::vector<std::unique_ptr<PrefixClass>> classes_;
    std::string whoseWmi_;
};

} // namespace vqrx::test
