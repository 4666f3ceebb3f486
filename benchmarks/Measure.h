#pragma once

#include <string>

namespace vqrx::bench {

/// Options of dm_bench.
struct Settings {
    int rounds = 7;
    bool quick = false;        ///< small numbers, only to see that everything works
    std::string manyFiles;     ///< a folder with 100,000 files
    std::string tree;          ///< a folder with 10,000 files in 100 folders
    std::string scratch = "."; ///< an empty folder
    std::string supervisor;    ///< DaemonManager.exe
    bool registerProxy =
        false;               ///< DaemonMgrPS.dll beside this program, for as long as it is needed
    double idleSeconds = 60; ///< duration of the measurement of an idle supervisor
};

/// Measures the time since its construction.
class Stopwatch {
public:
    Stopwatch() noexcept;
    [[nodiscard]] double Seconds() const noexcept;

private:
    long long start_;
};

/// Prints one sample of a measure: a line "name value" on standard output.
void Report(const std::string& name, double value);

/// Prevents the compiler from removing the computation of a value.
template <typename T>
void Keep(const T& value) noexcept
{
    asm volatile("" : : "g"(&value) : "memory"); // NOLINT(hicpp-no-assembler)
}

/// Path of a daemon, 60 characters long as on an appliance.
inline constexpr const char* kDaemonPath =
    "D:\\FIRMWARE\\App\\bin\\video_processing\\encoder_channel_07.exe";

// Each function prints the samples of one round of its section.
void ClientBench(const Settings& settings);
void LoggerBench(const Settings& settings);
void RingBench(const Settings& settings);
void PassBench(const Settings& settings);
void LaunchBench(const Settings& settings);
void TextBench(const Settings& settings);
void FileBench(const Settings& settings);
void SupervisorBench(const Settings& settings);

/// Runs this program as the client process of LaunchBench. Returns the exit code.
int LaunchClient();
/// Runs this program as a child: kind "child" is a daemon of SupervisorBench and PassBench, and
/// "launch_client" is the client of LaunchBench. Returns the exit code.
int RunAsChild(const std::string& kind);

} // namespace vqrx::bench
