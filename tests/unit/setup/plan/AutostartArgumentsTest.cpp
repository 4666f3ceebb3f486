#include "AutostartArguments.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {

using setup::v0::AutostartArguments;
using setup::v0::SetupOptions;
using Words = std::vector<std::string>;

TEST(AutostartArguments, Say_what_the_options_say)
{
    SetupOptions options;
    options.autostart = "service";
    EXPECT_EQ((Words{"install", "--service"}), AutostartArguments(options, "", false));
    options.autostart = "session";
    options.noStart = true;
    options.allowWeak = true;
    EXPECT_EQ((Words{"install", "--session", "--no-start", "--trust"}),
              AutostartArguments(options, "", false));
    options.autostart = "none";
    EXPECT_EQ((Words{"remove"}), AutostartArguments(options, "", false));
}

TEST(AutostartArguments, Keep_the_fleet_file_and_the_trust_of_the_present_entry)
{
    SetupOptions options;
    options.autostart = "service";
    EXPECT_EQ((Words{"install", "--service", "--fleet", R"(E:\my fleet.txt)"}),
              AutostartArguments(options, R"(E:\my fleet.txt)", false));
    EXPECT_EQ((Words{"install", "--service", "--trust"}), AutostartArguments(options, "", true));
    options.autostart = "none";
    EXPECT_EQ((Words{"remove"}), AutostartArguments(options, R"(E:\my fleet.txt)", true));
}

} // namespace vqrx::test
