#include "ReportText.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using client::v0::EscapeHtml;
using client::v0::IdsText;
using client::v0::ReportLane;

TEST(EscapeHtml, escapes_every_character_that_has_a_meaning_in_html)
{
    EXPECT_EQ(EscapeHtml("<a href=\"x\" title='y'>&\x01"),
              "&lt;a href=&quot;x&quot; title=&#39;y&#39;&gt;&amp;\\x01");
}

TEST(IdsText, lists_the_ids_of_a_lane)
{
    ReportLane lane;
    EXPECT_EQ(IdsText(lane), "\xE2\x80\x93");
    lane.ids = {3, 0};
    EXPECT_EQ(IdsText(lane), "0, 3");
}

} // namespace
} // namespace vqrx::test
