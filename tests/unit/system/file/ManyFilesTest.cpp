#include "file/DirectoryListing.h"
#include "file/FileOperations.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>

namespace vqrx::test {
namespace {

using namespace system::file::v2;

} // namespace

// The files are made by the host (make_many_files.sh): under Wine a new file costs a look at every
// file that is there already.
TEST(Files, may_be_a_hundred_thousand_in_one_folder)
{
    const char* folder = std::getenv("DM_MANY_FILES");
    ASSERT_NE(nullptr, folder) << "run by ctest, which makes the files";
    const File many(std::filesystem::path(folder).make_preferred().string());
    std::size_t count = 0;
    ForEachEntry(many, [&](const File&, bool isDirectory) { count += isDirectory ? 0 : 1; });
    EXPECT_EQ(100000U, count);
    RemoveDirectory(many);
    EXPECT_FALSE(std::filesystem::exists(folder));
}

} // namespace vqrx::test
