#!/usr/bin/env python3
"""Counts what becomes of the operating mode of a PLC in PROGRAM mode that refuses writes, when replies get lost.

Each run is a write of one item, of three, or of a recipe to a simulator of its own with one fault; half of the runs
have consent to change the mode. Ends with 1 if a PLC was switched without consent, or was switched and the panel does
not say so, or was not switched and the panel says it was; or if what it says of a write is not so.
"""

import argparse
import collections
import concurrent.futures
import os
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from report import LIES as WRITE_LIES
from report import OLD, PERHAPS_SWITCHED, SWITCHED, WRITTEN, Order, judge, lie_counts

sys.path.append(str(Path(__file__).resolve().parents[1] / "support"))
from simulator import DEADLINE_S, Simulator

# Chances at which the write is often refused, and the reply to the mode change often lost.
FAULTS = ("drop@0.3", "close@0.3", "wrong-sid@0.3", "silence@0.2")

UNASKED = "switched without consent"
UNSAID = "switched, not said"
UNTRUE = "said switched, not switched"
ASKED = "asked for the mode without consent"
LIES = (UNASKED, UNSAID, UNTRUE, ASKED)

ORDERS = [Order("DM:100", "5"), Order("DM:110", "6"), Order("DM:120", "7")]  # too far apart for one request
Run = collections.namedtuple("Run", "code out err mode held")


def lies_of(run, orders, consent):
    lines = run.err.splitlines()
    says_switched = SWITCHED in lines
    switched = run.mode != "program"
    found = {
        UNASKED: switched and not consent,
        UNSAID: switched and not (says_switched or PERHAPS_SWITCHED in lines),
        UNTRUE: says_switched and not switched,
        ASKED: not consent and any("asking the PLC" in line for line in lines),
    }
    return [lie for lie, is_so in found.items() if is_so] + judge(orders, run.held, run, False)[0]


def wait_for_no_clients(simulator):
    """Then the PLC has carried out all that it got."""
    deadline = time.monotonic() + DEADLINE_S
    while simulator.tell("clients") != "ok 0":
        if time.monotonic() > deadline:
            raise TimeoutError("the panel's connection did not end")
        time.sleep(0.002)


def order(seed, recipe):
    """What a run writes, and the words of the command line for it before and behind the host."""
    if seed % 3 == 2:
        return ORDERS, ["recipe", "write"], [recipe]
    orders = ORDERS[:1] if seed % 3 == 0 else ORDERS
    return orders, ["write"], [f"{name}={value}" for name, value in orders]


def run_once(options, fault, consent, seed):
    """The lies of one run, and whether the PLC was switched."""
    simulator = Simulator(options.plc, "--mode", "program", "--refuse-writes-in-program", "--fault", fault, "--seed",
                          str(seed))
    try:
        orders, words, items = order(seed, options.recipe)
        command = [options.panel, "--library", options.library, *words, f"127.0.0.1:{simulator.port}", *items,
                   "--timeout", "50", "--give-up", "1", "--retries", str(seed // 3 % 3 + 2)]
        panel = subprocess.run(command + ["--allow-mode-change"] * consent, stdin=subprocess.DEVNULL,
                               capture_output=True, text=True, timeout=DEADLINE_S)
        wait_for_no_clients(simulator)
        held = [WRITTEN if simulator.tell(f"read {name}") == f"ok {value}" else OLD for name, value in orders]
        run = Run(panel.returncode, panel.stdout, panel.stderr, simulator.tell("mode").removeprefix("ok "), held)
    finally:
        simulator.close()
    lies = lies_of(run, orders, consent)
    if lies:
        show(fault, consent, seed, run, lies)
    return lies, run.mode != "program"


def show(fault, consent, seed, run, lies):
    text = f"--- --fault {fault} --seed {seed}{' with consent' * consent}: {'; '.join(lies)}\n"
    text += f"exit code {run.code}; the PLC is in {run.mode} mode; {', '.join(run.held)}\n"
    text += "".join(f"stdout: {line}\n" for line in run.out.splitlines())
    print(text + "".join(f"stderr: {line}\n" for line in run.err.splitlines()), end="", flush=True)


def count_runs(options, pool, fault, consent):
    """How many of the runs switched the PLC, and the lies told in all of them."""
    seeds = range(options.seed, options.seed + options.runs)
    runs = list(pool.map(lambda seed: run_once(options, fault, consent, seed), seeds))
    return sum(switched for _, switched in runs), [lie for lies, _ in runs for lie in lies]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    for program in ("plc", "panel", "library"):
        parser.add_argument(f"--{program}", required=True, help="built program or library")
    parser.add_argument("--seed", type=int, default=1, help="seed of the first run of each kind (%(default)s)")
    parser.add_argument("--runs", type=int, default=10, help="of each kind (%(default)s)")
    parser.add_argument("--workers", type=int, default=2 * os.cpu_count(), help="runs at a time (%(default)s)")
    options = parser.parse_args()
    switched = 0
    lies = []
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(options.workers) as pool:
        options.recipe = os.path.join(folder, "recipe.txt")
        Path(options.recipe).write_text("".join(f"{name} = {value}\n" for name, value in ORDERS), encoding="ascii")
        for fault in FAULTS:
            for consent in (False, True):
                more_switched, more_lies = count_runs(options, pool, fault, consent)
                print(f"{fault:14}{'with' if consent else 'without'} consent: {options.runs} runs, {more_switched} "
                      f"switched, {len(more_lies)} times not told the truth", flush=True)
                switched += more_switched
                lies += more_lies
    for lie, count in lie_counts(lies, LIES + WRITE_LIES).items():
        print(f"  {lie:36}{count:8}")
    if not switched:
        print("proves too little: no PLC was switched")
        sys.exit(1)
    print("fails" if lies else "holds", f"for {2 * len(FAULTS) * options.runs} writes; {switched} switched the PLC")
    sys.exit(1 if lies else 0)


if __name__ == "__main__":
    main()
