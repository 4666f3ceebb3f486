#include "RunNotes.h"

#include "Injection.h"

#include <cctype>

namespace vqrx::test::anomaly {

std::string WithoutNumbers(const std::string& text)
{
    std::string plain;
    for (const char letter : text) {
        if (std::isdigit(static_cast<unsigned char>(letter)) == 0) {
            plain += letter;
        } else if (plain.empty() || plain.back() != '#') {
            plain += '#';
        }
    }
    return plain;
}

void RunNotes::Saw(const std::string& text)
{
    const OfTheTest mark;
    const std::lock_guard lock(mutex_);
    seen_.insert(WithoutNumbers(text));
}

void RunNotes::Broke(const std::string& text)
{
    const OfTheTest mark;
    const std::lock_guard lock(mutex_);
    broken_.push_back(text);
}

void RunNotes::Begin(const std::string& step)
{
    const OfTheTest mark;
    const std::lock_guard lock(mutex_);
    step_ = step;
}

std::set<std::string> RunNotes::Seen() const
{
    const std::lock_guard lock(mutex_);
    return seen_;
}

std::vector<std::string> RunNotes::Broken() const
{
    const std::lock_guard lock(mutex_);
    return broken_;
}

std::string RunNotes::Step() const
{
    const std::lock_guard lock(mutex_);
    return step_;
}

bool RunNotes::HasSeen(const std::string& beginning) const
{
    const std::lock_guard lock(mutex_);
    const auto found = seen_.lower_bound(beginning);
    return found != seen_.end() && found->starts_with(beginning);
}

} // namespace vqrx::test::anomaly
