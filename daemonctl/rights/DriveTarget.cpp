#include "DriveTarget.h"

#include "LetterCase.h"

#include <string_view>

namespace vqrx::client::v0 {
namespace {

// A network drive that is not connected at the moment has no type, but it may be connected later.
bool IsNetworkDevice(const std::string& device)
{
    const std::string name = WithoutCase(device) + "\\";
    for (const std::string_view network :
         {R"(\Device\LanmanRedirector\)", R"(\Device\Mup\)", R"(\Device\WebDavRedirector\)"}) {
        if (name.starts_with(WithoutCase(network))) {
            return true;
        }
    }
    return false;
}

// "C:" or "C:\work"; not "UNC\server\share" or "Volume{...}".
bool IsPathOnDrive(const std::string& path)
{
    return path.size() >= 2 && path[1] == ':' && (path.size() == 2 || path[2] == '\\');
}

} // namespace

DriveTarget JudgeDrive(const DriveAnswers& answers)
{
    constexpr std::string_view kSubstitute = R"(\??\)";
    if (answers.device.starts_with(kSubstitute)) {
        std::string folder = answers.device.substr(kSubstitute.size());
        if (!IsPathOnDrive(folder)) {
            return {DriveTarget::Kind::kElsewhere, {}};
        }
        while (folder.back() == '\\') {
            folder.pop_back();
        }
        return {DriveTarget::Kind::kFolder, folder};
    }
    const bool isElsewhere = answers.unknown || answers.remote || IsNetworkDevice(answers.device);
    return {isElsewhere ? DriveTarget::Kind::kElsewhere : DriveTarget::Kind::kHere, {}};
}

} // namespace vqrx::client::v0
