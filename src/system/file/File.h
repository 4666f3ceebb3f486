#pragma once

#include "exception_utils/ExceptionTemplate.h"
#include "exception_utils/VantoroException.h"

#include <functional>
#include <string>
#include <vector>

namespace vqrx::system::file::v2 {

/// A normalised path in the Windows file system. The text is narrow; the file functions of the
/// system read it in the ANSI code page.
class File {
public:
    /// Normalises path; see NormalisedComponents.
    /// @throws FileError  "invalid path [...]" if no component is left
    explicit File(const std::string& path);

    /// The parts of the path between the backslashes, at least one.
    [[nodiscard]] const std::vector<std::string>& Components() const noexcept
    {
        return components_;
    }
    /// The components joined with backslashes, without a backslash at the end.
    [[nodiscard]] const std::string& Path() const noexcept { return path_; }

    /// The path of an entry of this folder.
    /// @param name  becomes one component without normalising
    [[nodiscard]] File Child(const std::string& name) const;
    /// The path without its last component. Call it only if there are two components or more.
    [[nodiscard]] File Parent() const;

private:
    explicit File(std::vector<std::string> components);

    std::vector<std::string> components_;
    std::string path_;
};

/// A file operation failed. The text ends with the Win32 error number, except for an invalid path.
/// An operation on a tree that fails in the middle does not undo its earlier steps.
using FileError = cpp_utils::exception_utils::v1::ExceptionTemplate<
    File, cpp_utils::exception_utils::v1::VantoroException>;

/// Receives one entry of a folder.
using EntryCallback = std::function<void(File entry, bool isDirectory)>;

} // namespace vqrx::system::file::v2
