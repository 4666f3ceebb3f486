#pragma once

#include <filesystem>
#include <string>

namespace vqrx::test {

/// A folder of the test's own, removed with everything in it.
class TempFolder {
public:
    TempFolder()
    {
        static int counter = 0;
        const auto stamp = std::filesystem::file_time_type::clock::now().time_since_epoch().count();
        path_ = std::filesystem::temp_directory_path() /
                ("dm_test_" + std::to_string(stamp) + "_" + std::to_string(++counter));
        std::filesystem::create_directories(path_);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& Path() const { return path_; }
    std::string File(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

} // namespace vqrx::test
