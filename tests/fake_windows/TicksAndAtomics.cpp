#include "PatchableFunction.h"

#include <windows.h>

#include <chrono>
#include <thread>

DM_FAKE(DWORD, GetTickCount, (), ())
{
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<DWORD>(
        std::chrono::duration_cast<std::chrono::milliseconds>(sinceStart).count());
}

DM_FAKE(void, Sleep, (DWORD milliseconds), (milliseconds))
{
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

LONG InterlockedIncrement(LONG volatile* value)
{
    return __atomic_add_fetch(value, 1, __ATOMIC_SEQ_CST);
}

LONG InterlockedDecrement(LONG volatile* value)
{
    return __atomic_sub_fetch(value, 1, __ATOMIC_SEQ_CST);
}

LONG InterlockedExchange(LONG volatile* value, LONG wanted)
{
    return __atomic_exchange_n(value, wanted, __ATOMIC_SEQ_CST);
}

LONG InterlockedCompareExchange(LONG volatile* value, LONG wanted, LONG expected)
{
    __atomic_compare_exchange_n(value, &expected, wanted, false, __ATOMIC_SEQ_CST,
                                __ATOMIC_SEQ_CST);
    return expected;
}
