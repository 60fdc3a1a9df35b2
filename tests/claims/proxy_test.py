#!/usr/bin/env python3
"""The fault proxy before a PLC of few lines, and the judge of the panel's claims before a panel that lies."""

import asyncio
import subprocess
import sys
import unittest
from pathlib import Path

from claims_test import state
from fault_proxy import FaultProxy, Faults
from orders import BLOCK_WORDS, Place, draw_command
from report import (DIFFERS, DONE, ENDLESS, FALSE_DONE, FALSE_FAILURE, FALSE_NOT_SENT, FALSE_REFUSAL, HALF_WRITTEN,
                    NOT_SENT, OLD, REFUSED, REFUSED_IN_PART, TWICE, UNCONFIRMED, UNREPORTED, WRITTEN, Order, Run,
                    code_for, judge, lie_of, outcomes_of)

DEADLINE_S = 30
PROXY = Path(__file__).resolve().parent / "fault_proxy.py"


def frame(number):
    """A FINS/TCP frame of 18 bytes that ends with its number."""
    return b"FINS" + bytes([0, 0, 0, 10]) + bytes([0, 0, 0, 2, 0, 0, 0, 0, 0, number])


class Plc:
    """Keeps what it gets from each connection, answers each piece with `answer`, and closes when the other side has."""

    def __init__(self):
        self.answer = b""
        self.received = []
        self.closed = 0

    async def start(self):
        self.server = await asyncio.start_server(self.serve, "127.0.0.1", 0)
        self.address = self.server.sockets[0].getsockname()[:2]

    async def serve(self, reader, writer):
        connection = len(self.received)
        self.received.append(b"")
        while data := await reader.read(4096):
            self.received[connection] += data
            writer.write(self.answer)
        writer.close()
        self.closed += 1


class Proxy(unittest.IsolatedAsyncioTestCase):
    async def asyncSetUp(self):
        self.plc = Plc()
        await self.plc.start()
        self.log = []

    async def asyncTearDown(self):
        self.plc.server.close()
        await self.plc.server.wait_closed()

    async def deliver(self, faults, data, seed=1):
        """What the PLC gets of `data`, from a panel that closes its side at once."""
        proxy = FaultProxy(self.plc.address, seed, Faults(**faults), self.log.append)
        reader, writer = await asyncio.open_connection("127.0.0.1", proxy.port)
        writer.write(data)
        writer.write_eof()
        while await asyncio.wait_for(reader.read(4096), DEADLINE_S):
            pass
        writer.close()
        await proxy.drain()
        return self.plc.received[-1]

    async def test_without_faults_all_passes(self):
        self.assertEqual(await self.deliver({}, frame(1) + frame(2)), frame(1) + frame(2))
        self.assertEqual(self.log, [])

    async def test_dropped(self):
        self.assertEqual(await self.deliver({"drop": 1}, frame(1) + frame(2)), b"")
        self.assertEqual(self.log, ["connection 0 > frame 1: drop", "connection 0 > frame 2: drop"])

    async def test_doubled(self):
        self.assertEqual(await self.deliver({"double": 1}, frame(1)), frame(1) + frame(1))

    async def test_delayed_frames_keep_their_order_and_land_after_the_panel_has_gone(self):
        self.assertEqual(await self.deliver({"delay": 1, "delay_ms": 20}, frame(1) + frame(2)), frame(1) + frame(2))

    async def test_cut_ends_the_connection_inside_the_first_frame(self):
        got = await self.deliver({"cut": 1}, frame(1) + frame(2))
        self.assertEqual(got, frame(1)[:len(got)])
        self.assertIn(len(got), range(1, len(frame(1))))
        self.assertEqual(self.plc.closed, 1)

    async def test_cut_of_a_reply_lets_held_requests_land(self):
        """The PLC answers the first frame at once; the answer is cut, and the second request is on its way."""
        self.plc.answer = frame(9)
        for seed in range(1000):
            del self.log[:]
            got = await self.deliver({"cut": 0.3, "reorder": 0.3, "hold_ms": 50}, frame(1) + frame(2), seed)
            decisions = [line.partition(" at ")[0].partition(" to ")[0].strip(",") for line in self.log]
            if decisions == ["connection 0 > frame 2: reorder", "connection 0 < frame 1: cut"]:
                break
        else:
            self.fail("no seed gives these two decisions")
        self.assertEqual(got, frame(1) + frame(2))

    async def test_held_frame_goes_behind_the_next_one(self):
        for seed in range(1000):
            del self.log[:]
            got = await self.deliver({"reorder": 0.5, "hold_ms": 60000}, frame(1) + frame(2), seed)
            if len(self.log) == 1 and " frame 1: reorder" in self.log[0]:
                break
        else:
            self.fail("no seed holds the first frame alone")
        self.assertEqual(got, frame(2) + frame(1))

    async def test_held_frame_lands_without_a_next_one(self):
        self.assertEqual(await self.deliver({"reorder": 1, "hold_ms": 5}, frame(1)), frame(1))

    async def test_what_is_no_frame_passes_as_it_is(self):
        self.assertEqual(await self.deliver({}, b"hello, PLC"), b"hello, PLC")
        self.assertEqual(await self.deliver({}, frame(1)[:11]), frame(1)[:11])

    async def test_equal_seeds_give_equal_decisions(self):
        faults = {"drop": 0.2, "double": 0.2, "delay": 0.2, "reorder": 0.2, "delay_ms": 2, "hold_ms": 2}
        data = b"".join(frame(number) for number in range(50))
        logs = []
        for seed in (7, 7, 8):
            del self.log[:]
            await self.deliver(faults, data, seed)
            logs.append(list(self.log))
        self.assertEqual(logs[0], logs[1])
        self.assertNotEqual(logs[0], logs[2])

    async def test_refused_command_is_answered_and_kept_from_the_plc(self):
        """A write of DM:0 from node 239 to node 1 with service ID 5A."""
        header = "46494E53 0000001C 00000002 00000000"
        request = bytes.fromhex(header + "80 00 02 00 01 00 00 EF 00 5A 0102 82 0000 00 0001 1234")
        proxy = FaultProxy(self.plc.address, 1, Faults(refuse=1), self.log.append)
        reader, writer = await asyncio.open_connection("127.0.0.1", proxy.port)
        writer.write(request)
        reply = await asyncio.wait_for(reader.readexactly(30), DEADLINE_S)
        writer.close()
        await proxy.drain()
        self.assertEqual(reply, bytes.fromhex("46494E53 00000016 00000002 00000000 C0 00 02 00 EF 00 00 01 00 5A 0102"
                                              "2108"))
        self.assertEqual(self.plc.received, [b""])

    async def test_connections_differ_in_their_decisions(self):
        proxy = FaultProxy(self.plc.address, 1, Faults(drop=0.5), self.log.append)
        data = b"".join(frame(number) for number in range(64))
        for _ in range(2):
            reader, writer = await asyncio.open_connection("127.0.0.1", proxy.port)
            writer.write(data)
            writer.write_eof()
            self.assertEqual(await asyncio.wait_for(reader.read(), DEADLINE_S), b"")
            writer.close()
        await proxy.drain()
        self.assertNotEqual(self.plc.received[0], self.plc.received[1])


class Program(unittest.TestCase):
    def run_proxy(self, *arguments):
        return subprocess.run([sys.executable, "-B", PROXY, *arguments], stdin=subprocess.DEVNULL, capture_output=True,
                              text=True, timeout=DEADLINE_S)

    def test_ends_with_its_input(self):
        run = self.run_proxy("--plc", "127.0.0.1:9600")
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertRegex(run.stdout, r"\Alistening on 127\.0\.0\.1:\d+\n\Z")

    def test_ends_by_itself(self):
        with subprocess.Popen([sys.executable, "-B", PROXY, "--plc", "127.0.0.1:9600", "--for", "0.1"],
                              stdin=subprocess.PIPE, stdout=subprocess.DEVNULL) as process:
            self.assertEqual(process.wait(DEADLINE_S), 0)

    def test_refuses_what_it_does_not_understand(self):
        for arguments, said in ((["--plc", "9600"], "'9600' is no HOST:PORT"),
                                (["--plc", "plc:9600", "--drop", "2"], "'2' is out of range; use 0 to 1"),
                                (["--plc", "plc:9600", "--drop", "few"], "'few' is out of range; use 0 to 1"),
                                (["--plc", "plc:9600", "--drop", "nan"], "'nan' is out of range; use 0 to 1"),
                                (["--plc", "plc:9600", "--drop", "0.6", "--cut", "0.6"],
                                 "the probabilities add up to more than 1"),
                                (["--plc", "plc:9600", "--hold-ms", "-1"], "'-1' is out of range; use 0 to 60000")):
            with self.subTest(arguments):
                run = self.run_proxy(*arguments)
                self.assertEqual(run.returncode, 2)
                self.assertIn(said, run.stderr.splitlines()[-1])


FIRST, SECOND = Order("DM:1", "5"), Order("DM:10:2", "6 7")


class Judge(unittest.TestCase):
    def test_outcomes_are_read_from_their_lines(self):
        lines = {REFUSED: "refused: DM:1: 1103 (the first address is out of range)",
                 REFUSED_IN_PART: "refused: DM:1: 2101 (read-only); the first 2 of 4 were written",
                 DIFFERS: "differs: DM:1 was to be 5, the PLC holds 0",
                 UNCONFIRMED: "unconfirmed: DM:1: the link was lost",
                 NOT_SENT: "not sent: DM:1: the link was lost",
                 DONE: "done: DM:1 = 5"}
        for outcome, line in lines.items():
            with self.subTest(line):
                self.assertEqual(outcomes_of(FIRST, Run(0, "DM:1 = 0\n", line + "\n"), True), [outcome])
                self.assertEqual(outcomes_of(SECOND, Run(0, "", line + "\n"), True), [])
                self.assertEqual(outcomes_of(FIRST, Run(0, "", line + "\n" + line + "\n"), True), [outcome] * 2)

    def test_value_read_back_is_a_report_unless_more_is_said(self):
        self.assertEqual(outcomes_of(FIRST, Run(0, "DM:1 = 5\n", ""), True), [DONE])
        self.assertEqual(outcomes_of(FIRST, Run(0, "DM:1 = 5\nDM:1 = 5\n", ""), True), [DONE, DONE])
        self.assertEqual(outcomes_of(FIRST, Run(0, "DM:1 = 50\n", ""), True), [])
        self.assertEqual(outcomes_of(FIRST, Run(0, "DM:1 = 5\n", ""), False), [])
        self.assertEqual(outcomes_of(FIRST, Run(0, "", "done: DM:1 = 50\n"), False), [])

    def test_lies(self):
        rows = [([], WRITTEN, UNREPORTED), ([DONE, UNCONFIRMED], WRITTEN, TWICE), ([DONE], OLD, FALSE_DONE),
                ([DONE], HALF_WRITTEN, FALSE_DONE), ([NOT_SENT], WRITTEN, FALSE_NOT_SENT),
                ([NOT_SENT], HALF_WRITTEN, FALSE_NOT_SENT), ([REFUSED], WRITTEN, FALSE_FAILURE),
                ([DIFFERS], WRITTEN, FALSE_FAILURE), ([REFUSED_IN_PART], WRITTEN, FALSE_FAILURE),
                ([REFUSED], HALF_WRITTEN, FALSE_REFUSAL)]
        for said, held, lie in rows:
            with self.subTest(said=said, held=held):
                self.assertEqual(lie_of(said, held), lie)

    def test_truths(self):
        rows = [([DONE], WRITTEN), ([NOT_SENT], OLD), ([REFUSED], OLD), ([DIFFERS], OLD), ([DIFFERS], HALF_WRITTEN),
                ([REFUSED_IN_PART], HALF_WRITTEN),
                ([UNCONFIRMED], OLD), ([UNCONFIRMED], HALF_WRITTEN), ([UNCONFIRMED], WRITTEN)]
        for said, held in rows:
            with self.subTest(said=said, held=held):
                self.assertIsNone(lie_of(said, held))

    def test_exit_codes(self):
        for outcomes, code in (([], 0), ([DONE], 0), ([DONE, REFUSED], 1), ([DIFFERS], 1), ([REFUSED_IN_PART], 1),
                               ([REFUSED, UNCONFIRMED], 3),
                               ([NOT_SENT, DIFFERS], 3)):
            with self.subTest(outcomes):
                self.assertEqual(code_for(outcomes), code)

    def test_command_is_judged_by_its_code(self):
        refused = "refused: DM:1: read-only\n"
        for code, is_watch, lies in ((1, False, []), (0, False, ["exit code against the rule: 0, not 1"]),
                                     (0, True, ["exit code against the rule: 0, not 1"]), (None, False, [ENDLESS])):
            with self.subTest(code=code, is_watch=is_watch):
                self.assertEqual(judge([FIRST], [OLD], Run(code, "", refused), is_watch)[0], lies)

    def test_mode_that_is_left_open_makes_the_code_3(self):
        perhaps = "unconfirmed: the PLC may have been switched to MONITOR mode\n"
        switched = "the PLC is in MONITOR mode now\n"
        for err, lies in ((perhaps, []), (perhaps + switched, ["exit code against the rule: 3, not 0"]),
                          (switched + perhaps, [])):
            with self.subTest(err):
                self.assertEqual(judge([FIRST], [WRITTEN], Run(3, "DM:1 = 5\n", err), False)[0], lies)

    def test_signal_at_the_start_needs_no_report(self):
        self.assertEqual(judge([FIRST], [OLD], Run(-2, "", ""), False)[0], [])
        self.assertEqual(judge([FIRST], [WRITTEN], Run(-2, "", ""), False)[0][0], f"{UNREPORTED}: DM:1")
        self.assertEqual(judge([FIRST], [OLD], Run(-2, "", "connected\n"), False)[0][0], f"{UNREPORTED}: DM:1")

    def test_watch_may_miss_values(self):
        done = Run(3, "", "done: DM:1 = 5\n")
        self.assertEqual(judge([FIRST], [WRITTEN], done, True), ([], {DONE: 1}))
        for code, err in ((2, done.err), (0, "refused: DM:1: 2101\n"), (1, "not sent: DM:1: interrupted\n")):
            wanted = {2: 0, 0: 1, 1: 3}[code]
            with self.subTest(code):
                self.assertEqual(judge([FIRST], [WRITTEN if code == 2 else OLD], Run(code, "", err), True)[0],
                                 [f"exit code against the rule: {code}, not {wanted}"])

    def test_lie_names_the_item(self):
        run = Run(0, "DM:1 = 5\nDM:10:2 = 6 7\n", "")
        self.assertEqual(judge([FIRST, SECOND], [WRITTEN, HALF_WRITTEN], run, False)[0], [f"{FALSE_DONE}: DM:10:2"])

    def test_memory_tells_what_was_written(self):
        rows = [(0, Place(11, None, [7]), WRITTEN), (0, Place(12, None, [8, 9]), HALF_WRITTEN),
                (0, Place(11, None, [8]), OLD), (0, Place(10, 3, None), WRITTEN), (0, Place(10, 2, None), OLD),
                (0xFFFF, Place(10, 3, None), OLD), (0xFFFF, Place(10, 2, None), WRITTEN), (0, None, OLD)]
        for fill, place, held in rows:
            with self.subTest(fill=fill, place=place):
                command = draw_command(1, 0)._replace(first_word=10, fill=fill)
                self.assertEqual(state(command, place, [0b1000, 7, 0, 9]), held)

    def test_commands_stay_inside_their_blocks(self):
        for number in range(500):
            command = draw_command(1, number)
            words = [(place.word, len(place.words or [0])) for place in command.places if place]
            for (word, count), following in zip(words, words[1:] + [(command.first_word + BLOCK_WORDS - 1, 1)]):
                self.assertTrue(command.first_word <= word and word + count <= following[0], f"command {number}")


if __name__ == "__main__":
    unittest.main()
