#include "WholeFile.h"

#include <cstddef>
#include <fstream>
#include <ios>
#include <stdexcept>
#include <vector>

namespace vqrx::client::v0 {

std::string ReadWholeFile(const std::filesystem::path& path)
{
    constexpr std::size_t kAtOnce = std::size_t{64} * 1024; // bytes
    std::ifstream file(path, std::ios::binary);
    std::vector<char> part(kAtOnce);
    std::string content;
    while (file) {
        file.read(part.data(), static_cast<std::streamsize>(part.size()));
        content.append(part.data(), static_cast<std::size_t>(file.gcount()));
    }
    if (!file.is_open() || file.bad()) {
        const std::u8string name = path.u8string();
        throw std::runtime_error(std::string(name.begin(), name.end()) + " cannot be read");
    }
    return content;
}

} // namespace vqrx::client::v0
