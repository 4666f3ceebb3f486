#include "SupervisorRecords.h"

#include "InstalledPaths.h"
#include "LogFile.h"

#include <exception>

namespace vqrx::guard::v0 {

std::vector<client::v0::Record> RecordsOfSupervisor()
{
    try {
        return client::v0::ReadLogFile(client::v0::DefaultLogPath());
    } catch (const std::exception&) {
        return {}; // without a log nothing shows an order
    }
}

std::optional<client::v0::Record> LastRecordOfSupervisor()
{
    const std::vector<client::v0::Record> records = RecordsOfSupervisor();
    return records.empty() ? std::nullopt : std::optional(records.back());
}

} // namespace vqrx::guard::v0
