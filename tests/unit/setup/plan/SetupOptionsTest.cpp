#include "SetupOptions.h"

#include "SetupError.h"

#include <gtest/gtest.h>

namespace vqrx::test {

using setup::v0::ReadSetupOptions;
using setup::v0::SetupError;
using setup::v0::SetupOptions;

TEST(SetupOptions, Without_arguments_nothing_is_chosen)
{
    const SetupOptions options = ReadSetupOptions({});
    EXPECT_FALSE(options.silent || options.noStart || options.allowWeak || options.downgrade ||
                 options.keepLog);
    EXPECT_EQ("", options.root + options.account + options.autostart + options.folder);
}

TEST(SetupOptions, Every_option_is_read)
{
    const SetupOptions options = ReadSetupOptions({"/S", "/NOSTART", "/ALLOWWEAK", "/DOWNGRADE",
                                                   "/KEEPLOG", R"(/ROOT=E:\F W\)", "/ACCOUNT=video",
                                                   "/AUTOSTART=session", R"(/D=E:\Programs)"});
    EXPECT_TRUE(options.silent && options.noStart && options.allowWeak && options.downgrade &&
                options.keepLog);
    EXPECT_EQ(R"(E:\F W)", options.root);
    EXPECT_EQ("video", options.account);
    EXPECT_EQ("session", options.autostart);
    EXPECT_EQ(R"(E:\Programs)", options.folder);
}

TEST(SetupOptions, The_folder_takes_the_rest_of_the_command_line)
{
    EXPECT_EQ(R"(E:\My Programs\x)", ReadSetupOptions({R"(/D=E:\My)", R"(Programs\x)"}).folder);
    EXPECT_EQ(R"(E:\a /S)", ReadSetupOptions({R"(/D=E:\a)", "/S"}).folder);
}

TEST(SetupOptions, The_root_of_a_drive_keeps_its_separator)
{
    EXPECT_EQ("E:\\", ReadSetupOptions({"/ROOT=E:\\"}).root);
    EXPECT_EQ("E:\\a", ReadSetupOptions({"/ROOT=E:\\a\\\\"}).root);
}

TEST(SetupOptions, An_unknown_option_is_refused)
{
    for (const char* const option :
         {"/s", "/X", "S", "", "/NOSTARTS", "/ROOT", "/AUTOSTART=SERVICE"}) {
        EXPECT_THROW(static_cast<void>(ReadSetupOptions({option})), SetupError) << option;
    }
}

// The supervisor of a service runs as SYSTEM, whatever account is named.
TEST(SetupOptions, An_account_for_the_supervisor_of_a_service_is_refused)
{
    EXPECT_THROW(static_cast<void>(ReadSetupOptions({"/ACCOUNT=video", "/AUTOSTART=service"})),
                 SetupError);
    EXPECT_EQ("video", ReadSetupOptions({"/ACCOUNT=video", "/AUTOSTART=session"}).account);
    EXPECT_EQ("service", ReadSetupOptions({"/AUTOSTART=service"}).autostart);
}

} // namespace vqrx::test
