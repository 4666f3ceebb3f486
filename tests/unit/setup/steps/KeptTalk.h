#pragma once

#include "Conversation.h"

#include <string>

namespace vqrx::test {

/// Keeps what the setup program says. Answers each question with no.
class KeptTalk : public setup::v0::Conversation {
public:
    void Say(const std::string& text) override { said += text; }
    [[nodiscard]] bool Ask(const std::string& /*question*/) override { return false; }

    std::string said;
};

} // namespace vqrx::test
