#pragma once

#include "thread/Thread.h"

#include <windows.h>

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

namespace vqrx::client::v0 {

/// Runs `work` on a thread of its own and waits at most `limit` for its result.
/// A thread that is not done within the limit runs on, at most until this process ends. So `work`
/// must own everything that it uses.
/// @return the result of `work`; nothing if `work` was not done within `limit`, or if Windows
///         refuses the wait
/// @throws std::system_error if Windows starts no thread; `work` is not called then
/// @throws whatever `work` throws within `limit`
template <typename Result>
[[nodiscard]] std::optional<Result> Bounded(std::chrono::milliseconds limit,
                                            std::function<Result()> work)
{
    // This is no std::packaged_task: its std::call_once ends the process if memory runs out.
    struct Outcome {
        std::optional<Result> result;
        std::exception_ptr exception;
    };
    const auto outcome = std::make_shared<Outcome>();
    // This is no detached std::thread: if a thread ends while it is being detached, winpthreads 10
    // frees the thread's entry twice, and two later threads then share one entry. With
    // std::thread this test fails:
    // Bounded.6000_threads_one_after_another_each_hand_on_their_own_result
    const system::thread::v1::Thread worker([outcome, work = std::move(work)] {
        try {
            outcome->result.emplace(work());
        } catch (...) {
            outcome->exception = std::current_exception();
        }
    });
    if (worker.Handle() == nullptr) {
        throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again),
                                "Thread");
    }
    // The end of the thread makes the outcome visible here.
    if (WaitForSingleObject(worker.Handle(), static_cast<DWORD>(limit.count())) != WAIT_OBJECT_0) {
        return std::nullopt;
    }
    if (outcome->exception) {
        std::rethrow_exception(outcome->exception);
    }
    return std::move(outcome->result);
}

} // namespace vqrx::client::v0
