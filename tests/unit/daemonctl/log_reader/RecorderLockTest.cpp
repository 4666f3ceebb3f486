#include "RecorderLock.h"

#include "TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

namespace vqrx::test {
namespace {

using client::v0::RecorderLock;

std::string ReasonOfRefusal(const std::string& folder)
{
    try {
        const RecorderLock lock(folder, 0);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return {};
}

TEST(RecorderLock, Second_recorder_is_refused_until_the_first_one_has_gone)
{
    const TempFolder folder;
    const std::string path = folder.Path().string();
    std::optional<RecorderLock> first;
    first.emplace(path, 0U);
    EXPECT_EQ(ReasonOfRefusal(path),
              path + " cannot be written: another recorder holds " + folder.File("recorder.lock"));
    first.reset();
    EXPECT_FALSE(std::filesystem::exists(folder.File("recorder.lock")));
    EXPECT_EQ(ReasonOfRefusal(path), "");
}

TEST(RecorderLock, Folder_that_does_not_exist_is_no_other_recorder)
{
    const TempFolder folder;
    const std::string reason = ReasonOfRefusal(folder.File("missing"));
    EXPECT_NE(reason.find("recorder.lock cannot be made"), std::string::npos) << reason;
}

} // namespace
} // namespace vqrx::test
