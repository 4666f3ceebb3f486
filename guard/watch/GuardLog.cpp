#include "GuardLog.h"

#include "Utf8.h"
#include "code_page/CodePage.h"
#include "ring_format/RingHeader.h"

#include <algorithm>

namespace vqrx::guard::v0 {

GuardLog::GuardLog(const std::string& file)
{
    sink_.SetFileName(file);
    sink_.SetSizeLimit(system::ring_format::v1::kRingSizeLimit);
    sink_.SetNotesOutages(true);
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
