#include "exception_utils/ErrorRegistry.h"

#include "exception_utils/ResultCodes.h"

#include <map>

namespace vqrx::cpp_utils::exception_utils::v1 {
namespace {

using Registry = std::map<std::int32_t, const char*>;

// Made at the first use, complete with the product's codes, so that no static object of another
// file can see it half-built. Never destroyed: exceptions are described until the very end.
Registry& TheRegistry()
{
    static Registry& registry = *[] {
        auto* const filled = new Registry; // NOLINT(cppcoreguidelines-owning-memory)
        for (const ResultCodeMessage& row : ProductResultCodes()) {
            (*filled)[static_cast<std::int32_t>(row.code)] = row.message;
        }
        return filled;
    }();
    return registry;
}

// Built at start, not at the moment a failure has to be described.
[[maybe_unused]] const Registry& builtAtStart = TheRegistry();

} // namespace

bool RegisterErrorMessage(std::int32_t code, const char* message)
{
    TheRegistry()[code] = message;
    return false;
}

const char* FindErrorMessage(std::int32_t code)
{
    const Registry& registry = TheRegistry();
    const auto found = registry.find(code);
    return found == registry.end() ? nullptr : found->second;
}

} // namespace vqrx::cpp_utils::exception_utils::v1
