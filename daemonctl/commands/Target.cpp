#include "Target.h"

#include "DaemonSelection.h"

#include <string>

namespace vqrx::client::v0 {

CLI::Validator Target()
{
    return {[](const std::string& text) {
                return IsTarget(text) ? std::string()
                                      : "neither a daemon id nor the name of a program, such as "
                                        "video.exe: " +
                                            text;
            },
            "", "TARGET"};
}

} // namespace vqrx::client::v0
