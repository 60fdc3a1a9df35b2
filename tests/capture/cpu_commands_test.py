#!/usr/bin/env python3
"""The simulator's commands, each request and response decoded by tshark, which has never seen it."""

import argparse
import re
import socket
import sys
import unittest
from pathlib import Path

from recorder import DEADLINE_S, REPLY, REQUEST, Recorder, packets_of, receive_frame

sys.path.append(str(Path(__file__).resolve().parents[1] / "support"))
from simulator import Simulator

PROGRAMS = argparse.Namespace()
LENGTH_FROM = 8
# Single bits, which tshark names as on another series; the words that they are in are what counts.
NAMED_BITS = ("omron.fatal.", "omron.non_fatal.", "omron.message.")
END = ["response.code=0x0000"]
# In 20 bytes each.
MODEL = "CJ2H-CPU68".ljust(20).encode().hex().upper()
ETHERNET = "CJ2B-EIP21".ljust(20).encode().hex().upper()
VERSION = "02.01".ljust(20, "\0").encode().hex().upper()


def heads(command):
    """FINS headers of a command to node 1 from node 239, and of its response. The Ethernet unit knows the echo alone."""
    unit = "FE" if command.startswith("0801") else "00"
    return f"8000020001{unit}00EF005A", f"C0000200EF000001{unit}5A"


def frame(tcp_command, body):
    return b"FINS" + (LENGTH_FROM + len(body)).to_bytes(4, "big") + tcp_command.to_bytes(4, "big") + bytes(4) + body


class Client:
    """A bare client with a node address."""

    def __init__(self, port):
        self.socket = socket.create_connection(("127.0.0.1", port), timeout=DEADLINE_S)
        self.socket.sendall(frame(0, bytes(4)))
        receive_frame(self.socket)

    def ask(self, command):
        self.socket.sendall(frame(2, bytes.fromhex(heads(command)[0] + command)))
        return receive_frame(self.socket)

    def close(self):
        self.socket.close()


def decoded(packet):
    """What tshark reads behind the command code, 'name=value' in order, and what it complains about. Seconds go on."""
    omron = next(proto for proto in packet.iter("proto") if proto.get("name") == "omron")
    names = [(field.get("name"), field) for field in omron.iter("field")]
    complaints = [field.get("show") for name, field in names if name == "_ws.expert.message"]
    complaints += [proto.get("name") for proto in packet.iter("proto") if proto.get("name") == "_ws.malformed"]
    behind = names[1 + next(i for i, (name, _) in enumerate(names) if name == "omron.command"):]
    fields = [f"{name[6:]}={field.get('show')}" for name, field in behind
              if name.startswith("omron.") and not name.startswith(NAMED_BITS)]
    return [re.sub("^second=.*", "second", field) for field in fields], complaints


PROGRAM = ["program_number=0xffff"]
FLAGGED = ["response.code=0x0040"]
# tshark shows each byte of BCD as a binary number, 26 as 38 and 12 as 18.
TIME = ["year=38", "month=3", "date=1", "hour=18", "minute=0"]



def place(area, word, bit=0):
    return [f"memory.area.read=0x{area:02x}", f"memory.address=0x{word:04x}", f"memory.address.bits=0x{bit:02x}"]


def items(*pairs):
    """Items of a multiple read, each (area, data)."""
    return [text for area, data in pairs for text in (f"memory.area.read=0x{area:02x}", f"response.data={data}")]


def forced(*bits):
    """Bits of a forced set, each (what is done, area, word and bit)."""
    return [text for action, area, bit in bits for text in (
        f"set_reset_specification=0x{action:04x}", f"memory.area.read=0x{area:02x}", f"bit_flag={bit}")]


# The commands for memory areas, in MONITOR mode, rows as below.
MEMORY = [
    ("0102A00064000001ABCD", [*place(0xA0, 0x64), "memory.numitems=1", "command.data=ab:cd"], "01020000", END),
    ("010120006400000F", [*place(0x20, 0x64), "memory.numitems=15"], "01010000" "01000101" "00000101" "01010001" "000100",
     [*END, "response.data=01:00:01:01:00:00:01:01:01:01:00:01:00:01:00"]),
    ("010382000A0000031234", [*place(0x82, 10), "memory.numitems=3", "command.data=12:34"], "01030000", END),
    ("010582000A0082000B000003", [*place(0x82, 10), *place(0x82, 11), "memory.numitems=3"], "01050000", END),
    ("010182000A000005", [*place(0x82, 10), "memory.numitems=5"], "0101000012341234123412340000",
     [*END, "response.data=12:34:12:34:12:34:12:34:00:00"]),
    ("2301" "0002" "000130006405" "000030006406", ["number_of_bits_flags=2", *forced((1, 0x30, 0x6405), (0, 0x30, 0x6406))],
     "23010000", END),
    ("0101F00064000001", [*place(0xF0, 0x64), "memory.numitems=1"], "0101000000200060",
     [*END, "response.data=00:20:00:60"]),
    ("0101700064040003", [*place(0x70, 0x64, 4), "memory.numitems=3"], "01010000000302",
     [*END, "response.data=00:03:02"]),
    ("0104" "82000A00" "30006405" "DC010000" "A0006400", [
        *place(0x82, 10), *place(0x30, 0x64, 5), *place(0xDC, 0x100), *place(0xA0, 0x64)],
     "01040000" "821234" "3001" "DC00000000" "A0ABCD",
     [*END, *items((0x82, "12:34"), (0x30, "01"), (0xDC, "00:00:00:00"), (0xA0, "ab:cd"))]),
    ("2302", [], "23020000", END),
]

# Lines for the console, and rows: command, its fields, response, its fields; bytes from the command code on, '..' being
# any byte.
SESSION = [
    ("0402", [], "04020000", END),
    ("0401FFFF02", [*PROGRAM, "mode_code=0x02"], "04010000", END),
    ("0C01FFFF", PROGRAM, "0C010000", END),
    ("0C02FFFF", PROGRAM, "0C020000", END),
    ("0C03FFFF", PROGRAM, "0C030000", END),
    *MEMORY,
    ("050100", ["command.data=00"], f"05010000{MODEL}{VERSION}0018{'00' * 38}01901780000819000000{'00' * 2}", [
        *END, "controller.model=CJ2H-CPU68          ", "controller.version=02.01", "system.use=",
        "area_data.program_area_size=400", "area_data.iom_size=23", "area_data.dm_words=32768",
        "area_data.timer_size=8", "area_data.dm_size=25", "area_data.num_steps=0", "area_data.memory_card=0",
        "area_data.memory_card.size=0"]),
    ("050101", ["command.data=01"], f"050100008000{'00' * 30}{'00' * 32}000040", [
        *END, "cpubus_unit.no0=32768", *(f"cpubus_unit.no{unit}=0" for unit in range(1, 16)),
        "cpubus_unit.reserved=", "remote_io_date.sysmac_1=0", "remote_io_date.sysmac_2=0", "pc_status=0x40",
        "pc_status.pdc=0", "pc_status.hi=1", "pc_status.r1=0", "pc_status.r2=0", "pcp_status.rack_num=0"]),
    ("050200", ["unit_address=0x00"], f"050200008200{MODEL}10{ETHERNET}", [
        *END, "unit_nums=130", "unit_address=0x00", "model_number=CJ2H-CPU68          ",
        "unit_address=0x10", "model_number=CJ2B-EIP21          "]),
    ("05021019", ["unit_address=0x10", "unit_nums=25"], f"050200008110{ETHERNET}", [
        *END, "unit_nums=129", "unit_address=0x10", "model_number=CJ2B-EIP21          "]),
    "cycle 65 100.1 0.1",
    ("062001", ["parameter=0x01"], "062000000000028A000003E900000001", [
        *END, "avg_cycle_time=0x0000028a", "max_cycle_time=0x000003e9", "min_cycle_time=0x00000001"]),
    ("062000", ["parameter=0x00"], "06200000", END),
    ("07022603011200", TIME, "07020000", END),
    ("070226030112000006", [*TIME, "second", "day=6"], "07020000", END),
    ("0701", [], "070100002603011200..06", [*END, *TIME, "second", "day=6"]),
    ("08013132", ["data="], "080100003132", [*END, "data="]),
    "message 0 HELLO",
    ("09200001", ["message=0x0001"], f"092000000001{'48454C4C4F'}{'20' * 27}", [
        *END, "message=0x0001", f"read_message=HELLO{' ' * 27}"]),
    ("09204001", ["message=0x4001"], "09200000", END),
    # Flags are no codes that tshark knows; what comes behind them is read all the same.
    "clock 2026-03-01 12:00:00",
    "error fal 5 PUMP",
    ("09208005", ["fals=0x0005"], f"092000400005{'50554D50'}{'20' * 12}", [
        *FLAGGED, "fals=0x0005", f"error_message=PUMP{' ' * 12}"]),
    ("210200000014", ["beginning_record_no=0", "no_of_records=20"], "210211440014000100014105000000..01122603", [
        "response.code=0x1144", "max_no_of_stored_records=20", "no_stored_records=1", "no_of_records=1",
        "error_reset_fals_no=0x4105", "error_reset_fals_no=0x0000", "minute=0", "second", "day=1", "hour=18", "year=38",
        "month=3"]),
    # Of the error code 4105 tshark shows the lower 14 bits.
    ("0601", [], f"0601004005020000800000004105{'50554D50'}{'20' * 12}", [
        *FLAGGED, "status=0x05", "mode_code=0x02", "fatal_error_data=0x0000", "fatal_error_data=0x8000",
        "message=0x0000", "fals=0x0105", f"error_message=PUMP{' ' * 12}"]),
    ("2101FFFE", ["error_reset_fals_no=0xfffe"], "21010000", END),
    ("2103", [], "21030000", END),
    # False alarms: STOP is known without a program number only, the log with everything only.
    ("0402FFFF", ["bad_length="], "04020000", END),
    ("210200050001", ["beginning_record_no=5", "no_of_records=1"], "21021103", ["bad_length="]),
]
# The first one is a false alarm, too: bytes for system use, shown as a text, go on behind a zero.
COMPLAINTS = ["Trailing stray characters", "Unexpected Length (Should be 0)", "_ws.malformed", "Unexpected Length",
              "_ws.malformed"]


class CpuCommands(unittest.TestCase):
    maxDiff = None

    def test_every_command_and_response(self):
        plc = Simulator(PROGRAMS.plc)
        self.addCleanup(plc.close)
        recorder = Recorder(plc.port)
        self.addCleanup(recorder.close)
        client = Client(recorder.port)
        for step in SESSION:
            if isinstance(step, str):
                plc.tell(step)
                continue
            command, _, response, _ = step
            self.assertRegex(client.ask(command)[16:].hex().upper(), f"^{heads(command)[1]}{response}$", command)
        client.close()
        (connection,) = recorder.take()
        packets = list(packets_of(connection.segments))[2:]
        seen = [decoded(packet) for _, packet in packets]
        rows = [step for step in SESSION if not isinstance(step, str)]
        self.assertEqual([way for way, _ in packets], [REQUEST, REPLY] * len(rows))
        for i, (command, request, _, response) in enumerate(rows):
            with self.subTest(command):
                self.assertEqual(seen[2 * i][0], request)
                self.assertEqual(seen[2 * i + 1][0], response)
        self.assertEqual([text for _, complaints in seen for text in complaints], COMPLAINTS)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--plc", required=True)
    _, rest = parser.parse_known_args(namespace=PROGRAMS)
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == "__main__":
    main()
