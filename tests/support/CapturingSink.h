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

/// A sink that keeps what it is given. It can be told to block or to throw. Any thread.
class CapturingSink : public log::log_perf::v2::ILogSink {
public:
    struct Record {
        int level = 0;
        log::log_perf::v2::Timestamp timestamp{};
        std::string text;
    };
    static constexpr std::chrono::seconds kDeadline{30};

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

    /// Called on the writing thread after each record was kept, outside the sink's own lock.
    void SetHook(std::function<void(const Record&)> hook)
    {
        const std::lock_guard lock(mutex_);
        hook_ = std::move(hook);
    }

    /// The next Write does not return (and keeps nothing) before Release.
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
    /// @return false when no Write blocked within the deadline
    bool WaitUntilBlocked()
    {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kDeadline, [this] { return blocked_; });
    }

    /// The next Write throws std::runtime_error and keeps nothing.
    void ThrowAtNextWrite()
    {
        const std::lock_guard lock(mutex_);
        throwNext_ = true;
    }

    /// @return false when fewer than count records came within the deadline
    bool WaitForCount(std::size_t count)
    {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kDeadline, [&] { return records_.size() >= count; });
    }
    /// @return false when no record of exactly this text came within the deadline
    bool WaitForText(const std::string& text)
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

    /// Waits for the count-th record that begins with prefix.
    /// @return it; one with an empty text after the deadline
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
    /// How many records have exactly this level and text.
    std::size_t Count(int level, const std::string& text) const
    {
        const std::lock_guard lock(mutex_);
        std::size_t count = 0;
        for (const Record& record : records_) {
            count += record.level == level && record.text == text ? 1U : 0U;
        }
        return count;
    }

    std::vector<Record> Records() const
    {
        const std::lock_guard lock(mutex_);
        return records_;
    }
    std::vector<std::string> Texts() const
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
