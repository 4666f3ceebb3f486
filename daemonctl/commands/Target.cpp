#include "Target.h"

#include "DaemonSelection.h"

namespace vqrx::client::v0 {

std::string CheckTarget(const std::string& text)
{
    return IsTarget(text)
               ? ""
               : "neither a daemon id nor the name of a program, such as video.exe: " + text;
}

} // namespace vqrx::client::v0
