#include "ProxyOverrideChecks.h"

#include "PasteableText.h"

namespace vqrx::client::v0 {

Finding JudgeProxyOverrides(const ProxyOverrideFacts& facts)
{
    constexpr const char* check = "proxy-users";
    const std::vector<ProxyOverride>& overrides = facts.found;
    if (overrides.empty() && facts.error != 0) {
        return Warning(check,
                       "Windows does not list the users who are logged on: error " +
                           std::to_string(facts.error),
                       "Run this command as administrator.");
    }
    if (overrides.empty()) {
        return Ok(check, "no user who is logged on has a proxy/stub of his own");
    }
    std::string text = std::to_string(overrides.size()) +
                       (overrides.size() == 1 ? " registration" : " registrations") +
                       " of the proxy/stub for one user";
    std::string remedy = "As administrator, or as this user:";
    for (const ProxyOverride& found : overrides) {
        text += "\nprograms of " + found.user + " load " +
                (found.library.empty() ? "another library" : found.library) + ": " + found.key;
        const std::string key = QuotedForPasting(found.key);
        remedy += key.empty() ? "\nRemove the key with regedit: " + found.key
                              : "\nreg delete " + key + " /f";
    }
    if (facts.error != 0) {
        text += "\nthere may be more: Windows does not list all users: error " +
                std::to_string(facts.error);
    }
    return Warning(check, text, remedy);
}

} // namespace vqrx::client::v0
