#include "ScanDamage.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(DescribeDamage, A_sound_log_has_none_also_with_torn_lines)
{
    ScanSummary summary;
    summary.records = 5;
    summary.torn = 1;
    EXPECT_EQ(DescribeDamage(summary), "");
}

TEST(DescribeDamage, Each_kind_of_damage_is_named)
{
    ScanSummary summary;
    summary.isEmpty = true;
    EXPECT_EQ(DescribeDamage(summary), "the file is empty");
    summary.isEmpty = false;
    summary.torn = 1;
    summary.unreadable = 1;
    EXPECT_EQ(DescribeDamage(summary),
              "no record in 2 lines: this is not a log file of the supervisor");
    summary.records = 5;
    summary.damaged = 2;
    summary.headerDamaged = true;
    EXPECT_EQ(DescribeDamage(summary),
              "the header is damaged; the numbers of the records give their order; 1 line could "
              "not be read; number or date of 2 lines could not be read");
}

} // namespace
} // namespace vqrx::test
