#include "GuardLog.h"

#include "Utf8.h"
#include "code_page/CodePage.h"

#include <algorithm>
#include <cstdint>

namespace vqrx::guard::v0 {
namespace {

constexpr std::uint32_t kSizeLimit = 0x100000; // bytes

} // namespace

GuardLog::GuardLog(const std::string& file)
{
    sink_.SetFileName(file);
    sink_.SetSizeLimit(kSizeLimit);
    logger_.AddSink(&sink_);
}

void GuardLog::Log(int level, const std::string& text)
{
    std::string line = system::code_page::v1::WideToNarrow(client::v0::Wide(text),
                                                           CP_ACP); // as the supervisor's log
    std::replace(line.begin(), line.end(), '\n', ' ');
    logger_.Log(level, "%s", line.c_str());
}

} // namespace vqrx::guard::v0
