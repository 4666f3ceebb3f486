#pragma once

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace vqrx::test {

/// Reads a whole file at once, byte for byte.
/// @param path  UTF-8 only as a std::u8string. No file of /proc: those have no size
/// @return empty if the file cannot be opened, for example because there is none yet
[[nodiscard]] inline std::string FileContentIfAny(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const auto size = static_cast<std::streamoff>(file.tellg()); // -1 if the file is not open
    std::string content(static_cast<std::size_t>(std::max<std::streamoff>(size, 0)), '\0');
    file.seekg(0);
    file.read(content.data(), static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<std::size_t>(file.gcount())); // the file may have become shorter
    return content;
}

/// Reads a file like FileContentIfAny. The file must exist.
/// @throws std::runtime_error "PATH cannot be opened"
[[nodiscard]] inline std::string FileContent(const std::filesystem::path& path)
{
    if (!std::ifstream(path, std::ios::binary)) {
        throw std::runtime_error(path.string() + " cannot be opened");
    }
    return FileContentIfAny(path);
}

/// Reads a text file like FileContentIfAny, with "\n" as line ends.
[[nodiscard]] inline std::string ReadText(const std::filesystem::path& path)
{
    std::string text = FileContentIfAny(path);
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

} // namespace vqrx::test
