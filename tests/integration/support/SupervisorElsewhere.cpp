#include "SupervisorElsewhere.h"

#include "GuardedMachine.h"
#include "SupervisorProcess.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace vqrx::test {

SupervisorElsewhere::SupervisorElsewhere()
    : supervisor_('"' + CopyPrograms(folder_) + '"')
{
    EXPECT_TRUE(WaitUntil([this] {
        for (const ListedProgram& process : ProcessesNamed("real.exe")) {
            if (process.parentId == supervisor_.Pid()) {
                child_ = process.processId;
            }
        }
        return child_ != 0;
    }));
}

SupervisorElsewhere::~SupervisorElsewhere()
{
    supervisor_.Kill();
    if (child_ != 0) {
        KillProcess(child_);
    }
}

// @return the path of the supervisor's copy
std::string SupervisorElsewhere::CopyPrograms(const TempFolder& folder)
{
    const std::string supervisor = folder.File("DaemonManager.exe");
    std::filesystem::copy_file(TestProgram("forwards"), supervisor);
    std::filesystem::copy_file(TestProgram("no_windows"), folder.File("real.exe"));
    return supervisor;
}

} // namespace vqrx::test
