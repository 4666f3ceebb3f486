#include "Import.h"

#include "ImportPatch.h"

#include <cstring>
#include <stdexcept>
#include <string>

namespace native_win32 {
namespace {

ImportSlot* first = nullptr; // filled before main

} // namespace

ImportSlot::ImportSlot(const char* name, void* function) noexcept
    : name_(name)
    , function_(function)
    , next_(first)
{
    first = this;
}

ImportSlot* ImportSlot::Find(const char* name) noexcept
{
    ImportSlot* slot = first;
    while (slot != nullptr && std::strcmp(slot->name_, name) != 0) {
        slot = slot->next_;
    }
    return slot;
}

} // namespace native_win32

namespace vqrx::test {

using native_win32::ImportSlot;

ImportPatch::ImportPatch(const char* function, void* replacement)
    : slot_(ImportSlot::Find(function))
{
    if (slot_ == nullptr) {
        throw std::runtime_error(std::string("not imported by this program: ") + function);
    }
    original_ = static_cast<ImportSlot*>(slot_)->Exchange(replacement);
}

ImportPatch::~ImportPatch()
{
    static_cast<ImportSlot*>(slot_)->Exchange(original_);
}

} // namespace vqrx::test
