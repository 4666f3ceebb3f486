"""Installing over a running supervisor, and working with the installed programs."""

import windows_machine as machine
from installation import InstallationTest


class Replacement(InstallationTest):
    def test_removal_ends_the_supervisor_and_keeps_the_workers_and_with_KEEPLOG_the_log(self):
        self.install_below_root()
        supervisor = self.supervisor()
        worker = self.launch_worker("stays")
        self.uninstall("/KEEPLOG")
        self.assertEqual(supervisor.end(), 0)
        self.assertEqual(machine.processes("no_windows.exe"), {worker})
        log = machine.host_path(self.ROOT) / "Logs/DaemonManager.log"
        self.assertIn(b"Deamon Thread is exiting...", log.read_bytes())

    def test_a_running_supervisor_is_replaced_and_its_daemons_keep_running(self):
        self.install_below_root()
        supervisor = self.supervisor()
        workers = {self.launch_worker(argument) for argument in ("one", "two", "three words")}
        code = self.install()
        self.assertEqual(supervisor.end(), 0)
        self.assertEqual(code, 0, self.said)
        self.assertEqual(len(machine.processes("DaemonManager.exe")), 1)
        self.assertEqual(machine.processes("no_windows.exe"), workers)
        # The new supervisor has them as attached daemons.
        for daemon in ("0", "1", "2"):
            self.assertEqual(self.daemonctl("detach", daemon),
                             (0, f"daemon {daemon} detached, its process runs on\n"))
        self.assertEqual(self.daemonctl("detach", "3")[0], 1)

    def test_the_examples_build_with_the_installed_library_and_work(self):
        self.install_below_root()
        supervisor = self.supervisor()
        examples = self.examples()
        worker = machine.windows_path(machine.BUILD / "tests/programs/no_windows.exe")
        launch = [f"{examples}/launch_program.exe", worker, "two words"]
        self.assertEqual(machine.call(*launch), (0, "daemon 0 is started and kept running\n"))
        self.assertEqual(machine.call(*launch), (0, "daemon 0 is registered already\n"))
        with machine.Background(f"{examples}/attach_itself.exe") as itself:
            itself.wait_for_output("attached as daemon 1\n")
            itself.send_line()
            self.assertEqual(itself.end(), 0)
            self.assertEqual(itself.output(), "attached as daemon 1\ndetached\n")
        self.assertEqual(self.daemonctl("exit")[0], 0)
        self.assertEqual(supervisor.end(), 0)
        self.assertEqual(machine.call(*launch), (1, "start DaemonManager.exe first\n"))

    def test_a_worker_that_has_loaded_the_proxy_does_not_block_an_update(self):
        self.install_below_root()
        supervisor = self.supervisor()
        with machine.Background(f"{self.examples()}/attach_itself.exe") as itself:
            itself.wait_for_output("attached as daemon 0\n")
            self.assertEqual(self.install("/NOSTART"), 0)
            self.assertEqual(supervisor.end(), 0)
            self.assertEqual(machine.processes("DaemonManager.exe"), set())
            self.assertEqual(len(machine.processes("attach_itself.exe")), 1)
        self.supervisor()  # with the new proxy
