#pragma once

#include "LogLevel.h"
#include "PrintfFormat.h"

namespace vqrx::log::i_logger::v0 {

/// Takes the log messages of all parts of the program.
class ILogger {
public:
    ILogger() = default;
    ILogger(const ILogger&) = delete;
    ILogger& operator=(const ILogger&) = delete;

    /// Queues one message. Any thread. Never waits for output and never throws: if the queue is
    /// full or memory runs out, the message is lost.
    /// @param level   see LogLevel.h
    /// @param format  printf-style, in msvcrt's dialect
    virtual void Log(int level, const char* format, ...) VQRX_PRINTF(3, 4) = 0;

    virtual ~ILogger() = default;
};

} // namespace vqrx::log::i_logger::v0
