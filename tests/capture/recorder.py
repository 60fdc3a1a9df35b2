"""A relay between a client and a PLC that keeps every byte, and tshark's reading of them.

The relay sits on the loopback interface, so nothing needs the rights to capture. Each connection becomes a capture file
by text2pcap, and tshark decodes it with its own FINS dissector.
"""

import socket
import subprocess
import tempfile
import threading
import xml.etree.ElementTree
from pathlib import Path

DEADLINE_S = 30
REQUEST, REPLY = "O", "I"  # text2pcap's marks for outbound and inbound


def receive_frame(connection):
    """The next FINS/TCP frame from a socket, in bytes."""
    def take(count):
        taken = b""
        while len(taken) < count:
            piece = connection.recv(count - len(taken))
            if not piece:
                raise EOFError("the connection has ended")
            taken += piece
        return taken

    head = take(8)
    return head + take(int.from_bytes(head[4:], "big"))


class Connection:
    """One relayed TCP connection: what went which way, in order, each (REQUEST or REPLY, bytes)."""

    def __init__(self, client, plc):
        self.segments = []
        self.sockets = (client, plc)
        self.lock = threading.Lock()
        self.threads = [
            threading.Thread(target=self.relay, args=(client, plc, REQUEST), daemon=True),
            threading.Thread(target=self.relay, args=(plc, client, REPLY), daemon=True),
        ]

    def start(self):
        for thread in self.threads:
            thread.start()

    def relay(self, source, target, direction):
        try:
            while segment := source.recv(65536):
                with self.lock:
                    self.keep(direction, segment)
                    target.sendall(segment)
            target.shutdown(socket.SHUT_WR)
        except OSError:
            pass  # the other direction has ended the connection

    def keep(self, direction, segment):
        """Adds to the last segment if the direction is the same: where TCP cuts the stream means nothing."""
        if self.segments and self.segments[-1][0] == direction:
            segment = self.segments.pop()[1] + segment
        self.segments.append((direction, segment))

    def wait_for_end(self):
        for thread in self.threads:
            thread.join(DEADLINE_S)
            if thread.is_alive():
                raise TimeoutError("a connection did not end")
        for end in self.sockets:
            end.close()


class Recorder:
    """Listens on a free port, `port`, and relays every connection to the PLC at `plc_port`."""

    def __init__(self, plc_port):
        self.plc_port = plc_port
        self.connections = []
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        while True:
            try:
                client, _ = self.listener.accept()
            except OSError:
                return
            plc = socket.create_connection(("127.0.0.1", self.plc_port))
            connection = Connection(client, plc)
            self.connections.append(connection)
            connection.start()

    def close(self):
        self.listener.close()

    def take(self):
        """The connections since the last call, once they have ended."""
        taken, self.connections = self.connections, []
        for connection in taken:
            connection.wait_for_end()
        return taken


def hex_dump(segments):
    """The input of text2pcap."""
    return "".join(f"{direction}\n0000 {segment.hex(' ')}\n" for direction, segment in segments)


def packets_in(capture, *options):
    """The packets of a file as tshark decodes them, with the ways they go: (REQUEST or REPLY, XML element)."""
    pdml = subprocess.run(["tshark", "-r", str(capture), *options, "-T", "pdml"], check=True, capture_output=True,
                          timeout=DEADLINE_S).stdout
    for packet in xml.etree.ElementTree.fromstring(pdml).iter("packet"):
        ports = {field.get("name"): field.get("show") for field in packet.iter("field")}
        yield REQUEST if ports["tcp.dstport"] == "9600" else REPLY, packet


def packets_of(segments):
    """The same of a connection."""
    with tempfile.TemporaryDirectory() as folder:
        capture = Path(folder) / "session.pcap"
        subprocess.run(["text2pcap", "-q", "-D", "-T", "9600,50000", "-", str(capture)], input=hex_dump(segments),
                       text=True, check=True, capture_output=True, timeout=DEADLINE_S)
        yield from packets_in(capture)


def frames_of(packets):
    """Every FINS/TCP frame in the packets: (REQUEST or REPLY, {field: value}). Fails when one is malformed."""
    frames = []
    for direction, packet in packets:
        if "_ws.malformed" in {proto.get("name") for proto in packet.iter("proto")}:
            raise AssertionError("tshark calls a frame malformed")
        for proto in packet.iter("proto"):
            if proto.get("name") == "omron":
                frames.append((direction, {field.get("name"): field.get("show") for field in proto.iter("field")}))
    return frames


def read_capture(capture, *options):
    """Every FINS/TCP frame that tshark finds in a file, see frames_of()."""
    return frames_of(packets_in(capture, *options))


def read_by_tshark(segments):
    """Every FINS/TCP frame that tshark finds in a connection, see frames_of(). Fails when the frames do not account for every
    byte."""
    frames = frames_of(packets_of(segments))
    lengths = {REQUEST: 0, REPLY: 0}
    for direction, frame in frames:
        lengths[direction] += 8 + int(frame["omron.tcp.length"])
    for direction, length in lengths.items():
        sent = sum(len(segment) for way, segment in segments if way == direction)
        if sent != length:
            raise AssertionError(f"{sent} bytes went '{direction}', tshark found frames of {length}")
    return frames


def describe(direction, frame):
    """One line for a decoded frame, such as '> 0101 82 0064.00 x10 sid 1' or '< 0101 0000 sid 1 data 0001'."""

    def number(name):
        return int(frame[f"omron.{name}"], 0)

    def data(name):
        found = frame.get(f"omron.{name}")
        return f" data {found.replace(':', '')}" if found else ""

    if frame["omron.tcp.magic"] != "0x46494e53" or number("tcp.error_code") != 0:
        return f"error {frame}"
    if number("tcp.command") == 0:
        return f"> handshake client {number('tcp.client_node_address')}"
    if number("tcp.command") == 1:
        return f"< handshake client {number('tcp.client_node_address')} server {number('tcp.server_node_address')}"

    nodes = f"{number('sa1')}->{number('da1')}"
    if any(number(name) for name in ("rsv", "dna", "da2", "sna", "sa2")):
        return f"not local: {frame}"
    head = f"{number('command'):04X} sid {number('sid')} {nodes}"
    if direction == REPLY:
        return f"< {head} icf {number('icf'):02X} end {number('response.code'):04X}{data('response.data')}"
    head = f"> {head} icf {number('icf'):02X}"
    if "omron.program_number" in frame:
        return f"{head} program {number('program_number'):04X} mode {number('mode_code'):02X}"
    if "omron.memory.address" not in frame:
        return head
    address = f"{number('memory.address'):04X}.{number('memory.address.bits'):02X}"
    return f"{head} area {number('memory.area.read'):02X} {address} x{number('memory.numitems')}{data('command.data')}"
