#include "SilentConversation.h"

#include <windows.h>

namespace vqrx::setup::v0 {

void SilentConversation::Say(const std::string& text)
{
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text.data(), static_cast<DWORD>(text.size()),
              &written, nullptr);
}

bool SilentConversation::Ask(const std::string& question)
{
    Say(question + "\n");
    return false;
}

} // namespace vqrx::setup::v0
