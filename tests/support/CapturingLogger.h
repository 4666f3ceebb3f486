#pragma once

#include "ILogger.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {

/// Logger without a thread. Keeps every line when Log is called. Any thread may call.
class CapturingLogger : public log::i_logger::v0::ILogger {
public:
    using Line = std::pair<int, std::string>;

    void Log(int level, const char* format, ...) override VQRX_PRINTF(3, 4)
    {
        char buffer[4096] = {};
        std::va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(buffer, sizeof buffer, format, arguments);
        va_end(arguments);
        const std::lock_guard lock(mutex_);
        lines_.emplace_back(level, buffer);
    }

    [[nodiscard]] std::vector<Line> Lines() const
    {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

    void Clear()
    {
        const std::lock_guard lock(mutex_);
        lines_.clear();
    }

private:
    mutable std::mutex mutex_;
    std::vector<Line> lines_;
};

} // namespace vqrx::test
