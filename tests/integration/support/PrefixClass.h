#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

namespace vqrx::test {

/// Another library behind a COM class, for every process of the prefix, for as long as this lives.
/// What an aborted run has left behind counts as left by nobody: the host's own library, which is
/// kept beside, comes back in the end.
class PrefixClass {
public:
    /// @throws std::runtime_error when the registry refuses
    PrefixClass(REFCLSID classId, const std::wstring& library);
    PrefixClass(const PrefixClass&) = delete;
    PrefixClass& operator=(const PrefixClass&) = delete;
    ~PrefixClass();

private:
    std::wstring key_;
};

/// The stand-ins for the firewall and, where it is asked for, WMI in every process of the prefix.
class PrefixStandIns {
public:
    enum class Wmi {
        asComplete, ///< the host's own where it tells path and command line, else the stand-in
        standIn,
        broken, ///< nobody's: the class cannot be made
    };

    /// Begins without a firewall rule. @throws std::runtime_error
    explicit PrefixStandIns(Wmi wmi = Wmi::asComplete);
    PrefixStandIns(const PrefixStandIns&) = delete;
    PrefixStandIns& operator=(const PrefixStandIns&) = delete;
    ~PrefixStandIns();

    /// In words, for the test's report.
    const std::string& WhoseWmi() const { return whoseWmi_; }

private:
    std::vector<std::unique_ptr<PrefixClass>> classes_;
    std::string whoseWmi_;
};

} // namespace vqrx::test
