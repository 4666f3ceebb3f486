#include "AtomicFile.h"

#include "NewFile.h"

#include <filesystem>
#include <ios>
#include <random>
#include <sstream>
#include <system_error>

namespace vqrx::client::v0 {
namespace {

// Nobody can foresee the name, and so nobody can keep the file from being made under it.
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
    if (!WriteNewFile(temporary, content)) {
        return false;
    }
    std::error_code error;
    std::filesystem::rename(temporary, name, error);
    const bool good = !error;
    if (!good) {
        std::filesystem::remove(temporary, error);
    }
    return good;
}

} // namespace vqrx::client::v0
