#pragma once

#include <filesystem>
#include <string>

namespace vqrx::test {

/// Owns a new, empty folder. The destructor removes the folder with its content.
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

    [[nodiscard]] const std::filesystem::path& Path() const { return path_; }
    /// Returns the path of a file in the folder. The file need not exist.
    [[nodiscard]] std::string File(const std::string& name) const
    {
        return (path_ / name).string();
    }

private:
    std::filesystem::path path_;
};

} // namespace vqrx::test
