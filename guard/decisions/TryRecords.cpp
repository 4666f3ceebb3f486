#include "TryRecords.h"

#include <utility>

namespace vqrx::guard::v0 {

void TryRecords::BeginTry()
{
    before_ = std::exchange(now_, {});
    differs_ = false;
}

bool TryRecords::Notice(const std::string& text)
{
    const std::size_t index = now_.size();
    now_.push_back(text);
    differs_ = differs_ || index >= before_.size() || before_[index] != text;
    return differs_;
}

} // namespace vqrx::guard::v0
