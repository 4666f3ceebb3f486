#include "ImportSlots.h"

#include <windows.h>

namespace vqrx::test::anomaly {
namespace {

template <typename T>
T* InProgram(ULONGLONG offset)
{
    return reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(GetModuleHandleA(nullptr)) +
                                offset);
}

const IMAGE_DATA_DIRECTORY& DataDirectory(int number)
{
    const auto* const dos = InProgram<IMAGE_DOS_HEADER>(0);
    const auto* const nt = InProgram<IMAGE_NT_HEADERS>(static_cast<ULONGLONG>(dos->e_lfanew));
    return nt->OptionalHeader.DataDirectory[number];
}

std::string NameOfImport(const IMAGE_THUNK_DATA& name)
{
    if (IMAGE_SNAP_BY_ORDINAL(name.u1.Ordinal)) {
        return "#" + std::to_string(IMAGE_ORDINAL(name.u1.Ordinal));
    }
    const auto* const import = InProgram<IMAGE_IMPORT_BY_NAME>(name.u1.AddressOfData);
    return reinterpret_cast<const char*>(import->Name);
}

} // namespace

std::vector<ImportSlot> ImportSlots()
{
    std::vector<ImportSlot> slots;
    const auto& directory = DataDirectory(IMAGE_DIRECTORY_ENTRY_IMPORT);
    for (const auto* library = InProgram<IMAGE_IMPORT_DESCRIPTOR>(directory.VirtualAddress);
         library->Name != 0; ++library) {
        const auto* name = InProgram<IMAGE_THUNK_DATA>(library->OriginalFirstThunk);
        auto* slot = InProgram<IMAGE_THUNK_DATA>(library->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            slots.push_back({InProgram<const char>(library->Name), NameOfImport(*name),
                             reinterpret_cast<void**>(&slot->u1.Function)});
        }
    }
    return slots;
}

bool HasDelayedImports()
{
    return DataDirectory(IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT).Size != 0;
}

void* ExchangeSlot(void** slot, void* value)
{
    DWORD protection = 0;
    VirtualProtect(static_cast<void*>(slot), sizeof *slot, PAGE_READWRITE, &protection);
    void* const old = *slot;
    *slot = value;
    VirtualProtect(static_cast<void*>(slot), sizeof *slot, protection, &protection);
    return old;
}

} // namespace vqrx::test::anomaly
