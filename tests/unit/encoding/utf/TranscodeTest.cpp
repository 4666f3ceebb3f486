#include "utf/Transcode.h"
#include "utf/TextError.h"

#include <gtest/gtest.h>

#include <random>

namespace vqrx::test {
namespace {

using namespace encoding::utf::v1;
using Bytes = std::vector<std::uint8_t>;

std::string TranscodeError(const Bytes& bytes, int from, int to)
{
    try {
        static_cast<void>(Transcode(bytes.data(), bytes.size(), from, to));
    } catch (const TextError& error) {
        return error.what();
    }
    return "accepted";
}

std::string WideError(const std::wstring& text)
{
    try {
        static_cast<void>(WideToUtf8(text));
    } catch (const TextError& error) {
        return error.what();
    }
    return "accepted";
}

Bytes Utf8FromUtf16(const Bytes& bytes)
{
    return Transcode(bytes.data(), bytes.size(), kUtf16Le, kUtf8).bytes;
}

Bytes Utf16FromUtf8(const Bytes& bytes)
{
    return Transcode(bytes.data(), bytes.size(), kUtf8, kUtf16Le).bytes;
}

} // namespace

TEST(Transcode, Text_is_converted_both_ways_and_the_result_names_its_encoding)
{
    const Bytes utf8{0x41, 0xC3, 0xA9, 0xE2, 0x82, 0xAC, 0xF0, 0x9F, 0x98, 0x80};
    const Bytes utf16{0x41, 0x00, 0xE9, 0x00, 0xAC, 0x20, 0x3D, 0xD8, 0x00, 0xDE};
    EXPECT_EQ(utf8, Utf8FromUtf16(utf16));
    EXPECT_EQ(utf16, Utf16FromUtf8(utf8));
    EXPECT_EQ(kUtf16Le, Transcode(utf8.data(), utf8.size(), kUtf8, kUtf16Le).encoding);
}

TEST(Transcode, A_zero_character_is_an_error)
{
    EXPECT_EQ("invalid Unicode codepoint", TranscodeError({0x41, 0x00}, kUtf8, kUtf16Le));
    EXPECT_EQ("invalid Unicode codepoint", TranscodeError({0xE0, 0x80, 0x80}, kUtf8, kUtf8));
}

TEST(Transcode, Surrogates_and_values_above_10FFFF_are_errors)
{
    EXPECT_EQ("invalid Unicode codepoint", TranscodeError({0xED, 0xA0, 0x80}, kUtf8, kUtf8));
    EXPECT_EQ("invalid Unicode codepoint", TranscodeError({0xF4, 0x90, 0x80, 0x80}, kUtf8, kUtf8));
    EXPECT_EQ("invalid Unicode codepoint", TranscodeError({0x00, 0xDC}, kUtf16Le, kUtf8));
    EXPECT_EQ("accepted", TranscodeError({0xF4, 0x8F, 0xBF, 0xBF}, kUtf8, kUtf8));
}

TEST(Transcode, Malformed_input_is_reported_before_an_invalid_code_point)
{
    EXPECT_EQ("unfinished utf-8 sequence", TranscodeError({0x00, 0xC3}, kUtf8, kUtf8));
}

TEST(Transcode, The_error_for_an_unknown_encoding_has_its_number)
{
    EXPECT_EQ("unknown encoding 3", TranscodeError({0x41}, 3, kUtf8));
    EXPECT_EQ("unknown encoding 0", TranscodeError({0x41}, kUtf8, 0));
    EXPECT_EQ(nullptr, CreateParser(0));
    EXPECT_EQ(nullptr, CreateEmitter(3));
}

TEST(Transcode, An_empty_text_converts_to_an_empty_text)
{
    EXPECT_TRUE(Transcode(nullptr, 0, kUtf8, kUtf16Le).bytes.empty());
}

TEST(Factories, Each_encoding_has_a_parser_and_an_emitter)
{
    for (const int encoding : {kUtf8, kUtf16Le}) {
        TextParser* const parser = CreateParser(encoding);
        TextEmitter* const emitter = CreateEmitter(encoding);
        ASSERT_NE(nullptr, parser);
        ASSERT_NE(nullptr, emitter);
        EXPECT_EQ(0x20ACU, parser->Parse(emitter->Emit({0x20AC}), 0).at(0));
        DeleteParser(parser);
        DeleteEmitter(emitter);
    }
    DeleteParser(nullptr);
    DeleteEmitter(nullptr);
}

TEST(Emitters, Emitters_do_not_check_code_points)
{
    EXPECT_EQ((Bytes{0xED, 0xA0, 0x80}), TextEmitterUTF8().Emit({0xD800}));
    EXPECT_EQ((Bytes{0x00}), TextEmitterUTF8().Emit({0}));
    // The emitter treats a surrogate value like a value above 0xFFFF and writes a pair.
    EXPECT_EQ(4U, TextEmitterUTF16LE().Emit({0xD800}).size());
    EXPECT_EQ((Bytes{0x00, 0xE0}), TextEmitterUTF16LE().Emit({0xE000}));
    EXPECT_EQ((Bytes{0xFF, 0xFF}), TextEmitterUTF16LE().Emit({0xFFFF}));
    EXPECT_EQ((Bytes{0x00, 0xD8, 0x00, 0xDC}), TextEmitterUTF16LE().Emit({0x10000}));
}

TEST(WideToUtf8, An_empty_string_converts_to_an_empty_string)
{
    EXPECT_EQ("", WideToUtf8(L""));
}

TEST(WideToUtf8, Characters_of_two_three_and_four_bytes_are_converted)
{
    EXPECT_EQ("\xC3\xA9", WideToUtf8(L"\u00E9"));
    EXPECT_EQ("a\xE2\x82\xACz", WideToUtf8(L"a\u20ACz"));
    EXPECT_EQ("\xF0\x9F\x98\x80", WideToUtf8(std::wstring{wchar_t(0xD83D), wchar_t(0xDE00)}));
}

TEST(WideToUtf8, Pairs_are_converted_at_every_place_of_a_long_text)
{
    for (std::size_t before = 1018; before < 1030; ++before) {
        const std::wstring text = std::wstring(before, L'a') + L"\xD83D\xDE00" +
                                  std::wstring(1000, L'\u20AC') + L"\xD83D\xDE00";
        std::string expected(before, 'a');
        expected += "\xF0\x9F\x98\x80";
        for (int i = 0; i < 1000; ++i) {
            expected += "\xE2\x82\xAC";
        }
        expected += "\xF0\x9F\x98\x80";
        EXPECT_EQ(expected, WideToUtf8(text)) << before;
    }
}

TEST(WideToUtf8, An_error_is_found_at_every_place_of_a_long_text)
{
    for (std::size_t position = 0; position < 2100; ++position) {
        std::wstring text(2100, L'a');
        text[position] = L'\0';
        EXPECT_ANY_THROW(static_cast<void>(WideToUtf8(text))) << position;
        text[position] = wchar_t(0xD83D); // a high surrogate alone
        EXPECT_ANY_THROW(static_cast<void>(WideToUtf8(text))) << position;
        text[position] = wchar_t(0xDE00); // a low surrogate alone
        EXPECT_ANY_THROW(static_cast<void>(WideToUtf8(text))) << position;
    }
}

TEST(WideToUtf8, A_zero_character_is_an_error)
{
    EXPECT_EQ("invalid Unicode codepoint", WideError(std::wstring(L"a\0b", 3)));
}

TEST(WideToUtf8, A_low_surrogate_without_a_high_one_is_an_error)
{
    EXPECT_EQ("invalid Unicode codepoint", WideError(std::wstring{wchar_t(0xDC00)}));
}

TEST(WideToUtf8, A_high_surrogate_at_the_end_is_an_error)
{
    EXPECT_EQ("Excpected Second Word sequence at end of input vector",
              WideError(std::wstring{wchar_t(0xD83D)}));
    EXPECT_EQ("Excpected Second Word sequence at end of input vector",
              WideError(std::wstring{wchar_t(0), wchar_t(0xD83D)}));
}

TEST(WideToUtf8, A_high_surrogate_without_a_low_one_is_an_error)
{
    EXPECT_EQ("Excpected Second Word sequence",
              WideError(std::wstring{wchar_t(0xD83D), wchar_t(0x41)}));
}

// The conversion in one pass gives the results of parser and emitter, errors included.
TEST(WideToUtf8, Random_text_converts_as_the_parser_and_the_emitter_do)
{
    std::mt19937 random(1);
    const std::uint32_t interesting[] = {0,      0x41,   0x7F,   0x80,   0x7FF,  0x800, 0xD7FF,
                                         0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFF};
    for (int round = 0; round < 20000; ++round) {
        std::wstring text;
        Bytes bytes;
        for (auto length = random() % 6; length > 0; --length) {
            const std::uint32_t unit =
                random() % 4 == 0 ? random() & 0xFFFF : interesting[random() % 13];
            text.push_back(static_cast<wchar_t>(unit));
            bytes.push_back(static_cast<std::uint8_t>(unit));
            bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
        }
        const std::string error = TranscodeError(bytes, kUtf16Le, kUtf8);
        ASSERT_EQ(error, WideError(text));
        if (error == "accepted") {
            const Bytes expected = Utf8FromUtf16(bytes);
            ASSERT_EQ(std::string(expected.begin(), expected.end()), WideToUtf8(text));
        }
    }
}

} // namespace vqrx::test
