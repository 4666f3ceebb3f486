#pragma once

#include <string>
#include <utility>

namespace vqrx::client::v0 {

enum class Verdict { ok, warning, failure };

/// One thing that must be true for the supervisor to do its work, and whether it is.
struct Finding {
    std::string check; ///< a fixed name, for scripts
    Verdict verdict = Verdict::ok;
    std::string text;
    std::string remedy; ///< empty when nothing is to be done
};

inline Finding Ok(const char* check, std::string text)
{
    return {check, Verdict::ok, std::move(text), {}};
}

inline Finding Warning(const char* check, std::string text, std::string remedy)
{
    return {check, Verdict::warning, std::move(text), std::move(remedy)};
}

inline Finding Failure(const char* check, std::string text, std::string remedy)
{
    return {check, Verdict::failure, std::move(text), std::move(remedy)};
}

} // namespace vqrx::client::v0
