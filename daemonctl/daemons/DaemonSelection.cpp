#include "DaemonSelection.h"

#include "BatchCommand.h"
#include "ExpectFile.h"

#include <charconv>
#include <cstdint>
#include <optional>
#include <system_error>

namespace vqrx::client::v0 {
namespace {

std::optional<std::uint32_t> IdOf(const std::string& text)
{
    std::uint32_t id = 0;
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, id);
    return error == std::errc() && end == last ? std::optional(id) : std::nullopt;
}

class Selector {
public:
    explicit Selector(const std::vector<DaemonStatus>& daemons)
        : daemons_(daemons)
        , taken_(daemons.size())
    {
    }

    void SelectId(std::uint32_t id)
    {
        for (std::size_t index = 0; index < daemons_.size(); ++index) {
            if (daemons_[index].id == id) {
                Select(index);
                return;
            }
        }
        for (const DaemonStatus& selected : selected_.daemons) {
            if (selected.id == id) {
                return;
            }
        }
        DaemonStatus unknown;
        unknown.id = id;
        unknown.inLog = false;
        selected_.daemons.push_back(std::move(unknown));
    }

    void SelectName(const std::string& name)
    {
        const ExpectedProgram program{0, name, {}};
        bool isKnown = false;
        for (std::size_t index = 0; index < daemons_.size(); ++index) {
            if (IsCommandOf(program, daemons_[index].command) ||
                IsCommandOf(program, LaunchCommandOf(daemons_[index]))) {
                isKnown = true;
                Select(index);
            }
        }
        if (!isKnown) {
            selected_.unknownNames.push_back(name);
        }
    }

    void SelectAll()
    {
        for (std::size_t index = 0; index < daemons_.size(); ++index) {
            Select(index);
        }
    }

    SelectedDaemons Result() { return std::move(selected_); }

private:
    void Select(std::size_t index)
    {
        if (!taken_[index]) {
            taken_[index] = true;
            selected_.daemons.push_back(daemons_[index]);
        }
    }

    const std::vector<DaemonStatus>& daemons_;
    std::vector<bool> taken_;
    SelectedDaemons selected_;
};

} // namespace

bool IsDaemonId(const std::string& text)
{
    return IdOf(text).has_value();
}

bool IsTarget(const std::string& text)
{
    return IsDaemonId(text) ||
           (text.find('.') != std::string::npos && text.find_first_of("\\/:") == std::string::npos);
}

SelectedDaemons SelectDaemons(const DaemonSelection& selection,
                              const std::vector<DaemonStatus>& daemons)
{
    Selector selector(daemons);
    if (selection.all) {
        selector.SelectAll();
    }
    for (const std::string& target : selection.targets) {
        if (const auto id = IdOf(target)) {
            selector.SelectId(*id);
        } else {
            selector.SelectName(target);
        }
    }
    return selector.Result();
}

} // namespace vqrx::client::v0
