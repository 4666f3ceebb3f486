#include "MetricsWriter.h"

#include "ExitReason.h"
#include "Printable.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <utility>

namespace vqrx::client::v0 {
namespace {

constexpr std::size_t kMostDaemons = 1000;
constexpr std::size_t kMostLabelBytes = 200;

// Shortens a text at the beginning of a character.
std::string Shortened(std::string text)
{
    if (text.size() <= kMostLabelBytes) {
        return text;
    }
    std::size_t length = kMostLabelBytes;
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
        --length;
    }
    text.resize(length);
    return text + "...";
}

std::string ValueText(double value)
{
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.15g", value);
    return text.data();
}

bool IsTroubled(const DaemonStatus& daemon)
{
    return daemon.state == RunState::kRestarting || daemon.state == RunState::kCannotStart ||
           daemon.state == RunState::kEnded;
}

} // namespace

std::string MetricLabel(const std::string& text)
{
    std::string value;
    for (const char character : Shortened(Printable(text))) {
        if (character == '\\' || character == '"') {
            value += '\\';
        }
        value += character;
    }
    return value;
}

MetricsWriter::MetricsWriter(const std::vector<DaemonStatus>& daemons)
{
    std::vector<const DaemonStatus*> ordered;
    ordered.reserve(daemons.size());
    for (const DaemonStatus& daemon : daemons) {
        ordered.push_back(&daemon);
    }
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const DaemonStatus* left, const DaemonStatus* right) {
                         return IsTroubled(*left) && !IsTroubled(*right);
                     });
    ordered.resize(std::min(ordered.size(), kMostDaemons));
    for (const DaemonStatus* const daemon : ordered) {
        daemons_.push_back({daemon, UniqueLabels(*daemon)});
    }
}

void MetricsWriter::Add(std::string_view name, std::string_view help, double value,
                        std::string_view labels)
{
    Begin(name, help);
    AddSample(name, labels, value);
}

void MetricsWriter::AddForDaemons(std::string_view name, std::string_view help,
                                  const Sample& sample)
{
    Begin(name, help);
    for (const Labelled& labelled : daemons_) {
        if (const std::optional<double> value = sample(*labelled.daemon)) {
            AddSample(name, labelled.labels, *value);
        }
    }
}

void MetricsWriter::AddLastExits(std::string_view name, std::string_view help)
{
    Begin(name, help);
    for (const Labelled& labelled : daemons_) {
        if (const std::optional<LastExit>& last = labelled.daemon->lastExit) {
            const std::string reason = MetricLabel(ReadableReason(last->reason));
            AddSample(name, labelled.labels + ",reason=\"" + reason + "\"",
                      SecondsOf(last->timeMs));
        }
    }
}

std::string MetricsWriter::Finish()
{
    text_ += "# EOF\n";
    return std::move(text_);
}

// Two daemons without an id can have one command. Their labels must differ all the same.
std::string MetricsWriter::UniqueLabels(const DaemonStatus& daemon)
{
    const std::string rest = "\",command=\"" + MetricLabel(WithoutBlank(daemon.command)) +
                             "\",service=\"" + (daemon.service ? "true" : "false") +
                             "\",attached=\"" + (daemon.attached ? "true" : "false") + "\"";
    std::string id = daemon.id ? std::to_string(*daemon.id) : "-";
    const std::size_t number = ++used_[id + rest];
    if (number > 1) {
        id.append("#").append(std::to_string(number));
    }
    return "id=\"" + id + rest;
}

void MetricsWriter::Begin(std::string_view name, std::string_view help)
{
    text_.append("# TYPE ").append(name).append(" gauge\n# HELP ").append(name);
    text_.append(" ").append(help).append("\n");
}

void MetricsWriter::AddSample(std::string_view name, std::string_view labels, double value)
{
    text_.append(name);
    if (!labels.empty()) {
        text_.append("{").append(labels).append("}");
    }
    text_.append(" ").append(ValueText(value)).append("\n");
}

} // namespace vqrx::client::v0
