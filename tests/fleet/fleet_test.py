#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""A fleet of three simulated servers behind Debian's node_exporter, Prometheus and alertmanager, all on
loopback: one of them has another BIOS. A query names it, the dashboard's panels show it, and the alert
reaches the alert manager.

Usage: fleet_test.py VELHOST SOURCE-FOLDER
"""
import contextlib
import json
import pathlib
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.error
import urllib.parse
import urllib.request

VELHOST, ROOT = pathlib.Path(sys.argv.pop(1)).resolve(), pathlib.Path(sys.argv.pop(1)).resolve()
RULES = ROOT / "share" / "prometheus" / "velhost-rules.yml"
DASHBOARD = ROOT / "share" / "grafana" / "velhost-firmware.json"
PROGRAMS = ("prometheus", "promtool", "prometheus-node-exporter", "prometheus-alertmanager")

COMMON, ODD = "1.04 [KRE104C]", "1.03 [KRE103A]"
PATIENCE = 90  # seconds until something is given up that comes in a few


def free_ports(count):
    with contextlib.ExitStack() as open_ones:
        sockets = [open_ones.enter_context(socket.socket()) for _ in range(count)]
        for one in sockets:
            one.bind(("127.0.0.1", 0))
        return [one.getsockname()[1] for one in sockets]


def answer(port, path, **parameters):
    url = f"http://127.0.0.1:{port}{path}?{urllib.parse.urlencode(parameters)}"
    with urllib.request.urlopen(url, timeout=10) as reply:
        return json.load(reply)


def waited_for(what, attempt):
    """What `attempt` returns once that is something; it is asked again and again."""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        with contextlib.suppress(urllib.error.URLError, ConnectionError):
            if found := attempt():
                return found
        time.sleep(0.2)
    raise AssertionError(f"{what} did not come within {PATIENCE} s")


def impatient(rules):
    """The rules, with alerts that do not wait: the servers of the test live for seconds."""
    return re.sub(r"^( +)for: \w+$", r"\1for: 0s", rules, flags=re.MULTILINE)


class Fleet:
    """The three servers and what watches them, in a folder that goes with them."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.processes = []
        self.alerts, self.prometheus, *self.exporters = free_ports(5)

    def start(self, name, *arguments):
        log = (self.folder / f"{name}.log").open("wb")
        with log:
            self.processes.append(
                subprocess.Popen([*map(str, arguments)], stdout=log, stderr=log, cwd=self.folder))

    def put_server(self, name, bios, port):
        machine = (ROOT / "machines" / "uefi-two-node.json").read_text()  # with comments
        text = re.sub('"name": ".*?"', f'"name": "{name}"', machine, count=1).replace(COMMON, bios)
        textfiles = self.folder / name
        textfiles.mkdir()
        (self.folder / f"{name}.json").write_text(text)
        subprocess.run([VELHOST, "query", "--machine", self.folder / f"{name}.json",
                        "--format", "openmetrics", "--output", textfiles / "velhost.prom"], check=True)
        self.start(f"exporter-{name}", "prometheus-node-exporter", "--collector.disable-defaults",
                   "--collector.textfile", f"--collector.textfile.directory={textfiles}",
                   f"--web.listen-address=127.0.0.1:{port}")

    def start_all(self):
        for name, bios, port in zip(("alder", "birch", "cedar"), (COMMON, ODD, COMMON), self.exporters):
            self.put_server(name, bios, port)
        (self.folder / "alertmanager.yml").write_text(
            "route: {receiver: nobody, group_wait: 0s}\nreceivers: [{name: nobody}]\n")
        self.start("alertmanager", "prometheus-alertmanager", "--config.file=alertmanager.yml",
                   "--storage.path=alerts", "--cluster.listen-address=",
                   f"--web.listen-address=127.0.0.1:{self.alerts}")
        (self.folder / "rules.yml").write_text(impatient(RULES.read_text()))
        targets = json.dumps([f"127.0.0.1:{port}" for port in self.exporters])
        (self.folder / "prometheus.yml").write_text(f"""
global: {{scrape_interval: 1s, evaluation_interval: 1s}}
rule_files: [rules.yml]
alerting: {{alertmanagers: [{{static_configs: [{{targets: ["127.0.0.1:{self.alerts}"]}}]}}]}}
scrape_configs: [{{job_name: node, static_configs: [{{targets: {targets}}}]}}]
""")
        self.start("prometheus", "prometheus", "--config.file=prometheus.yml",
                   "--storage.tsdb.path=tsdb", f"--web.listen-address=127.0.0.1:{self.prometheus}")

    def stop(self):
        for process in self.processes:
            process.kill()
        for process in self.processes:
            process.wait()

    def query(self, expression):
        """The samples that the expression has now."""
        reply = answer(self.prometheus, "/api/v1/query", query=expression)
        return reply["data"]["result"]


@unittest.skipUnless(all(map(shutil.which, PROGRAMS)), "Prometheus is not installed")
class FleetTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        folder = cls.enterClassContext(tempfile.TemporaryDirectory())
        cls.fleet = Fleet(folder)
        cls.addClassCleanup(cls.fleet.stop)
        cls.fleet.start_all()
        waited_for("the third server", lambda: len(cls.fleet.query(
            'count by (machine) (krxsg_element_info{class="KRXSG_SystemBIOSElement"})')) == 3)
        waited_for("the recorded levels", lambda: cls.fleet.query("krxsg:odd_element:machines_alike"))

    def test_promtool_takes_the_rules(self):
        subprocess.run(["promtool", "check", "rules", RULES], check=True, capture_output=True)

    def test_the_rules_mean_what_they_say(self):
        subprocess.run(["promtool", "test", "rules", "rules_test.yml"], check=True,
                       cwd=ROOT / "tests" / "fleet", capture_output=True)

    def test_a_query_names_the_odd_server(self):
        found = self.fleet.query("krxsg:odd_element:machines_alike")
        self.assertEqual(
            [("birch", "KRXSG_SystemBIOSElement", node, "103", "KRE103A", "1") for node in "12"],
            sorted((*(s["metric"][k] for k in ("machine", "class", "node", "version", "build")),
                    s["value"][1]) for s in found))

    def test_most_have_the_other_level(self):
        found = self.fleet.query('krxsg:level_machines:count{class="KRXSG_SystemBIOSElement", node="1"}')
        self.assertEqual({("103", "1"), ("104", "2")},
                         {(s["metric"]["version"], s["value"][1]) for s in found})

    def test_the_alert_reaches_the_alert_manager(self):
        def odd_ones():
            return [alert for alert in answer(self.fleet.alerts, "/api/v2/alerts")
                    if alert["labels"]["alertname"] == "FirmwareLevelOdd"]
        alerts = waited_for("the alert", lambda: len(odd_ones()) == 2 and odd_ones())
        self.assertEqual(
            [f"birch: KRXSG_SystemBIOSElement of node {node} is 103 [KRE103A]" for node in "12"],
            sorted(alert["annotations"]["summary"] for alert in alerts))
        self.assertEqual({("birch", "KRXSG_SystemBIOSElement", "warning")},
                         {tuple(alert["labels"][key] for key in ("machine", "class", "severity"))
                          for alert in alerts})

    def test_every_panel_is_answered(self):
        for panel in json.loads(DASHBOARD.read_text())["panels"]:
            for target in panel.get("targets", []):
                with self.subTest(panel["title"]):
                    expression = re.sub(r"\$\w+", ".*", target["expr"])
                    found = self.fleet.query(expression)
                    if panel["title"] in ("Odd levels", "Levels", "Servers that tell"):
                        self.assertTrue(found)


if __name__ == "__main__":
    unittest.main()
