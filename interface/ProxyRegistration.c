/* Registers the proxy/stub for the whole machine. The functions of the run time write below
   HKEY_CLASSES_ROOT. If the user has prepared keys of these names below HKEY_CURRENT_USER, Windows
   stores the registration there: it then holds for this user only, and everybody who can write this
   user's part of the registry can change it. So these functions lead HKEY_CLASSES_ROOT to the classes of
   the machine for the time of the call. That holds for all threads of the process. */
#include <objbase.h>
#include <rpcproxy.h>

/* Made by DLLDATA_ROUTINES in the generated dlldata.c. */
void RPC_ENTRY GetProxyDllInfo(const ProxyFileInfo*** files, const CLSID** classId);

HRESULT WINAPI DllRegisterServer(void);
HRESULT WINAPI DllUnregisterServer(void);

typedef HRESULT(RPC_ENTRY* Step)(HMODULE library, const ProxyFileInfo** files,
                                 const CLSID* classId);

static HINSTANCE ownLibrary;

static HRESULT RunForMachine(Step step)
{
    const ProxyFileInfo** files = NULL;
    const CLSID* classId = NULL;
    HKEY classes = NULL;
    HRESULT result = S_OK;
    LSTATUS error =
        RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes", 0, KEY_READ | KEY_WRITE, &classes);
    if (error != ERROR_SUCCESS) {
        return HRESULT_FROM_WIN32(error);
    }
    error = RegOverridePredefKey(HKEY_CLASSES_ROOT, classes);
    if (error == ERROR_SUCCESS) {
        GetProxyDllInfo(&files, &classId);
        result = step(ownLibrary, files, classId);
        RegOverridePredefKey(HKEY_CLASSES_ROOT, NULL);
    } else {
        result = HRESULT_FROM_WIN32(error);
    }
    RegCloseKey(classes);
    return result;
}

HRESULT WINAPI DllRegisterServer(void)
{
    return RunForMachine(NdrDllRegisterProxy);
}

HRESULT WINAPI DllUnregisterServer(void)
{
    return RunForMachine(NdrDllUnregisterProxy);
}

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved)
{
    (void)reserved;
    if (reason == DLL_PROCESS_ATTACH) {
        ownLibrary = instance;
        DisableThreadLibraryCalls(instance);
    }
    return TRUE;
}
