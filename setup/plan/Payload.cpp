#include "Payload.h"

#include "SetupError.h"
#include "Sha256.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

namespace vqrx::setup::v0 {
namespace {

constexpr std::string_view kMagic = "DMSETUP1";
constexpr unsigned kBitsOfByte = 8;

[[noreturn]] void Damaged()
{
    throw SetupError("This installer is damaged. Copy it again and compare its checksum.");
}

// Reads numbers and texts one after the other.
class Reader {
public:
    explicit Reader(std::string_view bytes)
        : rest_(bytes)
    {
    }

    [[nodiscard]] std::uint64_t Number(std::size_t bytes)
    {
        const std::string_view text = Text(bytes);
        std::uint64_t number = 0;
        for (std::size_t index = bytes; index-- > 0;) {
            number = (number << kBitsOfByte) | static_cast<unsigned char>(text[index]);
        }
        return number;
    }

    [[nodiscard]] std::string_view Text(std::uint64_t bytes)
    {
        if (bytes > rest_.size()) {
            Damaged();
        }
        const std::string_view text = rest_.substr(0, static_cast<std::size_t>(bytes));
        rest_.remove_prefix(text.size());
        return text;
    }

    void Skip(std::uint64_t bytes) { static_cast<void>(Text(bytes)); }

private:
    std::string_view rest_;
};

// Returns whether Windows takes a part of a path as a device, also with an extension. Source:
// Microsoft's page "Naming Files, Paths, and Namespaces"; superscript digits in UTF-8.
bool IsDevice(std::string_view part)
{
    std::string stem(part.substr(0, part.find('.')));
    stem.erase(stem.find_last_not_of(' ') + 1);
    std::transform(stem.begin(), stem.end(), stem.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    constexpr std::array<std::string_view, 6> whole = {"con", "prn",    "aux",
                                                       "nul", "conin$", "conout$"};
    if (std::find(whole.begin(), whole.end(), stem) != whole.end()) {
        return true;
    }
    constexpr std::array<std::string_view, 12> ports = {
        "1", "2", "3", "4", "5", "6", "7", "8", "9", "\xC2\xB9", "\xC2\xB2", "\xC2\xB3"};
    constexpr std::size_t kLengthOfKind = 3;
    const std::string_view kind = std::string_view(stem).substr(0, kLengthOfKind);
    return (kind == "com" || kind == "lpt") &&
           std::find(ports.begin(), ports.end(), stem.substr(kLengthOfKind)) != ports.end();
}

} // namespace

bool IsNameBelow(std::string_view name)
{
    if (name.find_first_of(":/\"<>|?*") != std::string_view::npos ||
        std::any_of(name.begin(), name.end(),
                    [](char letter) { return static_cast<unsigned char>(letter) < ' '; })) {
        return false;
    }
    for (;;) {
        const std::size_t end = std::min(name.find('\\'), name.size());
        const std::string_view part = name.substr(0, end);
        // Windows drops points and blanks at the end of a name.
        if (part.empty() || part.back() == '.' || part.back() == ' ' || IsDevice(part)) {
            return false;
        }
        if (end == name.size()) {
            return true;
        }
        name.remove_prefix(end + 1);
    }
}

std::size_t EndOfProgram(std::string_view bytes)
{
    // Offsets in the headers of a program (winnt.h).
    constexpr std::size_t kOffsetOfHeaders = 0x3C;
    constexpr std::size_t kNumberOfSections = 6;
    constexpr std::size_t kSizeOfOptionalHeader = 20;
    constexpr std::size_t kOptionalHeader = 24;
    constexpr std::size_t kSectionHeaderBytes = 40;
    constexpr std::size_t kSizeOfRawData = 16;
    if (!bytes.starts_with("MZ")) {
        Damaged();
    }
    const auto number = [bytes](std::uint64_t offset, std::size_t size) {
        Reader reader(bytes);
        reader.Skip(offset);
        return reader.Number(size);
    };
    const std::uint64_t headers = number(kOffsetOfHeaders, 4);
    const std::uint64_t sections = number(headers + kNumberOfSections, 2);
    std::uint64_t section = headers + kOptionalHeader + number(headers + kSizeOfOptionalHeader, 2);
    std::uint64_t end = 0;
    for (std::uint64_t index = 0; index < sections; ++index, section += kSectionHeaderBytes) {
        const std::uint64_t size = number(section + kSizeOfRawData, 4);
        const std::uint64_t offset = number(section + kSizeOfRawData + 4, 4);
        end = std::max(end, size == 0 ? 0 : offset + size);
    }
    if (end == 0 || end > bytes.size()) {
        Damaged();
    }
    return static_cast<std::size_t>(end);
}

std::vector<PayloadFile> ReadPayload(std::string_view bytes, std::string_view digest)
{
    if (!bytes.starts_with(kMagic)) {
        Damaged();
    }
    Reader header(bytes.substr(kMagic.size()));
    const std::uint64_t size = header.Number(8);
    const std::string_view body = header.Text(size);
    if (Sha256(body) != digest) {
        Damaged();
    }
    Reader reader(body);
    std::uint64_t count = reader.Number(4);
    std::vector<PayloadFile> files;
    std::vector<std::uint64_t> sizes;
    for (; count > 0; --count) {
        const std::string_view name = reader.Text(reader.Number(4));
        if (!IsNameBelow(name)) {
            Damaged();
        }
        files.push_back({std::string(name), {}});
        sizes.push_back(reader.Number(8));
    }
    for (std::size_t index = 0; index < files.size(); ++index) {
        files[index].content = reader.Text(sizes[index]);
    }
    return files;
}

} // namespace vqrx::setup::v0
