#!/usr/bin/env python3
"""Judges what fins_panel says of its writes by the PLC's memory, on a link that loses, delays and doubles frames.

Each command that writes has a fault proxy and addresses of its own, drawn from the seed and its number. When it has
ended and all held frames have landed, the simulator tells what its memory holds. Ends with 1 if anything that the panel
said was not so. '--only NUMBER' repeats one command, and shows everything about it.
"""

import argparse
import asyncio
import collections
import itertools
import os
import signal
import sys
import tempfile
from pathlib import Path

from fault_proxy import FaultProxy
from orders import BLOCK_WORDS, RECIPE, WATCH, draw_command
from report import (DONE, HALF_WRITTEN, NOT_SENT, OLD, OUTCOMES, REFUSED, UNCONFIRMED, WRITTEN, Run, judge,
                    lie_counts)

sys.path.append(str(Path(__file__).resolve().parents[1] / "support"))
from simulator import DEADLINE_S, Simulator


def state(command, place, words):
    """What `words`, the command's block of DM, hold of one order. What the PLC refuses has no memory."""
    if place is None:
        return OLD
    first = place.word - command.first_word
    if place.bit is not None:
        return WRITTEN if (words[first] ^ command.fill) >> place.bit & 1 else OLD
    written = [held == wanted for held, wanted in zip(words[first:], place.words)]
    if all(written):
        return WRITTEN
    return HALF_WRITTEN if any(written) else OLD


class Memory:
    """The simulator's memory, by its console."""

    def __init__(self, simulator):
        self.simulator = simulator

    def fill(self, command):
        words = " ".join([str(command.fill)] * BLOCK_WORDS)
        self.simulator.tell(f"write DM:{command.first_word} {words}")

    def read(self, command):
        answer = self.simulator.tell(f"read DM:{command.first_word}:{BLOCK_WORDS}")
        return [int(word) for word in answer.split()[1:]]

    def states(self, command):
        """What the memory holds of each order."""
        words = self.read(command)
        return [state(command, place, words) for place in command.places]


async def run_panel(panel, command, port, folder):
    arguments = list(command.arguments)
    words = [command.kind]
    if command.kind == RECIPE:
        file = Path(folder) / f"{command.number}.txt"
        file.write_text(command.recipe, encoding="ascii")
        words, arguments = ["recipe", "write"], [str(file)] + arguments
    process = await asyncio.create_subprocess_exec(*panel, *words, f"127.0.0.1:{port}", *arguments,
                                                   stdin=asyncio.subprocess.DEVNULL, stdout=asyncio.subprocess.PIPE,
                                                   stderr=asyncio.subprocess.PIPE)
    ending = asyncio.ensure_future(process.communicate())
    if command.signal:
        name, seconds = command.signal
        await asyncio.wait({ending}, timeout=seconds)
        if process.returncode is None:
            process.send_signal(getattr(signal, name))
    _, late = await asyncio.wait({ending}, timeout=DEADLINE_S)
    if late:
        process.kill()
    out, err = await ending
    return Run(None if late else process.returncode, out.decode(), err.decode())


class Claims:
    """The commands of one seed, run by several workers."""

    def __init__(self, options, simulator, folder):
        self.options, self.folder = options, folder
        self.simulator = simulator
        self.memory = Memory(simulator)
        self.numbers = itertools.count(options.only or 0)
        self.items = 0
        self.commands = 0
        self.told = collections.Counter()
        self.lies = []

    async def work(self):
        while self.items < self.options.items:
            command = draw_command(self.options.seed, next(self.numbers))
            self.items += len(command.orders)
            self.commands += 1
            await self.try_command(command)

    async def try_command(self, command):
        log = []
        self.memory.fill(command)
        proxy = FaultProxy(("127.0.0.1", self.simulator.port), f"{self.options.seed} {command.number}", command.faults,
                           log.append)
        panel = [self.options.panel, "--library", self.options.library]
        run = await run_panel(panel, command, proxy.port, self.folder)
        await proxy.drain()
        held = self.memory.states(command)
        lies, told = judge(command.orders, held, run, command.kind == WATCH)
        self.told.update(told)
        self.lies += lies
        if lies or self.options.only is not None:
            self.show(command, run, held, lies, log)

    def show(self, command, run, held, lies, log):
        print(f"--- seed {self.options.seed}, command {command.number}: {'; '.join(lies) or 'all true'}")
        print("fins_panel", "recipe write" if command.kind == RECIPE else command.kind, *command.arguments)
        print(f"exit code {run.code}; {command.signal or 'no signal'}; {command.faults}")
        for order, place, state in zip(command.orders, command.places, held):
            print(f"  {order.name} = {order.value}: {state if place else 'refused by the PLC'}")
        print("".join(f"stdout: {line}\n" for line in run.out.splitlines()), end="")
        print("".join(f"stderr: {line}\n" for line in run.err.splitlines()), end="")
        print("".join(f"proxy: {line}\n" for line in log), end="", flush=True)


async def run_claims(options):
    simulator = Simulator(options.plc, "--profile", "cp1l", "--clients", "16")
    try:
        with tempfile.TemporaryDirectory() as folder:
            claims = Claims(options, simulator, folder)
            await asyncio.gather(*[claims.work() for _ in range(options.workers)])
    finally:
        simulator.close()
    return claims


def show_table(claims):
    for outcome in OUTCOMES:
        print(f"  {outcome:36}{claims.told[outcome]:8}")
    for lie, count in lie_counts(claims.lies).items():
        print(f"  {lie:36}{count:8}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    for program in ("plc", "panel", "library"):
        parser.add_argument(f"--{program}", required=True, help="built program or library")
    parser.add_argument("--seed", type=int, default=2)
    parser.add_argument("--items", type=int, default=300, help="items to write at least (%(default)s)")
    parser.add_argument("--workers", type=int, default=2 * os.cpu_count(), help="commands at a time (%(default)s)")
    parser.add_argument("--only", type=int, metavar="NUMBER", help="run only this command of the seed")
    options = parser.parse_args()
    if options.only is not None:
        options.items, options.workers = 1, 1
    claims = asyncio.run(run_claims(options))
    show_table(claims)
    unseen = [outcome for outcome in (DONE, REFUSED, UNCONFIRMED, NOT_SENT) if not claims.told[outcome]]
    if unseen and options.only is None:
        print(f"proves too little: nothing was {' or '.join(unseen)}")
        sys.exit(1)
    print("fails" if claims.lies else "holds", f"for {claims.items} items in {claims.commands} commands")
    sys.exit(1 if claims.lies else 0)


if __name__ == "__main__":
    main()
