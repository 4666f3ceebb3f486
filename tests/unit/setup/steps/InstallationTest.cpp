#include "Installation.h"

#include "InstallationNotes.h"
#include "MachineKey.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace vqrx::test {
namespace {

using setup::v0::InstallationKey;

// A machine on which the programs were installed to a folder before.
class FormerInstallation : public ::testing::Test {
protected:
    FormerInstallation()
        : former_(InstallationKey().Values())
    {
        std::filesystem::create_directory(folder_);
        InstallationKey().SetText(setup::v0::kFolderNote, folder_);
    }
    ~FormerInstallation() override { InstallationKey().Restore(former_); }

    const TempFolder root_;
    const std::string folder_ = root_.File("Programs of the appliance");

private:
    decltype(InstallationKey().Values()) former_;
};

TEST_F(FormerInstallation, Folder_that_is_spelt_in_another_way_is_the_noted_one)
{
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(root_.Path());
    for (const std::string& named :
         {std::string(), folder_, root_.File("PROGRAMS of the appliance"), folder_ + "\\",
          root_.Path().generic_string() + "/Programs of the appliance",
          root_.File("x\\..\\Programs of the appliance"),
          std::string("Programs of the appliance")}) {
        EXPECT_EQ(folder_, setup::v0::ProgramFolderFor(named)) << named;
    }
    EXPECT_EQ(root_.File("Others"), setup::v0::ProgramFolderFor("others\\..\\Others\\"));
    std::filesystem::current_path(before);
}

} // namespace
} // namespace vqrx::test
