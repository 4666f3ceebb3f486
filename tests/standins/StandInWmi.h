#pragma once

#include <windows.h>

#include <oleauto.h>

#include <functional>
#include <string>
#include <vector>

namespace vqrx::test {

/// Result of one property.
struct PropertyAnswer {
    HRESULT result = S_OK;
    VARTYPE type = VT_BSTR; ///< VT_BSTR, VT_NULL, or another type for a property of a wrong type
    std::wstring text;
    bool nullText = false; ///< VT_BSTR with a null string
};

/// One object in the result of a query.
struct ProcessAnswer {
    PropertyAnswer executablePath;
    PropertyAnswer commandLine;
};

/// Result of each step of the stand-in WMI in this process, and the arguments of the calls.
struct WmiScript {
    HRESULT connect = S_OK;
    HRESULT blanket = S_OK;
    HRESULT query = S_OK;
    int failAtNext = 0; ///< the n-th Next fails with E_ABORT; 0: no Next fails
    /// Returns the objects that a query finds. If empty, the running process itself is the answer.
    std::function<std::vector<ProcessAnswer>(DWORD processId)> processes;

    // Arguments of the calls.
    std::wstring connectedTo;
    LONG connectFlags = 0;
    bool connectedPlainly = false;   ///< without user, password, locale, authority and context
    std::vector<DWORD> blanketAsked; ///< authentication, authorisation, level, impersonation, caps
    std::wstring lastLanguage;
    std::wstring lastQuery;
    LONG lastQueryFlags = -1;
    LONG lastNextTimeout = 0; ///< milliseconds
    ULONG lastNextCount = 0;  ///< objects that the caller wants at most
    LONG lastGetFlags = -1;
    bool lastGetIsPlain = false; ///< asks for the type and not for the flavour
    long liveObjects = 0;        ///< objects that are not yet deleted
};

/// Key below HKEY_CURRENT_USER for the stand-in in other processes. Its DWORD value "ExecQuery" is
/// the result of every query. The stand-in reads it when a process asks for the locator.
inline constexpr const wchar_t* kWmiAnswersKey = L"Software\\DaemonManagerTest\\WmiAnswers";

/// Returns the script of this process.
[[nodiscard]] WmiScript& TheWmiScript();

/// Returns a class factory for the WMI locator with one reference, which the caller owns.
[[nodiscard]] IUnknown* MakeWmiLocatorFactory();

/// Registers the stand-in WMI in this process. The destructor removes the registration. The calling
/// thread must be in the multithreaded apartment.
class StandInWmi {
public:
    /// @param refuseCreation  a failure here is the result of every request for a locator
    explicit StandInWmi(HRESULT refuseCreation = S_OK);
    StandInWmi(const StandInWmi&) = delete;
    StandInWmi& operator=(const StandInWmi&) = delete;
    ~StandInWmi();

private:
    DWORD cookie_ = 0;
};

} // namespace vqrx::test
