#include "utf/TextParser.h"
#include "utf/TextError.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using namespace encoding::utf::v1;
using Bytes = std::vector<std::uint8_t>;
using CodePoints = std::vector<std::uint32_t>;

constexpr int kStrict = 0;
constexpr int kLenient = 1;

template <typename Parser>
std::string Error(const Bytes& bytes)
{
    try {
        static_cast<void>(Parser().Parse(bytes, kStrict));
    } catch (const TextError& error) {
        return error.what();
    }
    return "accepted";
}

CodePoints Utf8(const Bytes& bytes, int lenient = kStrict)
{
    return TextParserUTF8().Parse(bytes, lenient);
}

CodePoints Utf16(const Bytes& bytes, int lenient = kStrict)
{
    return TextParserUTF16LE().Parse(bytes, lenient);
}

} // namespace

TEST(Utf8Parser, Sequences_of_one_to_four_bytes_are_parsed)
{
    EXPECT_EQ((CodePoints{0x41, 0xE9, 0x20AC, 0x1F600}),
              Utf8({0x41, 0xC3, 0xA9, 0xE2, 0x82, 0xAC, 0xF0, 0x9F, 0x98, 0x80}));
    EXPECT_TRUE(Utf8({}).empty());
    EXPECT_EQ(CodePoints{0}, Utf8({0}));
}

TEST(Utf8Parser, A_continuation_byte_without_a_lead_byte_is_an_error)
{
    EXPECT_EQ("invalid utf-8 sequence, unexpected continuation byte",
              Error<TextParserUTF8>({0x80}));
    EXPECT_EQ("invalid utf-8 sequence, unexpected continuation byte",
              Error<TextParserUTF8>({0xBF}));
}

TEST(Utf8Parser, A_byte_that_does_not_continue_a_sequence_is_an_error)
{
    EXPECT_EQ("invalid utf-8 sequence, expected a continuation byte",
              Error<TextParserUTF8>({0xC3, 0x41}));
    EXPECT_EQ("invalid utf-8 sequence, expected a continuation byte",
              Error<TextParserUTF8>({0xE2, 0x82, 0xC3}));
}

TEST(Utf8Parser, An_unfinished_sequence_at_the_end_is_an_error)
{
    EXPECT_EQ("unfinished utf-8 sequence", Error<TextParserUTF8>({0xC3}));
    EXPECT_EQ("unfinished utf-8 sequence", Error<TextParserUTF8>({0xF0, 0x9F, 0x98}));
}

TEST(Utf8Parser, A_byte_that_never_occurs_in_UTF8_is_an_error)
{
    for (const std::uint8_t byte :
         std::initializer_list<std::uint8_t>{0xC0, 0xC1, 0xF5, 0xF8, 0xFE, 0xFF}) {
        EXPECT_EQ("invalid utf-8 sequence, invalid character", Error<TextParserUTF8>({byte, 0x80}));
        EXPECT_EQ("invalid utf-8 sequence, invalid character",
                  Error<TextParserUTF8>({0xE2, byte, 0x80}));
    }
}

TEST(Utf8Parser, Other_overlong_forms_surrogates_and_too_large_values_are_parsed)
{
    EXPECT_EQ(CodePoints{0}, Utf8({0xE0, 0x80, 0x80}));
    EXPECT_EQ(CodePoints{0xD800}, Utf8({0xED, 0xA0, 0x80}));
    EXPECT_EQ(CodePoints{0x13FFFF}, Utf8({0xF4, 0xBF, 0xBF, 0xBF}));
}

TEST(Utf8Parser, A_lenient_parser_drops_the_byte_that_breaks_a_sequence)
{
    EXPECT_EQ(CodePoints{0x42}, Utf8({0xC3, 0x41, 0x42}, kLenient));
    EXPECT_EQ(CodePoints{0x42}, Utf8({0xC3, 0xC3, 0x42}, kLenient));
}

TEST(Utf8Parser, A_lenient_parser_drops_malformed_bytes)
{
    EXPECT_EQ(CodePoints{0x41}, Utf8({0x80, 0x41, 0xC3}, kLenient));
    EXPECT_EQ((CodePoints{0x41, 0x42}), Utf8({0x41, 0xE2, 0xFF, 0x42}, kLenient));
    EXPECT_EQ(CodePoints{0x41}, Utf8({0xC0, 0x80, 0x41}, kLenient));
}

TEST(Utf16Parser, Units_are_read_low_byte_first_and_surrogate_pairs_are_joined)
{
    EXPECT_EQ((CodePoints{0x41, 0x20AC, 0x1F600, 0x10FFFF}),
              Utf16({0x41, 0, 0xAC, 0x20, 0x3D, 0xD8, 0x00, 0xDE, 0xFF, 0xDB, 0xFF, 0xDF}));
    EXPECT_TRUE(Utf16({}).empty());
}

TEST(Utf16Parser, A_high_surrogate_before_an_ordinary_unit_is_an_error)
{
    EXPECT_EQ("Excpected Second Word sequence", Error<TextParserUTF16LE>({0x3D, 0xD8, 0x41, 0x00}));
}

TEST(Utf16Parser, A_high_surrogate_at_the_end_is_an_error)
{
    EXPECT_EQ("Excpected Second Word sequence at end of input vector",
              Error<TextParserUTF16LE>({0x3D, 0xD8}));
}

TEST(Utf16Parser, A_low_surrogate_without_a_high_one_is_parsed)
{
    EXPECT_EQ(CodePoints{0xDC00}, Utf16({0x00, 0xDC}));
}

TEST(Utf16Parser, A_lenient_parser_joins_a_high_surrogate_with_any_unit)
{
    EXPECT_EQ((CodePoints{0x10000 + 0x41}), Utf16({0x00, 0xD8, 0x41, 0x00}, kLenient));
    EXPECT_TRUE(Utf16({0x3D, 0xD8}, kLenient).empty());
}

TEST(Utf16Parser, The_last_byte_of_an_odd_length_is_an_incomplete_unit)
{
    EXPECT_EQ("Excpected Second Word sequence at end of input vector",
              Error<TextParserUTF16LE>({0x41, 0x00, 0x42}));
    EXPECT_EQ("Excpected Second Word sequence at end of input vector",
              Error<TextParserUTF16LE>({0x42}));
    EXPECT_EQ(CodePoints{0x41}, Utf16({0x41, 0x00, 0x42}, kLenient));
}

} // namespace vqrx::test
