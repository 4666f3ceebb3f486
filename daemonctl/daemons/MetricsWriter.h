#pragma once

#include "DaemonStatus.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {

/// Returns a text as the value of a label: at most 200 bytes, with "..." after a text that was
/// longer, control characters spelt out, and quotes and backslashes escaped. Pure.
/// @param text  valid UTF-8
[[nodiscard]] std::string MetricLabel(const std::string& text);

/// Converts milliseconds to the seconds of a metric.
[[nodiscard]] constexpr double SecondsOf(std::int64_t timeMs) noexcept
{
    constexpr double perSecond = 1000.0;
    return static_cast<double>(timeMs) / perSecond;
}

/// Writes metrics, family after family. Names and help texts hold no line end; the help texts hold
/// no backslash either.
class MetricsWriter {
public:
    /// Returns the value of a daemon; nothing if the family has no sample for it.
    using Sample = std::function<std::optional<double>(const DaemonStatus& daemon)>;

    /// @param daemons  must outlive the writer. At most 1000 of them get samples: those in trouble
    ///                 come first
    explicit MetricsWriter(const std::vector<DaemonStatus>& daemons);

    /// Adds a family with one sample.
    /// @param labels  name="value", several with a comma between them
    void Add(std::string_view name, std::string_view help, double value,
             std::string_view labels = {});

    /// Adds a family with a sample for each daemon that has one.
    void AddForDaemons(std::string_view name, std::string_view help, const Sample& sample);

    /// Adds the family of the last exits: the time of each, with its reason as a label.
    void AddLastExits(std::string_view name, std::string_view help);

    /// Returns the text. The writer must not be used afterwards.
    [[nodiscard]] std::string Finish();

private:
    struct Labelled {
        const DaemonStatus* daemon;
        std::string labels;
    };

    std::string UniqueLabels(const DaemonStatus& daemon);
    void Begin(std::string_view name, std::string_view help);
    void AddSample(std::string_view name, std::string_view labels, double value);

    std::vector<Labelled> daemons_;
    std::map<std::string, std::size_t> used_; // how many daemons have the labels
    std::string text_;
};

} // namespace vqrx::client::v0
