#include "ring_format/RingHeader.h"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <streambuf>

namespace vqrx::test {
namespace {

using namespace system::ring_format::v1;

std::optional<std::uint32_t> Read(const std::string& bytes)
{
    std::istringstream file(bytes);
    return ReadRingHeader(file);
}

// A file whose front the system does not give.
struct RefusedBytes : std::streambuf {
    int_type underflow() override { throw std::ios_base::failure("refused"); }
};

/// A file whose end cannot be found.
class BytesOfUnknownLength : public std::stringbuf {
public:
    using std::stringbuf::stringbuf;

protected:
    pos_type seekoff(off_type, std::ios::seekdir, std::ios::openmode) override { return -1; }
};

} // namespace

TEST(RingHeader, The_header_is_0x_and_eight_upper_case_hexadecimal_digits)
{
    EXPECT_EQ("0x00000000", FormatRingHeader(0));
    EXPECT_EQ("0x0010000C", FormatRingHeader(0x10000C));
    EXPECT_EQ("0xFFFFFFFF", FormatRingHeader(0xFFFFFFFF));
    EXPECT_EQ(10U, kRingHeaderLength);
    EXPECT_EQ(12U, kRingStart);
}

TEST(RingHeader, Reading_returns_the_position_that_the_header_names)
{
    EXPECT_EQ(14U, Read("0x0000000E\r\nabcdefgh"));
    EXPECT_EQ(20U, Read("0x00000014\r\nabcdefgh"));
}

TEST(RingHeader, Reading_returns_12_if_the_position_is_below_12_or_beyond_the_end_of_the_file)
{
    EXPECT_EQ(12U, Read("0x00000000\r\n"));
    EXPECT_EQ(12U, Read("0x0000000B\r\nabcdefgh"));
    EXPECT_EQ(12U, Read("0x000000FF\r\nabcdefgh"));
}

TEST(RingHeader, Reading_returns_12_if_the_file_has_no_header)
{
    EXPECT_EQ(12U, Read(""));
    EXPECT_EQ(12U, Read("hello world, this is another program's file"));
    EXPECT_EQ(12U, Read("0xFFFFFFFFFF\r\nabc and some more bytes"));
}

TEST(RingHeader, Reading_returns_nothing_if_the_system_refuses_the_bytes)
{
    RefusedBytes refused;
    std::istream file(&refused);
    EXPECT_EQ(std::nullopt, ReadRingHeader(file));
}

TEST(RingHeader, Reading_returns_nothing_if_the_system_does_not_tell_the_length_of_the_file)
{
    BytesOfUnknownLength bytes("0x0000000F\r\nabcdefgh");
    std::istream file(&bytes);
    EXPECT_EQ(std::nullopt, ReadRingHeader(file));
}

TEST(RingHeader, Parsing_returns_any_number_that_the_header_names)
{
    EXPECT_EQ(0U, ParseRingHeader("0x00000000\r\n"));
    EXPECT_EQ(0x10000CU, ParseRingHeader("0x0010000C\r\n0;date;1;2;text\r\n"));
    EXPECT_EQ(0xFFFFFFFFU, ParseRingHeader("0xffffffff\n"));
}

TEST(RingHeader, Parsing_returns_nothing_unless_the_header_is_complete)
{
    EXPECT_EQ(std::nullopt, ParseRingHeader(""));
    EXPECT_EQ(std::nullopt, ParseRingHeader("0x0000000C"));
    EXPECT_EQ(std::nullopt, ParseRingHeader("0x0000000C;"));
    EXPECT_EQ(std::nullopt, ParseRingHeader("0X0000000C\r\n"));
    EXPECT_EQ(std::nullopt, ParseRingHeader("0x0000 00C\r\n"));
    EXPECT_EQ(std::nullopt, ParseRingHeader("0x-000000C\r\n"));
    EXPECT_EQ(std::nullopt, ParseRingHeader("1;date;100;2\r\n"));
}

} // namespace vqrx::test
