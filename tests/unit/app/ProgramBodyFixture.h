#pragma once

#include "ConsoleControl.h"
#include "FirmwareRegistry.h"
#include "ProgramBody.h"
#include "PublishedObject.h"
#include "TempFolder.h"
#include "com/ComApartment.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>

namespace vqrx::test {

/// Captures the text that is written to standard error.
class CapturedError {
public:
    CapturedError()
        : old_(std::cerr.rdbuf(text_.rdbuf()))
    {
    }
    CapturedError(const CapturedError&) = delete;
    CapturedError& operator=(const CapturedError&) = delete;
    ~CapturedError() { std::cerr.rdbuf(old_); }

    std::string Text() const { return text_.str(); }

private:
    std::ostringstream text_;
    std::streambuf* old_;
};

/// Makes this process's connection to the Running Object Table before several threads use it. Wine
/// 8 puts two connections that are made at the same time into two association groups; a Revoke over
/// one of them does not find what a Register over the other entered (docs/dev/wine.md).
inline void ConnectToTable()
{
    const system::com::v1::ComApartment apartment;
    static_cast<void>(FindPublished());
}

/// Runs the program in a firmware root of its own, and captures its standard error.
struct ProgramBodyTest : testing::Test {
    ProgramBodyTest()
    {
        std::filesystem::create_directory(root.Path() / "App");
        registry.SetPathname(FirmwareRegistry::kCurrent, root.Path().string());
        ConnectToTable();
    }
    ~ProgramBodyTest() override { std::filesystem::current_path(before); }

    /// Runs the program on this thread. After the manager is published, another thread handles a
    /// Ctrl+C. @return the exit code
    int RunUntilPublished()
    {
        std::thread operatorThread([this] {
            const system::com::v1::ComApartment apartment;
            const ULONGLONG start = GetTickCount64();
            while (!FindPublished() && GetTickCount64() - start < 60000) {
                Sleep(5);
            }
            wasPublished = static_cast<bool>(FindPublished());
            app::v0::ConsoleCtrlHandler(CTRL_C_EVENT);
        });
        const int exitCode = app::v0::RunProgram();
        operatorThread.join();
        return exitCode;
    }

    const std::filesystem::path before = std::filesystem::current_path();
    TempFolder root;
    FirmwareRegistry registry;
    CapturedError error;
    bool wasPublished = false;
};

} // namespace vqrx::test
