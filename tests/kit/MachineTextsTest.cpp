#include "MachineTexts.h"

#include <gtest/gtest.h>

namespace vqrx::kit {
namespace {

TEST(MachineTexts, Windows_11_has_its_own_name_although_the_registry_calls_it_Windows_10)
{
    EXPECT_EQ(NameOfWindows("Windows 10 Pro", 22000), "Windows 11 Pro");
    EXPECT_EQ(NameOfWindows("Windows 10 Pro", 21999), "Windows 10 Pro");
    EXPECT_EQ(NameOfWindows("Windows 11 Pro", 26100), "Windows 11 Pro");
    EXPECT_EQ(NameOfWindows("Windows Server 2025 Standard", 26100), "Windows Server 2025 Standard");
}

TEST(MachineTexts, Real_time_protection_is_on_unless_a_setting_or_another_scanner_takes_its_place)
{
    EXPECT_EQ(DefenderText({}), "no Defender (no service WinDefend)");
    EXPECT_EQ(DefenderText({true, false, "", "", ""}),
              "Defender does not run; real-time protection off");
    EXPECT_EQ(DefenderText({true, true, "", "", ""}), "Defender runs; real-time protection on");
    EXPECT_EQ(DefenderText({true, true, "0", "0", "0"}), "Defender runs; real-time protection on");
    EXPECT_EQ(DefenderText({true, true, "", "1", ""}), "Defender runs; real-time protection off");
    EXPECT_EQ(DefenderText({true, true, "", "0", "1"}),
              "Defender runs; real-time protection off by a policy");
    EXPECT_EQ(DefenderText({true, true, "", "1", "0"}), "Defender runs; real-time protection on");
    EXPECT_EQ(DefenderText({true, true, "1", "", ""}),
              "Defender runs in passive mode: another virus scanner protects the machine");
}

TEST(MachineTexts, Code_integrity_is_off_where_the_registry_has_no_value)
{
    EXPECT_EQ(CodeIntegrityText("", ""), "Memory integrity off; Smart App Control off");
    EXPECT_EQ(CodeIntegrityText("0", "0"), "Memory integrity off; Smart App Control off");
    EXPECT_EQ(CodeIntegrityText("1", "1"), "Memory integrity on; Smart App Control on");
    EXPECT_EQ(CodeIntegrityText("1", "2"),
              "Memory integrity on; Smart App Control watches, and may switch itself on");
}

} // namespace
} // namespace vqrx::kit
