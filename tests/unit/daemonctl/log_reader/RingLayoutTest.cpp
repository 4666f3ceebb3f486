#include "RingLayout.h"

#include "RingModel.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

using client::v0::FindRingLayout;
using client::v0::MemorySource;
using client::v0::ReadHeader;
using client::v0::RingLayout;

RingLayout LayoutOf(const std::string& bytes)
{
    MemorySource source(bytes);
    return FindRingLayout(source);
}

RingModel FullRing()
{
    RingModel ring(400, 50);
    for (int index = 0; index < 43; ++index) {
        ring.Write("record " + std::to_string(index));
    }
    return ring;
}

TEST(ReadHeader, needs_ten_characters_and_a_line_end)
{
    for (const char* const bytes : {"0x0000002A\r\n", "0x0000002A\n", "0x0000002a\r"}) {
        MemorySource source(bytes);
        EXPECT_EQ(ReadHeader(source), 42U) << bytes;
    }
    for (const char* const bytes : {"", "0x0000002A", "0x000002A\r\n", "0x00000 2A\r\n",
                                    "000000002A\r\n", "0x0000002AA\r\n", "0x-000002A\r\n"}) {
        MemorySource source(bytes);
        EXPECT_FALSE(ReadHeader(source)) << bytes;
    }
}

TEST(RingLayout, of_a_new_file_starts_and_ends_after_the_header)
{
    const RingLayout layout = LayoutOf("0x00000000\r\n");
    EXPECT_EQ(layout.start, 12U);
    EXPECT_EQ(layout.writePosition, 12U);
    EXPECT_FALSE(layout.headerDamaged);
}

TEST(RingLayout, takes_the_write_position_from_the_header)
{
    const RingModel ring = FullRing();
    const RingLayout layout = LayoutOf(ring.Bytes());
    EXPECT_EQ(layout.start, 12U);
    EXPECT_EQ(layout.writePosition, ring.WritePosition());
    EXPECT_FALSE(layout.headerDamaged);
}

TEST(RingLayout, takes_the_write_position_from_the_records_if_the_header_is_damaged)
{
    const RingModel ring = FullRing();
    for (const std::string header : {"0xFFFFFFFF\r\n", "0x00000021\r\n", "garbage!!!\r\n"}) {
        const RingLayout layout = LayoutOf(header + ring.Bytes().substr(12));
        EXPECT_EQ(layout.writePosition, ring.WritePosition()) << header;
        EXPECT_TRUE(layout.headerDamaged) << header;
    }
}

TEST(RingLayout, takes_the_write_position_from_the_records_if_two_records_follow_it)
{
    RingModel ring;
    ring.Write("first");
    const std::string header = ring.Bytes().substr(0, 12);
    ring.Write("second");
    const std::string oneMore = header + ring.Bytes().substr(12);
    EXPECT_FALSE(
        LayoutOf(oneMore).headerDamaged); // the supervisor may be about to write the header
    ring.Write("third");
    const std::string twoMore = header + ring.Bytes().substr(12);
    EXPECT_TRUE(LayoutOf(twoMore).headerDamaged);
    EXPECT_EQ(LayoutOf(twoMore).writePosition, twoMore.size());
}

} // namespace
} // namespace vqrx::test
