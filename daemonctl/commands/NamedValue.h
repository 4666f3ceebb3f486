#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace vqrx::client::v0 {

/// The names that an option permits, in the order of the help, and their values.
template <typename Value>
using NamedValues = std::vector<std::pair<std::string, Value>>;

/// Makes a transformation for an option with a fixed set of values: it reads the name of a value.
/// The help and the completion list the names. The error text for any other name lists them, too.
/// @tparam Value  an enumeration, or std::string
template <typename Value>
[[nodiscard]] CLI::Validator NamedValue(const NamedValues<Value>& values)
{
    std::string names;
    for (const auto& [name, value] : values) {
        names += (names.empty() ? "" : ",") + name;
    }
    const auto read = [values, names](std::string& text) -> std::string {
        for (const auto& [name, value] : values) {
            if (name == text) {
                if constexpr (std::is_enum_v<Value>) {
                    text = std::to_string(static_cast<std::underlying_type_t<Value>>(value));
                } else {
                    text = value;
                }
                return "";
            }
        }
        return "\"" + text + "\" is none of " + names;
    };
    return {read, "{" + names + "}", "NAMED"};
}

} // namespace vqrx::client::v0
