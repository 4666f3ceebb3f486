// Libraries that somebody put beside the programs, under names of libraries of Windows.
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "FirmwareRegistry.h"
#include "PrefixClass.h"
#include "SupervisorProcess.h"
#include "TempFolder.h"
#include "WbemLocator.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

// COM loads this library by its bare name, as many classes of Windows are registered.
constexpr const wchar_t* kBareName = L"dm_bare.dll";

// A folder with copies of the product's programs, and a planted library under each of the names.
class PlantedFolder {
public:
    PlantedFolder()
    {
        for (const char* program : {"DaemonManager.exe", "daemonctl.exe"}) {
            std::filesystem::copy_file(ProductProgram(program), folder_.Path() / program);
        }
        const std::filesystem::path planted =
            std::filesystem::path(TestProgram("x")).parent_path() / "planted.dll";
        for (const std::string& name : names_) {
            std::filesystem::copy_file(planted, folder_.Path() / name);
        }
    }

    [[nodiscard]] std::string Program(const std::string& name) const { return folder_.File(name); }

    // Returns the names of the planted libraries that a program has loaded.
    [[nodiscard]] std::string Loaded() const
    {
        std::string loaded;
        for (const std::string& name : names_) {
            if (std::filesystem::exists(folder_.Path() / (name + ".loaded"))) {
                loaded += name + " ";
            }
        }
        return loaded;
    }

private:
    // Libraries that the programs load themselves, and some that parts of Windows load by name.
    const std::vector<std::string> names_ = {
        "quartz.dll",   "version.dll",   "uxtheme.dll", "propsys.dll", "dwmapi.dll",
        "imm32.dll",    "cryptbase.dll", "ntmarta.dll", "profapi.dll", "wbemprox.dll",
        "wintypes.dll", "netapi32.dll",  "secur32.dll", "winmm.dll",   "bcrypt.dll",
        "cryptsp.dll",  "rsaenh.dll",    "crypt32.dll", "dm_bare.dll"};
    TempFolder folder_;
};

TEST(PlantedLibrary, The_supervisor_loads_none_from_its_folder)
{
    const PlantedFolder planted;
    const TempFolder root;
    std::filesystem::create_directory(root.Path() / "App");
    FirmwareRegistry registry;
    registry.SetPathname(FirmwareRegistry::kCurrent, root.Path().string());
    const PrefixClass wmi(kWbemLocator, kBareName);
    const system::com::v1::ComApartment apartment;
    const CapturedProgram supervisor("\"" + planted.Program("DaemonManager.exe") + "\"");
    ASSERT_TRUE(WaitUntil([] { return static_cast<bool>(FindPublished()); })) << supervisor.Error();
    // The text of the error comes from quartz.dll.
    EXPECT_NE(supervisor.Error().find("Init WMI errror COM Error "), std::string::npos)
        << supervisor.Error();
    EXPECT_EQ(planted.Loaded(), "");
}

TEST(PlantedLibrary, The_client_loads_none_from_its_folder)
{
    const PlantedFolder planted;
    const SupervisorProcess supervisor;
    const PrefixClass wmi(kWbemLocator, kBareName);
    const CapturedProgram doctor("\"" + planted.Program("daemonctl.exe") + "\" doctor");
    ASSERT_TRUE(doctor.Wait());
    EXPECT_NE(doctor.Output().find(", version 1.0.0"), std::string::npos) << doctor.Output();
    EXPECT_EQ(planted.Loaded(), "");
}

} // namespace
} // namespace vqrx::test
