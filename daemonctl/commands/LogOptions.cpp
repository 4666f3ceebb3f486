#include "LogOptions.h"

#include "ExitCode.h"

#include <iostream>
#include <map>

namespace vqrx::client::v0 {
namespace {

std::string Lines(std::uint64_t count)
{
    return std::to_string(count) + (count == 1 ? " line" : " lines");
}

std::string DescribeDamage(const ScanSummary& summary)
{
    if (summary.isEmpty) {
        return "the file is empty";
    }
    if (summary.records == 0) {
        return "not one record in " + Lines(summary.unreadable + summary.torn) +
               ": this is no log file of the supervisor";
    }
    std::string text;
    const auto append = [&text](const std::string& part) {
        text += (text.empty() ? "" : "; ") + part;
    };
    if (summary.headerDamaged) {
        append("the header is damaged, the order was found from the records");
    }
    if (summary.unreadable != 0) {
        append(Lines(summary.unreadable) + " could not be read");
    }
    if (summary.damaged != 0) {
        append(Lines(summary.damaged) + " shown without number or date");
    }
    return text;
}

} // namespace

void AddLogOptions(CLI::App& command, LogOptions& options, bool hasDefault)
{
    options.program = command.get_parent()->get_name();
    CLI::Option* const file =
        command.add_option("--file", options.file,
                           hasDefault ? "The log file or a copy of one, instead of this machine's"
                                      : "The log file or a copy of one");
    file->type_name("FILE")->required(!hasDefault);
    static const std::map<std::string, TextEncoding> encodings = {
        {"auto", TextEncoding::kAuto},
        {"ansi", TextEncoding::kAnsi},
        {"windows-1252", TextEncoding::kWindows1252},
        {"utf-8", TextEncoding::kUtf8}};
    command
        .add_option("--encoding", options.encoding,
                    "Of the texts: auto, ansi (this machine's code page), windows-1252, utf-8")
        ->type_name("NAME")
        ->transform(CLI::CheckedTransformer(encodings).description(""));
}

void TellError(const LogOptions& options, const std::string& text)
{
    std::cout.flush();
    std::cerr << options.program << ": " << text << std::endl;
}

int TellDamage(const LogOptions& options, const std::string& path, const ScanSummary& summary)
{
    if (summary.IsSound()) {
        return kDone;
    }
    TellError(options, path + ": " + DescribeDamage(summary));
    return kLogUnreadable;
}

} // namespace vqrx::client::v0
