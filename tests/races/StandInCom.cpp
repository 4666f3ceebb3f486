// COM, WMI, the firewall and the services of a machine on which all of them work.
#include <netfw.h>
#include <shellapi.h>
#include <wbemidl.h>

#include <atomic>
#include <cstdlib>
#include <cwchar>
#include <new>
#include <string>
#include <vector>

namespace {

template <typename Interface>
class Counted : public Interface {
public:
    HRESULT QueryInterface(REFIID, void** object) override
    {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG AddRef() override { return ++references_; }
    ULONG Release() override
    {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }

protected:
    virtual ~Counted() = default;

private:
    std::atomic<ULONG> references_ = 1;
};

class ProcessObject final : public Counted<IWbemClassObject> {
public:
    HRESULT Get(LPCWSTR name, LONG, VARIANT* value, CIMTYPE*, LONG*) override
    {
        value->vt = VT_BSTR;
        value->bstrVal = SysAllocString(std::wcscmp(name, L"ExecutablePath") == 0
                                            ? L"attached.exe"
                                            : L"attached.exe first second");
        return S_OK;
    }
};

class Found final : public Counted<IEnumWbemClassObject> {
public:
    HRESULT Next(LONG, ULONG, IWbemClassObject** objects, ULONG* returned) override
    {
        *returned = given_ ? 0 : 1;
        *objects = given_ ? nullptr : new ProcessObject;
        given_ = true;
        return *returned == 1 ? S_OK : S_FALSE;
    }

private:
    bool given_ = false;
};

class Services final : public Counted<IWbemServices> {
public:
    HRESULT ExecQuery(BSTR, BSTR, LONG, IWbemContext*, IEnumWbemClassObject** found) override
    {
        *found = new Found;
        return S_OK;
    }
};

class Locator final : public Counted<IWbemLocator> {
public:
    HRESULT ConnectServer(BSTR, BSTR, BSTR, BSTR, LONG, BSTR, IWbemContext*,
                          IWbemServices** services) override
    {
        *services = new Services;
        return S_OK;
    }
};

class Profile final : public Counted<INetFwProfile> {};

class Policy final : public Counted<INetFwPolicy> {
public:
    HRESULT get_CurrentProfile(INetFwProfile** profile) override
    {
        *profile = new Profile;
        return S_OK;
    }
};

class Manager final : public Counted<INetFwMgr> {
public:
    HRESULT get_LocalPolicy(INetFwPolicy** policy) override
    {
        *policy = new Policy;
        return S_OK;
    }
};

class Rule final : public Counted<INetFwRule> {
public:
    HRESULT put_Name(BSTR) override { return S_OK; }
    HRESULT put_ApplicationName(BSTR) override { return S_OK; }
    HRESULT put_Protocol(LONG) override { return S_OK; }
    HRESULT put_Profiles(LONG) override { return S_OK; }
    HRESULT put_Action(NET_FW_ACTION) override { return S_OK; }
    HRESULT put_Enabled(VARIANT_BOOL) override { return S_OK; }
};

class Rules final : public Counted<INetFwRules> {
public:
    HRESULT Item(BSTR, INetFwRule** rule) override
    {
        *rule = nullptr;
        return E_FAIL;
    }
    HRESULT Add(INetFwRule*) override { return S_OK; }
    HRESULT Remove(BSTR) override { return S_OK; }
};

class Policy2 final : public Counted<INetFwPolicy2> {
public:
    HRESULT get_Rules(INetFwRules** rules) override
    {
        *rules = new Rules;
        return S_OK;
    }
};

int service = 0; // whatever a handle of a service points to

} // namespace

std::uint32_t NextInterfaceNumber()
{
    static std::atomic<std::uint32_t> last = 0;
    return ++last;
}

HRESULT CoInitializeEx(void*, DWORD)
{
    return S_OK;
}

void CoUninitialize() {}

HRESULT CoCreateInstance(REFCLSID classId, IUnknown*, DWORD, REFIID, void** object)
{
    switch (classId.Data1) {
    case 0x4590F811:
        *object = static_cast<IWbemLocator*>(new Locator);
        return S_OK;
    case 0x304CE942:
        *object = static_cast<INetFwMgr*>(new Manager);
        return S_OK;
    case 0xE2B3C97F:
        *object = static_cast<INetFwPolicy2*>(new Policy2);
        return S_OK;
    case 0x2C5BC43E:
        *object = static_cast<INetFwRule*>(new Rule);
        return S_OK;
    default:
        *object = nullptr;
        return E_NOINTERFACE;
    }
}

HRESULT CoInitializeSecurity(void*, LONG, void*, void*, DWORD, DWORD, void*, DWORD, void*)
{
    return S_OK;
}

HRESULT CoSetProxyBlanket(IUnknown*, DWORD, DWORD, OLECHAR*, DWORD, DWORD, void*, DWORD)
{
    return S_OK;
}

// A string stands behind its length.
BSTR SysAllocStringLen(const OLECHAR* text, UINT length)
{
    auto* const memory = static_cast<std::size_t*>(
        std::malloc(sizeof(std::size_t) + (length + 1U) * sizeof(OLECHAR)));
    *memory = length;
    auto* const result = reinterpret_cast<BSTR>(memory + 1);
    std::wmemcpy(result, text, length);
    result[length] = L'\0';
    return result;
}

BSTR SysAllocString(const OLECHAR* text)
{
    return text != nullptr ? SysAllocStringLen(text, static_cast<UINT>(std::wcslen(text)))
                           : nullptr;
}

UINT SysStringLen(BSTR text)
{
    return text != nullptr ? static_cast<UINT>(*(reinterpret_cast<std::size_t*>(text) - 1)) : 0;
}

void SysFreeString(BSTR text)
{
    if (text != nullptr) {
        std::free(reinterpret_cast<std::size_t*>(text) - 1);
    }
}

void VariantInit(VARIANT* value)
{
    *value = {VT_EMPTY, nullptr};
}

HRESULT VariantClear(VARIANT* value)
{
    if (value->vt == VT_BSTR) {
        SysFreeString(value->bstrVal);
    }
    VariantInit(value);
    return S_OK;
}

HRESULT SafeArrayLock(SAFEARRAY*)
{
    return S_OK;
}

HRESULT SafeArrayUnlock(SAFEARRAY*)
{
    return S_OK;
}

HRESULT SafeArrayDestroy(SAFEARRAY*)
{
    return S_OK; // the tests' own
}

HRESULT SafeArrayGetVartype(SAFEARRAY*, VARTYPE* type)
{
    *type = VT_BSTR;
    return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY*)
{
    return 1;
}

HRESULT SafeArrayGetLBound(SAFEARRAY*, UINT, LONG* bound)
{
    *bound = 0;
    return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT, LONG* bound)
{
    *bound = array->count - 1;
    return S_OK;
}

// ASCII alone.
int WideCharToMultiByte(UINT, DWORD, LPCWSTR text, int length, LPSTR buffer, int size, LPCSTR,
                        BOOL*)
{
    for (int index = 0; index < length && index < size; ++index) {
        buffer[index] = static_cast<char>(text[index]);
    }
    return length;
}

int MultiByteToWideChar(UINT, DWORD, LPCSTR text, int length, LPWSTR buffer, int size)
{
    for (int index = 0; index < length && index < size; ++index) {
        buffer[index] = static_cast<wchar_t>(text[index]);
    }
    return length;
}

HLOCAL LocalFree(HLOCAL memory)
{
    std::free(memory);
    return nullptr;
}

// Splits at blanks; the pointers and the texts in one piece of memory.
LPWSTR* CommandLineToArgvW(LPCWSTR commandLine, int* count)
{
    constexpr std::size_t kMost = 16;
    const std::size_t length = std::wcslen(commandLine);
    auto** const parts =
        static_cast<LPWSTR*>(std::malloc(kMost * sizeof(LPWSTR) + (length + 1) * sizeof(wchar_t)));
    auto* const texts = reinterpret_cast<wchar_t*>(parts + kMost);
    std::wmemcpy(texts, commandLine, length + 1);
    *count = 0;
    for (std::size_t index = 0; index < length; ++index) {
        if (texts[index] == L' ') {
            texts[index] = L'\0';
        } else if (index == 0 || texts[index - 1] == L'\0') {
            parts[(*count)++] = texts + index;
        }
    }
    return parts;
}

SC_HANDLE OpenSCManagerA(LPCSTR, LPCSTR, DWORD)
{
    return reinterpret_cast<SC_HANDLE>(&service);
}

SC_HANDLE OpenServiceA(SC_HANDLE, LPCSTR, DWORD)
{
    return reinterpret_cast<SC_HANDLE>(&service);
}

BOOL QueryServiceConfigA(SC_HANDLE, QUERY_SERVICE_CONFIGA* config, DWORD, LPDWORD)
{
    config->dwStartType = 2;
    return TRUE;
}

BOOL QueryServiceStatus(SC_HANDLE, SERVICE_STATUS* status)
{
    status->dwCurrentState = SERVICE_RUNNING;
    return TRUE;
}

// One service, of a process that nobody attaches.
BOOL EnumServicesStatusExA(SC_HANDLE, SC_ENUM_TYPE, DWORD, DWORD, LPBYTE buffer, DWORD size,
                           LPDWORD needed, LPDWORD count, LPDWORD, LPCSTR)
{
    static char name[] = "MpsSvc";
    *needed = sizeof(ENUM_SERVICE_STATUS_PROCESSA);
    if (size < *needed) {
        SetLastError(ERROR_MORE_DATA);
        return FALSE;
    }
    *reinterpret_cast<ENUM_SERVICE_STATUS_PROCESSA*>(buffer) = {name, name, {SERVICE_RUNNING, 1}};
    *count = 1;
    return TRUE;
}

extern "C" DWORD AMGetErrorTextA(HRESULT, char*, DWORD)
{
    return 0;
}
