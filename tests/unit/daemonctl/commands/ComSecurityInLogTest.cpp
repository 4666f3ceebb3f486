#include "ComSecurityInLog.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

Record RecordOf(std::int64_t number, const std::string& text)
{
    return {number, number * 1000, kInformationRecord, "", text};
}

// The records of a supervisor that has started.
std::vector<Record> Started()
{
    return {RecordOf(1, "Detected Windows Firewall with Advanced Security"),
            RecordOf(2, "Connecting to WMI resource ..."), RecordOf(3, "Connected to WMI resource"),
            RecordOf(4, "Deamon Thread started")};
}

TEST(ComSecurityInLog, Whole_run_is_known)
{
    std::vector<Record> records = Started();
    ComSecurityFacts facts = ComSecurityInLog(records, true);
    EXPECT_TRUE(facts.known);
    EXPECT_FALSE(facts.recordsMissing);
    EXPECT_TRUE(facts.failures.empty());
    records.push_back(RecordOf(5, "CoInitializeSecurity error 0x80010106"));
    facts = ComSecurityInLog(records, true);
    EXPECT_EQ(facts.failures, std::vector<std::string>{"CoInitializeSecurity error 0x80010106"});
    EXPECT_FALSE(ComSecurityInLog({}, true).known);
}

TEST(ComSecurityInLog, Gap_in_the_run_or_damage_hides_records)
{
    std::vector<Record> records = Started();
    EXPECT_TRUE(ComSecurityInLog(records, false).recordsMissing);
    records.erase(records.begin() + 2);
    EXPECT_TRUE(ComSecurityInLog(records, true).recordsMissing);
}

TEST(ComSecurityInLog, Gap_in_a_former_run_hides_nothing)
{
    std::vector<Record> records = Started();
    records.push_back(RecordOf(9, "Deamon Thread is exiting..."));
    for (Record record : Started()) {
        record.timeMs += 20000;
        records.push_back(record);
    }
    const ComSecurityFacts facts = ComSecurityInLog(records, true);
    EXPECT_TRUE(facts.known);
    EXPECT_FALSE(facts.recordsMissing);
}

} // namespace
} // namespace vqrx::test
