#include "Printable.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

using client::v0::Printable;

TEST(Printable, spells_out_the_control_characters_that_a_terminal_would_obey)
{
    EXPECT_EQ(Printable("a\x1b[2Jb\r\x7f\tc"), "a\\x1B[2Jb\\x0D\\x7F\tc");
    EXPECT_EQ(Printable("\xC2\x9B"
                        "2J \xC3\xBC"),
              "\\x9B2J \xC3\xBC");
    EXPECT_EQ(Printable(std::string("\0", 1)), "\\x00");
}

} // namespace
} // namespace vqrx::test
