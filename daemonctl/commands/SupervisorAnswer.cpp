#include "SupervisorAnswer.h"

#include "com/ClientApartment.h"
#include "daemon_manager/SupervisorClient.h"
#include "thread/Thread.h"

#include <windows.h>

#include <memory>
#include <optional>
#include <system_error>

namespace vqrx::client::v0 {
namespace {

constexpr DWORD kAnswerMs = 5000;

/// A question that waits for its answer.
struct Question {
    explicit Question(const std::shared_ptr<SupervisorAnswer>& to);

    std::shared_ptr<SupervisorAnswer> answer; // shared with the thread
    system::thread::v1::Thread thread;
};

SupervisorAnswer AskHere() noexcept
{
    try {
        const system::com::v1::ClientApartment apartment;
        const daemon_manager::SupervisorClient supervisor;
        return SupervisorAnswer::kAnswers;
    } catch (const daemon_manager::SupervisorNotRunning&) {
        return SupervisorAnswer::kNotPublished;
    } catch (...) {
        return SupervisorAnswer::kCannotBeCalled;
    }
}

Question::Question(const std::shared_ptr<SupervisorAnswer>& to)
    : answer(to)
    , thread([to] { *to = AskHere(); })
{
}

} // namespace

SupervisorAnswer AskSupervisor()
{
    static std::optional<Question> question; // nothing: none waits
    if (!question) {
        question.emplace(std::make_shared<SupervisorAnswer>(SupervisorAnswer::kCannotBeCalled));
    }
    if (question->thread.Handle() == nullptr) {
        question.reset();
        throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again),
                                "Thread");
    }
    if (WaitForSingleObject(question->thread.Handle(), kAnswerMs) != WAIT_OBJECT_0) {
        return SupervisorAnswer::kSilent;
    }
    const SupervisorAnswer answer = *question->answer; // the end of the thread makes it visible
    question.reset();
    return answer;
}

} // namespace vqrx::client::v0
