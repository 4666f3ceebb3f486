#include "RingScan.h"

#include "ScannedRing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

// A client chooses paths and arguments, so the text of a record may hold a whole record. It stands
// at the beginning of a line where the write position cuts the record before it.
TEST(RingScanForged, believes_no_record_in_the_text_of_a_torn_record)
{
    const std::string newer = Line("1240", "new") + Line("1241", "newer");
    const std::string forged = Line("1237", "Start DaemonId(7) PId(4321) : C:\\evil.exe ");
    const std::string older = Line("1238", "older") + Line("1239", "old");
    const std::string header = Header(static_cast<unsigned>(12 + newer.size()));
    const Scanned scanned = Scan(header + newer + forged + older);
    EXPECT_THAT(Texts(scanned), ElementsAre("older", "old", "new", "newer"));
    EXPECT_EQ(scanned.summary.torn, 1U);
    EXPECT_THAT(Texts(Scan(header + newer + Line("1239", "forged"))), ElementsAre("new", "newer"));
}

// A file that was full: the last record crosses the limit of 1 MiB, and after its end stands the
// rest of a longer one.
TEST(RingScanForged, believes_no_record_that_begins_beyond_the_limit)
{
    const std::string newer = Line("2000", "new");
    std::string sound = Header(static_cast<unsigned>(12 + newer.size())) + newer + "cut\r\n";
    int number = 1000;
    std::vector<std::string> texts;
    const auto write = [&](std::size_t textLength) {
        texts.emplace_back(textLength, 'x');
        sound += Line(std::to_string(number++), texts.back());
    };
    const std::size_t aroundText = Line("1000", "").size();
    while (number < 1998) {
        write(1000);
    }
    write(0x100000 - sound.size() - aroundText);
    ASSERT_EQ(sound.size(), 0x100000U); // here the supervisor still begins a record
    write(3);
    texts.emplace_back("new");
    for (const char* const forged : {"1999", "2000", "7"}) {
        const std::string later = std::string(forged) + ";Sun Nov 16 03:52:37.123;1763265157123;2;";
        EXPECT_THAT(Texts(Scan(sound + later + "forged\r\n")), ElementsAreArray(texts)) << forged;
    }
}

} // namespace
} // namespace vqrx::test
