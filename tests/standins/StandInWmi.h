#pragma once

#include <windows.h>

#include <oleauto.h>

#include <functional>
#include <string>
#include <vector>

namespace vqrx::test {

/// How a property answers.
struct PropertyAnswer {
    HRESULT result = S_OK;
    VARTYPE type = VT_BSTR; ///< VT_BSTR, VT_NULL, or anything else for a property of another type
    std::wstring text;
    bool nullText = false; ///< VT_BSTR with a null string
};

/// One object of a query's result.
struct ProcessAnswer {
    PropertyAnswer executablePath;
    PropertyAnswer commandLine;
};

/// What the stand-in for WMI answers, step by step. The default answers from the live system.
struct WmiScript {
    HRESULT connect = S_OK;
    HRESULT blanket = S_OK;
    HRESULT query = S_OK;
    int failAtNext = 0; ///< the n-th Next fails with E_ABORT; 0: none does
    std::function<std::vector<ProcessAnswer>(DWORD processId)> processes;

    // What was asked.
    std::wstring connectedTo;
    LONG connectFlags = 0;
    std::vector<DWORD> blanketAsked; ///< authentication, authorisation, level, impersonation, caps
    std::wstring lastLanguage;
    std::wstring lastQuery;
    LONG lastQueryFlags = -1;
    long liveObjects = 0; ///< references that somebody still holds
};

/// Below HKEY_CURRENT_USER: what the stand-in answers in other processes. The value "ExecQuery", a
/// DWORD, is the result of every query; read when a process asks for the locator.
inline constexpr const wchar_t* kWmiAnswersKey = L"Software\\DaemonManagerTest\\WmiAnswers";

/// The script of this process's stand-in.
WmiScript& TheWmiScript();

/// A class factory for the WMI locator, with one reference.
IUnknown* MakeWmiLocatorFactory();

/// Stands in for the WMI locator in this process for as long as it lives. The thread is a member of
/// the multithreaded apartment.
class StandInWmi {
public:
    /// @param refuseCreation  the class answers so when it is asked for an object
    explicit StandInWmi(HRESULT refuseCreation = S_OK);
    StandInWmi(const StandInWmi&) = delete;
    StandInWmi& operator=(const StandInWmi&) = delete;
    ~StandInWmi();

private:
    DWORD cookie_ = 0;
};

} // namespace vqrx::test
