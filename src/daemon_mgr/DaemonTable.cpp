#include "DaemonTable.h"

namespace vqrx::system::daemon::daemon_mgr::v0 {

const ProcessInfo* FindSameCommand(const DaemonTable& table, const std::string& executablePath,
                                   const std::vector<std::string>& arguments)
{
    for (const auto& [id, record] : table) {
        if (record.executablePath == executablePath && record.arguments == arguments) {
            return &record;
        }
    }
    return nullptr;
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
