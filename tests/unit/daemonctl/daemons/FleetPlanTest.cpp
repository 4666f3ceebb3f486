#include "FleetPlan.h"

#include "FleetPlanFixture.h"

namespace vqrx::test {
namespace {

TEST_F(FleetPlanTest, A_command_that_the_log_would_cut_gets_a_warning)
{
    const std::string path = R"(C:\FW\App\a.exe)";
    // Before them stands "Start DaemonId(4294967295) PId(4294967295) : ", 45 bytes of the 1040. A
    // blank stands before and after the argument.
    const std::string longest(1040 - 45 - path.size() - 2, 'x');
    EXPECT_EQ(PlanFor(path + " " + longest), Lines{"launch " + path});
    EXPECT_EQ(PlanFor(path + " x" + longest),
              (Lines{"launch " + path,
                     "warning line 1: the log cuts path and arguments, which are too long. So a "
                     "later apply does not see that the program runs, and launches it again"}));
}

TEST_F(FleetPlanTest, Program_without_a_daemon_is_launched_by_its_full_path)
{
    EXPECT_EQ(PlanFor("C:\\FW\\App\\a.exe -x\n\"D:\\x y\\c.exe\"\nb.exe\n"),
              (Lines{R"(launch C:\FW\App\a.exe)", R"(launch D:\x y\c.exe)",
                     R"(launch C:\FW\App\b.exe)"}));
}

TEST_F(FleetPlanTest, Daemon_with_the_same_program_and_arguments_is_there_already)
{
    Daemon(R"(C:\FW\App\a.exe -x two words )");
    Daemon(R"(C:\FW\App\b.exe )", true);
    EXPECT_EQ(PlanFor("C:\\FW\\App\\a.exe -x \"two words\"\nC:\\FW\\App\\b.exe\n"),
              (Lines{"there 0", "attached 1"}));
}

TEST_F(FleetPlanTest, Letter_case_slashes_links_and_relative_paths_do_not_matter_in_the_program)
{
    Daemon(R"(C:\FW\App\a.exe -x )");
    Daemon("é.exe ");
    Daemon(R"(D:\x y\c.exe )");
    links_[R"(E:\link.exe)"] = R"(D:\x y\c.exe)";
    links_[R"(D:\x y\c.exe)"] = R"(E:\link.exe)";
    EXPECT_EQ(PlanFor("c:/fw/APP/A.exe -x\nC:\\FW\\App\\.\\É.EXE\nE:\\link.exe\n"),
              (Lines{"there 0", "there 1", "there 2"}));
}

TEST_F(FleetPlanTest, Daemon_with_other_arguments_is_another_daemon)
{
    Daemon(R"(C:\FW\App\a.exe -x )");
    Daemon(R"(C:\FW\App\b.exe )");
    EXPECT_EQ(PlanFor("C:\\FW\\App\\a.exe\nC:\\FW\\App\\a.exe -X\nC:\\FW\\App\\b.exe -x\n"),
              (Lines{R"(launch C:\FW\App\a.exe)", R"(launch C:\FW\App\a.exe)",
                     R"(launch C:\FW\App\b.exe)", "surplus 0", "surplus 1"}));
}

TEST_F(FleetPlanTest, Name_alone_fits_a_daemon_in_any_folder_that_no_full_path_needs)
{
    Daemon(R"(D:\x y\á.exe -x )");
    Daemon(R"(C:\FW\App\á.exe -x )");
    files_.insert(R"(D:\x y\á.exe)");
    EXPECT_EQ(PlanFor("Á.exe -x\n\"D:\\x y\\á.exe\" -x\n"), (Lines{"there 1", "there 0"}));
}

TEST_F(FleetPlanTest, Daemons_that_the_file_does_not_name_are_surplus)
{
    Daemon(R"(C:\FW\App\a.exe )");
    Daemon(R"(C:\FW\App\b.exe )");
    EXPECT_EQ(PlanFor("a.exe\n"), (Lines{"there 0", "surplus 1"}));
}

TEST_F(FleetPlanTest, Second_daemon_with_the_same_command_is_surplus)
{
    Daemon(R"(C:\FW\App\a.exe )");
    Daemon(R"(C:\FW\App\a.exe )", true);
    EXPECT_EQ(PlanFor("a.exe\n"), (Lines{"there 0", "surplus 1"}));
}

TEST_F(FleetPlanTest, Two_lines_with_the_same_program_and_arguments_are_an_error)
{
    EXPECT_EQ(PlanFor("C:\\FW\\App\\a.exe -x\n# again\na.exe -x\n").back(),
              "error line 3 repeats line 1: the supervisor runs one daemon for a program with the "
              "same arguments");
}

TEST_F(FleetPlanTest, Name_that_is_neither_a_file_nor_a_service_is_an_error)
{
    EXPECT_EQ(PlanFor("a.exe\nno.exe\n").back(),
              R"(error line 2: no.exe is neither a file in C:\FW\App nor a Windows service: write )"
              "its full path");
}

TEST_F(FleetPlanTest, Full_path_of_a_missing_program_is_launched_with_a_warning)
{
    EXPECT_EQ(PlanFor("E:\\later.exe\n"),
              (Lines{R"(launch E:\later.exe)",
                     R"(warning line 1: E:\later.exe does not exist; the supervisor tries every )"
                     "second to start it"}));
}

TEST_F(FleetPlanTest, Process_that_nobody_supervises_is_taken_over_if_program_and_arguments_fit)
{
    Orphan(11, R"(C:\FW\App\a.exe)", {{"-y"}});
    Orphan(12, R"(C:\FW\App\a.exe)", {{"-x"}});
    Orphan(13, R"(D:\a.exe)", std::vector<std::string>());
    EXPECT_EQ(PlanFor("a.exe -x\na.exe\nb.exe\n"),
              (Lines{"process 12", R"(launch C:\FW\App\a.exe)", R"(launch C:\FW\App\b.exe)"}));
}

TEST_F(FleetPlanTest, Process_is_not_taken_over_for_a_daemon_that_is_there)
{
    Daemon(R"(C:\FW\App\a.exe -x )");
    Orphan(12, R"(C:\FW\App\a.exe)", {{"-x"}});
    EXPECT_EQ(PlanFor("a.exe -x\n"), (Lines{"there 0"}));
}

TEST_F(FleetPlanTest, Name_alone_does_not_fit_a_daemon_that_has_the_name_in_its_arguments)
{
    Daemon(R"(C:\tool.exe C:\jobs\b.exe )");
    Daemon(R"(C:\Tool.EXE jobs\b.exe )");
    EXPECT_EQ(PlanFor("b.exe\n"), (Lines{R"(launch C:\FW\App\b.exe)", "surplus 0", "surplus 1"}));
}

TEST_F(FleetPlanTest, Process_is_refused_if_the_log_does_not_show_all_attached_daemons)
{
    Orphan(12, R"(C:\FW\App\a.exe)", {{"-x"}});
    attachedKnown_ = false;
    EXPECT_EQ(PlanFor("a.exe -x\na.exe\nSnmpSvc\n"),
              (Lines{"refused process 12 may be a daemon already: the log no longer shows all "
                     "attached daemons. If it is none: daemonctl attach 12",
                     R"(launch C:\FW\App\a.exe)",
                     "refused the service may be a daemon already: the log no longer shows all "
                     "attached daemons. If it is none, attach its process: daemonctl attach"}));
}

TEST_F(FleetPlanTest, Process_of_a_daemon_whose_arguments_the_log_cannot_show_is_that_daemon)
{
    Daemon(R"(C:\FW\App\a.exe -? )", true);
    Orphan(100, R"(C:\FW\App\a.exe)", {{"-x"}});
    EXPECT_EQ(PlanFor("a.exe -x\n"), (Lines{"attached 0"}));
}

TEST_F(FleetPlanTest, Process_whose_arguments_cannot_be_read_is_not_started_a_second_time)
{
    Orphan(11, R"(C:\FW\App\a.exe)", std::nullopt);
    Orphan(12, R"(C:\FW\App\a.exe)", {{"-x"}});
    EXPECT_EQ(PlanFor("a.exe\na.exe -x\n"),
              (Lines{"refused process 11 runs this program, and its arguments cannot be read: run "
                     "this command as administrator",
                     "process 12"}));
}

TEST_F(FleetPlanTest, Batch_file_that_runs_already_is_not_started_a_second_time)
{
    files_.insert(R"(D:\x y\jöb.bat)");
    // Windows splits: cmd.exe /c ""D:\x y\jöb.bat" 1 "two words""
    Orphan(12, R"(C:\windows\system32\cmd.exe)",
           {{"/c", R"(D:\x)", R"(y\JÖB.bat 1 two)", R"(words")"}});
    EXPECT_EQ(PlanFor("\"D:\\x y\\jöb.bat\" 1 \"two words\"\n\"D:\\x y\\jöb.bat\" 1\n"),
              (Lines{"refused process 12 runs this batch file already. A batch file cannot be "
                     "attached: end the process, then repeat this command",
                     R"(launch D:\x y\jöb.bat)"}));
}

TEST_F(FleetPlanTest, Batch_file_that_was_handed_over_is_there_already)
{
    files_.insert(R"(C:\FW\App\run.bat)");
    Daemon(R"(C:\windows\system32\cmd.exe /s/c C:\FW\App\run.bat  )", true);
    Daemon(R"(C:\windows\system32\cmd.exe /s/c C:\FW\App\run.bat 1  )", true);
    EXPECT_EQ(PlanFor("run.bat\nC:\\FW\\App\\run.bat 1\nrun.bat 2\n"),
              (Lines{"attached 0", "attached 1", R"(launch C:\FW\App\run.bat)"}));
}

TEST_F(FleetPlanTest, Arguments_that_the_client_refuses_are_an_error)
{
    EXPECT_EQ(PlanFor("a.exe 1%\nSnmpSvc %\n"),
              (Lines{R"(launch C:\FW\App\a.exe)", "service SnmpSvc",
                     R"(error line 1: [C:\FW\App\a.exe] refused)", "error line 2: [] refused"}));
}

TEST_F(FleetPlanTest, Daemon_that_is_there_keeps_arguments_that_the_client_refuses)
{
    Daemon(R"(C:\FW\App\a.exe 1% )");
    EXPECT_EQ(PlanFor("a.exe 1%\n"), (Lines{"there 0"}));
}

TEST_F(FleetPlanTest, Name_that_may_be_a_service_is_an_error)
{
    EXPECT_EQ(PlanFor("HiddenSvc\n").back(),
              R"(error line 1: HiddenSvc is no file in C:\FW\App, and Windows does not answer)");
}

TEST_F(FleetPlanTest, Service_is_attached_once_whatever_its_arguments)
{
    EXPECT_EQ(PlanFor("SnmpSvc -x\n"), (Lines{"service SnmpSvc"}));
    Daemon("SnmpSvc", true);
    EXPECT_EQ(PlanFor("snmpsvc -x\n"), (Lines{"attached 0"}));
}

} // namespace
} // namespace vqrx::test
