#pragma once

#include "Payload.h"

#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// The files at the end of the program that this process runs.
class OwnPayload {
public:
    /// @throws SetupError if the file of the program cannot be read, or if its end is not the one
    ///         that was put there when the packages were made
    OwnPayload();

    /// Returns the files; empty if this program is the uninstaller.
    [[nodiscard]] const std::vector<PayloadFile>& Files() const noexcept { return files_; }

private:
    std::string bytes_;
    std::vector<PayloadFile> files_;
};

} // namespace vqrx::setup::v0
