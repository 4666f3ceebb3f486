// Fuzzer for LogFileSink with any bytes as the existing log file. The sink appends to the file, or
// throws a documented exception and does not change the file.
#include "Check.h"
#include "log_perf/ring/LogFileSink.h"

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
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
    [[maybe_unused]] static const int removed =
        std::atexit([] { std::remove(FileName().c_str()); });
    return name;
}

std::string Bytes()
{
    std::ifstream file(FileName(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Returns false if the sink refuses the file as damaged.
bool Write(LogFileSink& sink, const char* text)
{
    Timestamp timestamp{};
    timestamp.time = 1795236736;
    try {
        sink.Write(2, &timestamp, text);
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
    if (!entries.empty()) { // They are empty after the largest number of all.
        FUZZ_CHECK(entries.back().second.text == newest);
    }
}

void Append(const std::string& before, std::uint32_t limit)
{
    std::ofstream(FileName(), std::ios::binary | std::ios::trunc) << before;
    LogFileSink sink;
    sink.SetFileName(FileName());
    sink.SetSizeLimit(limit);
    if (!Write(sink, "first of the new")) {
        FUZZ_CHECK(Bytes() == before);
        return;
    }
    CheckHistory(sink, "first of the new");
    FUZZ_CHECK(Write(sink, "second of the new")); // The sink does not read the file again.
    CheckHistory(sink, "second of the new");
    const std::string after = Bytes();
    FUZZ_CHECK(after.size() >= kHeader && after.compare(10, 2, "\r\n") == 0);
    const std::uint64_t position = std::stoull(after.substr(0, 10), nullptr, 16);
    FUZZ_CHECK(position >= kHeader && position <= after.size());
    const std::string end = ";2;second of the new\r\n";
    if (position != kHeader) {
        FUZZ_CHECK(after.compare(position - end.size(), end.size(), end) == 0);
    } else {
        // The next record goes to the start of the ring.
        FUZZ_CHECK(after.find(end) != std::string::npos);
    }
}

} // namespace
} // namespace vqrx::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::uint32_t limit = size % 3 == 0 ? 0 : static_cast<std::uint32_t>(size * 2 / 3);
    vqrx::test::Append(std::string(data, data + size), limit);
    return 0;
}
