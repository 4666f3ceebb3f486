#pragma once

#include "ByteSource.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vqrx::client::v0 {

/// A file that is open for reading. Other programs may write, rename or delete it meanwhile.
class InputFile : public ByteSource {
public:
    /// Opens a file for reading, shared.
    /// @param path  UTF-8
    /// @return the open file, which closes itself
    /// @throws std::runtime_error  "PATH cannot be read: " and the system's message; also for a
    ///         folder, a pipe or a device
    [[nodiscard]] static std::unique_ptr<InputFile> Open(const std::string& path);
};

} // namespace vqrx::client::v0
