#include "TryRecords.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using guard::v0::TryRecords;
using Texts = std::vector<std::string>;

// Makes a try that has these records. Returns the records that are to be logged.
Texts Logged(TryRecords& records, const Texts& texts)
{
    Texts logged;
    records.BeginTry();
    for (const std::string& text : texts) {
        if (records.Notice(text)) {
            logged.push_back(text);
        }
    }
    return logged;
}

TEST(TryRecords, A_try_that_repeats_the_one_before_is_not_logged)
{
    TryRecords records;
    EXPECT_EQ(Logged(records, {"line 2", "nothing launched"}),
              (Texts{"line 2", "nothing launched"}));
    EXPECT_EQ(Logged(records, {"line 2", "nothing launched"}), Texts());
    EXPECT_EQ(Logged(records, {"line 2", "nothing launched"}), Texts());
}

TEST(TryRecords, From_the_first_record_that_differs_the_whole_rest_is_logged)
{
    TryRecords records;
    EXPECT_EQ(Logged(records, {"attached", "line 2", "nothing launched"}).size(), 3U);
    EXPECT_EQ(Logged(records, {"attached", "line 3", "nothing launched"}),
              (Texts{"line 3", "nothing launched"}));
    EXPECT_EQ(Logged(records, {"attached", "line 3", "nothing launched", "more"}), Texts{"more"});
}

TEST(TryRecords, Only_the_try_before_counts)
{
    TryRecords records;
    EXPECT_EQ(Logged(records, {"a"}), Texts{"a"});
    EXPECT_EQ(Logged(records, {"b"}), Texts{"b"});
    EXPECT_EQ(Logged(records, {"a"}), Texts{"a"});
    EXPECT_EQ(Logged(records, {}), Texts());
    EXPECT_EQ(Logged(records, {"a"}), Texts{"a"});
}

} // namespace
} // namespace vqrx::test
