// Fuzzer for the components of a path, compared with a second implementation of the rules.
#include "Check.h"
#include "file/File.h"
#include "file/PathComponents.h"

#include <cstdint>

namespace vqrx::test {
namespace {

using namespace system::file::v2;
using Components = std::vector<std::string>;

// Splits the path at backslashes. The first component is the first non-empty part, together with
// the backslashes before it. Of the later parts, empty ones and "." are dropped.
Components Expected(const std::string& path)
{
    Components parts(1);
    for (const char character : path) {
        if (character == '\\') {
            parts.emplace_back();
        } else {
            parts.back() += character;
        }
    }
    Components kept;
    std::string first;
    for (std::size_t index = 0; index < parts.size(); ++index) {
        if (kept.empty()) {
            first += (index == 0 ? "" : "\\") + parts[index];
            if (!parts[index].empty()) {
                kept.push_back(first);
            }
        } else if (!parts[index].empty() && parts[index] != ".") {
            kept.push_back(parts[index]);
        }
    }
    return kept;
}

} // namespace
} // namespace vqrx::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vqrx::test;
    const std::string path(data, data + size);
    const Components components = NormalisedComponents(path);
    FUZZ_CHECK(components == Expected(path));
    FUZZ_CHECK(components.empty() == (path.find_first_not_of('\\') == std::string::npos));
    FUZZ_CHECK(NormalisedComponents(JoinComponents(components)) == components);
    try {
        const File file(path);
        FUZZ_CHECK(file.Components() == components);
        FUZZ_CHECK(file.Path() == JoinComponents(components));
    } catch (const FileError& error) {
        FUZZ_CHECK(components.empty());
        FUZZ_CHECK(error.what() == std::string(("invalid path [" + path + "]").c_str()));
    }
    return 0;
}
