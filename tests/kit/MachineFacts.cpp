#include "MachineFacts.h"

#include "Bounded.h"
#include "CrashDialogChecks.h"
#include "FirewallChecks.h"
#include "MachineTexts.h"
#include "RegistryText.h"
#include "Utf8.h"
#include "WmiCheck.h"
#include "com/ComApartment.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <shlobj.h>
#include <winternl.h>

#include <chrono>
#include <cstdio>
#include <filesystem>

namespace vqrx::kit {
namespace {

using client::v0::Utf8;

constexpr const char* kNotKnown = "not known";
constexpr std::chrono::seconds kWmiLimit{20};

std::string Hexadecimal(unsigned long number)
{
    char text[32] = {};
    std::snprintf(text, sizeof text, "0x%lX", number);
    return text;
}

void* FunctionOf(const char* library, const char* name)
{
    return reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA(library), name));
}

std::string WindowsVersion()
{
    using Ask = LONG(WINAPI*)(OSVERSIONINFOW*);
    // The cast through void* avoids a warning: the two function types are not related.
    const auto ask = reinterpret_cast<Ask>(FunctionOf("ntdll", "RtlGetVersion"));
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    if (ask == nullptr || ask(&version) != 0) {
        return kNotKnown;
    }
    const char* const key = R"(SOFTWARE\Microsoft\Windows NT\CurrentVersion)";
    const std::string release = MachineText(key, "DisplayVersion", "");
    return NameOfWindows(MachineText(key, "ProductName", "Windows"), version.dwBuildNumber) +
           (release.empty() ? "" : " " + release) + " (" + std::to_string(version.dwMajorVersion) +
           "." + std::to_string(version.dwMinorVersion) + "." +
           std::to_string(version.dwBuildNumber) + "." + MachineText(key, "UBR", "0") + ")";
}

std::string WineVersion()
{
    using Ask = const char*(CDECL*)();
    const auto ask = reinterpret_cast<Ask>(FunctionOf("ntdll", "wine_get_version"));
    return ask != nullptr ? ask() : "no: this is Windows itself";
}

// Windows names accounts and groups in its language, and describes errors in it.
std::string Languages()
{
    wchar_t user[LOCALE_NAME_MAX_LENGTH] = {};
    wchar_t system[LOCALE_NAME_MAX_LENGTH] = {};
    LCIDToLocaleName(MAKELCID(GetUserDefaultUILanguage(), SORT_DEFAULT), user,
                     LOCALE_NAME_MAX_LENGTH, 0);
    LCIDToLocaleName(MAKELCID(GetSystemDefaultUILanguage(), SORT_DEFAULT), system,
                     LOCALE_NAME_MAX_LENGTH, 0);
    return "user " + Utf8(user) + ", system " + Utf8(system);
}

std::string CodePages()
{
    return "ANSI " + std::to_string(GetACP()) + ", OEM " + std::to_string(GetOEMCP()) +
           ", console input " + std::to_string(GetConsoleCP()) + ", console output " +
           std::to_string(GetConsoleOutputCP());
}

std::string ConsoleModes()
{
    constexpr DWORD quickEdit = 0x0040; // ENABLE_QUICK_EDIT_MODE
    DWORD input = 0;
    DWORD output = 0;
    const bool hasInput = GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &input) != FALSE;
    const bool hasOutput = GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &output) != FALSE;
    return (hasInput ? "input " + Hexadecimal(input) + ", QuickEdit " +
                           ((input & quickEdit) != 0 ? "on" : "off")
                     : std::string("input is no console")) +
           "; " + (hasOutput ? "output " + Hexadecimal(output) : "output is no console");
}

std::string SessionText()
{
    DWORD session = 0;
    if (ProcessIdToSessionId(GetCurrentProcessId(), &session) == FALSE) {
        return kNotKnown;
    }
    wchar_t station[128] = {};
    GetUserObjectInformationW(GetProcessWindowStation(), UOI_NAME, station, sizeof station,
                              nullptr);
    return std::to_string(session) + ", window station " + Utf8(station) +
           (GetSystemMetrics(SM_REMOTESESSION) != 0 ? ", remote" : ", local");
}

std::string Rights()
{
    const std::string key = R"(SOFTWARE\Microsoft\Windows\CurrentVersion\Policies\System)";
    return std::string(IsAdministrator() ? "administrator" : "ordinary user") +
           "; UAC (EnableLUA): " + MachineText(key.c_str(), "EnableLUA", kNotKnown);
}

std::string Firewall()
{
    std::string text =
        client::v0::JudgeFirewallService(client::v0::GatherFirewallServiceFacts()).text;
    const std::string policy =
        R"(SYSTEM\CurrentControlSet\Services\SharedAccess\Parameters\FirewallPolicy\)";
    for (const char* profile : {"DomainProfile", "StandardProfile", "PublicProfile"}) {
        text += std::string("; ") + profile + ": " +
                MachineText((policy + profile).c_str(), "EnableFirewall", kNotKnown);
    }
    return text;
}

std::string Wmi()
{
    const auto facts = client::v0::Bounded<client::v0::WmiFacts>(kWmiLimit, [] {
        const system::com::v1::ComApartment apartment;
        return client::v0::GatherWmiFacts();
    });
    return facts ? client::v0::JudgeWmi(*facts).text : "did not answer within 20 s";
}

std::string VirusScanner()
{
    using system::win32::v1::UniqueServiceHandle;
    const UniqueServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    const UniqueServiceHandle service(
        OpenServiceW(manager.Get(), L"WinDefend", SERVICE_QUERY_STATUS));
    SERVICE_STATUS status{};
    const bool runs = service && QueryServiceStatus(service.Get(), &status) != FALSE &&
                      status.dwCurrentState == SERVICE_RUNNING;
    const char* const defender = R"(SOFTWARE\Microsoft\Windows Defender)";
    const char* const setting = R"(SOFTWARE\Microsoft\Windows Defender\Real-Time Protection)";
    const char* const policy =
        R"(SOFTWARE\Policies\Microsoft\Windows Defender\Real-Time Protection)";
    return DefenderText({static_cast<bool>(service), runs, MachineText(defender, "PassiveMode", ""),
                         MachineText(setting, "DisableRealtimeMonitoring", ""),
                         MachineText(policy, "DisableRealtimeMonitoring", "")});
}

std::string CodeIntegrity()
{
    const char* const memory =
        R"(SYSTEM\CurrentControlSet\Control\DeviceGuard\Scenarios\HypervisorEnforcedCodeIntegrity)";
    const char* const policy = R"(SYSTEM\CurrentControlSet\Control\CI\Policy)";
    return CodeIntegrityText(MachineText(memory, "Enabled", ""),
                             MachineText(policy, "VerifiedAndReputablePolicyState", ""));
}

std::string TimerSteps()
{
    using Ask = LONG(NTAPI*)(ULONG*, ULONG*, ULONG*);
    const auto ask = reinterpret_cast<Ask>(FunctionOf("ntdll", "NtQueryTimerResolution"));
    ULONG longest = 0;
    ULONG shortest = 0;
    ULONG present = 0;
    if (ask == nullptr || ask(&longest, &shortest, &present) < 0) {
        return kNotKnown;
    }
    LARGE_INTEGER frequency{};
    QueryPerformanceFrequency(&frequency);
    return std::to_string(present / 10) + " us at present, " + std::to_string(shortest / 10) +
           " to " + std::to_string(longest / 10) + " us possible; performance counter " +
           std::to_string(frequency.QuadPart) + " Hz";
}

std::string Processors()
{
    // Of all groups: a group has at most 64 processors.
    return std::to_string(GetActiveProcessorCount(ALL_PROCESSOR_GROUPS)) + " x " +
           MachineText(R"(HARDWARE\DESCRIPTION\System\CentralProcessor\0)", "ProcessorNameString",
                       kNotKnown);
}

std::string Memory()
{
    MEMORYSTATUSEX memory{};
    memory.dwLength = sizeof memory;
    GlobalMemoryStatusEx(&memory);
    constexpr DWORDLONG mebibyte = 1024 * 1024;
    return std::to_string(memory.ullTotalPhys / mebibyte) + " MiB, " +
           std::to_string(memory.ullAvailPhys / mebibyte) + " MiB free";
}

std::string Disk(const std::string& folder)
{
    wchar_t system[64] = {};
    const std::wstring root = std::filesystem::path(folder).root_path().wstring();
    if (GetVolumeInformationW(root.c_str(), nullptr, 0, nullptr, nullptr, nullptr, system, 64) ==
        FALSE) {
        return kNotKnown;
    }
    const char* const key = R"(SYSTEM\CurrentControlSet\Control\FileSystem)";
    return Utf8(system) + "; long paths: " + MachineText(key, "LongPathsEnabled", kNotKnown) +
           "; short names off: " + MachineText(key, "NtfsDisable8dot3NameCreation", kNotKnown);
}

std::string ErrorBoxes()
{
    const auto facts = client::v0::GatherCrashDialogFacts();
    return client::v0::JudgeCrashDialogs(facts).text + "; " +
           client::v0::JudgeErrorBoxes(facts).text;
}

std::string TemporaryFolder()
{
    wchar_t path[MAX_PATH + 1] = {};
    return GetTempPathW(MAX_PATH + 1, path) != 0 ? Utf8(path) : kNotKnown;
}

} // namespace

std::vector<Fact> GatherMachineFacts(const std::string& kitFolder)
{
    return {{"Windows", WindowsVersion()},
            {"Wine", WineVersion()},
            {"Processors", Processors()},
            {"Memory", Memory()},
            {"Disk of the kit", Disk(kitFolder)},
            {"Folder of the kit", kitFolder},
            {"Temporary folder", TemporaryFolder()},
            {"Languages", Languages()},
            {"Code pages", CodePages()},
            {"Console", ConsoleModes()},
            {"Session", SessionText()},
            {"Rights", Rights()},
            {"Firewall", Firewall()},
            {"WMI", Wmi()},
            {"Virus scanner", VirusScanner()},
            {"Code integrity", CodeIntegrity()},
            {"Error boxes", ErrorBoxes()},
            {"Clock", TimerSteps()}};
}

bool IsAdministrator()
{
    return IsUserAnAdmin() != FALSE;
}

std::string LocalTimeText()
{
    SYSTEMTIME now{};
    GetLocalTime(&now);
    TIME_ZONE_INFORMATION zone{};
    const bool daylight = GetTimeZoneInformation(&zone) == TIME_ZONE_ID_DAYLIGHT;
    const long minutes = -(zone.Bias + (daylight ? zone.DaylightBias : zone.StandardBias));
    const long distance = minutes < 0 ? -minutes : minutes;
    char text[64] = {};
    std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u%c%02ld:%02ld", now.wYear,
                  now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond,
                  minutes < 0 ? '-' : '+', distance / 60, distance % 60);
    return text;
}

} // namespace vqrx::kit
