// Conversion of text, and the split of a command line.
#include <shellapi.h>

#include <cstdlib>
#include <cwchar>

// Converts ASCII only.
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

// Splits at blanks. The pointers and the texts lie in one block of memory.
LPWSTR* CommandLineToArgvW(LPCWSTR commandLine, int* count)
{
    constexpr std::size_t kMaxParts = 16;
    const std::size_t length = std::wcslen(commandLine);
    auto** const parts = static_cast<LPWSTR*>(
        std::malloc(kMaxParts * sizeof(LPWSTR) + (length + 1) * sizeof(wchar_t)));
    auto* const texts = reinterpret_cast<wchar_t*>(parts + kMaxParts);
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
