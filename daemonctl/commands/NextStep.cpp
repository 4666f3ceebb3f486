#include "NextStep.h"

namespace vqrx::client::v0 {

std::string WithNextStep(const std::string& text, const std::string& step)
{
    return text.find("daemonctl doctor") != std::string::npos ? text : text + "\n  " + step;
}

} // namespace vqrx::client::v0
