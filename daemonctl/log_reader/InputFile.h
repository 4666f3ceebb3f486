#pragma once

#include "ByteSource.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vqrx::client::v0 {

/// A file that others may write, rename or delete meanwhile.
class InputFile : public ByteSource {
public:
    /// @param path  UTF-8
    /// @throws std::runtime_error with what the system says: "... cannot be read: ..."
    static std::unique_ptr<InputFile> Open(const std::string& path);
};

} // namespace vqrx::client::v0
