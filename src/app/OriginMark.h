#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <objidl.h>

namespace vqrx::app::v0 {

/// Makes the mark by which clients recognise that an object is one of this process, see
/// ObjectOrigin.h. The owner of the mark is the account that owns everything that this process
/// makes. Every user may read this owner. Call the function after the security of COM is set,
/// because it lets COM write the object's marshalled form.
/// @param mark  receives the mark, which lasts as long as the handle; empty on failure
/// @return S_OK, or the result of the call that failed
[[nodiscard]] HRESULT MakeOriginMark(IUnknown* object,
                                     system::win32::v1::UniqueKernelHandle& mark) noexcept;

} // namespace vqrx::app::v0
