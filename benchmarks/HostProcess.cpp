#include "HostProcess.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace vqrx::bench {
namespace {

std::string Content(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

HostProcess::HostProcess(const std::string& commandLine)
{
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("Z:\\proc", error)) {
        const std::string name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") == std::string::npos &&
            Content(entry.path().string() + "\\cmdline").starts_with(commandLine)) {
            folder_ = entry.path().string();
        }
    }
}

HostProcess::ThreadTimes HostProcess::CpuOfThreads() const
{
    ThreadTimes times;
    std::error_code error;
    for (const auto& task : std::filesystem::directory_iterator(folder_ + "\\task", error)) {
        std::ifstream file(task.path().string() + "\\schedstat");
        double onProcessor = 0;
        if (file >> onProcessor) {
            times[task.path().filename().string()] = onProcessor;
        }
    }
    return times;
}

double HostProcess::CpuSecondsSince(const ThreadTimes& before) const
{
    double nanoseconds = 0;
    for (const auto& [thread, time] : CpuOfThreads()) {
        const auto earlier = before.find(thread);
        nanoseconds += time - (earlier != before.end() ? earlier->second : 0);
    }
    return nanoseconds / 1e9;
}

double HostProcess::Kilobytes(const char* file, const char* field) const
{
    const std::string text = Content(folder_ + "\\" + file);
    const std::string wanted = std::string("\n") + field + ":";
    const std::size_t position = text.find(wanted);
    return position == std::string::npos ? 0 : std::stod(text.substr(position + wanted.size()));
}

double HostProcess::ResidentBytes() const
{
    return Kilobytes("status", "VmRSS") * 1024;
}

double HostProcess::PrivateBytes() const
{
    return (Kilobytes("smaps_rollup", "Private_Dirty") +
            Kilobytes("smaps_rollup", "Private_Clean")) *
           1024;
}

} // namespace vqrx::bench
