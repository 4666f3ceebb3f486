#include "DaemonTable.h"

namespace vqrx::system::daemon::daemon_mgr::v0 {

const ProcessInfo* FindSameCommand(const DaemonTable& table, const std::string& executablePath,
                                   const std::vector<std::string>& arguments)
{
    for (const auto& [id, daemon] : table) {
        if (daemon.executablePath == executablePath && daemon.arguments == arguments) {
            return &daemon;
        }
    }
    return nullptr;
}

DWORD GiveFreeId(DaemonTable::node_type& entry, const DaemonTable& table,
                 std::atomic<DWORD>& nextId) noexcept
{
    entry.mapped().daemonId = nextId++;
    KeepOrGiveFreeId(entry, table, nextId);
    return entry.key();
}

void KeepOrGiveFreeId(DaemonTable::node_type& entry, const DaemonTable& table,
                      std::atomic<DWORD>& nextId) noexcept
{
    std::uint32_t& id = entry.mapped().daemonId;
    while (id == kNoId || table.contains(id)) {
        id = nextId++;
    }
    entry.key() = id;
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
