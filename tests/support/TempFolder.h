#pragma once

#if defined(_WIN32)
#include <windows.h>
#endif

#include <filesystem>
#include <string>

namespace vqrx::test {

/// Owns a new, empty folder. The destructor removes the folder with its content.
class TempFolder {
public:
    TempFolder()
    {
        static int counter = 0;
        const std::filesystem::path parent = Parent();
        do { // another program may take the same name at the same moment
            const auto stamp =
                std::filesystem::file_time_type::clock::now().time_since_epoch().count();
            path_ = parent / ("dm_test_" + std::to_string(stamp) + "_" + std::to_string(++counter));
        } while (!std::filesystem::create_directory(path_));
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
    // A firmware root ends before the first "\App", which the usual folder of Windows contains:
    // then the root of its drive takes its place. A name such as ADMINI~1 becomes the long one,
    // because other programs report the long one.
    static std::filesystem::path Parent()
    {
        std::filesystem::path parent = std::filesystem::temp_directory_path();
#if defined(_WIN32)
        if (parent.wstring().find(L"\\App") != std::wstring::npos) {
            return parent.root_path();
        }
        wchar_t longName[MAX_PATH] = {};
        const DWORD length = GetLongPathNameW(parent.c_str(), longName, MAX_PATH);
        if (length != 0 && length < MAX_PATH) {
            parent = longName;
        }
#endif
        return parent;
    }

    std::filesystem::path path_;
};

} // namespace vqrx::test
