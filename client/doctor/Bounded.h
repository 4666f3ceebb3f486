#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

namespace vqrx::client::v0 {

/// Does work on a thread of its own and waits for it for so long. What the work refers to it must
/// own: it goes on when its time is over, until this process ends.
/// @return nothing when it took longer; what the work throws is thrown here
template <typename Result>
std::optional<Result> Bounded(std::chrono::milliseconds limit, std::function<Result()> work)
{
    const auto task = std::make_shared<std::packaged_task<Result()>>(std::move(work));
    std::future<Result> result = task->get_future();
    std::thread([task] { (*task)(); }).detach();
    if (result.wait_for(limit) != std::future_status::ready) {
        return std::nullopt;
    }
    return result.get();
}

} // namespace vqrx::client::v0
