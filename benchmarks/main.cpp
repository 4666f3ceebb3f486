// dm_bench [options] [section...]: measures, and prints one line "measure value" for each sample.
// ./bench runs this program and report.py, which computes medians and ratios.
#include "Measure.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace {

using vqrx::bench::Settings;

struct Section {
    const char* name;
    void (*run)(const Settings&);
    bool once; // true: the section runs once, because it is long or has its own rounds
};

constexpr Section kSections[] = {
    {"logger", vqrx::bench::LoggerBench, false}, {"ring", vqrx::bench::RingBench, false},
    {"text", vqrx::bench::TextBench, false},     {"pass", vqrx::bench::PassBench, false},
    {"launch", vqrx::bench::LaunchBench, false}, {"client", vqrx::bench::ClientBench, false},
    {"files", vqrx::bench::FileBench, false},    {"supervisor", vqrx::bench::SupervisorBench, true},
};

} // namespace

int main(int argc, char** argv)
try {
    if (argc >= 2 && (std::string(argv[1]) == "child" || std::string(argv[1]) == "launch_client")) {
        return vqrx::bench::RunAsChild(argv[1]);
    }
    Settings settings;
    std::vector<std::string> wanted;
    for (int index = 1; index < argc; ++index) {
        const std::string argument = argv[index];
        const auto value = [&] { return std::string(index + 1 < argc ? argv[++index] : ""); };
        if (argument == "--quick") {
            settings.quick = true;
        } else if (argument == "--register-proxy") {
            settings.registerProxy = true;
        } else if (argument == "--rounds") {
            settings.rounds = std::stoi(value());
        } else if (argument == "--many-files") {
            settings.manyFiles = value();
        } else if (argument == "--tree") {
            settings.tree = value();
        } else if (argument == "--scratch") {
            settings.scratch = value();
        } else if (argument == "--supervisor") {
            settings.supervisor = value();
        } else if (argument == "--idle-seconds") {
            settings.idleSeconds = std::stod(value());
        } else {
            wanted.push_back(argument);
        }
    }
    const auto run = [&](const Section& section, int round) {
        if (wanted.empty() ||
            std::find(wanted.begin(), wanted.end(), section.name) != wanted.end()) {
            std::cerr << "round " << round + 1 << ": " << section.name << std::endl;
            section.run(settings);
        }
    };
    for (int round = 0; round < settings.rounds; ++round) {
        for (const Section& section : kSections) {
            if (!section.once) {
                run(section, round);
            }
        }
    }
    for (const Section& section :
         kSections) { // They end the children of the other sections, so they come last.
        if (section.once) {
            run(section, 0);
        }
    }
    return 0;
} catch (const std::exception& exception) {
    std::cerr << "dm_bench: " << exception.what() << std::endl;
    return 1;
}
