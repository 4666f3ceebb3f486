#pragma once

namespace vqrx::client::v0 {

/// What comes of a question to the supervisor of this machine.
enum class SupervisorAnswer {
    kAnswers,
    kNotPublished, ///< no supervisor runs, or it starts up or ends
    /// The proxy/stub is not registered, Windows refuses the call, or another program is published.
    kCannotBeCalled,
    kSilent ///< the supervisor has not answered in time
};

/// Asks the supervisor whether it is there, on a thread of its own, and waits at most five seconds:
/// a supervisor that hangs lets each caller hang. The thread waits on until the supervisor answers
/// or ends; meanwhile further calls wait for that answer and ask nothing. For one thread.
/// @throws std::system_error if Windows starts no thread
[[nodiscard]] SupervisorAnswer AskSupervisor();

} // namespace vqrx::client::v0
