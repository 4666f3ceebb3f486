#include "Payload.h"

#include "SetupError.h"
#include "Sha256.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

using setup::v0::EndOfProgram;
using setup::v0::IsNameBelow;
using setup::v0::PayloadFile;
using setup::v0::ReadPayload;
using setup::v0::SetupError;
using setup::v0::Sha256;

std::string Number(std::uint64_t number, std::size_t bytes)
{
    std::string text;
    for (; bytes > 0; --bytes, number >>= 8U) {
        text += static_cast<char>(number & 0xFFU);
    }
    return text;
}

std::string Body(const std::vector<std::pair<std::string, std::string>>& files)
{
    std::string body = Number(files.size(), 4);
    for (const auto& [name, content] : files) {
        body += Number(name.size(), 4) + name + Number(content.size(), 8);
    }
    for (const auto& [name, content] : files) {
        body += content;
    }
    return body;
}

std::string Packed(const std::string& body)
{
    return "DMSETUP1" + Number(body.size(), 8) + body;
}

// The headers of a program with these sections: offset and size of each.
std::string Program(const std::vector<std::pair<std::uint32_t, std::uint32_t>>& sections)
{
    std::string bytes = "MZ" + std::string(0x3A, '\0') + Number(0x40, 4);
    bytes += std::string("PE\0\0", 4) + Number(0x8664, 2) + Number(sections.size(), 2) +
             std::string(12, '\0') + Number(8, 2) + Number(0, 2) + std::string(8, '\0');
    for (const auto& [offset, size] : sections) {
        bytes +=
            std::string(16, '\0') + Number(size, 4) + Number(offset, 4) + std::string(16, '\0');
    }
    return bytes;
}

TEST(Payload, Files_are_read_with_their_names_and_contents)
{
    const std::string body = Body({{"a.exe", "first"}, {R"(docs\b.md)", ""}, {"c", "third"}});
    const std::string bytes = Packed(body) + "a signature";
    const std::vector<PayloadFile> files = ReadPayload(bytes, Sha256(body));
    ASSERT_EQ(3U, files.size());
    EXPECT_EQ("a.exe", files[0].name);
    EXPECT_EQ("first", files[0].content);
    EXPECT_EQ(R"(docs\b.md)", files[1].name);
    EXPECT_EQ("", files[1].content);
    EXPECT_EQ("third", files[2].content);
}

TEST(Payload, Bytes_with_another_digest_are_refused)
{
    const std::string body = Body({{"a.exe", "first"}});
    std::string other = body;
    other.back() = 'X';
    EXPECT_NO_THROW(static_cast<void>(ReadPayload(Packed(body), Sha256(body))));
    EXPECT_THROW(static_cast<void>(ReadPayload(Packed(other), Sha256(body))), SetupError);
    EXPECT_THROW(static_cast<void>(ReadPayload("", Sha256(body))), SetupError);
}

TEST(Payload, Every_cut_is_refused_even_if_its_digest_fits)
{
    const std::string body = Body({{"a.exe", "first"}, {"b", "second"}});
    for (std::size_t length = 0; length < body.size(); ++length) {
        const std::string cut = body.substr(0, length);
        EXPECT_THROW(static_cast<void>(ReadPayload(Packed(cut), Sha256(cut))), SetupError)
            << length;
        EXPECT_THROW(static_cast<void>(ReadPayload(Packed(body).substr(0, length), Sha256(body))),
                     SetupError)
            << length;
    }
}

TEST(Payload, A_name_that_leads_out_of_the_folder_is_refused)
{
    for (const char* const name :
         {R"(..\x)", R"(a\..\..\x)", R"(\x)", R"(C:\x)", "C:x", "x:y", "a/b", "", R"(a\)",
          R"(a\\b)", ".", "x.", "x ", R"(a \b)", "a\nb"}) {
        EXPECT_FALSE(IsNameBelow(name)) << name;
        const std::string body = Body({{name, "x"}});
        EXPECT_THROW(static_cast<void>(ReadPayload(Packed(body), Sha256(body))), SetupError)
            << name;
    }
    for (const char* const name : {"x", "x.exe", R"(docs\x.md)", R"(a\b\c)", ".x", "a b.c"}) {
        EXPECT_TRUE(IsNameBelow(name)) << name;
    }
}

// Windows opens the device, whatever the folder: a file of this name cannot be made.
TEST(Payload, Names_of_devices_are_refused)
{
    for (const char* const name :
         {"NUL", "nul", "con.txt", "PRN", "aux.tar.gz", "COM1", "com9.exe", "LPT1",
          R"(docs\lpt9.md)", R"(nul\x)", "COM\xC2\xB9", "lpt\xC2\xB2.txt", "COM\xC2\xB3", "CONIN$",
          "conout$", "nul .txt"}) {
        EXPECT_FALSE(IsNameBelow(name)) << name;
    }
    for (const char* const name : {"null", "COM0", "COM10", "com", "console.txt", "x.nul", "CONIN",
                                   "LPT\xC2\xB4", "xCOM1", "auxiliary"}) {
        EXPECT_TRUE(IsNameBelow(name)) << name;
    }
}

TEST(Payload, The_program_ends_where_its_last_section_ends)
{
    const std::string program = Program({{400, 100}, {0, 0}, {500, 24}}) + std::string(600, 'x');
    EXPECT_EQ(524U, EndOfProgram(program));
    EXPECT_EQ(500U, EndOfProgram(Program({{400, 100}, {9999, 0}}) + std::string(600, 'x')));
}

TEST(Payload, What_is_no_complete_program_is_refused)
{
    const std::string program = Program({{400, 100}});
    EXPECT_THROW(static_cast<void>(EndOfProgram(program)), SetupError); // its section is missing
    EXPECT_THROW(static_cast<void>(EndOfProgram("")), SetupError);
    EXPECT_THROW(static_cast<void>(EndOfProgram("MZ")), SetupError);
    EXPECT_THROW(static_cast<void>(EndOfProgram("text" + program + std::string(600, 'x'))),
                 SetupError);
    std::string distant = program + std::string(600, 'x');
    distant[0x3F] = '\x7F'; // the offset of the headers
    EXPECT_THROW(static_cast<void>(EndOfProgram(distant)), SetupError);
}

} // namespace
} // namespace vqrx::test
