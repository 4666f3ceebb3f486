#include "LetterCase.h"

#if defined(_WIN32)
#include "Utf8.h"

#include <windows.h>
#else
#include <climits>
#include <clocale>
#include <cwchar>
#include <cwctype>
#endif

#include <algorithm>
#include <array>
#include <cstddef>

namespace vqrx::client::v0 {
namespace {

constexpr char UpperAscii(char character) noexcept
{
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A')
                                                : character;
}

// Converts only a to z.
std::string UpperAscii(std::string_view text)
{
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char character) { return UpperAscii(character); });
    return upper;
}

#if defined(_WIN32)

std::string UpperOfSystem(std::string_view utf8)
{
    const std::wstring text = Wide(utf8);
    std::wstring upper(text.size(), L'\0');
    const auto size = static_cast<int>(text.size());
    // Without LCMAP_LINGUISTIC_CASING, Windows takes the pairs of the file system.
    const int converted =
        LCMapStringW(LOCALE_INVARIANT, LCMAP_UPPERCASE, text.data(), size, upper.data(), size);
    return converted == size ? Utf8(upper) : std::string(utf8);
}

#else

// The locale of this thread, which knows UTF-8, until the end of the scope.
class Utf8Locale {
public:
    Utf8Locale()
        : locale_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr))
        , before_(uselocale(locale_)) // a null changes nothing
    {
    }
    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;
    ~Utf8Locale()
    {
        uselocale(before_);
        if (locale_ != nullptr) {
            freelocale(locale_);
        }
    }

private:
    locale_t locale_;
    locale_t before_;
};

std::string UpperOfSystem(std::string_view utf8)
{
    const Utf8Locale locale;
    std::string upper;
    while (!utf8.empty()) {
        wchar_t letter = 0;
        std::mbstate_t state{};
        const std::size_t read = std::mbrtowc(&letter, utf8.data(), utf8.size(), &state);
        if (read == 0 || read > utf8.size()) { // a NUL, or no UTF-8
            upper += utf8.front();
            utf8.remove_prefix(1);
            continue;
        }
        std::array<char, MB_LEN_MAX> bytes{};
        state = {};
        const std::wint_t big = std::towupper(static_cast<std::wint_t>(letter));
        const std::size_t written = std::wcrtomb(bytes.data(), static_cast<wchar_t>(big), &state);
        upper.append(bytes.data(), std::min(written, bytes.size()));
        utf8.remove_prefix(read);
    }
    return upper;
}

#endif

} // namespace

std::string WithoutCase(std::string_view utf8)
{
    const bool isAscii = std::all_of(utf8.begin(), utf8.end(), [](char character) {
        return static_cast<unsigned char>(character) < 0x80U;
    });
    return isAscii ? UpperAscii(utf8) : UpperOfSystem(utf8);
}

} // namespace vqrx::client::v0
