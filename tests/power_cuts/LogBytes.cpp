#include "LogBytes.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <fstream>

namespace vqrx::test {

using log::log_perf::v2::LogFileSink;
using log::log_perf::v2::Timestamp;

Timestamp At(std::int64_t seconds)
{
    Timestamp timestamp{};
    timestamp.time = seconds;
    timestamp.millitm = 7;
    return timestamp;
}

std::unique_ptr<LogFileSink> NewSink(const std::string& name, std::uint32_t limit)
{
    auto sink = std::make_unique<LogFileSink>();
    sink->SetFileName(name);
    sink->SetSizeLimit(limit);
    return sink;
}

std::string ContentOf(const std::string& name)
{
    std::string content(std::filesystem::file_size(name), '\0');
    std::ifstream(name, std::ios::binary)
        .read(content.data(), static_cast<std::streamsize>(content.size()));
    return content;
}

void Put(const std::string& name, const std::string& bytes)
{
    const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const ssize_t written = write(file, bytes.data(), bytes.size());
    close(file);
    ASSERT_EQ(static_cast<ssize_t>(bytes.size()), written);
}

Lines LinesOf(std::string_view bytes)
{
    Lines lines;
    for (std::size_t end = bytes.find('\n'); end != std::string_view::npos;
         end = bytes.find('\n')) {
        lines.insert(bytes.substr(0, end + 1));
        bytes.remove_prefix(end + 1);
    }
    return lines;
}

} // namespace vqrx::test
