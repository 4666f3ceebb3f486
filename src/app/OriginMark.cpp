#include "OriginMark.h"

#include "ObjectOrigin.h"
#include "win32/LocalMemory.h"

#include <sddl.h>

#include <cstdint>
#include <new>
#include <string>

namespace vqrx::app::v0 {
namespace {

using system::win32::v1::UniqueKernelHandle;
using system::win32::v1::UniqueLocalMemory;

// Everybody may read the owner and the access list. Nobody needs to wait for the event or set it.
constexpr const wchar_t* kReadableByAll = L"D:P(A;;RC;;;WD)";

HRESULT MakeEvent(const std::wstring& name, SECURITY_ATTRIBUTES& attributes,
                  UniqueKernelHandle& mark) noexcept
{
    mark.Reset(CreateEventW(&attributes, TRUE, FALSE, name.c_str()));
    const DWORD error = GetLastError(); // also if the event exists: then somebody else made it
    if (error != ERROR_SUCCESS) {
        mark.Reset();
    }
    return HRESULT_FROM_WIN32(error);
}

} // namespace

HRESULT MakeOriginMark(IUnknown* object, UniqueKernelHandle& mark) noexcept
{
    mark.Reset();
    std::uint64_t exporterId = 0;
    if (const HRESULT result = daemon_manager::ReadExporterId(object, exporterId); FAILED(result)) {
        return result;
    }
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (ConvertStringSecurityDescriptorToSecurityDescriptorW(kReadableByAll, SDDL_REVISION_1,
                                                             &descriptor, nullptr) == FALSE) {
        const DWORD error = GetLastError();
        return HRESULT_FROM_WIN32(error);
    }
    const UniqueLocalMemory<void> owner(descriptor);
    SECURITY_ATTRIBUTES attributes{sizeof attributes, descriptor, FALSE};
    try {
        return MakeEvent(daemon_manager::OriginMarkName(exporterId), attributes, mark);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

} // namespace vqrx::app::v0
