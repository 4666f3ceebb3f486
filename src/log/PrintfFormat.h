#pragma once

/// Lets the compiler check a printf-style member. Counts parameters from 1, `this` included.
/// On Windows the checks must speak of msvcrt's dialect, not of the C99 one.
#if defined(_WIN32)
#define VQRX_PRINTF(formatIndex, firstArgument)                                                    \
    __attribute__((format(ms_printf, formatIndex, firstArgument)))
#else
#define VQRX_PRINTF(formatIndex, firstArgument)                                                    \
    __attribute__((format(printf, formatIndex, firstArgument)))
#endif
