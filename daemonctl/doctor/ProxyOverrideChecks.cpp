#include "ProxyOverrideChecks.h"

#include "PasteableText.h"

namespace vqrx::client::v0 {

Finding JudgeProxyOverrides(const std::vector<ProxyOverride>& overrides)
{
    constexpr const char* check = "proxy-users";
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
    return Warning(check, text, remedy);
}

} // namespace vqrx::client::v0
