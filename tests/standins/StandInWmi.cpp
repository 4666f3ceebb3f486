#include "StandInWmi.h"

#include "ClassFactory.h"
#include "LiveProcess.h"
#include "NullWmi.h"
#include "Tracked.h"

#include <utility>

namespace vqrx::test {
namespace {

constexpr CLSID kWbemLocator = {
    0x4590F811, 0x1D3A, 0x11D0, {0x89, 0x1F, 0x00, 0xAA, 0x00, 0x4B, 0x2E, 0x24}};

template <typename Base>
using WmiObject = Tracked<Base, &TheWmiScript>;

std::vector<ProcessAnswer> LiveAnswer(DWORD processId)
{
    const auto live = ReadLiveProcess(processId);
    if (!live) {
        return {};
    }
    ProcessAnswer answer;
    answer.executablePath.text = live->executablePath;
    answer.commandLine.text = live->commandLine;
    return {answer};
}

HRESULT WriteAnswer(const PropertyAnswer& answer, VARIANT* value)
{
    VariantInit(value);
    if (FAILED(answer.result)) {
        return answer.result;
    }
    value->vt = answer.type;
    if (answer.type == VT_BSTR) {
        value->bstrVal = answer.nullText ? nullptr
                                         : SysAllocStringLen(answer.text.data(),
                                                             static_cast<UINT>(answer.text.size()));
    }
    return S_OK;
}

class ProcessObject : public WmiObject<NullWbemClassObject> {
public:
    explicit ProcessObject(ProcessAnswer answer)
        : answer_(std::move(answer))
    {
    }

    HRESULT STDMETHODCALLTYPE Get(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE* type,
                                  LONG* flavour) override
    {
        TheWmiScript().lastGetFlags = flags;
        TheWmiScript().lastGetIsPlain = type != nullptr && flavour == nullptr;
        if (std::wstring(name) == L"ExecutablePath") {
            return WriteAnswer(answer_.executablePath, value);
        }
        if (std::wstring(name) == L"CommandLine") {
            return WriteAnswer(answer_.commandLine, value);
        }
        return static_cast<HRESULT>(WBEM_E_NOT_FOUND);
    }

private:
    ProcessAnswer answer_;
};

class Enumerator : public WmiObject<NullEnumWbemClassObject> {
public:
    explicit Enumerator(std::vector<ProcessAnswer> answers)
        : answers_(std::move(answers))
    {
    }

    HRESULT STDMETHODCALLTYPE Next(LONG timeout, ULONG count, IWbemClassObject** objects,
                                   ULONG* returned) override
    {
        TheWmiScript().lastNextTimeout = timeout;
        TheWmiScript().lastNextCount = count;
        *returned = 0;
        if (++calls_ == TheWmiScript().failAtNext) {
            return E_ABORT;
        }
        if (next_ == answers_.size()) {
            return WBEM_S_FALSE;
        }
        *objects = new ProcessObject(answers_[next_++]);
        *returned = 1;
        return S_OK;
    }

private:
    std::vector<ProcessAnswer> answers_;
    std::size_t next_ = 0;
    int calls_ = 0;
};

class Services : public WmiObject<NullWbemServices>, public IClientSecurity {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        if (IsEqualIID(iid, __uuidof(IClientSecurity))) {
            *object = static_cast<IClientSecurity*>(this);
            NullWbemServices::AddRef();
            return S_OK;
        }
        return NullWbemServices::QueryInterface(iid, object);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return NullWbemServices::AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return NullWbemServices::Release(); }

    HRESULT STDMETHODCALLTYPE ExecQuery(const BSTR language, const BSTR query, LONG flags,
                                        IWbemContext*, IEnumWbemClassObject** enumerator) override
    {
        WmiScript& script = TheWmiScript();
        script.lastLanguage = language;
        script.lastQuery = query;
        script.lastQueryFlags = flags;
        *enumerator = nullptr;
        if (FAILED(script.query)) {
            return script.query;
        }
        const auto processId = static_cast<DWORD>(
            std::stoul(script.lastQuery.substr(script.lastQuery.rfind(L'=') + 1)));
        *enumerator =
            new Enumerator(script.processes ? script.processes(processId) : LiveAnswer(processId));
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE QueryBlanket(IUnknown*, DWORD*, DWORD*, OLECHAR**, DWORD*, DWORD*,
                                           void**, DWORD*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetBlanket(IUnknown*, DWORD authentication, DWORD authorisation,
                                         OLECHAR*, DWORD level, DWORD impersonation, void*,
                                         DWORD capabilities) override
    {
        TheWmiScript().blanketAsked = {authentication, authorisation, level, impersonation,
                                       capabilities};
        return TheWmiScript().blanket;
    }
    HRESULT STDMETHODCALLTYPE CopyProxy(IUnknown*, IUnknown**) override { return E_NOTIMPL; }
};

class Locator : public WmiObject<Counted<IWbemLocator>> {
public:
    HRESULT STDMETHODCALLTYPE ConnectServer(const BSTR resource, const BSTR user,
                                            const BSTR password, const BSTR locale, LONG flags,
                                            const BSTR authority, IWbemContext* context,
                                            IWbemServices** services) override
    {
        WmiScript& script = TheWmiScript();
        script.connectedPlainly = user == nullptr && password == nullptr && locale == nullptr &&
                                  authority == nullptr && context == nullptr;
        script.connectedTo = resource;
        script.connectFlags = flags;
        *services = nullptr;
        if (FAILED(script.connect)) {
            return script.connect;
        }
        *services = new Services;
        return S_OK;
    }
};

} // namespace

WmiScript& TheWmiScript()
{
    static WmiScript script;
    return script;
}

IUnknown* MakeWmiLocatorFactory()
{
    return new FunctionFactory([]() -> IUnknown* { return new Locator; });
}

StandInWmi::StandInWmi(HRESULT refuseCreation)
{
    TheWmiScript() = WmiScript();
    cookie_ = RegisterInProcess(
        kWbemLocator,
        new FunctionFactory([]() -> IUnknown* { return new Locator; }, refuseCreation));
}

StandInWmi::~StandInWmi()
{
    CoRevokeClassObject(cookie_);
}

} // namespace vqrx::test
