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

/// Does work on a thread of its own and waits for it for so long. What the work refers to it must
/// own: it goes on when its time is over, until this process ends.
/// @return nothing when it took longer; what the work throws is thrown here
/// @throws std::system_error when Windows gives no thread
template <typename Result>
std::optional<Result> Bounded(std::chrono::milliseconds limit, std::function<Result()> work)
{
    const auto task = std::make_shared<std::packaged_task<Result()>>(std::move(work));
    std::future<Result> result = task->get_future();
    // Not a detached std::thread: winpthreads 10 gives the record of one that ends while it is
    // being detached back twice, and two later threads then share it.
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
