#pragma once

#include <chrono>
#include <exception>
#include <optional>

namespace vqrx::client::v0 {

/// What comes of a question to the supervisor of this machine.
enum class SupervisorAnswer {
    kAnswers,
    kNotPublished, ///< no supervisor runs, or it starts up or ends
    /// The proxy/stub is not registered, Windows refuses the call, or another program is published.
    kCannotBeCalled,
    kSilent ///< the supervisor has not answered in time
};

/// Asks the supervisor whether it is there, on a thread of its own, and waits at most `limit`: a
/// supervisor that hangs lets each caller hang. The thread waits on until the supervisor answers
/// or ends; meanwhile further calls wait for that answer and ask nothing. For one thread.
/// @param failure  if not null and the answer is kNotPublished or kCannotBeCalled: set to the
///                 exception of SupervisorClient or ClientApartment that says why
/// @throws std::system_error if Windows starts no thread
[[nodiscard]] SupervisorAnswer AskSupervisor(std::chrono::seconds limit = std::chrono::seconds(5),
                                             std::exception_ptr* failure = nullptr);

/// Asks the supervisor as AskSupervisor() does, but waits at most 200 ms for the answer to a new
/// question. While a question of an earlier call waits, asks nothing and does not wait at all. For
/// the thread that calls AskSupervisor().
/// @return nothing if the supervisor has not answered and still has time; kSilent if it has not
///         answered within five seconds
/// @throws std::system_error if Windows starts no thread
[[nodiscard]] std::optional<SupervisorAnswer> GlanceAtSupervisor();

} // namespace vqrx::client::v0
