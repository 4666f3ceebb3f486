#include "LogPath.h"

#include "FirmwareRoot.h"
#include "TextEncoding.h"

#include <stdexcept>

namespace vqrx::client::v0 {

std::string DefaultLogPath()
{
    std::string root;
    if (!app::v0::TryGetFirmwareRoot(root)) {
        throw std::runtime_error("the registry does not tell where the firmware is installed; "
                                 "name the log file with --file");
    }
    return AnsiToUtf8(root) + R"(\Logs\DaemonManager.log)";
}

} // namespace vqrx::client::v0
