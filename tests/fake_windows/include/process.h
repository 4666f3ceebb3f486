#pragma once

#include <windows.h>

using _beginthreadex_proc_type = unsigned (*)(void*);

/// Starts the thread immediately. Fails if flags is not 0.
std::uintptr_t _beginthreadex(void* security, unsigned stackSize, unsigned (*entry)(void*),
                              void* argument, unsigned flags, unsigned* threadId);
