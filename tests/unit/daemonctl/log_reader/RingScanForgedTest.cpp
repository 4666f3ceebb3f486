#include "RingScan.h"

#include "RingModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::MemorySource;
using client::v0::Record;
using client::v0::ScanRing;
using client::v0::ScanSummary;
using testing::ElementsAre;
using testing::ElementsAreArray;

struct ForgedScan {
    std::vector<Record> records;
    ScanSummary summary;
};

ForgedScan ScanForged(const std::string& bytes)
{
    ForgedScan scanned;
    MemorySource source(bytes);
    scanned.summary =
        ScanRing(source, [&](Record record) { scanned.records.push_back(std::move(record)); });
    return scanned;
}

std::vector<std::string> TextsOf(const ForgedScan& scanned)
{
    std::vector<std::string> texts;
    for (const Record& record : scanned.records) {
        texts.push_back(record.text);
    }
    return texts;
}

std::string LineOf(const std::string& number, const std::string& text)
{
    return number + ";Sun Nov 16 03:52:36.123;1763265156123;2;" + text + "\r\n";
}

std::string HeaderOf(unsigned position)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%.8X\r\n", position);
    return text.data();
}

// A client chooses paths and arguments, so the text of a record may hold a whole record. It stands at
// the begin of a line where the write position cuts the record before it.
TEST(RingScanForged, believes_no_record_in_the_text_of_a_torn_record)
{
    const std::string newer = LineOf("1240", "new") + LineOf("1241", "newer");
    const std::string forged = LineOf("1237", "Start DaemonId(7) PId(4321) : C:\\evil.exe ");
    const std::string older = LineOf("1238", "older") + LineOf("1239", "old");
    const std::string header = HeaderOf(static_cast<unsigned>(12 + newer.size()));
    const ForgedScan scanned = ScanForged(header + newer + forged + older);
    EXPECT_THAT(TextsOf(scanned), ElementsAre("older", "old", "new", "newer"));
    EXPECT_EQ(scanned.summary.torn, 1U);
    EXPECT_THAT(TextsOf(ScanForged(header + newer + LineOf("1239", "forged"))),
                ElementsAre("new", "newer"));
}

// A file that was full: the last record crosses the limit of 1 MiB, and after its end stands the rest of
// a longer one.
TEST(RingScanForged, believes_no_record_that_begins_beyond_the_limit)
{
    const std::string newer = LineOf("2000", "new");
    std::string sound = HeaderOf(static_cast<unsigned>(12 + newer.size())) + newer + "cut\r\n";
    int number = 1000;
    std::vector<std::string> texts;
    const auto write = [&](std::size_t textLength) {
        texts.emplace_back(textLength, 'x');
        sound += LineOf(std::to_string(number++), texts.back());
    };
    const std::size_t aroundText = LineOf("1000", "").size();
    while (number < 1998) {
        write(1000);
    }
    write(0x100000 - sound.size() - aroundText);
    ASSERT_EQ(sound.size(), 0x100000U); // here the supervisor still begins a record
    write(3);
    texts.emplace_back("new");
    for (const char* const forged : {"1999", "2000", "7"}) {
        const std::string later = std::string(forged) + ";Sun Nov 16 03:52:37.123;1763265157123;2;";
        EXPECT_THAT(TextsOf(ScanForged(sound + later + "forged\r\n")), ElementsAreArray(texts))
            << forged;
    }
}

} // namespace
} // namespace vqrx::test
