#pragma once

/// Lets the compiler check the arguments of a printf-style member function. Parameters are counted
/// from 1, `this` included. On Windows the format is msvcrt's dialect, not that of C99.
#if defined(_WIN32)
#define VQRX_PRINTF(formatIndex, firstArgument)                                                    \
    __attribute__((format(ms_printf, formatIndex, firstArgument)))
#else
#define VQRX_PRINTF(formatIndex, firstArgument)                                                    \
    __attribute__((format(printf, formatIndex, firstArgument)))
#endif
