#pragma once

#include "FileContent.h"
#include "TempFolder.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <string>

namespace vqrx::test {

/// Redirects the standard error of the process to a file.
class ErrorFile {
public:
    ErrorFile() { SetStdHandle(STD_ERROR_HANDLE, file_.Get()); }
    ErrorFile(const ErrorFile&) = delete;
    ErrorFile& operator=(const ErrorFile&) = delete;
    ~ErrorFile() { SetStdHandle(STD_ERROR_HANDLE, before_); }

    std::string Text() const { return FileContent(folder_.File("error")); }

private:
    TempFolder folder_;
    HANDLE before_ = GetStdHandle(STD_ERROR_HANDLE);
    system::win32::v1::UniqueKernelHandle file_{CreateFileA(folder_.File("error").c_str(),
                                                            GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                                            CREATE_ALWAYS, 0, nullptr)};
};

} // namespace vqrx::test
