#include "OwnPayload.h"

#include "SetupError.h"
#include "SystemPlaces.h"
#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>

namespace vqrx::setup::v0 {
namespace {

// packaging/payload.py looks for the text before the zeros, and writes the SHA-256 of the files
// over the zeros. The uninstaller keeps the zeros. The array is volatile: the compiler sees only
// zeros, and must not count on them.
constexpr std::size_t kDigestStart = 17;
constexpr std::size_t kDigestLength = 64;
volatile const char
    digestOfFiles[] = // NOLINT(modernize-avoid-c-arrays): an array of volatile characters
    "DMPAYLOAD-SHA256:0000000000000000000000000000000000000000000000000000000000000000";

std::string Digest()
{
    std::string digest;
    for (std::size_t index = 0; index < kDigestLength; ++index) {
        digest += digestOfFiles[kDigestStart + index];
    }
    return digest;
}

std::string ReadOwnFile()
{
    constexpr DWORD kPart = 1 << 20;
    const std::string path = OwnProgram();
    const system::win32::v1::UniqueKernelHandle file(
        CreateFileW(client::v0::Wide(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    std::string bytes;
    DWORD read = 0;
    BOOL done = file ? TRUE : FALSE;
    do {
        const std::size_t size = bytes.size();
        bytes.resize(size + kPart);
        done = done != FALSE ? ReadFile(file.Get(), &bytes[size], kPart, &read, nullptr) : FALSE;
        bytes.resize(size + (done != FALSE ? read : 0));
    } while (done != FALSE && read != 0);
    if (done == FALSE) {
        throw SetupError(path + " cannot be read.");
    }
    return bytes;
}

} // namespace

OwnPayload::OwnPayload()
{
    const std::string digest = Digest();
    if (std::all_of(digest.begin(), digest.end(), [](char digit) { return digit == '0'; })) {
        return;
    }
    bytes_ = ReadOwnFile();
    const std::string_view all = bytes_;
    files_ = ReadPayload(all.substr(EndOfProgram(all)), digest);
}

} // namespace vqrx::setup::v0
