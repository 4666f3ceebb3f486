// Makes a file with the name of this library and ".loaded" when it is loaded. Has the functions
// that the product calls in the libraries in whose place it is planted.
#include <windows.h>

#include <string>

extern "C" {

BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH) {
        char path[MAX_PATH] = {};
        GetModuleFileNameA(library, path, MAX_PATH);
        CloseHandle(CreateFileA((std::string(path) + ".loaded").c_str(), GENERIC_WRITE, 0, nullptr,
                                CREATE_ALWAYS, 0, nullptr));
    }
    return TRUE;
}

__declspec(dllexport) DWORD WINAPI AMGetErrorTextA(HRESULT, char*, DWORD)
{
    return 0;
}

__declspec(dllexport) DWORD WINAPI GetFileVersionInfoSizeW(LPCWSTR, LPDWORD)
{
    return 0;
}

__declspec(dllexport) BOOL WINAPI GetFileVersionInfoW(LPCWSTR, DWORD, DWORD, LPVOID)
{
    return FALSE;
}

__declspec(dllexport) BOOL WINAPI VerQueryValueW(LPCVOID, LPCWSTR, LPVOID*, PUINT)
{
    return FALSE;
}
}
