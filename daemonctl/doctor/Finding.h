#pragma once

#include <string>
#include <utility>

namespace vqrx::client::v0 {

/// How serious a finding is. A later value is worse than an earlier one.
enum class Verdict {
    kOk,      ///< nothing is to be done
    kWarning, ///< the supervisor can work, but something limits it or lets others take it over
    kFailure  ///< the supervisor cannot do a part of its work
};

/// The result of one check of `daemonctl doctor`. All texts are UTF-8.
struct Finding {
    std::string check; ///< fixed name of the check, for scripts
    Verdict verdict = Verdict::kOk;
    std::string text;   ///< what the check found; a line feed begins each further line
    std::string remedy; ///< what the operator can do; empty if the verdict is ok
};

/// Makes a finding with the verdict ok and without a remedy.
[[nodiscard]] inline Finding Ok(const char* check, std::string text)
{
    return {check, Verdict::kOk, std::move(text), {}};
}

/// Makes a finding with the verdict warning.
[[nodiscard]] inline Finding Warning(const char* check, std::string text, std::string remedy)
{
    return {check, Verdict::kWarning, std::move(text), std::move(remedy)};
}

/// Makes a finding with the verdict failure.
[[nodiscard]] inline Finding Failure(const char* check, std::string text, std::string remedy)
{
    return {check, Verdict::kFailure, std::move(text), std::move(remedy)};
}

} // namespace vqrx::client::v0
