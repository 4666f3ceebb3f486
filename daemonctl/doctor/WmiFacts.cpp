#include "WmiFacts.h"

#include "AsciiCase.h"
#include "ProcessFacts.h"
#include "Utf8.h"
#include "WmiConnection.h"
#include "WmiQuery.h"
#include "com/UniqueBstr.h"
#include "exception_utils/COMException.h"

#include <windows.h>

#include <array>
#include <cstdarg>
#include <cstdio>

namespace vqrx::client::v0 {
namespace {

using namespace system::daemon::daemon_mgr::v0;

// Keeps what the connection reports as an error.
class ErrorKeeper : public log::i_logger::v0::ILogger {
public:
    void Log(int level, const char* format, ...) override VQRX_PRINTF(3, 4)
    {
        if (level != 0) {
            return;
        }
        std::array<char, 512> text{};
        std::va_list arguments{};
        va_start(arguments, format);
        std::vsnprintf(text.data(), text.size(), format, arguments);
        va_end(arguments);
        error_ = text.data();
    }
    const std::string& Error() const { return error_; }

private:
    std::string error_;
};

long ReadProperty(IWbemClassObject* object, const wchar_t* name, std::string& value)
{
    try {
        value = Utf8(ReadStringProperty(object, name).View());
        return S_OK;
    } catch (const COMException& exception) {
        return exception.Code();
    }
}

void AskForThisProcess(IWbemServices* services, WmiFacts& facts)
{
    const DWORD processId = GetCurrentProcessId();
    const auto objects = ExecuteQuery(services, L"SELECT * FROM Win32_Process WHERE ProcessId=" +
                                                    std::to_wstring(processId));
    facts.knowsThisProcess = !objects.empty();
    if (objects.empty()) {
        return;
    }
    std::string path;
    std::string commandLine;
    facts.executablePathResult = ReadProperty(objects.front().Get(), L"ExecutablePath", path);
    facts.commandLineResult = ReadProperty(objects.front().Get(), L"CommandLine", commandLine);
    facts.executablePathFits = LowerAscii(path) == LowerAscii(ReadProcessFacts(processId).image);
}

} // namespace

WmiFacts GatherWmiFacts()
{
    WmiFacts facts;
    facts.answered = true;
    ErrorKeeper logger;
    WmiConnection connection;
    connection.Connect(logger);
    facts.connectFailure = logger.Error();
    if (connection.Services() == nullptr || !facts.connectFailure.empty()) {
        return facts;
    }
    try {
        AskForThisProcess(connection.Services(), facts);
    } catch (const COMException& exception) {
        facts.queryResult = exception.Code();
    }
    return facts;
}

} // namespace vqrx::client::v0
