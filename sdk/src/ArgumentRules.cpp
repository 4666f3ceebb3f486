#include "daemon_manager/ArgumentRules.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <cwctype>
#include <limits>

namespace daemon_manager {
namespace {

constexpr const char* kNotConvertible =
    " contains a character that the system's ANSI code page lacks, or that has another look-alike "
    "there";

constexpr const char* kInterpreterActs =
    " contains a character that the command interpreter acts upon, and the program is a batch file";

// The command interpreter replaces variables also inside quotes.
constexpr const wchar_t* kActiveInsideQuotes = L"%!\r\n";
// It acts upon these outside quotes: they start programs, redirect files, or separate arguments.
constexpr const wchar_t* kActiveOutsideQuotes = L"&|<>^()@,;=\v\f\u00A0";

// The code page of programs that do not choose one in their manifest, such as the supervisor.
// GetACP would return the choice of this program.
UINT SystemCodePage()
{
    wchar_t text[16] = {};
    DWORD size = sizeof text;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage",
                     L"ACP", RRF_RT_REG_SZ, nullptr, text, &size) != ERROR_SUCCESS) {
        return GetACP();
    }
    const unsigned long codePage = std::wcstoul(text, nullptr, 10);
    return IsValidCodePage(static_cast<UINT>(codePage)) != FALSE ? static_cast<UINT>(codePage)
                                                                 : GetACP();
}

bool Survives(const std::wstring& text, UINT codePage)
{
    if (text.empty()) {
        return true;
    }
    if (text.size() > std::numeric_limits<int>::max() / 4) {
        return false;
    }
    const int length = static_cast<int>(text.size());
    const int bytes =
        WideCharToMultiByte(codePage, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string narrow(bytes > 0 ? static_cast<std::size_t>(bytes) : 0, '\0');
    WideCharToMultiByte(codePage, 0, text.data(), length, narrow.empty() ? nullptr : &narrow[0],
                        bytes, nullptr, nullptr);
    // Twice as many as bytes: room for everything, and a text that becomes longer is different.
    std::wstring back(narrow.size() * 2, L'\0');
    const int units =
        MultiByteToWideChar(codePage, 0, narrow.data(), bytes, back.empty() ? nullptr : &back[0],
                            static_cast<int>(back.size()));
    back.resize(units > 0 ? static_cast<std::size_t>(units) : 0);
    return back == text;
}

bool HasAny(const std::wstring& text, const wchar_t* characters)
{
    return text.find_first_of(characters) != std::wstring::npos;
}

// Returns the path as Windows uses it, without "." and ".."; as it was if Windows refuses it.
std::wstring Normalised(const std::wstring& path)
{
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    const DWORD length =
        full.empty()
            ? 0
            : GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), &full[0], nullptr);
    full.resize(length < full.size() ? length : 0);
    return full.empty() ? path : full;
}

// Windows ignores blanks and dots at the end of a file name.
bool IsBatchFile(std::wstring path)
{
    path.erase(path.find_last_not_of(L' ') + 1);
    path = Normalised(path);
    path.erase(path.find_last_not_of(L" .\\/") + 1);
    if (path.size() < 4) {
        return false;
    }
    std::wstring ending = path.substr(path.size() - 4);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
    return ending == L".bat" || ending == L".cmd";
}

// Returns what is wrong with a path or an argument; empty if nothing is.
std::string CommonReason(const std::wstring& text, UINT codePage)
{
    if (text.find(L'\0') != std::wstring::npos) {
        return " contains a zero, which would end the text";
    }
    if (text.find(L'"') != std::wstring::npos) {
        return " contains a double quote, which would change the arguments";
    }
    return Survives(text, codePage) ? "" : kNotConvertible;
}

std::string ArgumentReason(const std::wstring& argument)
{
    const bool quoted = argument.find(L' ') != std::wstring::npos;
    if (argument.empty()) {
        return " is empty and would disappear";
    }
    if (quoted && argument.back() == L'\\') {
        return " contains a blank and ends with a backslash, which would join it with the next one";
    }
    if (!quoted && argument.find(L'\t') != std::wstring::npos) {
        return " contains a tab and no blank, and would become several arguments";
    }
    return "";
}

// The supervisor puts quotes around a path with a blank.
bool InterpreterActsOnPath(const std::wstring& path)
{
    const bool quoted = path.find(L' ') != std::wstring::npos;
    return HasAny(path, kActiveInsideQuotes) || (!quoted && HasAny(path, kActiveOutsideQuotes));
}

// The batch file may pass the argument on without its quotes, so they protect nothing.
bool InterpreterActsOnArgument(const std::wstring& argument)
{
    return HasAny(argument, kActiveInsideQuotes) || HasAny(argument, kActiveOutsideQuotes);
}

} // namespace

std::string ReasonToRefuse(const std::wstring& path, const std::vector<std::wstring>& arguments)
{
    const UINT codePage = SystemCodePage();
    const bool batch = IsBatchFile(path);
    std::string reason = CommonReason(path, codePage);
    if (reason.empty() && batch && InterpreterActsOnPath(path)) {
        reason = kInterpreterActs;
    }
    if (!reason.empty()) {
        return "the path" + reason;
    }
    std::size_t number = 0;
    for (const std::wstring& argument : arguments) {
        ++number;
        reason = CommonReason(argument, codePage);
        if (reason.empty()) {
            reason = ArgumentReason(argument);
        }
        if (reason.empty() && batch && InterpreterActsOnArgument(argument)) {
            reason = kInterpreterActs;
        }
        if (!reason.empty()) {
            return "argument " + std::to_string(number) + reason;
        }
    }
    return "";
}

} // namespace daemon_manager
