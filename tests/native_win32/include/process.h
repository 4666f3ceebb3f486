#pragma once

#include <windows.h>

using _beginthreadex_proc_type = unsigned (*)(void*);

/// Starts at once; flags must be 0.
std::uintptr_t _beginthreadex(void* security, unsigned stackSize, unsigned (*entry)(void*),
                              void* argument, unsigned flags, unsigned* threadId);
