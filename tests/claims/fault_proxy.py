#!/usr/bin/env python3
"""Stands between panels and a PLC, and drops, delays, cuts, doubles, reorders and refuses FINS/TCP frames by a seed.

Prints 'listening on HOST:PORT' and forwards each connection, in whole frames. What happens to a frame is drawn from the
seed, the number of the connection, the direction and the number of the frame alone, so that equal seeds give equal
decisions. A request that is held back reaches the PLC even after the panel has closed its side: a write that lands
later. Ends with its standard input or after --for seconds.
"""

import argparse
import asyncio
import collections
import itertools
import os
import random
import socket
import sys
import threading

REQUEST, REPLY = ">", "<"
PASS, DROP, DELAY, CUT, DOUBLE, REORDER, REFUSE = "pass", "drop", "delay", "cut", "double", "reorder", "refuse"
FATES = (DROP, DELAY, CUT, DOUBLE, REORDER, REFUSE)

HEADER_SIZE = 8        # "FINS" and the number of bytes that follow
LONGEST_FRAME = 4096   # what claims to be longer is no frame; it is forwarded as it came
COMMAND_SIZE = 28      # FINS/TCP header, FINS header and command code
FINS_COMMAND = bytes([0, 0, 0, 2])       # a frame with a FINS command, as opposed to one of the node addresses
REFUSED_END_CODE = bytes([0x21, 0x08])   # the data cannot be changed
DRAIN_S = 20           # the PLC closes its side within this time after the last request

# The probability of each fate, and how long a frame waits at most that is delayed, or held to be sent out of its order.
Faults = collections.namedtuple("Faults", (*FATES, "delay_ms", "hold_ms"), defaults=(0,) * 8)
Decision = collections.namedtuple("Decision", "fate share")  # share, 0 to 1: of the frame or of the longest wait


class Dice:
    """The decisions for one direction of one connection. Each takes two numbers, so that none shifts the next."""

    def __init__(self, faults, seed, connection, direction):
        self.faults = faults
        self.random = random.Random(f"{seed} {connection} {direction}")

    def throw(self):
        left, share = self.random.random(), self.random.random()
        for fate in FATES:
            left -= getattr(self.faults, fate)
            if left < 0:
                return Decision(fate, share)
        return Decision(PASS, share)


def refusal_of(frame):
    """The reply with an end code to a FINS command, empty to any other frame."""
    if len(frame) < COMMAND_SIZE or frame[8:12] != FINS_COMMAND:
        return b""
    tcp_header = frame[:4] + (COMMAND_SIZE + 2 - HEADER_SIZE).to_bytes(4, "big") + frame[8:16]
    source, destination = frame[22:25], frame[19:22]
    return (tcp_header + bytes([0xC0]) + frame[17:19] + source + destination + frame[25:COMMAND_SIZE]
            + REFUSED_END_CODE)


async def read_frame(reader):
    """The next frame, or what there is where the stream ends or is no FINS/TCP; empty at its end."""
    header = b""
    try:
        header = await reader.readexactly(HEADER_SIZE)
        length = int.from_bytes(header[4:], "big")
        if header[:4] != b"FINS" or length > LONGEST_FRAME:
            return header + await reader.read(LONGEST_FRAME)
        return header + await reader.readexactly(length)
    except asyncio.IncompleteReadError as end:
        return header + end.partial
    except OSError:
        return b""


class Direction:
    """One way of a connection: takes frames from `reader` and sends them, or not, to `writer`."""

    def __init__(self, connection, name, reader, writer):
        self.connection = connection
        self.name = name
        self.reader, self.writer = reader, writer
        self.dice = Dice(connection.faults, connection.seed, connection.number, name)
        self.frames = asyncio.Queue()
        self.held = {}  # frames that wait for the next one, by number, each with the task that does not wait for it
        self.is_cut = False

    async def run(self):
        """Returns when the reader is at its end, and all that it gave has been sent or dropped."""
        reading = asyncio.ensure_future(self.read())
        try:
            for number in itertools.count(1):
                frame = await self.frames.get()
                if not frame:
                    break
                await self.meet(number, frame)
            await asyncio.gather(*[task for task, _ in self.held.values()])
        finally:
            reading.cancel()
            self.forget_held()

    async def read(self):
        while frame := await read_frame(self.reader):
            self.frames.put_nowait(frame)
        self.frames.put_nowait(b"")

    async def meet(self, number, frame):
        """Does to the frame what the dice say."""
        if self.is_cut:
            return
        decision = self.dice.throw()
        self.connection.note(self.name, number, decision)
        if decision.fate == CUT:
            self.send(frame[:max(1, int(decision.share * len(frame)))])
            self.cut()
            return
        if decision.fate == REORDER:
            self.held[number] = (asyncio.ensure_future(self.release_later(number, decision)), frame)
            return
        if decision.fate == DELAY:
            await asyncio.sleep(decision.share * self.connection.faults.delay_ms / 1000)
        refusal = refusal_of(frame) if decision.fate == REFUSE and self.name == REQUEST else b""
        if refusal:
            self.connection.replies.send(refusal)
        elif decision.fate != DROP:
            self.send(frame * (2 if decision.fate == DOUBLE else 1))
        for held in list(self.held):
            self.release(held)

    def cut(self):
        """Nothing more may follow a part of a frame. The panel's side closes at once, and with it the PLC's."""
        self.is_cut = True
        self.forget_held()
        self.connection.close_panel()

    async def release_later(self, number, decision):
        await asyncio.sleep(decision.share * self.connection.faults.hold_ms / 1000)
        self.send(self.held.pop(number)[1])

    def release(self, number):
        task, frame = self.held.pop(number)
        task.cancel()
        self.send(frame)

    def forget_held(self):
        for task, _ in self.held.values():
            task.cancel()
        self.held.clear()

    def send(self, data):
        if not self.writer.is_closing():
            self.writer.write(data)


class Connection:
    """A panel's connection and the one to the PLC that goes with it."""

    def __init__(self, proxy, number, panel, plc):
        self.faults, self.seed, self.number = proxy.faults, proxy.seed, number
        self.note = lambda direction, frame, decision: proxy.note(number, direction, frame, decision)
        self.close_panel = panel[1].close
        self.plc_writer = plc[1]
        self.requests = Direction(self, REQUEST, panel[0], plc[1])
        self.replies = Direction(self, REPLY, plc[0], panel[1])

    async def run(self):
        """Returns when the PLC has closed its side, and so has carried out all that it got."""
        try:
            await asyncio.gather(self.run_requests(), self.run_replies())
        finally:
            self.close_panel()
            self.plc_writer.close()

    async def run_requests(self):
        await self.requests.run()
        try:
            self.plc_writer.write_eof()
        except OSError:
            pass  # the PLC has closed the connection

    async def run_replies(self):
        await self.replies.run()
        self.close_panel()  # what the panel has sent before still goes to the PLC


class FaultProxy:
    """Listens on a free port of the loopback interface, `port`."""

    def __init__(self, plc, seed, faults, log=None):
        self.plc, self.seed, self.faults, self.log = plc, seed, faults, log
        self.connections = []
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.listener.setblocking(False)
        self.port = self.listener.getsockname()[1]
        self.accepting = asyncio.ensure_future(self.accept())

    async def accept(self):
        for number in itertools.count():
            panel, _ = await asyncio.get_running_loop().sock_accept(self.listener)
            self.connections.append(asyncio.ensure_future(self.forward(number, panel)))

    async def forward(self, number, panel):
        with panel:
            try:
                plc = await asyncio.open_connection(*self.plc)
                await Connection(self, number, await asyncio.open_connection(sock=panel), plc).run()
            except OSError as error:
                self.say(f"connection {number}: {error}")

    async def drain(self):
        """Takes no more connections, and waits until those there are have ended and all that was held back has reached
        the PLC."""
        await self.stop_listening()
        await asyncio.wait_for(asyncio.gather(*self.connections), DRAIN_S)

    async def close(self):
        await self.stop_listening()
        for connection in self.connections:
            connection.cancel()
        await asyncio.gather(*self.connections, return_exceptions=True)

    async def stop_listening(self):
        self.accepting.cancel()
        await asyncio.gather(self.accepting, return_exceptions=True)
        self.listener.close()

    def note(self, connection, direction, frame, decision):
        if decision.fate == PASS:
            return
        amount = {DELAY: f" {decision.share * self.faults.delay_ms:.0f} ms", CUT: f" to {decision.share:.0%}",
                  REORDER: f", at most {decision.share * self.faults.hold_ms:.0f} ms"}.get(decision.fate, "")
        self.say(f"connection {connection} {direction} frame {frame}: {decision.fate}{amount}")

    def say(self, line):
        if self.log:
            self.log(line)


def number_from(kind, least, most):
    """Reads an option's number."""
    def read(text):
        try:
            if least <= kind(text) <= most:
                return kind(text)
        except ValueError:
            pass
        raise argparse.ArgumentTypeError(f"'{text}' is out of range; use {least} to {most}")
    return read


def address(text):
    host, _, port = text.rpartition(":")
    if not host or not port.isdigit() or not 0 < int(port) < 65536:
        raise argparse.ArgumentTypeError(f"'{text}' is no HOST:PORT")
    return host.strip("[]"), int(port)


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--plc", type=address, required=True, metavar="HOST:PORT", help="where to forward to")
    parser.add_argument("--seed", type=int, default=1, help="equal seeds give equal decisions (%(default)s)")
    meanings = {DROP: "lost", DELAY: "sent late, and all behind it", CUT: "sent in part, and both sides closed",
                DOUBLE: "sent twice", REORDER: "sent behind the next one, or later if none comes",
                REFUSE: "not sent to the PLC but answered with an end code"}
    for fate in FATES:
        parser.add_argument(f"--{fate}", type=number_from(float, 0, 1), default=0, metavar="P",
                            help=f"probability with which a frame is {meanings[fate]} (0)")
    parser.add_argument("--delay-ms", type=number_from(int, 0, 60000), default=100, metavar="MS",
                        help="longest delay (%(default)s)")
    parser.add_argument("--hold-ms", type=number_from(int, 0, 60000), default=500, metavar="MS",
                        help="longest wait of a reordered frame for the next one (%(default)s)")
    parser.add_argument("--for", type=number_from(float, 0, 86400), default=600, dest="seconds", metavar="SECONDS",
                        help="time after which it ends (%(default)s)")
    parser.add_argument("--log", action="store_true", help="show on standard error what is done to which frame")
    arguments = parser.parse_args()
    if sum(getattr(arguments, fate) for fate in FATES) > 1:
        parser.error("the probabilities add up to more than 1")
    return arguments


async def serve(arguments):
    faults = Faults(*[getattr(arguments, name) for name in Faults._fields])
    log = (lambda line: print(line, file=sys.stderr, flush=True)) if arguments.log else None
    proxy = FaultProxy(arguments.plc, arguments.seed, faults, log)
    print(f"listening on 127.0.0.1:{proxy.port}", flush=True)
    ended = asyncio.Event()
    loop = asyncio.get_running_loop()

    def wait_for_end_of_input():
        while os.read(sys.stdin.fileno(), 4096):
            pass
        loop.call_soon_threadsafe(ended.set)

    threading.Thread(target=wait_for_end_of_input, daemon=True).start()
    try:
        await asyncio.wait_for(ended.wait(), arguments.seconds)
    except asyncio.TimeoutError:
        pass
    await proxy.close()


if __name__ == "__main__":
    asyncio.run(serve(parse_arguments()))
