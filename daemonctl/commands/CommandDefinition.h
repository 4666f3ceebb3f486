#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace vqrx::client::v0 {

// How a command says what its command line looks like. The sources of the commands do not include
// the library that reads command lines: it takes longer to compile than the commands.

/// Checks a value as the operator typed it. @return an error message; empty if the value is right
using ValueCheck = std::function<std::string(const std::string& text)>;

/// The names that an option permits, in the order of the help, and their values.
template <typename Value>
using NamedValues = std::vector<std::pair<std::string, Value>>;

/// One option or positional argument of a command. Refers to an option of the program's
/// definition, and must not outlive it. Each function returns this option, so that calls can follow
/// one another. A value that a check refuses ends the program with the usage message.
class OptionDefinition {
public:
    /// @param option  borrowed
    explicit OptionDefinition(CLI::Option& option) noexcept
        : option_(&option)
    {
    }

    /// The operator must give the option, unless `isRequired` is false.
    OptionDefinition Required(bool isRequired = true) const;
    /// The help shows this word for the value.
    OptionDefinition Word(const std::string& word) const;
    /// The option and the other one must not be given together.
    OptionDefinition Excludes(OptionDefinition other) const;
    /// The value may be left out.
    OptionDefinition WithOrWithoutValue() const;
    /// The value is a number of decimal digits, perhaps with leading zeros.
    OptionDefinition Decimal() const;
    /// The value is a number of at least `least` and at most `most`.
    OptionDefinition Between(std::uint32_t least, std::uint32_t most) const;
    /// The value is one of these words. The help lists them.
    OptionDefinition OneOf(const std::vector<std::string>& words) const;
    /// The check finds nothing wrong with the value.
    OptionDefinition Checked(const ValueCheck& check) const;

    /// Whether the operator gave the option. Only when the command runs.
    [[nodiscard]] bool IsGiven() const;

private:
    CLI::Option* option_;
};

/// A command, or the whole program. Refers to a part of the program's definition, and must not
/// outlive it. Variables that receive values must live until the command has run.
class CommandDefinition {
public:
    /// @param app  borrowed
    // NOLINTNEXTLINE(google-explicit-constructor): main and tests hand their program to commands
    CommandDefinition(CLI::App& app) noexcept
        : app_(&app)
    {
    }

    /// Returns the name of the command or of the program.
    [[nodiscard]] std::string Name() const;
    /// Returns the name of the program. Only for a command.
    [[nodiscard]] std::string NameOfProgram() const;

    /// Adds a command to the program. @param description  one line for the help
    [[nodiscard]] CommandDefinition Command(const std::string& name,
                                            const std::string& description) const;
    /// Gives the command another name. @return this command
    CommandDefinition Alias(const std::string& name) const;
    /// The help ends with this text.
    void Footer(const std::string& text) const;
    /// Calls the function when the operator chose this command and the command line is right. The
    /// function may throw what ThrowMissing and ThrowInvalid throw.
    void OnChosen(const std::function<void()>& run) const;

    /// Adds an option without a value. @param names  such as "--follow,-f"
    OptionDefinition Flag(const std::string& names, bool& isGiven,
                          const std::string& description) const;
    /// Adds an option with a value, or with several in the case of a vector. A name without dashes
    /// is that of a positional argument.
    OptionDefinition Option(const std::string& names, std::string& value,
                            const std::string& description) const;
    OptionDefinition Option(const std::string& names, std::vector<std::string>& values,
                            const std::string& description) const;
    OptionDefinition Option(const std::string& names, int& value,
                            const std::string& description) const;
    OptionDefinition Option(const std::string& names, std::uint32_t& value,
                            const std::string& description) const;
    OptionDefinition Option(const std::string& names, std::optional<std::uint32_t>& value,
                            const std::string& description) const;
    OptionDefinition Option(const std::string& names, std::optional<std::uint64_t>& value,
                            const std::string& description) const;

    /// Adds an option whose value is one of a few names. The help and the completion list them, and
    /// the error text for any other name.
    template <typename Value>
    OptionDefinition Choice(const std::string& names, Value& value,
                            const NamedValues<Value>& values, const std::string& description) const
    {
        std::vector<std::string> words;
        for (const auto& [word, meaning] : values) {
            words.push_back(word);
        }
        return ChoiceOf(names, words, description,
                        [values, &value](std::size_t chosen) { value = values[chosen].second; });
    }

private:
    // @param take  gets the index of the chosen word
    OptionDefinition ChoiceOf(const std::string& names, const std::vector<std::string>& words,
                              const std::string& description,
                              const std::function<void(std::size_t chosen)>& take) const;

    CLI::App* app_;
};

/// Ends the program with the usage message: the operator left out what a command needs.
/// @param what  the missing part, such as "ID or --all"
/// @throws CLI::ParseError
[[noreturn]] void ThrowMissing(const std::string& what);

/// Ends the program with the usage message: a value or a combination of options is wrong.
/// @throws CLI::ParseError
[[noreturn]] void ThrowInvalid(const std::string& option, const std::string& reason);

} // namespace vqrx::client::v0
