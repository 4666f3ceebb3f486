#include "HangDump.h"

#include "BackgroundTask.h"
#include "TextEncoding.h"
#include "system_library/SystemLibrary.h"

#include <windows.h>

#include <dbghelp.h>

#include <memory>

namespace vqrx::guard::v0 {
namespace {

using cpp_utils::system_library::v1::FindFunction;
using cpp_utils::system_library::v1::LoadSystemLibrary;

using WriteDump = BOOL WINAPI(HANDLE process, DWORD processId, HANDLE file, MINIDUMP_TYPE type,
                              MINIDUMP_EXCEPTION_INFORMATION* exception,
                              MINIDUMP_USER_STREAM_INFORMATION* streams,
                              MINIDUMP_CALLBACK_INFORMATION* callback);

std::string Failed(const char* what, DWORD error)
{
    return std::string(what) + ": error " + std::to_string(error);
}

std::string WriteHangDump(HANDLE process, DWORD processId, const std::string& file)
{
    auto* const write =
        FindFunction<WriteDump>(LoadSystemLibrary(L"dbghelp.dll"), "MiniDumpWriteDump");
    if (write == nullptr) {
        return "this Windows cannot write it";
    }
    const std::string unfinished = file + ".new";
    {
        // What is left of a former try goes, and so does a file or a link that somebody has put
        // there: the guard may have all rights, so it writes to no file that it has not made.
        DeleteFileA(unfinished.c_str());
        const system::win32::v1::UniqueKernelHandle target(
            CreateFileA(unfinished.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                        FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
        if (!target) {
            return Failed("its file cannot be made", GetLastError());
        }
        const auto type =
            static_cast<MINIDUMP_TYPE>(MiniDumpWithIndirectlyReferencedMemory |
                                       MiniDumpWithThreadInfo | MiniDumpWithHandleData);
        if (write(process, processId, target.Get(), type, nullptr, nullptr, nullptr) == FALSE) {
            return Failed("it cannot be written", GetLastError());
        }
    }
    if (MoveFileExA(unfinished.c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING) == FALSE) {
        return Failed("its file cannot be named", GetLastError());
    }
    return "written to " + client::v0::AnsiToUtf8(file);
}

} // namespace

std::string DumpWithin(DWORD limitMs, const SupervisorProgram& supervisor, const std::string& file)
{
    HANDLE copy = nullptr; // the thread may outlive the caller's handle
    DuplicateHandle(GetCurrentProcess(), supervisor.process.Get(), GetCurrentProcess(), &copy, 0,
                    FALSE, DUPLICATE_SAME_ACCESS);
    const auto process = std::make_shared<const system::win32::v1::UniqueKernelHandle>(copy);
    const auto text = std::make_shared<std::string>();
    const BackgroundTask task([process, text, file, processId = supervisor.processId] {
        *text = WriteHangDump(process->Get(), processId, file);
    });
    return task.Wait(limitMs) ? *text : "not within " + std::to_string(limitMs / 1000) + " s";
}

} // namespace vqrx::guard::v0
