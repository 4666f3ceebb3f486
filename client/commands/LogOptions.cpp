#include "commands/LogOptions.h"

#include "ExitCode.h"

#include <iostream>
#include <map>

namespace vqrx::client::v0 {
namespace {

std::string Lines(std::uint64_t count)
{
    return std::to_string(count) + (count == 1 ? " line" : " lines");
}

} // namespace

void AddLogOptions(CLI::App& command, LogOptions& options, bool hasDefault)
{
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

int TellDamage(const std::string& path, const ScanSummary& summary)
{
    if (summary.IsSound()) {
        return kDone;
    }
    std::cout.flush();
    std::cerr << "daemonctl: " << path << ": ";
    if (summary.isEmpty) {
        std::cerr << "the file is empty" << std::endl;
        return kLogUnreadable;
    }
    if (summary.records == 0) {
        std::cerr << "not one record in " << Lines(summary.unreadable + summary.torn)
                  << ": this is no log file of the supervisor" << std::endl;
        return kLogUnreadable;
    }
    const char* separator = "";
    if (summary.headerDamaged) {
        std::cerr << "the header is damaged, the order was found from the records";
        separator = "; ";
    }
    if (summary.unreadable != 0) {
        std::cerr << separator << Lines(summary.unreadable) << " could not be read";
        separator = "; ";
    }
    if (summary.damaged != 0) {
        std::cerr << separator << Lines(summary.damaged) << " shown without number or date";
    }
    std::cerr << std::endl;
    return kLogUnreadable;
}

} // namespace vqrx::client::v0
