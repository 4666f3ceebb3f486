#pragma once

#include "log_perf/sink/ILogSink.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {

/// Sink that keeps each record. A test can make a Write block or throw. Any thread may call.
class CapturingSink : public log::log_perf::v2::ILogSink {
public:
    struct Record {
        int level = 0;
        log::log_perf::v2::Timestamp timestamp{};
        std::string text;
    };
    /// The longest wait of each function that waits. Only a failure reaches it.
    static constexpr std::chrono::seconds kDeadline{180};

    void Write(int level, const log::log_perf::v2::Timestamp* timestamp, const char* text) override
    {
        std::function<void(const Record&)> hook;
        Record record{level, *timestamp, text};
        {
            std::unique_lock lock(mutex_);
            if (blockNext_) {
                blockNext_ = false;
                blocked_ = true;
                changed_.notify_all();
                changed_.wait(lock, [this] { return !blocked_; });
            }
            if (throwNext_) {
                throwNext_ = false;
                throw std::runtime_error("a damaged sink");
            }
            records_.push_back(record);
            hook = hook_;
            changed_.notify_all();
        }
        if (hook) {
            hook(record);
        }
    }

    /// Sets a function that Write calls after it kept a record, on the writing thread and without
    /// the lock of the sink.
    void SetHook(std::function<void(const Record&)> hook)
    {
        const std::lock_guard lock(mutex_);
        hook_ = std::move(hook);
    }

    /// Makes the next Write block, without a limit, until Release. The test must call Release
    /// before the logger is destroyed. The Write keeps its record after Release.
    void BlockNextWrite()
    {
        const std::lock_guard lock(mutex_);
        blockNext_ = true;
    }
    void Release()
    {
        const std::lock_guard lock(mutex_);
        blockNext_ = false;
        blocked_ = false;
        changed_.notify_all();
    }
    /// @return false if no Write blocks before the deadline
    [[nodiscard]] bool WaitUntilBlocked()
    {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kDeadline, [this] { return blocked_; });
    }

    /// Makes the next Write throw std::runtime_error. It does not keep its record.
    void ThrowAtNextWrite()
    {
        const std::lock_guard lock(mutex_);
        throwNext_ = true;
    }

    /// @return false if there are fewer than count records at the deadline
    [[nodiscard]] bool WaitForCount(std::size_t count)
    {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kDeadline, [&] { return records_.size() >= count; });
    }
    /// @return false if there is no record with exactly this text at the deadline
    [[nodiscard]] bool WaitForText(const std::string& text)
    {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kDeadline, [&] {
            for (const Record& record : records_) {
                if (record.text == text) {
                    return true;
                }
            }
            return false;
        });
    }

    /// Waits for a record that begins with prefix.
    /// @param count  1 for the first such record, 2 for the second, ...
    /// @return the record; a record with an empty text at the deadline
    Record WaitForPrefix(const std::string& prefix, std::size_t count = 1)
    {
        Record found;
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, kDeadline, [&] {
            std::size_t seen = 0;
            for (const Record& record : records_) {
                if (record.text.rfind(prefix, 0) == 0 && ++seen == count) {
                    found = record;
                    return true;
                }
            }
            return false;
        });
        return found;
    }
    /// Returns the number of records with exactly this level and text.
    [[nodiscard]] std::size_t Count(int level, const std::string& text) const
    {
        const std::lock_guard lock(mutex_);
        std::size_t count = 0;
        for (const Record& record : records_) {
            count += record.level == level && record.text == text ? 1U : 0U;
        }
        return count;
    }

    [[nodiscard]] std::vector<Record> Records() const
    {
        const std::lock_guard lock(mutex_);
        return records_;
    }
    [[nodiscard]] std::vector<std::string> Texts() const
    {
        const std::lock_guard lock(mutex_);
        std::vector<std::string> texts;
        texts.reserve(records_.size());
        for (const Record& record : records_) {
            texts.push_back(record.text);
        }
        return texts;
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Record> records_;
    std::function<void(const Record&)> hook_;
    bool blockNext_ = false;
    bool blocked_ = false;
    bool throwNext_ = false;
};

} // namespace vqrx::test
