#pragma once

#include <windows.h>

#include <stdexcept>

namespace vqrx::test {

/// Gives the calling thread a locale whose ANSI code page differs from the system's: Russian, with
/// code page 1251. Byte E9 is U+0439 there. The destructor restores the locale.
class RussianThread {
public:
    /// @throws std::runtime_error  if the system does not know the locale, or uses it itself
    RussianThread()
        : before_(GetThreadLocale())
    {
        if (GetACP() == 1251 || SetThreadLocale(MAKELCID(0x0419, SORT_DEFAULT)) == FALSE) {
            throw std::runtime_error("this thread cannot get a locale of its own");
        }
    }
    RussianThread(const RussianThread&) = delete;
    RussianThread& operator=(const RussianThread&) = delete;
    ~RussianThread() { SetThreadLocale(before_); }

private:
    LCID before_;
};

} // namespace vqrx::test
