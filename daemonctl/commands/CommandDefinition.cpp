#include "CommandDefinition.h"

#include "DecimalNumber.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

constexpr const char* kNotInHelp = "";

template <typename Value>
OptionDefinition AddOption(CLI::App& app, const std::string& names, Value& value,
                           const std::string& description)
{
    return OptionDefinition(*app.add_option(names, value, description));
}

} // namespace

OptionDefinition OptionDefinition::Required(bool isRequired) const
{
    option_->required(isRequired);
    return *this;
}

OptionDefinition OptionDefinition::Word(const std::string& word) const
{
    option_->type_name(word);
    return *this;
}

OptionDefinition OptionDefinition::Excludes(OptionDefinition other) const
{
    option_->excludes(other.option_);
    return *this;
}

OptionDefinition OptionDefinition::WithOrWithoutValue() const
{
    option_->expected(0, 1);
    return *this;
}

OptionDefinition OptionDefinition::Decimal() const
{
    option_->transform(CLI::Validator(ReadAsDecimal, kNotInHelp, "DECIMAL"));
    return *this;
}

OptionDefinition OptionDefinition::Between(std::uint32_t least, std::uint32_t most) const
{
    option_->check(CLI::Range(least, most).description(kNotInHelp));
    return *this;
}

OptionDefinition OptionDefinition::OneOf(const std::vector<std::string>& words) const
{
    option_->check(CLI::IsMember(words));
    return *this;
}

OptionDefinition OptionDefinition::Checked(const ValueCheck& check) const
{
    option_->check(
        CLI::Validator([check](const std::string& text) { return check(text); }, kNotInHelp));
    return *this;
}

bool OptionDefinition::IsGiven() const
{
    return option_->count() != 0;
}

std::string CommandDefinition::Name() const
{
    return app_->get_name();
}

std::string CommandDefinition::NameOfProgram() const
{
    return app_->get_parent()->get_name();
}

CommandDefinition CommandDefinition::Command(const std::string& name,
                                             const std::string& description) const
{
    return {*app_->add_subcommand(name, description)};
}

CommandDefinition CommandDefinition::Alias(const std::string& name) const
{
    app_->alias(name);
    return *this;
}

void CommandDefinition::Footer(const std::string& text) const
{
    app_->footer(text);
}

void CommandDefinition::OnChosen(const std::function<void()>& run) const
{
    app_->callback(run);
}

OptionDefinition CommandDefinition::Flag(const std::string& names, bool& isGiven,
                                         const std::string& description) const
{
    return OptionDefinition(*app_->add_flag(names, isGiven, description));
}

OptionDefinition CommandDefinition::Option(const std::string& names, std::string& value,
                                           const std::string& description) const
{
    return AddOption(*app_, names, value, description);
}

OptionDefinition CommandDefinition::Option(const std::string& names,
                                           std::vector<std::string>& values,
                                           const std::string& description) const
{
    return AddOption(*app_, names, values, description);
}

OptionDefinition CommandDefinition::Option(const std::string& names, int& value,
                                           const std::string& description) const
{
    return AddOption(*app_, names, value, description);
}

OptionDefinition CommandDefinition::Option(const std::string& names, std::uint32_t& value,
                                           const std::string& description) const
{
    return AddOption(*app_, names, value, description);
}

OptionDefinition CommandDefinition::Option(const std::string& names,
                                           std::optional<std::uint32_t>& value,
                                           const std::string& description) const
{
    return AddOption(*app_, names, value, description);
}

OptionDefinition CommandDefinition::Option(const std::string& names,
                                           std::optional<std::uint64_t>& value,
                                           const std::string& description) const
{
    return AddOption(*app_, names, value, description);
}

OptionDefinition
CommandDefinition::ChoiceOf(const std::string& names, const std::vector<std::string>& words,
                            const std::string& description,
                            const std::function<void(std::size_t chosen)>& take) const
{
    std::string list;
    for (const std::string& word : words) {
        list += (list.empty() ? "" : ",") + word;
    }
    const auto indexOf = [words](const std::string& text) {
        return static_cast<std::size_t>(
            std::distance(words.begin(), std::find(words.begin(), words.end(), text)));
    };
    const auto check = [words, list, indexOf](const std::string& text) {
        return indexOf(text) < words.size() ? "" : "\"" + text + "\" is none of " + list;
    };
    CLI::Option* const option = app_->add_option_function<std::string>(
        names, [indexOf, take](const std::string& text) { take(indexOf(text)); }, description);
    option->check(CLI::Validator(check, "{" + list + "}", "NAMED"));
    return OptionDefinition(*option);
}

void ThrowMissing(const std::string& what)
{
    throw CLI::RequiredError(what);
}

void ThrowInvalid(const std::string& option, const std::string& reason)
{
    throw CLI::ValidationError(option, reason);
}

} // namespace vqrx::client::v0
