#pragma once

#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace vqrx::test::anomaly {

/// Returns the text with "#" in place of each number, because ids and times differ from run to run.
[[nodiscard]] std::string WithoutNumbers(const std::string& text);

/// What one run of a scenario shows. Any thread may call.
class RunNotes {
public:
    /// Notes what a client or an operator sees: the result of a request, a line of the log. All
    /// numbers count as the same.
    void Saw(const std::string& text);
    /// Notes a broken promise.
    void Broke(const std::string& text);
    /// Notes the step that begins. If it does not end, the report names it.
    void Begin(const std::string& step);

    [[nodiscard]] std::set<std::string> Seen() const;
    [[nodiscard]] std::vector<std::string> Broken() const;
    [[nodiscard]] std::string Step() const;
    /// Reports whether a text that begins so was seen.
    [[nodiscard]] bool HasSeen(const std::string& beginning) const;

private:
    mutable std::mutex mutex_;
    std::set<std::string> seen_;
    std::vector<std::string> broken_;
    std::string step_;
};

} // namespace vqrx::test::anomaly
