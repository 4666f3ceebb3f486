#pragma once

#include "OwnedInterface.h"

#include <windows.h>

#include <objbase.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>

namespace daemon_manager {

// How a client recognises the process whose object it has found.
//
// The Running Object Table names an object, but not its process. Each connection, however, carries
// the exporter id of its object: the number that Windows gave to the apartment of the process which
// answers. The supervisor makes a kernel event with this number in its name, the mark, and keeps it
// as long as its object is published. Windows notes the owner of the mark: nobody else than an
// administrator can make a mark that belongs to another user.

/// Returns the name of the mark for the objects of one apartment.
/// @throws std::bad_alloc
inline std::wstring OriginMarkName(std::uint64_t exporterId)
{
    std::wstring name = L"Global\\DaemonManager.";
    for (int shift = 60; shift >= 0; shift -= 4) {
        name += L"0123456789abcdef"[(exporterId >> shift) & 0xFU];
    }
    return name;
}

/// Reads the exporter id of an object of this process, or of the object to which a proxy leads. COM
/// writes it into the marshalled form of the object: 4 bytes signature, 4 bytes kind, 16 bytes
/// interface id, 8 bytes flags and count, 8 bytes exporter id.
/// @return S_OK; CO_E_OBJNOTREG if the object has a marshalled form of its own, so that its process
///         is not known; otherwise the result of the call of COM that failed
inline HRESULT ReadExporterId(IUnknown* object, std::uint64_t& exporterId) noexcept
{
    constexpr std::uint32_t ownForm = 4; // OBJREF_CUSTOM
    constexpr std::size_t kindAt = 4;
    constexpr std::size_t exporterAt = 32;
    IStream* made = nullptr;
    HRESULT result = CreateStreamOnHGlobal(nullptr, TRUE, &made);
    const OwnedInterface<IStream> stream(made);
    if (FAILED(result)) {
        return result;
    }
    result = CoMarshalInterface(stream.get(), __uuidof(IUnknown), object, MSHCTX_LOCAL, nullptr,
                                MSHLFLAGS_NORMAL);
    if (SUCCEEDED(result)) {
        std::array<unsigned char, exporterAt + sizeof exporterId> form{};
        std::uint32_t kind = ownForm;
        ULONG length = 0;
        const LARGE_INTEGER begin{};
        stream->Seek(begin, STREAM_SEEK_SET, nullptr);
        stream->Read(form.data(), static_cast<ULONG>(form.size()), &length);
        std::memcpy(&kind, form.data() + kindAt, sizeof kind);
        std::memcpy(&exporterId, form.data() + exporterAt, sizeof exporterId);
        result = length == form.size() && kind != ownForm ? S_OK : CO_E_OBJNOTREG;
        stream->Seek(begin, STREAM_SEEK_SET, nullptr);
        CoReleaseMarshalData(stream.get());
    }
    return result;
}

} // namespace daemon_manager
