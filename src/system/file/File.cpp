#include "file/File.h"

#include "file/PathComponents.h"

#include <utility>

namespace vqrx::system::file::v2 {

File::File(const std::string& path)
    : components_(NormalisedComponents(path))
{
    if (components_.empty()) {
        throw FileError("invalid path [" + path + "]");
    }
    path_ = JoinComponents(components_);
}

File::File(std::vector<std::string> components)
    : components_(std::move(components))
    , path_(JoinComponents(components_))
{
}

File File::Child(const std::string& name) const
{
    std::vector<std::string> components = components_;
    components.push_back(name);
    return File(std::move(components));
}

File File::Parent() const
{
    return File(std::vector<std::string>(components_.begin(), components_.end() - 1));
}

} // namespace vqrx::system::file::v2
