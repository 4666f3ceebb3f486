#pragma once

#include <string>

namespace vqrx::bench {

/// What the command line asks for.
struct Settings {
    int rounds = 7;
    bool quick = false;      ///< smaller numbers everywhere, to see that everything works
    std::string manyFiles;   ///< a folder with 100,000 files
    std::string tree;        ///< a folder with 10,000 files in 100 folders
    std::string scratch;     ///< an empty folder
    std::string supervisor;  ///< DaemonManager.exe
    double idleSeconds = 60; ///< how long the idle supervisor is watched
};

class Stopwatch {
public:
    Stopwatch() noexcept;
    double Seconds() const noexcept;

private:
    long long start_;
};

/// One sample of a measure: a line "name value" on standard output.
void Report(const std::string& name, double value);

/// Keeps a result from being optimised away.
template <typename T>
void Keep(const T& value) noexcept
{
    asm volatile("" : : "g"(&value) : "memory"); // NOLINT(hicpp-no-assembler)
}

/// The path of a daemon as appliances have them, 60 characters.
inline constexpr const char* kDaemonPath =
    "D:\\FIRMWARE\\App\\bin\\video_processing\\encoder_channel_07.exe";

void LoggerBench(const Settings& settings);
void RingBench(const Settings& settings);
void PassBench(const Settings& settings);
void LaunchBench(const Settings& settings);
void TextBench(const Settings& settings);
void FileBench(const Settings& settings);
void SupervisorBench(const Settings& settings);

/// The other process of LaunchBench.
int LaunchClient();
/// A daemon of SupervisorBench and PassBench.
int RunAsChild(const std::string& kind);

} // namespace vqrx::bench
