#include "AtomicFile.h"

#include <filesystem>
#include <fstream>
#include <system_error>

namespace vqrx::client::v0 {

bool ReplaceContent(const std::string& path, std::string_view content)
{
    const std::filesystem::path name(std::u8string(path.begin(), path.end()));
    std::filesystem::path temporary = name;
    temporary += ".tmp";
    std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
    file << content << std::flush;
    bool good = file.good();
    file.close();
    std::error_code error;
    if (good) {
        std::filesystem::rename(temporary, name, error);
        good = !error;
    }
    if (!good) {
        std::filesystem::remove(temporary, error);
    }
    return good;
}

} // namespace vqrx::client::v0
