#pragma once

#include <stdexcept>

namespace vqrx::setup::v0 {

/// A step of the installation failed. what() is a text for the operator, UTF-8, which says what to
/// do.
class SetupError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The new supervisor was started, but it ended or did not answer.
class CameNotUp : public SetupError {
    using SetupError::SetupError;
};

} // namespace vqrx::setup::v0
