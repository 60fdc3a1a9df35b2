#!/usr/bin/env python3
"""The guide's second example with a PLC that refuses, loses and changes things, seen from its user and from the wire."""

import argparse
import subprocess
import sys
import threading
import unittest
import unittest.mock
from pathlib import Path

from recorder import DEADLINE_S, REPLY, Connection, Recorder, describe, read_by_tshark

sys.path.append(str(Path(__file__).resolve().parents[1] / "support"))
from simulator import Simulator

PROGRAMS = argparse.Namespace()


class Example:
    """A running example; its lines in order."""

    def __init__(self, port, *options):
        self.process = subprocess.Popen([PROGRAMS.example, PROGRAMS.library, "127.0.0.1", str(port), *options],
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

    def tell(self, command):
        print(command, file=self.process.stdin, flush=True)

    def wait_for(self, *expected):
        """Reads lines until all of `expected` have come, in any order; returns the lines that were read."""
        seen, missing = [], list(expected)
        watchdog = threading.Timer(DEADLINE_S, self.process.kill)
        watchdog.start()
        while missing:
            line = self.process.stdout.readline()
            if not line:
                raise AssertionError(f"{missing} did not come, but {seen}")
            seen.append(line.rstrip("\n"))
            if seen[-1] in missing:
                missing.remove(seen[-1])
        watchdog.cancel()
        return seen

    def close(self):
        self.process.kill()
        self.process.communicate()


class PanelRuntime(unittest.TestCase):
    def start(self, plc_options=(), options=()):
        self.plc = Simulator(PROGRAMS.plc, *plc_options)
        self.addCleanup(self.plc.close)
        self.recorder = Recorder(self.plc.port)
        self.addCleanup(self.recorder.close)
        self.plc.tell("write DM:100 1")
        self.example = Example(self.recorder.port, *options)
        self.addCleanup(self.example.close)

    def end(self):
        """Ends the example; returns what it sent on each connection but reads: handshakes and command codes."""
        self.example.tell("quit")
        self.assertEqual(self.example.process.wait(DEADLINE_S), 0)
        connections = []
        for connection in self.recorder.take():
            frames = [describe(*frame).split(" ") for frame in read_by_tshark(connection.segments)]
            connections.append([words[1] for words in frames if words[0] == ">" and words[1] != "0101"])
        return connections

    def test_write_is_read_back(self):
        self.start()
        self.example.wait_for("DM 100 = 1", "DM 3000 = 0")
        self.example.tell("write 5")
        self.assertEqual(self.example.wait_for("write 5: done"), ["DM 100 = 5", "write 5: done"])
        self.assertEqual(self.plc.tell("read DM:100"), "ok 5")
        self.plc.tell("write DM:100 0")
        self.example.wait_for("DM 100 = 0")

    def test_bad_commands_write_nothing(self):
        self.start()
        self.example.wait_for("DM 100 = 1")
        usage = "not understood; write A, store A B C, load or quit, with numbers from 0 to 65535"
        for command in ("write 65536", "write 5x", "write", "write 1 2", "store 1 2", "store 1 2 3 4", "go",
                        "go " + 76 * "x" + "write 5"):
            self.example.tell(command)
            self.example.wait_for(f"{command}: {usage}")
        self.assertEqual(self.end(), [["handshake"]])

    def test_recipe_goes_both_ways(self):
        self.start()
        self.example.wait_for("DM 100 = 1")
        self.example.tell("store 7 1200 20")
        self.example.wait_for("store 7 1200 20: done, 7 1200 20")
        self.assertEqual(self.plc.tell("read DM:200:2"), "ok 1200 20")
        self.assertEqual(self.plc.tell("read HR:10"), "ok 7")
        self.plc.tell("write DM:201 35")
        self.example.tell("load")
        self.example.wait_for("load: done, 7 1200 35")

    def test_refused_block_is_left_out_and_the_connection_kept(self):
        self.start(["--profile", "small"])
        self.example.wait_for("DM 3000: refused, 1103", "DM 100 = 1")
        self.plc.tell("write DM:100 2")
        self.example.wait_for("DM 100 = 2")
        self.example.tell("write 3")
        self.example.wait_for("write 3: done")
        self.assertEqual(self.end(), [["handshake", "0102"]])

    def test_link_is_lost_while_everything_is_refused(self):
        self.start()
        self.example.wait_for("DM 100 = 1", "DM 3000 = 0")
        self.plc.tell("fault end-code=2101")
        self.example.wait_for("DM 100: refused, 2101", "DM 3000: refused, 2101")
        self.plc.tell("fault end-code off")
        self.plc.tell("disconnect")
        self.example.wait_for("DM 100 = 1", "DM 3000 = 0")
        self.assertEqual(self.end(), [["handshake"], ["handshake"]])

    def test_link_comes_back_with_fresh_values(self):
        self.start()
        self.example.wait_for("DM 100 = 1", "DM 3000 = 0")
        self.plc.tell("disconnect")
        self.example.wait_for("no link: the PLC has closed the connection; the values are the last known",
                              "DM 100 = 1", "DM 3000 = 0")
        self.example.tell("write 6")
        self.example.wait_for("write 6: done")
        self.assertEqual(self.plc.tell("read DM:100"), "ok 6")
        self.assertEqual(self.end(), [["handshake"], ["handshake", "0102"]])

    def test_write_without_a_reply_is_unknown_and_read_after_the_loss(self):
        keep = Connection.keep

        def lose_replies_to_writes(connection, direction, segment):
            if direction == REPLY and segment[26:28] == b"\x01\x02":
                raise OSError("this and all later replies of the connection are lost")
            keep(connection, direction, segment)

        self.start()
        self.example.wait_for("DM 100 = 1")
        with unittest.mock.patch.object(Connection, "keep", lose_replies_to_writes):
            self.example.tell("write 5")
            self.example.wait_for("no link: no reply; the values are the last known",
                                  "write 5: unknown, the link was lost")
        self.example.wait_for("DM 100 = 5")

    def test_mode_stays_without_consent(self):
        self.start(["--refuse-writes-in-run"])
        self.example.wait_for("DM 100 = 1")
        self.example.tell("write 5")
        self.example.wait_for("write 5: refused, the PLC's mode stays as it is")
        self.example.tell("store 7 8 9")
        self.example.wait_for("store 7 8 9: refused, the PLC's mode stays as it is")
        self.assertEqual(self.plc.tell("mode"), "ok run")
        self.assertEqual(self.plc.tell("read DM:100"), "ok 1")
        self.assertEqual(self.end(), [["handshake", "0102", "0102"]])

    def test_mode_changes_with_consent(self):
        self.start(["--refuse-writes-in-run"], ["--allow-mode-change"])
        self.example.wait_for("DM 100 = 1")
        self.example.tell("write 5")
        self.example.wait_for("write 5: done")
        self.assertEqual(self.plc.tell("mode"), "ok monitor")
        self.assertEqual(self.plc.tell("read DM:100"), "ok 5")
        self.assertEqual(self.end(), [["handshake", "0102", "0401", "0102"]])

    def test_recipe_is_cut_short_by_a_change_of_mode(self):
        self.start(["--refuse-writes-in-run"], ["--allow-mode-change"])
        self.example.wait_for("DM 100 = 1")
        self.example.tell("store 7 8 9")
        self.example.wait_for("store 7 8 9: cut short, store it again")
        self.example.tell("store 7 8 9")
        self.example.wait_for("store 7 8 9: done, 7 8 9")
        self.assertEqual(self.plc.tell("read DM:200:2"), "ok 8 9")


def main():
    parser = argparse.ArgumentParser()
    for program in ("plc", "library", "example"):
        parser.add_argument(f"--{program}", required=True)
    _, rest = parser.parse_known_args(namespace=PROGRAMS)
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == "__main__":
    main()
