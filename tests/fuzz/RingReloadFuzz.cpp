// Fuzzer for ReloadRing with any bytes as a log file. The reload ends, and returns the number after
// the last record. It may throw only if a line of the file has a time or a level that is no number,
// and no NUL.
#include "Check.h"
#include "DamagedLines.h"
#include "log_perf/ring/LineReader.h"
#include "log_perf/ring/RingReload.h"
#include "ring_format/RingHeader.h"

#include <sstream>
#include <stdexcept>
#include <string>

namespace vqrx::test {
namespace {

using namespace log::log_perf::v2;
using namespace system::ring_format::v1;

std::int64_t Successor(std::int64_t number)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(number) + 1);
}

void Reload(const std::string& bytes)
{
    std::istringstream file(bytes);
    const std::uint32_t position = ReadRingHeader(file).value(); // a string can always be read
    FUZZ_CHECK(position == kRingStart || position <= bytes.size());
    FUZZ_CHECK(position >= kRingStart);
    std::size_t found = 0;
    std::int64_t last = 0;
    std::int64_t restarts = 0;
    std::int64_t next = 0;
    try {
        const std::uint32_t limit = bytes.size() % 2 == 0 ? 0 : position / 2;
        next = ReloadRing(file, position, limit,
                          [&](std::int64_t number, const LogHistoryEntry& entry) {
                              FUZZ_CHECK(entry.text.size() <= LineReader::kMaxLine);
                              restarts += found != 0 && number != Successor(last) ? 1 : 0;
                              last = number;
                              ++found;
                          });
    } catch (const std::invalid_argument&) {
        FUZZ_CHECK(HasDamagedLine(bytes));
        return;
    } catch (const std::out_of_range&) {
        FUZZ_CHECK(HasDamagedLine(bytes));
        return;
    }
    FUZZ_CHECK(restarts == 0);
    FUZZ_CHECK(found == 0 || next == Successor(last));
}

void ReadLines(const std::string& bytes)
{
    std::istringstream file(bytes);
    LineReader reader(file);
    std::string line;
    std::uint64_t before = 0;
    while (reader.Next(line)) {
        FUZZ_CHECK(reader.Position() > before);
        FUZZ_CHECK(line.find('\n') == std::string::npos);
        before = reader.Position();
    }
    FUZZ_CHECK(reader.Position() == bytes.size());
}

} // namespace
} // namespace vqrx::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(data, data + size);
    vqrx::test::Reload(bytes);
    vqrx::test::ReadLines(bytes);
    return 0;
}
