#include "ExpectFile.h"

#include "AsciiCase.h"
#include "LetterCase.h"
#include "TextEncoding.h"

#include <utility>

namespace vqrx::client::v0 {
namespace {

bool IsBlank(char character)
{
    return character == ' ' || character == '\t';
}

// Splits a line at blanks and tabs outside double quotes, and removes the quotes.
// @return nothing if a double quote is not closed
std::optional<std::vector<std::string>> SplitWords(std::string_view line)
{
    std::vector<std::string> words;
    bool inWord = false;
    bool inQuotes = false;
    for (const char character : line) {
        if (character == '"') {
            inQuotes = !inQuotes;
        } else if (inQuotes || !IsBlank(character)) {
            if (!inWord) {
                words.emplace_back();
            }
            words.back() += character;
            inWord = true;
            continue;
        } else {
            inWord = false;
            continue;
        }
        if (!inWord) { // a quote begins a word, even an empty one
            words.emplace_back();
            inWord = true;
        }
    }
    if (inQuotes) {
        return std::nullopt;
    }
    return words;
}

std::string ComparablePath(std::string_view path)
{
    std::string result = WithoutCase(path);
    for (char& character : result) {
        character = character == '/' ? '\\' : character;
    }
    return result;
}

// Assigns a command to one program after another. If a command has an owner already, the owner
// moves to another command where that is possible (augmenting paths of bipartite matching).
class Matching {
public:
    Matching(const std::vector<ExpectedProgram>& programs, const std::vector<std::string>& commands)
        : programs_(programs)
        , commands_(commands)
        , ownerOf_(commands.size())
    {
    }

    void Place(std::size_t program)
    {
        std::vector<bool> tried(commands_.size());
        FindRoom(program, tried);
    }

    std::vector<std::optional<std::size_t>> Result() const
    {
        std::vector<std::optional<std::size_t>> result(programs_.size());
        for (std::size_t command = 0; command < ownerOf_.size(); ++command) {
            if (ownerOf_[command]) {
                result[*ownerOf_[command]] = command;
            }
        }
        return result;
    }

private:
    bool Fits(std::size_t program, std::size_t command) const
    {
        return IsCommandOf(programs_[program], commands_[command]);
    }

    // Finds a command for a program: a free one, or one whose owner can move.
    // @param tried  the commands whose owners were asked to move already
    bool FindRoom(std::size_t program, std::vector<bool>& tried)
    {
        for (std::size_t command = 0; command < commands_.size(); ++command) {
            if (!ownerOf_[command] && Fits(program, command)) {
                ownerOf_[command] = program;
                return true;
            }
        }
        for (std::size_t command = 0; command < commands_.size(); ++command) {
            if (tried[command] || !Fits(program, command)) {
                continue;
            }
            tried[command] = true;
            if (FindRoom(*ownerOf_[command], tried)) {
                ownerOf_[command] = program;
                return true;
            }
        }
        return false;
    }

    const std::vector<ExpectedProgram>& programs_;
    const std::vector<std::string>& commands_;
    std::vector<std::optional<std::size_t>> ownerOf_;
};

} // namespace

ExpectFile ParseExpectFile(std::string_view content)
{
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (content.starts_with(byteOrderMark)) {
        content.remove_prefix(byteOrderMark.size());
    }
    ExpectFile file;
    if (!IsUtf8(content)) {
        file.errors.emplace_back("the text is not UTF-8: save the list as UTF-8");
        return file;
    }
    if (content.find('\0') != std::string_view::npos) { // a power failure can leave them
        file.errors.emplace_back("the text holds NUL bytes: write the list again");
        return file;
    }
    for (std::size_t number = 1; !content.empty(); ++number) {
        const std::size_t end = content.find_first_of("\r\n");
        const std::string_view line = content.substr(0, end);
        const bool pair = end != std::string_view::npos && content.substr(end, 2) == "\r\n";
        content.remove_prefix(end == std::string_view::npos ? content.size()
                                                            : end + (pair ? 2 : 1));
        const std::size_t first = line.find_first_not_of(" \t");
        if (first == std::string_view::npos || line[first] == '#') {
            continue;
        }
        auto words = SplitWords(line);
        const std::string place = "line " + std::to_string(number) + ": ";
        if (!words) {
            file.errors.push_back(place + "a double quote is not closed");
        } else if (words->front().empty()) {
            file.errors.push_back(place + "the program's name is empty");
        } else {
            std::string program = std::move(words->front());
            words->erase(words->begin());
            file.programs.push_back({number, std::move(program), std::move(*words)});
        }
    }
    if (file.programs.empty() && file.errors.empty()) {
        file.errors.emplace_back("the list names no program");
    }
    return file;
}

std::string JoinedArguments(const std::vector<std::string>& arguments)
{
    std::string text = " ";
    for (const std::string& argument : arguments) {
        text += argument + " ";
    }
    return text;
}

bool IsCutInLog(std::string_view path, const std::vector<std::string>& arguments)
{
    constexpr std::size_t kLongestMessage = 1040; // the supervisor cuts a message after it
    constexpr std::string_view kLongestPrefix = "Start DaemonId(4294967295) PId(4294967295) : ";
    return kLongestPrefix.size() + path.size() + JoinedArguments(arguments).size() >
           kLongestMessage;
}

bool CanBeFolder(std::string_view text)
{
    return text.find(':', 2) == std::string_view::npos &&
           LowerAscii(text).find(".exe ") == std::string::npos;
}

bool IsCommandOf(const ExpectedProgram& expected, std::string_view command)
{
    const std::string program = ComparablePath(expected.program);
    if (command.empty() || command.back() != ' ') { // the name of a service has no blank after it
        return expected.arguments.empty() && ComparablePath(command) == program;
    }
    const std::string arguments = JoinedArguments(expected.arguments);
    const bool anyFolder = program.find('\\') == std::string::npos;
    // The path can hold blanks, so try each blank as its end.
    for (std::size_t end = command.find(' '); end != std::string_view::npos;
         end = command.find(' ', end + 1)) {
        if (!expected.arguments.empty() && command.substr(end) != arguments) {
            continue;
        }
        const std::string path = ComparablePath(command.substr(0, end));
        const std::size_t begin = anyFolder ? path.rfind('\\') + 1 : 0; // npos + 1 is 0
        if (path.compare(begin, std::string::npos, program) == 0 &&
            CanBeFolder(std::string_view(path).substr(0, begin))) {
            return true;
        }
    }
    return false;
}

std::vector<std::optional<std::size_t>> Assign(const std::vector<ExpectedProgram>& programs,
                                               const std::vector<std::string>& commands)
{
    Matching matching(programs, commands);
    for (std::size_t program = 0; program < programs.size(); ++program) {
        matching.Place(program);
    }
    return matching.Result();
}

std::string TextOf(const ExpectedProgram& expected)
{
    const auto quoted = [](const std::string& word) {
        // A word in front must not look like a comment or a byte order mark.
        const bool isPlain = !word.empty() && word.find_first_of(" \t") == std::string::npos &&
                             word.front() != '#' && word.front() != '\xEF';
        return isPlain ? word : '"' + word + '"';
    };
    std::string text = quoted(expected.program);
    for (const std::string& argument : expected.arguments) {
        text += " " + quoted(argument);
    }
    return text;
}

} // namespace vqrx::client::v0
