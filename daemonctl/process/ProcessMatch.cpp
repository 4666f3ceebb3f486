#include "ProcessMatch.h"

#include "AsciiCase.h"
#include "LetterCase.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {
namespace {

// The record is written right after the start. The two times come from clocks of different
// resolution.
constexpr std::int64_t kClockGrainMs = 1000;
// Between the creation of a process and the record lies the work of the system, for example of a
// virus scanner.
constexpr std::int64_t kLongestStartMs = 60000;

// Returns the path in a form that can be compared as text: absolute, without "." and "..", without
// letter case, with backslashes only.
std::string Comparable(std::string_view path, const std::string& appFolder)
{
    std::string text;
    for (const char character : WithoutCase(path)) {
        text += character == '/' ? '\\' : character;
    }
    if (text.starts_with(R"(\\?\)")) {
        text.erase(0, 4);
    }
    const bool hasDrive = text.size() > 1 && text[1] == ':';
    const bool isShare = text.starts_with("\\\\");
    if (!hasDrive && !isShare && !appFolder.empty()) {
        const std::string base = WithoutCase(appFolder);
        text = text.starts_with("\\") ? base.substr(0, 2) + text : base + "\\" + text;
    }
    std::vector<std::string_view> parts;
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t end = rest.find('\\');
        const std::string_view part = rest.substr(0, end);
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        if (part == ".." && parts.size() > 1) {
            parts.pop_back();
        } else if (!part.empty() && part != "." && part != "..") {
            parts.push_back(part);
        }
    }
    std::string result = isShare ? "\\" : "";
    for (const std::string_view part : parts) {
        result.append(result.empty() ? "" : "\\").append(part);
    }
    return result;
}

// A path holds no question mark. One in the log stands for a character that the ANSI code page
// lacks; in the UTF-8 text of the image, that character can have several bytes.
bool FitsText(std::string_view logged, std::string_view image)
{
    while (!logged.empty() && !image.empty()) {
        if (logged.front() == '?') {
            do {
                image.remove_prefix(1);
            } while (!image.empty() &&
                     (static_cast<unsigned char>(image.front()) & 0xC0U) == 0x80U);
        } else if (logged.front() == image.front()) {
            image.remove_prefix(1);
        } else {
            return false;
        }
        logged.remove_prefix(1);
    }
    return logged.empty() && image.empty();
}

// Calls fits with each beginning of the command that ends at a blank.
template <typename Predicate>
bool AnyPathOf(const std::string& command, const Predicate& fits)
{
    for (std::size_t end = command.find(' '); end != std::string::npos;
         end = command.find(' ', end + 1)) {
        if (end != 0 && fits(command.substr(0, end))) {
            return true;
        }
    }
    return false;
}

} // namespace

std::string AbsolutePath(const std::string& path, const std::string& appFolder)
{
    const bool isAbsolute = path.starts_with("\\") || path.starts_with("/") ||
                            (path.size() > 1 && path[1] == ':') || appFolder.empty();
    return isAbsolute ? path : appFolder + "\\" + path;
}

bool IsBatchFile(const std::string& path)
{
    const std::string lower = LowerAscii(path);
    return lower.ends_with(".bat") || lower.ends_with(".cmd");
}

namespace {

bool IsCommandInterpreter(const std::string& image)
{
    return LowerAscii(image).ends_with("\\cmd.exe");
}

} // namespace

bool IsSamePath(const std::string& path, const std::string& image, const std::string& appFolder,
                const SameFile& sameFile)
{
    return FitsText(Comparable(path, appFolder), Comparable(image, {})) ||
           sameFile(AbsolutePath(path, appFolder), image);
}

bool IsImageOfCommand(const std::string& image, const std::string& command,
                      const std::string& appFolder, const SameFile& sameFile)
{
    if (image.empty()) {
        return false;
    }
    const std::string wanted = Comparable(image, {});
    return AnyPathOf(command,
                     [&](const std::string& path) {
                         return FitsText(Comparable(path, appFolder), wanted);
                     }) ||
           AnyPathOf(command,
                     [&](const std::string& path) {
                         return sameFile(AbsolutePath(path, appFolder), image);
                     }) ||
           (IsCommandInterpreter(image) && AnyPathOf(command, IsBatchFile));
}

ProcessFit FitProcess(const LoggedProcess& logged, const ProcessFacts& facts,
                      const std::string& appFolder, const SameFile& sameFile)
{
    switch (facts.state) {
    case ProcessFacts::State::kGone:
        return ProcessFit::kGone;
    case ProcessFacts::State::kHidden:
        return ProcessFit::kHidden;
    case ProcessFacts::State::kRunning:
        break;
    }
    const std::int64_t latestMs =
        logged.attached ? std::max(logged.loggedMs, logged.latestMs) : logged.loggedMs;
    const bool beganLater = facts.createdMs > latestMs + kClockGrainMs;
    const bool beganLongBefore = facts.createdMs < logged.loggedMs - kLongestStartMs;
    if (beganLater || (beganLongBefore && !logged.attached)) {
        return ProcessFit::kOtherTime;
    }
    return IsImageOfCommand(facts.image, logged.command, appFolder, sameFile)
               ? ProcessFit::kSame
               : ProcessFit::kOtherProgram;
}

std::string DescribeMisfit(ProcessFit fit, const ProcessFacts& facts)
{
    const std::string process = "process " + std::to_string(facts.processId);
    switch (fit) {
    case ProcessFit::kSame:
        return process + " runs";
    case ProcessFit::kGone:
        return process + " has ended";
    case ProcessFit::kHidden:
        return process + " may not be opened by this user: run this command as administrator";
    case ProcessFit::kOtherTime:
        return process + " has ended; the id belongs to another process now, " + facts.image;
    case ProcessFit::kOtherProgram:
        break;
    }
    return process + " runs another program, " + facts.image;
}

} // namespace vqrx::client::v0
