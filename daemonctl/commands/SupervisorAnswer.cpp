#include "SupervisorAnswer.h"

#include "com/ClientApartment.h"
#include "daemon_manager/SupervisorClient.h"
#include "thread/Thread.h"

#include <windows.h>

#include <chrono>
#include <exception>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

namespace vqrx::client::v0 {
namespace {

constexpr DWORD kAnswerMs = 5000; // as the limit of AskSupervisor()
constexpr DWORD kGlanceMs = 200;  // more than a supervisor needs that does not hang

struct Reply {
    SupervisorAnswer answer = SupervisorAnswer::kCannotBeCalled;
    std::exception_ptr failure; // why the supervisor does not answer
};

/// A question that waits for its answer.
struct Question {
    explicit Question(const std::shared_ptr<Reply>& to);

    [[nodiscard]] bool HasAnswer(DWORD waitMs) const
    {
        return WaitForSingleObject(thread.Handle(), waitMs) == WAIT_OBJECT_0;
    }

    ULONGLONG askedAt = GetTickCount64();
    std::shared_ptr<Reply> reply; // shared with the thread
    system::thread::v1::Thread thread;
};

Reply AskHere() noexcept
{
    try {
        const system::com::v1::ClientApartment apartment;
        const daemon_manager::SupervisorClient supervisor;
        return {SupervisorAnswer::kAnswers, nullptr};
    } catch (const daemon_manager::SupervisorNotRunning&) {
        return {SupervisorAnswer::kNotPublished, std::current_exception()};
    } catch (...) {
        return {SupervisorAnswer::kCannotBeCalled, std::current_exception()};
    }
}

Question::Question(const std::shared_ptr<Reply>& to)
    : reply(to)
    , thread([to] { *to = AskHere(); })
{
}

// The question that waits; nothing if none does.
std::optional<Question>& Waiting()
{
    static std::optional<Question> question;
    return question;
}

void Ask(std::optional<Question>& question)
{
    question.emplace(std::make_shared<Reply>());
    if (question->thread.Handle() == nullptr) {
        question.reset();
        throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again),
                                "Thread");
    }
}

// Only after the end of the thread, which makes the answer visible.
Reply TakeReply(std::optional<Question>& question)
{
    Reply reply = std::move(*question->reply);
    question.reset();
    return reply;
}

} // namespace

SupervisorAnswer AskSupervisor(std::chrono::seconds limit, std::exception_ptr* failure)
{
    std::optional<Question>& question = Waiting();
    if (!question) {
        Ask(question);
    }
    const auto limitMs = static_cast<DWORD>(std::chrono::milliseconds(limit).count());
    if (!question->HasAnswer(limitMs)) {
        return SupervisorAnswer::kSilent;
    }
    Reply reply = TakeReply(question);
    if (failure != nullptr) {
        *failure = std::move(reply.failure);
    }
    return reply.answer;
}

std::optional<SupervisorAnswer> GlanceAtSupervisor()
{
    std::optional<Question>& question = Waiting();
    if (question && question->HasAnswer(0)) {
        question.reset(); // the answer may be as old as the look before
    }
    const bool isNew = !question;
    if (isNew) {
        Ask(question);
    }
    if (question->HasAnswer(isNew ? kGlanceMs : 0)) {
        return TakeReply(question).answer;
    }
    return GetTickCount64() - question->askedAt >= kAnswerMs
               ? std::optional(SupervisorAnswer::kSilent)
               : std::nullopt;
}

} // namespace vqrx::client::v0
