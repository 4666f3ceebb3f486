#pragma once

#include "TempFolder.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <fstream>
#include <iterator>
#include <string>

namespace vqrx::test {

/// Redirects the standard error of the process to a file.
class ErrorFile {
public:
    ErrorFile() { SetStdHandle(STD_ERROR_HANDLE, file_.Get()); }
    ErrorFile(const ErrorFile&) = delete;
    ErrorFile& operator=(const ErrorFile&) = delete;
    ~ErrorFile() { SetStdHandle(STD_ERROR_HANDLE, before_); }

    std::string Text() const
    {
        std::ifstream file(folder_.File("error"), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

private:
    TempFolder folder_;
    HANDLE before_ = GetStdHandle(STD_ERROR_HANDLE);
    system::win32::v1::UniqueKernelHandle file_{CreateFileA(folder_.File("error").c_str(),
                                                            GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                                            CREATE_ALWAYS, 0, nullptr)};
};

} // namespace vqrx::test
