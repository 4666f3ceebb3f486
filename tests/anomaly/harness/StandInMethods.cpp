#include "StandInMethods.h"

#include "CallKinds.h"
#include "CallPath.h"
#include "CallThunk.h"
#include "ImportSlots.h"
#include "SymbolNames.h"

#include <windows.h>

#include <cxxabi.h>

#include <cstdint>
#include <cstring>
#include <deque>
#include <string>
#include <typeinfo>
#include <vector>

namespace vqrx::test::anomaly {
namespace {

// The compiler writes for each class a type_info and, for each base with virtual functions, a
// table:
//   offset of the base (0 or negative), address of the type_info, address of each virtual function.
// All of them lie in the section of constants, so a walk over it finds every table of the program.

constexpr const char* kOwnNamespace = "N4vqrx4test";
constexpr const char* kUnknown = "8IUnknown";
constexpr std::size_t kReleaseSlot = 2; // IUnknown: QueryInterface, AddRef, Release

// A result that any method may have: E_OUTOFMEMORY.
constexpr CallKind kMethodFails{"", 0x8007000E, ErrorPlace::kNone, 0};
// E_NOINTERFACE
constexpr CallKind kQueryFails{"", 0x80004002, ErrorPlace::kNone, 0};

struct Section {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    [[nodiscard]] bool Contains(std::uint64_t address) const
    {
        return address >= begin && address < end;
    }
};

Section FindSection(const char* name)
{
    auto* const base = reinterpret_cast<unsigned char*>(GetModuleHandleA(nullptr));
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto* section = IMAGE_FIRST_SECTION(nt);
    for (WORD index = 0; index < nt->FileHeader.NumberOfSections; ++index, ++section) {
        if (std::strncmp(reinterpret_cast<const char*>(section->Name), name,
                         IMAGE_SIZEOF_SHORT_NAME) == 0) {
            const auto begin = reinterpret_cast<std::uint64_t>(base) + section->VirtualAddress;
            return {begin, begin + section->Misc.VirtualSize};
        }
    }
    return {};
}

std::uint64_t WordAt(std::uint64_t address)
{
    return *reinterpret_cast<const std::uint64_t*>(address); // NOLINT(performance-no-int-to-ptr)
}

// The kinds of type_info are told apart by their own table of functions.
struct ProbeBase {
    virtual ~ProbeBase() = default;
};
struct ProbeOther {
    virtual ~ProbeOther() = default;
};
struct ProbeSingle : ProbeBase {};
struct ProbeMultiple : ProbeBase, ProbeOther {};

std::uint64_t TableOf(const std::type_info& type)
{
    return WordAt(reinterpret_cast<std::uint64_t>(&type));
}

bool IsTypeOfDerivedClass(std::uint64_t address, const Section& constants)
{
    if (address % sizeof(void*) != 0 || !constants.Contains(address)) {
        return false;
    }
    const std::uint64_t table = WordAt(address);
    return table == TableOf(typeid(ProbeSingle)) || table == TableOf(typeid(ProbeMultiple));
}

bool DerivesFromUnknown(const std::type_info& type)
{
    if (std::strcmp(type.name(), kUnknown) == 0) {
        return true;
    }
    if (const auto* single = dynamic_cast<const abi::__si_class_type_info*>(&type)) {
        return DerivesFromUnknown(*single->__base_type);
    }
    if (const auto* multiple = dynamic_cast<const abi::__vmi_class_type_info*>(&type)) {
        for (unsigned index = 0; index < multiple->__base_count; ++index) {
            if (DerivesFromUnknown(*multiple->__base_info[index].__base_type)) {
                return true;
            }
        }
    }
    return false;
}

bool IsOffset(std::uint64_t word)
{
    const auto offset = static_cast<std::int64_t>(word);
    return offset <= 0 && offset > -4096;
}

bool IsDestructor(const std::string& linkName)
{
    return linkName.ends_with("D0Ev") || linkName.ends_with("D1Ev") || linkName.ends_with("D2Ev");
}

void ReplaceMethod(std::uint64_t slot, std::size_t number)
{
    static std::deque<ThunkedCall> calls;
    static std::deque<std::string> names;
    const std::uint32_t method = OffsetInProgram(WordAt(slot));
    if (IsDestructor(LinkNameAt(method))) {
        return;
    }
    ThunkedCall& call = calls.emplace_back();
    call.name = names.emplace_back(NameAt(method)).c_str();
    call.kind = number == 0 ? &kQueryFails : &kMethodFails;
    call.result = call.kind->result;
    call.isStandIn = true;
    auto** const place = reinterpret_cast<void**>(slot); // NOLINT(performance-no-int-to-ptr)
    call.original = *place;
    ExchangeSlot(place, MakeThunk(&call));
}

} // namespace

void ReplaceStandInMethods()
{
    const Section constants = FindSection(".rdata");
    const Section code = FindSection(".text");
    std::vector<std::uint64_t> tables;
    for (std::uint64_t at = constants.begin + sizeof(void*); at + sizeof(void*) < constants.end;
         at += sizeof(void*)) {
        const std::uint64_t word = WordAt(at);
        if (!IsTypeOfDerivedClass(word, constants) || !IsOffset(WordAt(at - sizeof(void*))) ||
            !code.Contains(WordAt(at + sizeof(void*)))) {
            continue;
        }
        const auto& type = *reinterpret_cast<const std::type_info*>(word); // NOLINT
        if (std::strncmp(type.name(), kOwnNamespace, std::strlen(kOwnNamespace)) == 0 &&
            DerivesFromUnknown(type)) {
            tables.push_back(at);
        }
    }
    for (const std::uint64_t table : tables) {
        std::uint64_t slot = table + sizeof(void*);
        for (std::size_t number = 0; code.Contains(WordAt(slot)); ++number, slot += sizeof(void*)) {
            if (number == 0 || number > kReleaseSlot) {
                ReplaceMethod(slot, number);
            }
        }
    }
}

} // namespace vqrx::test::anomaly
