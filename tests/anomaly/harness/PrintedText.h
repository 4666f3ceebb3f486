#pragma once

#include "Injection.h"
#include "Watched.h"

#include <ostream>
#include <streambuf>
#include <string>

namespace vqrx::test::anomaly {

/// Takes what the program prints on a stream, until the destructor. Its own work belongs to the
/// test, so no call of it fails. Any thread may print.
class PrintedText : public std::streambuf {
public:
    /// @param stream  std::cout or std::cerr; must outlive this object
    explicit PrintedText(std::ostream& stream)
        : stream_(stream)
        , before_(stream.rdbuf(this))
    {
    }
    PrintedText(const PrintedText&) = delete;
    PrintedText& operator=(const PrintedText&) = delete;
    ~PrintedText() override
    {
        stream_.rdbuf(before_); // also clears the state of the stream
    }

    /// Returns everything that was printed so far.
    [[nodiscard]] std::string Text() const { return text_.Get(); }

protected:
    int_type overflow(int_type letter) override
    {
        const OfTheTest mark;
        text_.Apply([&](std::string& text) { text += static_cast<char>(letter); });
        return letter;
    }
    std::streamsize xsputn(const char* added, std::streamsize count) override
    {
        const OfTheTest mark;
        text_.Apply(
            [&](std::string& text) { text.append(added, static_cast<std::size_t>(count)); });
        return count;
    }

private:
    Watched<std::string> text_{std::string()};
    std::ostream& stream_;
    std::streambuf* before_;
};

} // namespace vqrx::test::anomaly
