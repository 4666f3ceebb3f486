#pragma once

#include "FileContent.h"
#include "TempFolder.h"
#include "file/File.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace vqrx::test {

/// Tests with files in a temporary folder. Names are relative to this folder.
class Files : public ::testing::Test {
protected:
    system::file::v2::File In(const std::string& name) const
    {
        return system::file::v2::File(Native(name));
    }

    std::string Native(const std::string& name) const
    {
        return (folder_.Path() / name).make_preferred().string();
    }

    /// Writes a file and creates its missing parents.
    void Put(const std::string& name, const std::string& text = "x") const
    {
        std::filesystem::create_directories((folder_.Path() / name).parent_path());
        std::ofstream(folder_.Path() / name, std::ios::binary) << text;
    }

    std::string Text(const std::string& name) const { return FileContent(folder_.Path() / name); }

    bool Exists(const std::string& name) const
    {
        return std::filesystem::exists(folder_.Path() / name);
    }

    TempFolder folder_;
};

/// Runs an operation. @return what() of its exception, or "nothing raised"
template <typename Exception, typename Operation>
std::string Failure(Operation operation)
{
    try {
        operation();
    } catch (const Exception& exception) {
        return exception.what();
    }
    return "nothing raised";
}

} // namespace vqrx::test
