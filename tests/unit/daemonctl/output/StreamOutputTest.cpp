#include "StreamOutput.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace vqrx::test {
namespace {

using client::v0::IsColoured;
using client::v0::LineOutput;

/// Sets the environment variable NO_COLOR. The destructor makes it empty, which counts as not set.
class NoColour {
public:
    explicit NoColour(const std::string& value) { Set(value); }
    NoColour(const NoColour&) = delete;
    NoColour& operator=(const NoColour&) = delete;
    ~NoColour() { Set(""); }

private:
    static void Set(const std::string& value)
    {
        static std::string text; // putenv keeps the pointer
        text = "NO_COLOR=" + value;
        putenv(text.data());
    }
};

TEST(StreamOutput, is_coloured_on_a_terminal_only_unless_the_operator_decides)
{
    const NoColour none("");
    EXPECT_TRUE(IsColoured(LineOutput::Colour::kAuto, true));
    EXPECT_FALSE(IsColoured(LineOutput::Colour::kAuto, false));
    EXPECT_TRUE(IsColoured(LineOutput::Colour::kAlways, false));
    EXPECT_FALSE(IsColoured(LineOutput::Colour::kNever, true));
}

TEST(StreamOutput, is_not_coloured_if_NO_COLOR_is_set_unless_the_operator_asks_for_colours)
{
    const NoColour none("1");
    EXPECT_FALSE(IsColoured(LineOutput::Colour::kAuto, true));
    EXPECT_TRUE(IsColoured(LineOutput::Colour::kAlways, true));
}

TEST(StreamOutput, writes_the_waiting_lines_as_soon_as_they_have_64_KiB)
{
    client::v0::StreamOutput output(false);
    const std::string line(65534, 'x');
    testing::internal::CaptureStdout();
    output.Write(0, line);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    testing::internal::CaptureStdout();
    output.Write(0, "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), line + "\n\n");
}

} // namespace
} // namespace vqrx::test
