// Puts thunks into the import table of this program.
#include "CallKinds.h"
#include "CallThunk.h"
#include "ImportSlots.h"
#include "Injection.h"
#include "StandInMethods.h"

#include <deque>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vqrx::test::anomaly {
namespace {

Structure StructureOf(std::string_view function) noexcept
{
    return function == "CreateProcessA" || function == "CreateProcessW" ? Structure::kStartedProcess
           : function == "VariantClear"                                 ? Structure::kClearedVariant
           : function == "_beginthreadex"                               ? Structure::kStartedThread
                                                                        : Structure::kNone;
}

void Watch(const ImportSlot& import)
{
    static std::deque<ThunkedCall> calls;
    static std::deque<std::string> names;
    const CallKind* const kind = KindOf(import.function);
    const bool ofTheTest = IsOfTheTest(import.function);
    const auto ownerships = OwnershipsOf(import.function);
    const Structure structure = StructureOf(import.function);
    if (kind == nullptr && !ofTheTest && ownerships.empty() && structure == Structure::kNone) {
        return;
    }
    ThunkedCall& call = calls.emplace_back();
    call.name = names.emplace_back(import.function).c_str();
    call.kind = kind;
    call.isOfTheTest = ofTheTest;
    call.ownerships = ownerships;
    call.structure = structure;
    call.result = kind == nullptr ? 0 : kind->result;
    call.original = *import.slot;
    ExchangeSlot(import.slot, MakeThunk(&call));
}

} // namespace

std::vector<std::string> UnknownImports(const std::vector<ImportSlot>& imports)
{
    std::vector<std::string> unknown;
    for (const ImportSlot& import : imports) {
        if (KindOf(import.function) == nullptr && WhySure(import.function) == nullptr &&
            !IsOfTheTest(import.function)) {
            unknown.push_back(import.library + ":" + import.function);
        }
    }
    return unknown;
}

void InstallThunks()
{
    if (HasDelayedImports()) {
        throw std::runtime_error("the program has delayed imports; ImportSlots does not read them");
    }
    const std::vector<ImportSlot> imports = ImportSlots();
    std::string unknown;
    for (const std::string& name : UnknownImports(imports)) {
        unknown += " " + name;
    }
    if (!unknown.empty()) {
        throw std::runtime_error("CallKinds.cpp, SureCalls.cpp and TestCalls.cpp do not know" +
                                 unknown);
    }
    for (const ImportSlot& import : imports) {
        Watch(import);
    }
    ReplaceStandInMethods();
}

} // namespace vqrx::test::anomaly
