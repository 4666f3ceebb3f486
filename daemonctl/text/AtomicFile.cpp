#include "AtomicFile.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <system_error>

namespace vqrx::client::v0 {
namespace {

// Nobody can foresee the name, and so nobody can plant a link to another file under it.
std::filesystem::path TemporaryName(const std::filesystem::path& name)
{
    std::random_device random;
    std::ostringstream ending;
    ending.exceptions(std::ios::badbit); // if memory runs out: throw, do not cut the name
    ending << '.' << std::hex << random() << random() << ".tmp";
    std::filesystem::path temporary = name;
    temporary += ending.str();
    return temporary;
}

} // namespace

bool ReplaceContent(const std::string& path, std::string_view content)
{
    const std::filesystem::path name(std::u8string(path.begin(), path.end()));
    const std::filesystem::path temporary = TemporaryName(name);
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
