#include "SupervisorChange.h"

#include "SupervisorChangeFixture.h"

namespace vqrx::test {
namespace {

DWORD sessionOfTokens = 0;
BOOL(WINAPI* getTokenInformation)(HANDLE, TOKEN_INFORMATION_CLASS, LPVOID, DWORD, PDWORD);

BOOL WINAPI TellSession(HANDLE token, TOKEN_INFORMATION_CLASS kind, LPVOID data, DWORD size,
                        PDWORD needed)
{
    const BOOL done = getTokenInformation(token, kind, data, size, needed);
    if (kind == TokenSessionId && done != FALSE) {
        *static_cast<DWORD*>(data) = sessionOfTokens;
    }
    return done;
}

TEST_F(SupervisorChangeTest, Supervisor_that_a_guard_started_meanwhile_follows_if_none_ran_before)
{
    SupervisorChange change = Look();
    EXPECT_FALSE(change.Ran());
    StartSupervisor();
    SupervisorChange later = change.LookAgain();
    const std::string listing = End(later, "later.txt");
    change.Follow(std::move(later));
    EXPECT_TRUE(change.Ran());
    EXPECT_TRUE(change.Ended());
    EXPECT_EQ(change.FormerProgram(), Program());
    EXPECT_EQ(change.Listing(), listing);
    EXPECT_TRUE(std::filesystem::exists(listing));
}

TEST_F(SupervisorChangeTest, First_supervisor_and_its_list_stay_and_the_list_of_a_later_one_goes)
{
    StartSupervisor();
    SupervisorChange change = Look();
    const std::string first = End(change, "first.txt");
    StartSupervisor();
    SupervisorChange later = change.LookAgain();
    EXPECT_TRUE(later.Ran());
    const std::string second = End(later, "second.txt");
    change.Follow(std::move(later));
    EXPECT_EQ(change.Listing(), first);
    EXPECT_TRUE(std::filesystem::exists(first));
    EXPECT_FALSE(std::filesystem::exists(second));
}

TEST_F(SupervisorChangeTest, Supervisor_of_another_session_that_runs_on_is_named_with_its_session)
{
    const ImportPatch tokens("GetTokenInformation", TellSession, getTokenInformation);
    daemonctl = [](const std::string&) { return kNotFound; };
    StartSupervisor();
    const std::string beginning =
        "The supervisor, process " + std::to_string(supervisor_->Pid()) + ", ";
    sessionOfTokens = 7;
    SupervisorChange change = Look();
    sessionOfTokens = 1;
    EXPECT_EQ(WhyNotEnded(change), beginning + "runs on in session 7, where programs of this "
                                               "session do not reach it. End it there. Nothing was "
                                               "replaced.\n");
    sessionOfTokens = 7;
    EXPECT_EQ(WhyNotEnded(change),
              beginning + "still runs, but takes no calls any more. It ends later, by itself or "
                          "after Esc in its window, and then a guard ends, too. After that: "
                          "daemonctl autostart start, or start a supervisor yourself. Nothing was "
                          "replaced.\n");
    daemonctl = [](const std::string&) { return kAnswered; };
    EXPECT_EQ(WhyNotEnded(change),
              beginning + "could not be ended. It runs on. Nothing was replaced.\n");
    EXPECT_FALSE(change.Ended());
}

// A fleet file with a fault must not keep the daemons from their supervisor.
TEST_F(SupervisorChangeTest, Fleet_file_gives_the_arguments_of_services_unless_it_is_refused)
{
    SupervisorChange change = Look();
    std::vector<std::string> calls;
    DWORD answerWithFleet = kDone;
    daemonctl = [&](const std::string& arguments) {
        calls.push_back(arguments);
        return arguments.find("--fleet") == std::string::npos ? kDone : answerWithFleet;
    };
    EXPECT_TRUE(change.HandOver(false, "C:\\App\\fleet.txt"));
    answerWithFleet = 2;
    EXPECT_TRUE(change.HandOver(false, "C:\\App\\fleet.txt"));
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_TRUE(calls[0].ends_with(" \"--fleet\" \"C:\\App\\fleet.txt\"")) << calls[0];
    EXPECT_EQ(calls[1], calls[0]);
    EXPECT_EQ(calls[2], calls[0].substr(0, calls[0].find(" \"--fleet")));
}

TEST_F(SupervisorChangeTest, Supervisor_that_a_guard_has_started_again_is_left_running)
{
    StartSupervisor();
    SupervisorChange change = Look();
    End(change, "list.txt");
    change.StartFormer(); // the stand-in answers, as the supervisor of the guard
    EXPECT_EQ(supervisorsStarted, 0);
    EXPECT_TRUE(change.HandOver(false, ""));
}

// Two supervisors cannot run: the second one ends at once.
TEST_F(SupervisorChangeTest, Supervisor_that_gives_way_to_that_of_a_faster_guard_is_no_failure)
{
    StartSupervisor();
    SupervisorChange change = Look();
    End(change, "list.txt");
    std::filesystem::remove(Program());
    std::filesystem::copy_file(TestProgram("exits_with"), Program());
    daemonctl = [](const std::string& arguments) {
        if (!Asks(arguments, "detach")) {
            return kDone;
        }
        if (supervisorsStarted == 0) {
            return kNotFound;
        }
        EXPECT_EQ(WaitForSingleObject(lastStarted.Get(), kPatienceMs), DWORD{WAIT_OBJECT_0});
        return kAnswered;
    };
    change.StartFormer();
    EXPECT_EQ(supervisorsStarted, 1);
    EXPECT_TRUE(change.HandOver(false, ""));
    EXPECT_EQ(talk_.said.find("has ended again"), std::string::npos) << talk_.said;
}

} // namespace
} // namespace vqrx::test
