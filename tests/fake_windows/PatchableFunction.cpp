#include "PatchableFunction.h"

#include "ImportPatch.h"

#include <cstring>
#include <stdexcept>
#include <string>

namespace fake_windows {
namespace {

PatchableFunction* first = nullptr; // The constructors of static slots fill the list before main.

} // namespace

PatchableFunction::PatchableFunction(const char* name, void* function) noexcept
    : name_(name)
    , function_(function)
    , next_(first)
{
    first = this;
}

PatchableFunction* PatchableFunction::Find(const char* name) noexcept
{
    PatchableFunction* slot = first;
    while (slot != nullptr && std::strcmp(slot->name_, name) != 0) {
        slot = slot->next_;
    }
    return slot;
}

} // namespace fake_windows

namespace vqrx::test {

using fake_windows::PatchableFunction;

ImportPatch::ImportPatch(const char* function)
    : slot_(PatchableFunction::Find(function))
{
    if (slot_ == nullptr) {
        throw std::runtime_error(
            std::string("the fake Windows of this program has no replaceable function ") +
            function);
    }
    original_ = static_cast<PatchableFunction*>(slot_)->Function();
}

ImportPatch::~ImportPatch()
{
    Put(original_);
}

void ImportPatch::Put(void* function) noexcept
{
    static_cast<PatchableFunction*>(slot_)->Replace(function);
}

} // namespace vqrx::test
