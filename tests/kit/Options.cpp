#include "Options.h"

#include <algorithm>
#include <charconv>

namespace vqrx::kit {
namespace {

// The longest folder, in characters: the longest path of a test below it must stay below 260.
constexpr std::size_t kLongestFolder = 60;
constexpr unsigned kMostJobs = 16;

unsigned ReadJobs(const std::string& text)
{
    unsigned jobs = 0;
    const char* const end = text.data() + text.size();
    const auto [read, error] = std::from_chars(text.data(), end, jobs);
    if (error != std::errc() || read != end || jobs == 0 || jobs > kMostJobs) {
        throw UsageError("--jobs needs a number from 1 to 16, not '" + text + "'");
    }
    return jobs;
}

std::vector<std::string> SplitAtCommas(const std::string& text)
{
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (;;) {
        const std::size_t end = text.find(',', begin);
        parts.push_back(text.substr(begin, end - begin));
        if (end == std::string::npos) {
            return parts;
        }
        begin = end + 1;
    }
}

} // namespace

Options ReadOptions(const std::vector<std::string>& arguments)
{
    Options options;
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        const auto value = [&]() -> const std::string& {
            if (index + 1 == arguments.size()) {
                throw UsageError(argument + " needs a value");
            }
            return arguments[++index];
        };
        if (argument == "--help" || argument == "-h") {
            options.help = true;
        } else if (argument == "--yes") {
            options.yes = true;
        } else if (argument == "--quick") {
            options.quick = true;
        } else if (argument == "--undo") {
            options.undo = true;
        } else if (argument == "--jobs") {
            options.jobs = ReadJobs(value());
        } else if (argument == "--only") {
            options.only = SplitAtCommas(value());
        } else {
            throw UsageError("unknown argument " + argument);
        }
    }
    return options;
}

const char* HelpText()
{
    return R"(Tests DaemonManager on this machine, and writes report\report.html.

run-tests [options]
  --yes             Change the machine without a question, and do not wait for a key at the end
  --quick           Leave out the programs that take long
  --only NAME,...   Run only these programs
  --jobs N          Run up to N programs at a time (default 1)
  --undo            Run nothing; put back what an earlier run has left
  --help            Show this text

Exit codes: 0 no test failed; 1 a test failed, or something could not be put back, or a report could not
be written; 2 nothing was run, because of a wrong argument or of this machine; 130 somebody stopped the run.
)";
}

std::vector<TestProgram> Chosen(const Manifest& manifest, const Options& options)
{
    const auto wanted = [&](const TestProgram& program) {
        return options.only.empty() ? !(options.quick && program.takesLong)
                                    : std::find(options.only.begin(), options.only.end(),
                                                program.name) != options.only.end();
    };
    std::vector<TestProgram> chosen;
    std::copy_if(manifest.programs.begin(), manifest.programs.end(), std::back_inserter(chosen),
                 wanted);
    for (const std::string& name : options.only) {
        if (std::none_of(chosen.begin(), chosen.end(),
                         [&](const TestProgram& program) { return program.name == name; })) {
            throw UsageError("this kit has no program " + name);
        }
    }
    return chosen;
}

std::string ObjectionTo(const std::string& folder)
{
    const auto isPlain = [](char character) { return character > ' ' && character <= '~'; };
    if (!std::all_of(folder.begin(), folder.end(), isPlain)) {
        return "its path contains a blank or a letter beyond ASCII";
    }
    if (folder.find("\\App") != std::string::npos) {
        return "its path contains \\App";
    }
    if (folder.size() > kLongestFolder) {
        return "its path has more than 60 characters";
    }
    if (folder.starts_with("\\\\")) {
        return "it is on another machine";
    }
    if (folder.find("\\OneDrive") != std::string::npos) {
        return "it is in OneDrive, which holds new files open and copies them away";
    }
    return {};
}

} // namespace vqrx::kit
