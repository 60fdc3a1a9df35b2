#!/usr/bin/env python3
"""What fins_plc records as a capture, by itself and as a proxy, opened and judged by tshark. The expected lines are typed
from the protocol."""

import argparse
import socket
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from recorder import DEADLINE_S, describe, read_capture, receive_frame

sys.path.append(str(Path(__file__).resolve().parents[1] / "support"))
from simulator import Simulator

PROGRAMS = argparse.Namespace()
CHECKSUMS = ("-o", "ip.check_checksum:TRUE", "-o", "tcp.check_checksum:TRUE")

HANDSHAKE = "46494E53 0000000C 00000000 00000000 00000000"
READ = "46494E53 0000001A 00000002 00000000 8000 02 000100 00EF00 {sid} 0101 82 0064 00 0002"
STOP = "46494E53 00000014 00000002 00000000 8000 02 000100 00EF00 {sid} 0402"

# Handshake of TCP, six frames, end of TCP: the first column is tshark's of what it finds worth a remark.
FLAGS = ["0x0002", "0x0012", "0x0010", *6 * ["0x0018"], "0x0011", "0x0011", "0x0010"]
FRAMES = [
    "> handshake client 0",
    "< handshake client 239 server 1",
    "> 0101 sid 1 239->1 icf 80 area 82 0064.00 x2",
    "< 0101 sid 1 1->239 icf C0 end 0000 data 012cffff",
    "> 0402 sid 2 239->1 icf 80",
    "< 0402 sid 2 1->239 icf C0 end 0000",
]


class Client:
    def __init__(self, port):
        self.socket = socket.create_connection(("127.0.0.1", port), DEADLINE_S)
        self.port = self.socket.getsockname()[1]

    def ask(self, request):
        """Sends one byte at a time; returns the reply as it came."""
        for byte in bytes.fromhex(request):
            self.socket.sendall(bytes([byte]))
        return receive_frame(self.socket)

    def close(self):
        self.socket.close()


def fields(capture, *names):
    columns = [option for name in names for option in ("-e", name)]
    lines = subprocess.run(["tshark", "-r", str(capture), *CHECKSUMS, "-T", "fields", *columns], check=True,
                           capture_output=True, text=True, timeout=DEADLINE_S).stdout.splitlines()
    return [line.split("\t") for line in lines]


class Recording(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.capture = Path(folder.name) / "a.pcap"

    def start(self, *options):
        program = Simulator(PROGRAMS.plc, *options)
        self.addCleanup(program.close)
        return program

    def converse(self, port):
        client = Client(port)
        client.ask(HANDSHAKE)
        client.ask(READ.format(sid="01"))
        client.ask(STOP.format(sid="02"))
        client.close()
        return client.port

    def expect_capture(self, client_port):
        self.assertEqual([describe(*frame) for frame in read_capture(self.capture, *CHECKSUMS)], FRAMES)
        packets = fields(self.capture, "tcp.flags", "tcp.analysis.flags", "ip.checksum.status", "tcp.checksum.status")
        self.assertEqual(packets, [[flags, "", "1", "1"] for flags in FLAGS])
        ports = {tuple(pair) for pair in fields(self.capture, "tcp.srcport", "tcp.dstport")}
        self.assertEqual(ports, {(str(client_port), "9600"), ("9600", str(client_port))})

    def test_of_the_proxy(self):
        plc = self.start()
        plc.tell("write DM:100 300 65535")
        proxy = self.start("--proxy", f"127.0.0.1:{plc.port}", "--record", str(self.capture))
        port = self.converse(proxy.port)
        while proxy.read_line() != "#1 ends":
            pass
        self.expect_capture(port)

    def test_of_the_simulator(self):
        plc = self.start("--record", str(self.capture))
        plc.tell("write DM:100 300 65535")
        port = self.converse(plc.port)
        while plc.tell("clients") != "ok 0":
            pass
        self.expect_capture(port)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--plc", required=True)
    _, rest = parser.parse_known_args(namespace=PROGRAMS)
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == "__main__":
    main()
