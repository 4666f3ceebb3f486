#pragma once

#include "Conversation.h"

namespace vqrx::setup::v0 {

/// For scripts: writes to standard error, if this process has one, and answers every question with
/// no.
class SilentConversation : public Conversation {
public:
    void Say(const std::string& text) override;
    [[nodiscard]] bool Ask(const std::string& question) override;
};

} // namespace vqrx::setup::v0
