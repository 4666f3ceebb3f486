#pragma once

#include <string>

namespace vqrx::test {

/// Whether a log file has a line that may be refused: five fields, no NUL, and a third or a fourth
/// field that std::stoll or std::stoi refuses. A line begins at any line feed, at the header's
/// number, or at offset 12. Written without the product's parser.
[[nodiscard]] bool HasDamagedLine(const std::string& bytes);

} // namespace vqrx::test
