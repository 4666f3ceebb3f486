#include "log_perf/ring/SetAside.h"

#include "FileContent.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace vqrx::test {
namespace {

using log::log_perf::v2::SetAside;

TEST(SetAside, The_newest_file_replaces_the_one_that_was_set_aside_before)
{
    const TempFolder folder;
    const std::string name = folder.File("a.log");
    const std::string kept = folder.File("a.log.damaged");
    for (const char* content : {"first, and longer", "second"}) {
        std::ofstream(name, std::ios::binary) << content;
        EXPECT_TRUE(SetAside(name, kept));
        EXPECT_FALSE(std::filesystem::exists(name));
        EXPECT_EQ(content, FileContent(kept));
    }
}

TEST(SetAside, A_file_that_cannot_be_kept_stays_as_it_is)
{
    const TempFolder folder;
    const std::string name = folder.File("a.log");
    const std::string kept = folder.File("a.log.damaged");
    std::filesystem::create_directory(kept); // in the way, and not empty
    std::ofstream(kept + "/inside") << "x";
    std::ofstream(name, std::ios::binary) << "content";
    EXPECT_FALSE(SetAside(name, kept));
    EXPECT_EQ("content", FileContent(name));
}

} // namespace
} // namespace vqrx::test
