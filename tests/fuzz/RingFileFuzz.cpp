// Fuzzer for LogFileSink with any bytes as the existing log file, opened three times. Each opening
// appends records to the file, and the next opening reads these records. The sink may throw only if
// a line of the file has a time or a level that is no number and no NUL; then it keeps the file
// beside a new one, which it never refuses.
#include "Check.h"
#include "DamagedLines.h"
#include "FileContent.h"
#include "log_perf/ring/LogFileSink.h"

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>

namespace vqrx::test {
namespace {

using namespace log::log_perf::v2;

constexpr std::size_t kHeader = 12;

const std::string& FileName()
{
    static const std::string name =
        (std::filesystem::temp_directory_path() / ("fuzz_ring_" + std::to_string(getpid())))
            .string();
    [[maybe_unused]] static const int removed = std::atexit([] {
        std::remove(FileName().c_str());
        std::remove((FileName() + ".damaged").c_str());
    });
    return name;
}

// Returns false if the sink refuses the file as damaged.
bool Write(LogFileSink& sink, const std::string& text)
{
    Timestamp timestamp{};
    timestamp.time = 1795236736;
    try {
        sink.Write(2, &timestamp, text.c_str());
        return true;
    } catch (const std::invalid_argument&) {
        return false;
    } catch (const std::out_of_range&) {
        return false;
    }
}

void CheckHistory(LogFileSink& sink, const std::string& newest)
{
    const auto entries = sink.GetEntries(0, -1);
    for (std::size_t index = 1; index < entries.size(); ++index) {
        FUZZ_CHECK(entries[index].first == entries[index - 1].first + 1);
    }
    // A damaged file can bring the largest number of all. Records after it have negative numbers,
    // which this call does not ask for.
    if (!entries.empty() && entries.back().first != std::numeric_limits<std::int64_t>::max()) {
        FUZZ_CHECK(entries.back().second.text == newest);
    }
}

void CheckFile(const std::string& newest)
{
    const std::string after = FileContentIfAny(FileName());
    FUZZ_CHECK(after.size() >= kHeader && after.compare(10, 2, "\r\n") == 0);
    const std::uint64_t position = std::stoull(after.substr(0, 10), nullptr, 16);
    FUZZ_CHECK(position >= kHeader && position <= after.size());
    const std::string end = ";2;" + newest + "\r\n";
    if (position != kHeader) {
        FUZZ_CHECK(after.compare(position - end.size(), end.size(), end) == 0);
    } else {
        // The next record goes to the start of the ring.
        FUZZ_CHECK(after.find(end) != std::string::npos);
    }
}

// Opens the file and writes two records. @return whether the sink refused the file
bool Append(const std::string& opening, std::uint32_t limit)
{
    const std::string before = FileContentIfAny(FileName());
    LogFileSink sink;
    sink.SetFileName(FileName());
    sink.SetSizeLimit(limit);
    const bool refused = !Write(sink, "first of opening " + opening);
    if (refused) {
        FUZZ_CHECK(HasDamagedLine(before));
        FUZZ_CHECK(FileContentIfAny(FileName() + ".damaged") == before);
        FUZZ_CHECK(sink.GetEntries(0, -1).size() == 1);
    }
    CheckHistory(sink, "first of opening " + opening);
    FUZZ_CHECK(Write(sink, "second of opening " + opening)); // The file is not read again.
    CheckHistory(sink, "second of opening " + opening);
    CheckFile("second of opening " + opening);
    return refused;
}

} // namespace
} // namespace vqrx::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vqrx::test;
    const std::uint32_t limit = size % 3 == 0 ? 0 : static_cast<std::uint32_t>(size * 2 / 3);
    std::ofstream(FileName(), std::ios::binary | std::ios::trunc) << std::string(data, data + size);
    bool refused = false;
    for (const char* opening : {"1", "2", "3"}) {
        const bool again = Append(opening, limit);
        FUZZ_CHECK(!(refused && again));
        refused = refused || again;
    }
    return 0;
}
