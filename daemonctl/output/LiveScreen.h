#pragma once

#include "LineOutput.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// The size of a console window, in characters.
struct ConsoleSize {
    std::size_t width = 0;
    std::size_t height = 0;
};

/// Returns the size of the window of standard output; nothing if it is no console.
[[nodiscard]] std::optional<ConsoleSize> SizeOfConsole();

/// A line of a screen. Texts are UTF-8.
struct LiveLine {
    std::string text;
    int level = -1;      ///< level of a record, 0 to 3, which selects the colour; -1 for no colour
    bool marked = false; ///< shown with swapped colours
};

/// Shows lines in place, in a screen of its own. The destructor restores the screen of before. So
/// does Windows, if the program is ended. For one thread. Windows only.
class LiveScreen {
public:
    LiveScreen() = default;
    LiveScreen(const LiveScreen&) = delete;
    LiveScreen& operator=(const LiveScreen&) = delete;
    virtual ~LiveScreen() = default;

    /// Returns the present size of the window, which the user may change.
    [[nodiscard]] virtual ConsoleSize Size() const = 0;

    /// Replaces the content of the window.
    virtual void Show(const std::vector<LiveLine>& lines) = 0;
};

/// Makes a screen.
/// @return null if standard output is no console
[[nodiscard]] std::unique_ptr<LiveScreen> MakeLiveScreen(LineOutput::Colour colour);

} // namespace vqrx::client::v0
