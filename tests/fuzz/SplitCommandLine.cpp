#include "SplitCommandLine.h"

#include <algorithm>

namespace vqrx::test {
namespace {

bool IsBlank(char character)
{
    return character == ' ' || character == '\t';
}

class Splitter {
public:
    explicit Splitter(const std::string& text)
        : text_(text)
    {
    }

    std::vector<std::string> Run()
    {
        arguments_.push_back(Program());
        for (SkipBlanks(); position_ < text_.size(); SkipBlanks()) {
            arguments_.push_back(Argument());
        }
        return arguments_;
    }

private:
    std::string Program()
    {
        const bool quoted = text_[0] == '"';
        const std::size_t begin = quoted ? 1 : 0;
        std::size_t end = begin;
        while (end < text_.size() && (quoted ? text_[end] != '"' : !IsBlank(text_[end]))) {
            ++end;
        }
        position_ = std::min(text_.size(), end + (quoted ? 1U : 0U));
        return text_.substr(begin, end - begin);
    }

    void SkipBlanks()
    {
        while (position_ < text_.size() && IsBlank(text_[position_])) {
            ++position_;
        }
    }

    std::string Argument()
    {
        std::string argument;
        bool quoted = false;
        while (position_ < text_.size() && (quoted || !IsBlank(text_[position_]))) {
            const std::size_t backslashes = CountBackslashes();
            const bool quote = position_ < text_.size() && text_[position_] == '"';
            if (!quote) {
                argument.append(backslashes, '\\');
                if (position_ < text_.size() && (quoted || !IsBlank(text_[position_]))) {
                    argument += text_[position_++];
                }
                continue;
            }
            argument.append(backslashes / 2, '\\');
            ++position_;
            if (backslashes % 2 != 0) {
                argument += '"';
            } else if (quoted && position_ < text_.size() && text_[position_] == '"') {
                argument += '"';
                ++position_;
                quoted = false;
            } else {
                quoted = !quoted;
            }
        }
        return argument;
    }

    std::size_t CountBackslashes()
    {
        const std::size_t begin = position_;
        while (position_ < text_.size() && text_[position_] == '\\') {
            ++position_;
        }
        return position_ - begin;
    }

    const std::string& text_;
    std::size_t position_ = 0;
    std::vector<std::string> arguments_;
};

} // namespace

std::vector<std::string> SplitCommandLine(const std::string& commandLine)
{
    return Splitter(commandLine).Run();
}

} // namespace vqrx::test
