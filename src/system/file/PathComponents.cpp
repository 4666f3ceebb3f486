#include "file/PathComponents.h"

#include <cstddef>
#include <string_view>

namespace vqrx::system::file::v2 {

std::vector<std::string> NormalisedComponents(const std::string& path)
{
    std::vector<std::string> components;
    std::string_view rest = path;
    std::string leading; // backslashes before the first component
    for (;;) {
        const std::size_t separator = rest.find('\\');
        const std::string_view part = rest.substr(0, separator);
        if (components.empty()) {
            if (!part.empty()) {
                components.push_back(leading.append(part));
            }
            leading += '\\';
        } else if (!part.empty() && part != ".") {
            components.emplace_back(part);
        }
        if (separator == std::string_view::npos) {
            return components;
        }
        rest.remove_prefix(separator + 1);
    }
}

std::string JoinComponents(const std::vector<std::string>& components)
{
    std::string path;
    for (const std::string& component : components) {
        if (!path.empty()) {
            path += '\\';
        }
        path += component;
    }
    return path;
}

} // namespace vqrx::system::file::v2
