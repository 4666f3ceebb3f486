#pragma once

#include "thread/Thread.h"

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

namespace vqrx::client::v0 {

/// Runs `work` on a thread of its own and waits at most `limit` for its result.
/// A thread that is not done within the limit runs on, at most until this process ends. So `work`
/// must own everything that it uses.
/// @return the result of `work`; nothing if `work` was not done within `limit`
/// @throws std::system_error if Windows starts no thread; `work` is not called then
/// @throws whatever `work` throws within `limit`
template <typename Result>
[[nodiscard]] std::optional<Result> Bounded(std::chrono::milliseconds limit,
                                            std::function<Result()> work)
{
    const auto task = std::make_shared<std::packaged_task<Result()>>(std::move(work));
    std::future<Result> result = task->get_future();
    // This is no detached std::thread: if a thread ends while it is being detached, winpthreads 10
    // frees the thread's entry twice, and two later threads then share one entry. With
    // std::thread this test fails:
    // Bounded.6000_threads_one_after_another_each_hand_on_their_own_result
    const system::thread::v1::Thread worker([task] { (*task)(); });
    if (worker.Handle() == nullptr) {
        throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again),
                                "Thread");
    }
    if (result.wait_for(limit) != std::future_status::ready) {
        return std::nullopt;
    }
    return result.get();
}

} // namespace vqrx::client::v0
