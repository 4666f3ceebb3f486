#!/usr/bin/env python3
"""Watches an appliance with the real monitoring programs, on loopback.

    fleet_test.py FOLDER_OF_THE_PROGRAMS

promtool checks the metrics, the alert rules and their tests. Then a textfile collector reads what
`daemonctl metrics --every` writes, Prometheus scrapes it, and its API must report the alerts of
docs/fleet: first for a daemon that was killed once, then for one that ends again and again.
"""
import contextlib
import json
import pathlib
import shutil
import socket
import subprocess
import sys
import tempfile
import urllib.parse
import urllib.request

from appliance import SOURCE, Appliance, wait_until, windows_path

RULES = SOURCE / "docs/fleet/daemonmanager.rules.yml"


def free_port():
    with socket.socket() as listener:
        listener.bind(("127.0.0.1", 0))
        return listener.getsockname()[1]


def promtool(*arguments, text=None):
    result = subprocess.run(["promtool", *map(str, arguments)], input=text, text=True, check=False,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    assert result.returncode == 0, f"promtool {arguments}:\n{result.stdout}"


@contextlib.contextmanager
def running(*command):
    process = subprocess.Popen(list(map(str, command)), stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        yield process
    finally:
        process.terminate()
        process.wait()


class Prometheus:
    """The API of a Prometheus."""

    def __init__(self, port):
        self.address = f"http://127.0.0.1:{port}/api/v1/"

    def get(self, path):
        try:
            with urllib.request.urlopen(self.address + path, timeout=10) as answer:
                return json.load(answer)["data"]
        except OSError:
            return None  # it starts up

    def values(self, query):
        data = self.get("query?query=" + urllib.parse.quote(query))
        return [float(sample["value"][1]) for sample in data["result"]] if data else []

    def fires(self, alert):
        data = self.get("alerts")
        return [found for found in data["alerts"] if found["labels"]["alertname"] == alert
                and found["state"] == "firing"] if data else []


def watch(appliance, folder, prometheus):
    """The story that the monitoring must tell."""
    metrics = folder / "daemonmanager.prom"
    wait_until(lambda: prometheus.values("daemonmanager_up") == [1], "Prometheus knows the supervisor")
    wait_until(lambda: prometheus.values("daemonmanager_daemon_up") == [1], "Prometheus knows the daemon")
    promtool("check", "metrics", text=metrics.read_text())
    assert metrics.read_text().endswith("# EOF\n")
    assert not prometheus.fires("DaemonRestarted") and not prometheus.fires("DaemonCrashLoop")

    appliance.kill("notepad.exe")
    alert = wait_until(lambda: prometheus.fires("DaemonRestarted"), "DaemonRestarted fires")[0]
    assert alert["labels"]["command"] == "C:\\windows\\system32\\notepad.exe", alert
    assert not prometheus.fires("DaemonCrashLoop")

    def crash():
        if appliance.processes("notepad.exe"):
            appliance.kill("notepad.exe")
        return prometheus.fires("DaemonCrashLoop")

    # A process that is killed before its start has ended is no restart, so a number of kills says little.
    alert = wait_until(crash, "DaemonCrashLoop fires")[0]
    assert "ends again and again" in alert["annotations"]["summary"], alert

    assert appliance.daemonctl("exit")[0] == 0
    wait_until(lambda: prometheus.values("daemonmanager_up") == [0], "the supervisor is down")
    wait_until(lambda: not prometheus.values("daemonmanager_daemon_up"), "its daemons are gone")
    appliance.start_supervisor()
    wait_until(lambda: prometheus.values("daemonmanager_up") == [1], "the supervisor is back")


def test_damaged_logs(dashboard, folder):
    """The dashboard counts logs that are damaged and logs that cannot be read."""
    expression, = [panel["targets"][0]["expr"] for panel in dashboard["panels"]
                   if panel["title"] == "Damaged logs"]
    readable = 'daemonmanager_log_readable{instance="%s"}'
    damaged = 'daemonmanager_log_damaged{instance="%s"}'
    test = folder / "dashboard_test.yml"
    test.write_text(json.dumps({"tests": [{
        "interval": "15s",
        "input_series": [{"series": readable % "sound", "values": "1+0x4"},
                         {"series": damaged % "sound", "values": "0+0x4"},
                         {"series": readable % "damaged", "values": "1+0x4"},
                         {"series": damaged % "damaged", "values": "1+0x4"},
                         {"series": readable % "unreadable", "values": "0+0x4"}],
        "promql_expr_test": [{"expr": expression.replace("$instance", ".*"), "eval_time": "1m",
                              "exp_samples": [{"labels": "{}", "value": 2}]}]}]}))
    promtool("test", "rules", test)


def main():
    for program in ("promtool", "prometheus", "prometheus-node-exporter"):
        assert shutil.which(program), f"{program} is not installed"
    promtool("check", "rules", RULES)
    promtool("test", "rules", SOURCE / "tests/operator/alerts_test.yml")
    dashboard = json.loads((SOURCE / "docs/fleet/dashboard.json").read_text())
    with tempfile.TemporaryDirectory(prefix="dm_fleet_") as name, Appliance(sys.argv[1]) as appliance:
        folder = pathlib.Path(name)
        test_damaged_logs(dashboard, folder)
        exporter_port, port = free_port(), free_port()
        (folder / "prometheus.yml").write_text(json.dumps({
            "global": {"scrape_interval": "1s", "evaluation_interval": "1s"},
            "rule_files": [str(RULES)],
            "scrape_configs": [{"job_name": "appliance", "static_configs": [
                {"targets": [f"127.0.0.1:{exporter_port}"]}]}]}))
        assert appliance.daemonctl("launch", "C:\\windows\\system32\\notepad.exe")[0] == 0
        appliance.start(appliance.programs / "daemonctl.exe", "metrics", "--every", "1", "--output",
                        windows_path(folder / "daemonmanager.prom"))
        with running("prometheus-node-exporter", "--collector.disable-defaults",
                     "--collector.textfile", f"--collector.textfile.directory={folder}",
                     f"--web.listen-address=127.0.0.1:{exporter_port}"), \
                running("prometheus", f"--config.file={folder}/prometheus.yml",
                        f"--storage.tsdb.path={folder}/data",
                        f"--web.listen-address=127.0.0.1:{port}"):
            prometheus = Prometheus(port)
            watch(appliance, folder, prometheus)
            for panel in dashboard["panels"]:
                for target in panel["targets"]:
                    query = target["expr"].replace("$instance", ".*")
                    assert prometheus.get("query?query=" + urllib.parse.quote(query)) is not None, query
    print("the rules, their tests, the metrics and the alerts: no problems found")


if __name__ == "__main__":
    main()
