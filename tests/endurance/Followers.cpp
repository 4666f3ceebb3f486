#include "Followers.h"

#include "LogFollower.h"

#include <windows.h>

#include <exception>

namespace vqrx::test {

Followers::Followers(const std::string& path)
    : first_([this, path] { Follow(path, ledger_); })
    , second_([this, path] { Follow(path, other_); })
{
}

void Followers::Stop()
{
    stop_ = true;
    for (std::thread* thread : {&first_, &second_}) {
        if (thread->joinable()) {
            thread->join();
        }
    }
}

std::string Followers::Failure() const
{
    const std::lock_guard hold(mutex_);
    return failure_;
}

void Followers::Follow(const std::string& path, LogLedger& ledger)
{
    LogFollower follower(path);
    try {
        for (bool last = false; !last;) {
            last = stop_;
            ledger.Add(follower.Poll());
            wraps_ = follower.Wraps();
            Sleep(last ? 0 : kPauseMs);
        }
    } catch (const std::exception& exception) {
        const std::lock_guard hold(mutex_);
        failure_ = exception.what();
    }
}

} // namespace vqrx::test
