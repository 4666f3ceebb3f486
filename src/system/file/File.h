#pragma once

#include "exception_utils/ExceptionTemplate.h"
#include "exception_utils/VantoroException.h"

#include <functional>
#include <string>
#include <vector>

namespace vqrx::system::file::v2 {

/// A path in the Windows file system, normalised. Narrow text, in the ANSI code page for the
/// system's functions.
class File {
public:
    /// @throws FileError "invalid path [...]" when nothing is left after normalising
    explicit File(const std::string& path);

    const std::vector<std::string>& Components() const noexcept { return components_; }
    /// The components joined with backslashes, without one at the end.
    const std::string& Path() const noexcept { return path_; }

    /// What stands in this folder under a name. The name is one component, as it is.
    File Child(const std::string& name) const;
    /// The folder that this stands in; this must have more than one component.
    File Parent() const;

private:
    explicit File(std::vector<std::string> components);

    std::vector<std::string> components_;
    std::string path_;
};

/// What the file operations raise, with the system's error number in the text. A failure in the
/// middle of a tree leaves what was done so far.
using FileError = cpp_utils::exception_utils::v1::ExceptionTemplate<
    File, cpp_utils::exception_utils::v1::VantoroException>;

/// Called for each entry of a folder.
using EntryCallback = std::function<void(File entry, bool isDirectory)>;

} // namespace vqrx::system::file::v2
