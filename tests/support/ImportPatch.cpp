#include "ImportPatch.h"

#include <cstring>
#include <stdexcept>
#include <string>

namespace vqrx::test {
namespace {

template <typename T>
T* At(HMODULE module, DWORD offset)
{
    return reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(module) + offset);
}

void** FindImportSlot(const char* function)
{
    const HMODULE self = GetModuleHandleA(nullptr);
    const auto* dos = At<IMAGE_DOS_HEADER>(self, 0);
    const auto* nt = At<IMAGE_NT_HEADERS>(self, static_cast<DWORD>(dos->e_lfanew));
    const auto& directory = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (const auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(self, directory.VirtualAddress);
         library->Name != 0; ++library) {
        const auto* name = At<IMAGE_THUNK_DATA>(self, library->OriginalFirstThunk);
        auto* slot = At<IMAGE_THUNK_DATA>(self, library->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) {
                continue;
            }
            const auto* import =
                At<IMAGE_IMPORT_BY_NAME>(self, static_cast<DWORD>(name->u1.AddressOfData));
            if (std::strcmp(reinterpret_cast<const char*>(import->Name), function) == 0) {
                return reinterpret_cast<void**>(&slot->u1.Function);
            }
        }
    }
    throw std::runtime_error(std::string("not imported by this program: ") + function);
}

} // namespace

ImportPatch::ImportPatch(const char* function)
    : slot_(FindImportSlot(function))
    , original_(*static_cast<void**>(slot_))
{
}

ImportPatch::~ImportPatch()
{
    Put(original_);
}

void ImportPatch::Put(void* function) noexcept
{
    auto** const slot = static_cast<void**>(slot_);
    DWORD protection = 0;
    VirtualProtect(static_cast<void*>(slot), sizeof *slot, PAGE_READWRITE, &protection);
    *slot = function;
    VirtualProtect(static_cast<void*>(slot), sizeof *slot, protection, &protection);
}

} // namespace vqrx::test
