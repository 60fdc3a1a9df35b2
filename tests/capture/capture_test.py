#!/usr/bin/env python3
"""What goes over the wire, judged by tshark. The expected lines are typed from the protocol, N is the client's node."""

import argparse
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from recorder import DEADLINE_S, Recorder, describe, read_by_tshark

sys.path.append(str(Path(__file__).resolve().parents[1] / "support"))
from simulator import Simulator

PROGRAMS = argparse.Namespace()


class Session(unittest.TestCase):
    maxDiff = None
    plc_options = ()

    def setUp(self):
        self.plc = Simulator(PROGRAMS.plc, *self.plc_options)
        self.addCleanup(self.plc.close)
        self.recorder = Recorder(self.plc.port)
        self.addCleanup(self.recorder.close)

    def run_client(self, arguments, exit_code=0):
        client = subprocess.run(arguments, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=DEADLINE_S)
        self.assertEqual(client.returncode, exit_code, client.stdout + client.stderr)
        return client.stdout

    def run_panel(self, command, *arguments, exit_code=0):
        host = f"127.0.0.1:{self.recorder.port}"
        program = [PROGRAMS.panel, "--library", PROGRAMS.library, *command.split()]
        return self.run_client([*program, host, *arguments], exit_code)

    def expect(self, *connections):
        """The connections since the last call, each a list of frames."""
        recorded = self.recorder.take()
        self.assertEqual(len(recorded), len(connections), "number of connections")
        for connection, expected in zip(recorded, connections):
            frames = read_by_tshark(connection.segments)
            self.assertGreaterEqual(len(frames), 2)
            node = int(frames[1][1]["omron.tcp.client_node_address"], 0)
            self.assertTrue(1 <= node <= 254, f"the PLC gave node {node}")
            decoded = [describe(direction, frame) for direction, frame in frames]
            self.assertEqual(decoded, [line.replace("N", str(node)) for line in HANDSHAKE + expected])


HANDSHAKE = [
    "> handshake client 0",
    "< handshake client N server 1",
]


class LoadDriver(Session):
    def test_one_read(self):
        self.plc.tell("write DM:100 300 65535")
        output = self.run_client([PROGRAMS.load_driver, PROGRAMS.library, "127.0.0.1", str(self.recorder.port)])
        self.assertEqual(output.splitlines()[-1], "DM 100 = 300, DM 101 = 65535")
        self.expect([
            "> 0101 sid 1 N->1 icf 80 area 82 0064.00 x2",
            "< 0101 sid 1 1->N icf C0 end 0000 data 012cffff",
        ])


class Panel(Session):
    def test_read_of_ten_words(self):
        self.plc.tell("write DM:100 1 2 3 4 5 6 7 8 9 10")
        self.assertEqual(self.run_panel("read", "DM:100:10"), "DM:100:10 = 1 2 3 4 5 6 7 8 9 10\n")
        self.expect([
            "> 0101 sid 1 N->1 icf 80 area 82 0064.00 x10",
            "< 0101 sid 1 1->N icf C0 end 0000 data 000100020003000400050006000700080009000a",
        ])

    def test_read_of_every_area(self):
        areas = {"CIO": "B0 0001", "WR": "B1 0002", "HR": "B2 0003", "AR": "B3 01C0", "T": "89 0005", "C": "89 8006",
                 "DM": "82 7FFF"}
        items = {"CIO": 1, "WR": 2, "HR": 3, "AR": 448, "T": 5, "C": 6, "DM": 32767}
        for value, (name, address) in enumerate(items.items(), start=1):
            with self.subTest(name):
                self.plc.tell(f"write {name}:{address} {value}")
                self.assertEqual(self.run_panel("read", f"{name}:{address}"), f"{name}:{address} = {value}\n")
                self.expect([
                    f"> 0101 sid 1 N->1 icf 80 area {areas[name]}.00 x1",
                    f"< 0101 sid 1 1->N icf C0 end 0000 data 000{value}",
                ])

    def test_write_of_words(self):
        self.assertEqual(self.run_panel("write", "DM:100:2=0x1234,0x5678"), "DM:100:2 = 4660 22136\n")
        self.expect([
            "> 0101 sid 1 N->1 icf 80 area 82 0064.00 x2",
            "< 0101 sid 1 1->N icf C0 end 0000 data 00000000",
            "> 0102 sid 2 N->1 icf 80 area 82 0064.00 x2 data 12345678",
            "< 0102 sid 2 1->N icf C0 end 0000",
            "> 0101 sid 3 N->1 icf 80 area 82 0064.00 x2",
            "< 0101 sid 3 1->N icf C0 end 0000 data 12345678",
        ])

    def test_write_of_bits(self):
        areas = {"CIO": "30", "WR": "31", "HR": "32", "DM": "02"}
        words = {"CIO": "B0", "WR": "B1", "HR": "B2", "DM": "82"}
        for name, area in areas.items():
            with self.subTest(name):
                self.plc.tell(f"write {name}:100 1")
                self.assertEqual(self.run_panel("write", f"{name}_bit:100.5:3=1,0,1"), f"{name}_bit:100.5:3 = 1 0 1\n")
                self.expect([
                    f"> 0101 sid 1 N->1 icf 80 area {words[name]} 0064.00 x1",
                    "< 0101 sid 1 1->N icf C0 end 0000 data 0001",
                    f"> 0102 sid 2 N->1 icf 80 area {area} 0064.05 x3 data 010001",
                    "< 0102 sid 2 1->N icf C0 end 0000",
                    f"> 0101 sid 3 N->1 icf 80 area {words[name]} 0064.00 x1",
                    "< 0101 sid 3 1->N icf C0 end 0000 data 00a1",
                ])

    def test_longest_write(self):
        values = [1000 + i for i in range(114)]
        written = ",".join(str(value) for value in values)
        data = "".join(f"{value:04x}" for value in values)
        self.run_panel("write --words-per-frame 114", f"DM:0:114={written}")
        self.expect([
            "> 0101 sid 1 N->1 icf 80 area 82 0000.00 x114",
            "< 0101 sid 1 1->N icf C0 end 0000 data " + "0000" * 114,
            f"> 0102 sid 2 N->1 icf 80 area 82 0000.00 x114 data {data}",
            "< 0102 sid 2 1->N icf C0 end 0000",
            "> 0101 sid 3 N->1 icf 80 area 82 0000.00 x114",
            f"< 0101 sid 3 1->N icf C0 end 0000 data {data}",
        ])

    def test_recipe(self):
        with tempfile.TemporaryDirectory() as folder:
            recipe = Path(folder) / "recipe.txt"
            recipe.write_text("DM:200 = 1200\nDM:201:3 = 20 30 40\nHR:10 = 7\n", encoding="ascii")
            output = self.run_panel("recipe write", str(recipe))
        self.assertEqual(output, "DM:200 = 1200\nDM:201:3 = 20 30 40\nHR:10 = 7\n")
        self.expect([
            "> 0101 sid 1 N->1 icf 80 area 82 00C8.00 x1",
            "< 0101 sid 1 1->N icf C0 end 0000 data 0000",
            "> 0102 sid 2 N->1 icf 80 area B2 000A.00 x1 data 0007",
            "< 0102 sid 2 1->N icf C0 end 0000",
            "> 0102 sid 3 N->1 icf 80 area 82 00C8.00 x4 data 04b00014001e0028",
            "< 0102 sid 3 1->N icf C0 end 0000",
            "> 0101 sid 4 N->1 icf 80 area B2 000A.00 x1",
            "< 0101 sid 4 1->N icf C0 end 0000 data 0007",
            "> 0101 sid 5 N->1 icf 80 area 82 00C8.00 x4",
            "< 0101 sid 5 1->N icf C0 end 0000 data 04b00014001e0028",
        ])

    def test_refused_read(self):
        self.plc.tell("fault end-code=1103")
        self.run_panel("read", "DM:100", exit_code=1)
        self.expect([
            "> 0101 sid 1 N->1 icf 80 area 82 0064.00 x1",
            "< 0101 sid 1 1->N icf C0 end 1103",
        ])

    def test_replies_one_byte_at_a_time(self):
        self.plc.tell("write DM:100 513")
        self.plc.tell("fault bytewise")
        self.assertEqual(self.run_panel("read", "DM:100"), "DM:100 = 513\n")
        self.expect([
            "> 0101 sid 1 N->1 icf 80 area 82 0064.00 x1",
            "< 0101 sid 1 1->N icf C0 end 0000 data 0201",
        ])


class ModeChange(Session):
    plc_options = ("--mode", "run", "--refuse-writes-in-run")

    def test_write_that_needs_monitor_mode(self):
        """The write goes out again with a service ID of its own, behind a read that proves the link."""
        self.assertEqual(self.run_panel("write", "DM:100=5", "--allow-mode-change"), "DM:100 = 5\n")
        self.expect([
            "> 0101 sid 1 N->1 icf 80 area 82 0064.00 x1",
            "< 0101 sid 1 1->N icf C0 end 0000 data 0000",
            "> 0102 sid 2 N->1 icf 80 area 82 0064.00 x1 data 0005",
            "< 0102 sid 2 1->N icf C0 end 2206",
            "> 0401 sid 3 N->1 icf 80 program FFFF mode 02",
            "< 0401 sid 3 1->N icf C0 end 0000",
            "> 0101 sid 4 N->1 icf 80 area 82 0064.00 x1",
            "< 0101 sid 4 1->N icf C0 end 0000 data 0000",
            "> 0102 sid 5 N->1 icf 80 area 82 0064.00 x1 data 0005",
            "< 0102 sid 5 1->N icf C0 end 0000",
            "> 0101 sid 6 N->1 icf 80 area 82 0064.00 x1",
            "< 0101 sid 6 1->N icf C0 end 0000 data 0005",
        ])


def main():
    parser = argparse.ArgumentParser()
    for program in ("plc", "panel", "library", "load-driver"):
        parser.add_argument(f"--{program}", required=True)
    _, rest = parser.parse_known_args(namespace=PROGRAMS)
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == "__main__":
    main()
