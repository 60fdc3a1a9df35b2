#!/usr/bin/env python3
"""Runs the benchmarks of one build folder and prints one table: the bars, the measured figures, met or not.

usage: bars.py BUILD_FOLDER [--short | --save]

--short counts instructions, allocations and bytes only, and fails if a figure is over its bar. Counts hardly depend on
the machine and on what else runs; times do, and are never a reason to fail. --save writes figures and plot into docs/.
"""

import collections
import json
import math
import os
import pathlib
import platform
import re
import shutil
import statistics
import subprocess
import sys
import tempfile

SOURCE = pathlib.Path(__file__).resolve().parent.parent
PLC_WORDS = 50112
SIZES = [100, 300, 1000, 3000, 10000, 30000, PLC_WORDS]

# Only what runs inside these is counted.
COUNTED = ["intf_getSendFrame", "intf_dealRcvFrame", "intf_getData", "intf_setData", "intf_addrMerge",
           "intf_setRcpAddress", "bench_bareCallbacks"]

Section = collections.namedtuple("Section", "units instructions allocations callbacks")  # all but units: per unit
Row = collections.namedtuple("Row", "bar what measured limit met timed")


def run(command, folder=None):
    """The standard output of a command, which has to succeed."""
    done = subprocess.run([str(part) for part in command], cwd=folder, capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"bench: '{' '.join(map(str, command))}' ended with {done.returncode}:\n{done.stderr}")
    return done.stdout


def spread(values, unit, digits=2):
    """Median (minimum to maximum)."""
    numbers = [f"{number:,.{digits}f}" for number in (statistics.median(values), min(values), max(values))]
    return f"{numbers[0]} ({numbers[1]} to {numbers[2]}) {unit}".rstrip()


class Bench:
    def __init__(self, build, short):
        self.programs = build / "bench"
        self.short = short
        self.rows = []
        self.counted = {}

    def add(self, bar, what, measured, limit, met, timed=False):
        self.rows.append(Row(bar, what, measured, limit, met, timed))
        print(f"  {what}: {measured}", file=sys.stderr, flush=True)

    def count(self, *arguments):
        """The sections of a workload under callgrind, by name. The same workload is counted once."""
        if arguments in self.counted:
            return self.counted[arguments]
        with tempfile.TemporaryDirectory() as folder:
            toggles = [f"--toggle-collect={name}" for name in COUNTED]
            lines = run(["valgrind", "--tool=callgrind", "--callgrind-out-file=counts", *toggles,
                         self.programs / "bench_workload", *arguments], folder).splitlines()
            sections = {}
            for number, line in enumerate(lines, 1):
                name, units, allocations, callbacks = line.split()
                text = (pathlib.Path(folder) / f"counts.{number}").read_text()
                instructions = int(re.search(r"^(?:totals|summary): (\d+)", text, re.MULTILINE).group(1))
                sections[name] = Section(int(units), *(int(figure) / int(units)
                                                       for figure in (instructions, allocations, callbacks)))
        self.counted[arguments] = sections
        return sections

    def workload(self, *arguments):
        """The figures that a workload prints about itself."""
        return [float(figure) for figure in run([self.programs / "bench_workload", *arguments]).split()[1:]]

    # ---- Bars -------------------------------------------------------------------------------------------------

    def poll(self):
        ways = [("shuffled", 4), ("reversed", 1)] if self.short else \
               [(order, tags) for order in ("sorted", "reversed", "shuffled") for tags in (1, 4)]
        small = [self.count("poll", 1000, order, tags, 20)["poll"] for order, tags in ways]
        large = [self.count("poll", PLC_WORDS, order, tags, 2)["poll"] for order, tags in ways]
        most = max(section.instructions for section in small)
        least = min(section.instructions for section in small)
        self.add(1, "steady poll, 1,000 words, any order, 1 or 4 tags",
                 f"{most:,.0f} instructions a request (least {least:,.0f})", "6,000", most <= 6000)
        ratio = max(b.instructions / a.instructions for a, b in zip(small, large))
        self.add(1, f"the same, {PLC_WORDS:,} words",
                 f"{max(section.instructions for section in large):,.0f} instructions, {ratio:.3f} times", "1.25 times",
                 ratio <= 1.25)
        allocations = max(section.allocations for section in small + large)
        self.add(5, "allocations inside the driver, steady poll", f"{allocations:.2f} a request", "6", allocations <= 6)

    def change(self):
        for words, passes in ((1000, 10),) if self.short else ((1000, 10), (PLC_WORDS, 2)):
            sections = self.count("change", words, passes)
            unchanged, changed, bare = (sections[name].instructions for name in ("unchanged", "changed", "callbacks"))
            ratio = (changed - bare) / unchanged
            self.add(2, f"every word and its 16 bits change, {words:,} words",
                     f"{changed:,.0f} - {bare:,.0f} for {sections['changed'].callbacks:,.0f} bare callbacks = "
                     f"{changed - bare:,.0f} instructions, {ratio:.2f} times {unchanged:,.0f}", "3 times", ratio <= 3)

    def access(self):
        names = {"getwords": "intf_getData, 64 words", "getbits": "intf_getData, 64 bits",
                 "setwords": "intf_setData, 64 words", "setbits": "intf_setData, 64 bits"}
        for name, what in names.items():
            small = self.count(name, 1000, 150)[name].instructions / 64
            large = self.count(name, PLC_WORDS, 150)[name].instructions / 64
            self.add(3, what, f"{small:.1f} instructions an item, {large:.1f} on {PLC_WORDS:,} words, "
                     f"{large / small:.3f} times", "1.25 times", large <= 1.25 * small)
        sections = self.count("flood", 2000)
        append, flood = sections["append"].instructions, sections["flood"].instructions
        self.add(3, "a write into the full queue", f"{flood:,.0f} instructions, {flood / append:.2f} times an append of "
                 f"{append:,.0f}", "2 times", flood <= 2 * append)

    def plan(self):
        for name, what in (("plan", "intf_addrMerge"), ("recipe", "intf_setRcpAddress")):
            costs = {words: words * self.count(name, words)[name].instructions for words in (1000, 10000, PLC_WORDS)}
            growth = [costs[words] / costs[1000] / (words * math.log(words) / (1000 * math.log(1000)))
                      for words in (10000, PLC_WORDS)]
            figures = ", ".join(f"{cost / words:,.0f}" for words, cost in costs.items())
            self.add(4, f"{what}, 1,000, 10,000 and {PLC_WORDS:,} items",
                     f"{figures} instructions an item, {growth[0]:.2f} and {growth[1]:.2f} times n log n", "1.2 times",
                     max(growth) <= 1.2)

    def memory(self):
        words, heap, resident = self.workload("memory", PLC_WORDS)
        self.add(5, f"memory for {PLC_WORDS:,} watched words",
                 f"{heap / words:.1f} bytes a word on the heap, {resident / words:.1f} resident", "160",
                 max(heap, resident) <= 160 * words)
        requests, heap, resident = self.workload("growth", 1000, 100000 if self.short else 1000000)
        self.add(5, f"growth over {requests:,.0f} requests with changes and writes",
                 f"{heap:,.0f} bytes of heap, {resident:,.0f} resident", "0", heap <= 0 and resident <= 0)

    def functions(self):
        """Times of the functions: per function and size those of several runs, in turning order."""
        text = run([self.programs / "bench_functions", "--benchmark_repetitions=7", "--benchmark_min_time=0.05",
                    "--benchmark_enable_random_interleaving=true", "--benchmark_format=json"])
        times = collections.defaultdict(list)
        for entry in json.loads(text)["benchmarks"]:
            if entry["run_type"] == "iteration":
                times[entry["run_name"]].append(entry["cpu_time"])
        for name, bar in (("addrMerge", 4), ("setRcpAddress", 4)):
            values = times[f"{name}/{PLC_WORDS}"]
            self.add(bar, f"intf_{name}, {PLC_WORDS:,} items", spread(values, "ms", 1), "1,000 ms",
                     statistics.median(values) < 1000, True)
        for words in (1000, PLC_WORDS):
            self.add("", f"a request, {words:,} words, nothing changed", spread(times[f"poll/{words}"], "ns", 0), "",
                     None, True)
            self.add("", f"a request, {words:,} words, every word and bit changes",
                     spread(times[f"pollChanged/{words}"], "ns", 0), "", None, True)
        return times

    def link(self):
        # Ahead of everything else, where the system permits that; what is compared with bare sends, on one core.
        ahead = ["chrt", "--fifo", "10"]
        if subprocess.run([*ahead, "true"], capture_output=True).returncode != 0:
            ahead = []
        core = [*ahead, "taskset", "-c", str(max(os.sched_getaffinity(0)))]
        for changing, what in ((1, "1 word of 64 changes"), (8, "8 words of 64 change"), (64, "all 64 words change")):
            rounds = collections.defaultdict(dict)
            for line in self.lines(*core, "rounds", 400, 150, changing):
                number, client, elapsed, cpu, delivered, left_out = line
                rounds[number][client] = tuple(float(figure) for figure in (elapsed, cpu, delivered, left_out))
            self.compare(what, list(rounds.values()), is_bar=changing == 1)
            self.compare_threads(what, list(rounds.values()), is_bar=changing == 1)
        calls = [self.system_calls(requests) for requests in (500, 2500)]
        each = (calls[1] - calls[0]) / 2000
        self.add(6, "system calls of fins_panel's loop", f"{each:.2f} a request", "2 to 4", 2 <= each <= 4)
        idle = [float(run([self.programs / "bench_link", "idle", 2000]).split()[1]) for _ in range(5)]
        self.add(6, "CPU while no request is due", spread(idle, "%", 3), "0.5 %", statistics.median(idle) < 0.5, True)
        self.simulator(core)
        self.writes(self.lines(*core, "writes", 60, 20))
        self.many([(self.lines(*ahead, "many", 1, 5)[0], self.lines(*ahead, "many", 100, 5)[0]) for _ in range(5)])

    def lines(self, *arguments):
        """What the link benchmark prints, as lists of words. Before its arguments those of what places it may stand."""
        place = next(i for i, argument in enumerate(arguments) if argument in ("rounds", "servers", "writes", "many"))
        text = run([*arguments[:place], self.programs / "bench_link", *arguments[place:]])
        return [line.split() for line in text.splitlines()]

    def compare(self, what, rounds, is_bar):
        """Paired rounds of the clients. The bar is that of a steady poll, with few changes; the rest is shown."""
        def ratios(place, above, below):
            return [turn[above][place] / turn[below][place] for turn in rounds]

        def add(name, values, other, limit, good):
            met = good(statistics.median(values)) if is_bar else None
            self.add(6 if is_bar else "", f"{name}, {what}", f"{spread(values, '')} of {other}", limit if is_bar else "",
                     met, True)

        for client in ("pingpong", "panel", "libmodbus"):
            elapsed, cpu = ([1e6 * turn[client][place] for turn in rounds] for place in (0, 1))
            self.add("", f"{client}, {what}", f"{spread(elapsed, 'us')} a request, CPU {spread(cpu, 'us')}", "", None,
                     True)
        add("fins_panel's rate", ratios(0, "pingpong", "panel"), "ping-pong", "at least 0.88", lambda rate: rate >= 0.88)
        add("its CPU a request", ratios(1, "panel", "pingpong"), "ping-pong", "1.25", lambda cpu: cpu <= 1.25)
        add("its rate", ratios(0, "libmodbus", "panel"), "libmodbus", "above 1", lambda rate: rate > 1)

    def compare_threads(self, what, rounds, is_bar):
        """The public object, which wakes the application's thread for each reply. The second core is the application's."""
        for suffix, cores, least in (("-2", "two cores", 0.70), ("", "one core", 0.60)):
            if f"plc{suffix}" not in rounds[0]:
                continue
            def ratios(above, below):
                return [turn[above][0] / turn[below + suffix][0] for turn in rounds]

            rates, others = ratios("pingpong", "plc"), ratios("libmodbus", "plc")
            self.add(8 if is_bar else "", f"the public object's rate, {cores}, {what}", f"{spread(rates, '')} of ping-pong",
                     f"at least {least:.2f}" if is_bar else "", statistics.median(rates) >= least if is_bar else None, True)
            is_limit = is_bar and suffix == "-2"
            self.add(8 if is_bar else "", f"its rate, {cores}, {what}", f"{spread(others, '')} of libmodbus",
                     "above 1" if is_limit else "", statistics.median(others) > 1 if is_limit else None, True)
            delivered, left_out = (sum(turn[f"plc{suffix}"][place] for turn in rounds) for place in (2, 3))
            self.add(8 if is_bar else "", f"its changes left out for later ones, {cores}, {what}",
                     f"{100 * left_out / (delivered + left_out):.1f} %", "", None, True)
            self.add(8 if is_bar else "", f"a thread woken for each reply, {cores}, {what}",
                     f"{spread(ratios('pingpong', 'woken'), '')} of ping-pong", "", None, True)

    def writes(self, lines):
        for place, cores in (("one", "one core"), ("any", "two cores")):
            rounds = [[float(figure) for figure in line[2:]] for line in lines if line[1] == place]
            if not rounds:
                continue
            def ratios(column, to=0):
                return [turn[column] / turn[to] for turn in rounds]

            self.add(9, f"from write() to ACCEPTED, {cores}", f"{spread(ratios(2, 1), '')} bare round trips", "2.5",
                     statistics.median(ratios(2, 1)) <= 2.5, True)
            self.add(9, f"from write() to VERIFIED, {cores}", f"{spread(ratios(3, 1), '')} bare round trips", "", None,
                     True)
            self.add(9, f"such a bare round trip, as quiet before it as before the writes, {cores}",
                     f"{spread(ratios(1), '')} of one among many", "", None, True)

    def many(self, runs):
        """Pairs of runs with one PLC and with a hundred: the columns are those of bench/link/scenes.h."""
        def column(number, which=1):
            return [float(pair[which][number]) for pair in runs]

        ratios = [hundred / one for one, hundred in zip(column(2, 0), column(2))]
        self.add(10, "CPU a request, 100 PLCs with 500 words each", f"{spread(ratios, '')} of one PLC", "1.25",
                 statistics.median(ratios) <= 1.25, True)
        self.add(10, "requests a second, 100 PLCs", f"{spread(column(1), '', 0)}, one PLC {spread(column(1, 0), '', 0)}", "",
                 None, True)
        for number, what in ((3, "resident memory"), (4, "memory in proportion to who shares it")):
            self.add(10, f"{what} of each further PLC", spread(column(number), "KiB", 0), "512 KiB",
                     statistics.median(column(number)) <= 512, True)
        late = [1e3 * seconds for seconds in column(6)]
        self.add(10, "from a reply's sending to the callback, 99th percentile", spread(late, "ms"), "2 ms",
                 statistics.median(late) <= 2, True)

    def panel(self):
        """The graphical panel: 500 tags that all change 20 times a second, 60 of them on the screen."""
        runs = [[float(figure) for figure in run([self.programs / "bench_hmi", 10]).split()[1:]] for _ in range(5)]
        cpu, changes, paintings, resident = zip(*runs)
        self.add(11, "CPU of fins_hmi, 500 tags that change, 60 on the screen", spread(cpu, "% of a core", 1), "15 %",
                 statistics.median(cpu) <= 15, True)
        self.add(11, "changes of a tag a second", spread(changes, "", 1), "at least 20", statistics.median(changes) >= 20, True)
        self.add(11, "paintings of an element a second", spread(paintings, "", 1), "10", statistics.median(paintings) <= 10.1,
                 True)
        self.add(11, "resident memory of fins_hmi", spread(resident, "MiB", 0), "", None, True)

    def simulator(self, core):
        """The simulator as the other end of bare reads: as it starts, and with faults that are aimed elsewhere."""
        program = self.programs.parent / "tools" / "plc" / "fins_plc"
        aimed = [f"--fault=delay=1:area=E{bank:X}" for bank in range(10)]
        plcs = [subprocess.Popen([*core, program, "--port", "0", *options], stdin=subprocess.PIPE,
                                 stdout=subprocess.PIPE, text=True) for options in ([], aimed)]
        try:
            ports = [plc.stdout.readline().rsplit(":", 1)[1].strip() for plc in plcs]
            rounds = [[float(seconds) for seconds in line[1:]] for line in self.lines(*core, "servers", 400, 150, *ports)]
        finally:
            for plc in plcs:
                plc.kill()
        for place, what in ((1, "the simulator's requests a second"), (2, "the same with ten faults that do not apply")):
            self.add("", what, f"{spread([turn[0] / turn[place] for turn in rounds], '')} of an answerer that does nothing else",
                     "", None, True)

    def system_calls(self, requests):
        with tempfile.TemporaryDirectory() as folder:
            run(["strace", "-c", "-o", "calls", self.programs / "bench_link", "panel", requests, 0], folder)
            text = (pathlib.Path(folder) / "calls").read_text()
        return int(re.search(r"^100\.00\s+\S+\s+\S+\s+(\d+).*total$", text, re.MULTILINE).group(1))

    def start_up(self):
        runs = [self.workload("startup", 10000) for _ in range(15)]
        total = [figures[2] for figures in runs]
        self.add(7, "load, configure, hand over 10,000 items", spread(total, "ms", 1), "100 ms",
                 statistics.median(total) < 100, True)


# ---- Results ------------------------------------------------------------------------------------------------------

def table(rows):
    lines = ["| bar | what | measured | limit | met |", "|---|---|---|---|---|"]
    marks = {True: "yes", False: "**no**", None: ""}
    for row in sorted(rows, key=lambda row: row.bar or math.inf):
        lines.append(f"| {row.bar} | {row.what} | {row.measured} | {row.limit} | {marks[row.met]} |")
    return "\n".join(lines)


def first_match(path, pattern):
    match = re.search(pattern, pathlib.Path(path).read_text(), re.MULTILINE)
    return match.group(1).strip() if match else "unknown"


def machine():
    memory = int(first_match("/proc/meminfo", r"^MemTotal:\s+(\d+)")) / 2**20
    qt = run(["dpkg-query", "--show", "--showformat", "${Version}", "libqt5core5a"]).split("+")[0]
    return (f"{first_match('/proc/cpuinfo', r'^model name[^:]*:(.*)$')}, {os.cpu_count()} cores, {memory:.0f} GiB; "
            f"{first_match('/etc/os-release', r'^PRETTY_NAME=.(.*).$')}, Linux {platform.release()}; "
            f"{run(['c++', '--version']).splitlines()[0]}; Qt {qt}; {run(['valgrind', '--version']).strip()}; "
            f"load average {os.getloadavg()[0]:.1f}.")


def save(bench, times):
    """Writes the figures between the marks of docs/performance.md, and the plot."""
    page = SOURCE / "docs" / "performance.md"
    text = page.read_text()
    begin, end = "<!-- figures -->\n", "<!-- end of figures -->"
    head, rest = text.split(begin)
    page.write_text(head + begin + f"\nMachine: {machine()}\n\n{table(bench.rows)}\n\n" + end + rest.split(end)[1])

    lines = []
    for words in SIZES:
        sections = bench.count("change", words, max(2, 4000 // words))
        lines.append(" ".join(str(figure) for figure in (
            words, sections["unchanged"].instructions,
            sections["changed"].instructions - sections["callbacks"].instructions,
            statistics.median(times[f"poll/{words}"]), statistics.median(times[f"pollChanged/{words}"]))))
    with tempfile.NamedTemporaryFile("w", suffix=".dat") as data:
        data.write("\n".join(lines) + "\n")
        data.flush()
        run(["gnuplot", "-e", f"figures='{data.name}'; plot='{page.with_suffix('.svg')}'",
             SOURCE / "bench" / "plot.gp"])


def main(arguments):
    if not arguments or arguments[1:] not in ([], ["--short"], ["--save"]):
        print(__doc__, file=sys.stderr)
        return 2
    short = arguments[1:] == ["--short"]
    for tool in ["valgrind"] if short else ["valgrind", "strace", "taskset", "gnuplot"]:
        if shutil.which(tool) is None:
            print(f"bench: {tool} is missing; run scripts/setup --bench", file=sys.stderr)
            return 2
    bench = Bench(pathlib.Path(arguments[0]).resolve(), short)
    for measure in (bench.poll, bench.change, bench.access, bench.plan, bench.memory):
        measure()
    times = None
    if not short:
        times = bench.functions()
        bench.link()
        bench.panel()
        bench.start_up()
    print(f"{machine()}\n\n{table(bench.rows)}")
    if arguments[1:] == ["--save"]:
        save(bench, times)
    missed = [row for row in bench.rows if row.met is False and not row.timed]
    return 1 if short and missed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
