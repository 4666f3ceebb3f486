#include "exception_utils/ErrorRegistry.h"

#include "exception_utils/ResultCodes.h"

#include <map>

namespace vqrx::cpp_utils::exception_utils::v1 {
namespace {

using Registry = std::map<std::int32_t, const char*>;

// The first use builds the registry with all codes of the product, so a static object of another
// file never sees an incomplete one. The registry is never destroyed: an exception may be described
// while the program ends.
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

// Builds the registry at program start, because memory may be short when a failure is described.
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
