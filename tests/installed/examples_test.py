#!/usr/bin/env python3
"""The examples of docs/examples, built outside the source tree with what is installed, and run against a simulator."""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile
import threading
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1] / "support"))
from simulator import DEADLINE_S, Simulator

BUILD_DEADLINE_S = 240
WARNINGS = "-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast -Werror"
OPTIONS = argparse.Namespace()


def run(*command, **options):
    """Runs a step of the build; fails with all it said."""
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=BUILD_DEADLINE_S, **options)
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


class Installed(unittest.TestCase):
    """The build, installed into an empty folder."""

    @classmethod
    def setUpClass(cls):
        cls.folder = Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.prefix = cls.folder / "prefix"
        run("cmake", "--install", OPTIONS.build, "--prefix", cls.prefix)
        cls.config = next(cls.prefix.rglob("fins_runtimeConfig.cmake")).parent
        cls.library_folder = cls.config.parent.parent


class Files(Installed):
    def test_nothing_to_build_with_names_a_folder_of_this_machine(self):
        files = [*self.config.iterdir(), *(self.library_folder / "pkgconfig").iterdir()]
        self.assertGreaterEqual(len(files), 5)
        for file in files:
            for place in (OPTIONS.build, str(Path(OPTIONS.examples).parents[1]), str(self.prefix)):
                self.assertNotIn(place, file.read_text(), file)

    def test_library_and_headers_are_all_that_is_there(self):
        headers = sorted(path.name for path in (self.prefix / "include/fins_runtime").iterdir())
        self.assertEqual(headers, ["config.h", "plc.h", "values.h"])
        link = self.library_folder / "libfins_runtime.so"
        self.assertEqual(os.readlink(link), "libfins_runtime.so.1")
        self.assertEqual([path.name for path in self.prefix.rglob("*.pc")], ["fins_runtime.pc"])


class Examples(Installed):
    """Built once, by both ways; each test runs what is there."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        shutil.copytree(OPTIONS.examples, cls.folder / "source")
        cls.build_by_cmake()
        cls.build_by_pkg_config()

    @classmethod
    def build_by_cmake(cls):
        options = [f"-DCMAKE_PREFIX_PATH={cls.prefix}", f"-DCMAKE_CXX_COMPILER={OPTIONS.compiler}",
                   f"-DCMAKE_CXX_FLAGS={OPTIONS.flags} {WARNINGS}"]
        if OPTIONS.toolchain: # which looks for packages in its own root alone
            options += [f"-DCMAKE_TOOLCHAIN_FILE={OPTIONS.toolchain}", f"-Dfins_runtime_DIR={cls.config}"]
        run("cmake", "-S", cls.folder / "source", "-B", cls.folder / "build", "-G", "Ninja", *options)
        run("cmake", "--build", cls.folder / "build", "--parallel", "2")

    @classmethod
    def build_by_pkg_config(cls):
        said = run("pkg-config", "--cflags", "--libs", "fins_runtime",
                   env={**os.environ, "PKG_CONFIG_PATH": str(cls.library_folder / "pkgconfig")})
        run(OPTIONS.compiler, *OPTIONS.flags.split(), *WARNINGS.split(), cls.folder / "source/watch.cpp", "-o",
            cls.folder / "watch_by_pkg_config", *said.split())

    def simulator(self, *options):
        plc = Simulator(OPTIONS.plc, *options)
        self.addCleanup(plc.close)
        return plc

    def command(self, program, *words):
        return [*filter(None, OPTIONS.emulator.split(";")), str(self.folder / program), *map(str, words)]

    def environment(self, program):
        environment = {**os.environ, "LD_LIBRARY_PATH": str(self.library_folder), "QT_QPA_PLATFORM": "offscreen"}
        if program == "build/qt_widget":  # Qt's own window without a screen leaks
            environment["ASAN_OPTIONS"] = "detect_leaks=0"
        return environment

    def ends(self, code, program, *words):
        """Runs an example to its end and returns the lines of its output."""
        done = subprocess.run(self.command(program, *words), capture_output=True, text=True, timeout=DEADLINE_S,
                              env=self.environment(program))
        self.assertEqual(done.returncode, code, done.stdout + done.stderr)
        return (done.stdout if code in (0, 1, 3) else done.stderr).splitlines()

    def shows(self, program, *words):
        """Starts an example that does not end by itself."""
        process = subprocess.Popen(self.command(program, *words), stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                   text=True, env=self.environment(program))
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    def wait_for(self, process, *expected):
        """Reads lines until all of `expected` have come, in any order."""
        seen, missing = [], list(expected)
        watchdog = threading.Timer(DEADLINE_S, process.kill)
        watchdog.start()
        while missing:
            line = process.stdout.readline()
            self.assertTrue(line, f"{missing} did not come, but {seen}")
            seen.append(line.rstrip("\n"))
            if seen[-1] in missing:
                missing.remove(seen[-1])
        watchdog.cancel()

    def watch_program(self, program):
        plc = self.simulator()
        plc.tell("write DM:100 5")
        watch = self.shows(program, f"127.0.0.1:{plc.port}", "DM:100", "DM:0:2/s16")
        self.wait_for(watch, "DM:100 = 5 (good)", "DM:0/s16 = 0 (good)", "DM:1/s16 = 0 (good)")
        plc.tell("write DM:1 65535")
        self.wait_for(watch, "DM:1/s16 = -1 (good)")
        plc.tell("fault silence")
        self.wait_for(watch, "DM:100 = 5 (last known)")

    def test_watch(self):
        self.watch_program("build/watch")

    def test_watch_built_by_pkg_config(self):
        self.watch_program("watch_by_pkg_config")

    def test_watch_says_what_is_wrong_with_its_words(self):
        self.assertRegex(self.ends(2, "build/watch")[0], "^usage: watch ")
        self.assertRegex(self.ends(2, "build/watch", "127.0.0.1:1", "DM:40000")[0], "^watch: .*DM:40000")
        self.assertRegex(self.ends(2, "build/watch", "127.0.0.1:99999", "DM:0")[0], "^watch: .*99999")

    def test_write_is_read_back(self):
        plc = self.simulator()
        self.assertEqual(self.ends(0, "build/write", f"127.0.0.1:{plc.port}", "DM:3=700", "DM:100/f32=2.5"),
                         ["done: DM:3 = 700", "done: DM:100/f32 = 2.5"])
        self.assertEqual(plc.tell("read DM:3"), "ok 700")
        self.assertEqual(plc.tell("read DM:100:2"), "ok 0 16416")  # 2.5 is 0x40200000, the low word first

    def test_refused_write_stops_those_behind_it(self):
        plc = self.simulator("--mode", "program", "--refuse-writes-in-program")
        lines = self.ends(3, "build/write", f"127.0.0.1:{plc.port}", "DM:3=700", "DM:200=1")
        self.assertRegex(lines[0], r"^refused: DM:3: 2203 \(")
        self.assertRegex(lines[1], "^not sent: DM:200: ")
        self.ends(1, "build/write", f"127.0.0.1:{plc.port}", "DM:3=700")
        self.assertEqual(plc.tell("mode"), "ok program")
        self.assertEqual(plc.tell("read DM:3"), "ok 0")

    def test_write_without_a_link_is_not_sent(self):
        plc = self.simulator("--fault", "silence")
        lines = self.ends(3, "build/write", f"127.0.0.1:{plc.port}", "DM:3=700")
        self.assertRegex(lines[0], "^not sent: DM:3: ")

    def test_write_that_cannot_be_sends_nothing(self):
        plc = self.simulator()
        host = f"127.0.0.1:{plc.port}"
        self.ends(2, "build/write", host, "DM:3=70000", "DM:4=1")
        self.ends(2, "build/write", host, "DM:3")
        self.assertEqual(plc.tell("read DM:3:2"), "ok 0 0")

    def test_recipe_goes_both_ways(self):
        plc = self.simulator()
        project = self.folder / "plant.toml"
        project.write_text(f"""
[connection]
host = "127.0.0.1:{plc.port}"
[tags]
SetPoint = {{ type = "DM", address = 3, scale = 0.1, decimals = 1, unit = "%" }}
[recipes.Lemonade.values]
SetPoint = 70.5
"DM:200:2" = [20, 30]
""")
        self.assertEqual(self.ends(0, "build/recipe", "write", project, "Lemonade"),
                         ["done: SetPoint = 70.5 %", "done: DM:200:2 = 20 30"])
        self.assertEqual(plc.tell("read DM:3"), "ok 705")
        plc.tell("write DM:201 31")
        self.assertEqual(self.ends(0, "build/recipe", "read", project, "Lemonade"),
                         ["SetPoint = 70.5 %", "DM:200 = 20", "DM:201 = 31"])
        self.assertRegex(self.ends(2, "build/recipe", "read", project, "Cola")[0], "^recipe: .*Cola")
        project.write_text("[connection]\nhost = 5\n")
        self.assertRegex(self.ends(2, "build/recipe", "read", project, "Cola")[0], r"^recipe: .*plant.toml:2:8: ")

    def test_two_plcs_in_one_loop(self):
        plcs = [self.simulator(), self.simulator()]
        hosts = [f"127.0.0.1:{plc.port}" for plc in plcs]
        for value, plc in enumerate(plcs, 7):
            plc.tell(f"write DM:0 {value}")
        shown = self.shows("build/many_plcs", "DM:0", *hosts)
        self.wait_for(shown, f"{hosts[0]} DM:0 = 7 (good)", f"{hosts[1]} DM:0 = 8 (good)")
        plcs[0].close()
        self.wait_for(shown, f"{hosts[0]} DM:0 = 7 (last known)")
        plcs[1].tell("write DM:0 9")
        self.wait_for(shown, f"{hosts[1]} DM:0 = 9 (good)")

    def test_window_shows_how_far_its_value_can_be_trusted(self):
        plc = self.simulator()
        plc.tell("write DM:0 5")
        window = self.shows("build/qt_widget", f"127.0.0.1:{plc.port}", "DM:0", "6")
        self.wait_for(window, "DM:0 = 5 (good)")
        plc.tell("fault silence")
        self.wait_for(window, "DM:0 = 5 (last known)")
        plc.tell("faults off")
        self.wait_for(window, "DM:0 = 5 (good)")
        self.assertEqual(plc.tell("read DM:0"), "ok 5")

    def test_window_writes_by_its_button(self):
        plc = self.simulator()
        plc.tell("write DM:0 5")
        lines = self.ends(0, "build/qt_widget", f"127.0.0.1:{plc.port}", "DM:0", "6", "--once")
        self.assertLess(lines.index("DM:0 = 5 (good)"), lines.index("done: DM:0 = 6"))
        self.assertEqual(plc.tell("read DM:0"), "ok 6")

    def test_window_writes_nothing_by_itself(self):
        plc = self.simulator()
        lines = self.ends(0, "build/qt_widget", f"127.0.0.1:{plc.port}", "DM:0", "6", "--for", "2")
        self.assertIn("DM:0 = 0 (good)", lines)
        self.assertEqual(plc.tell("read DM:0"), "ok 0")


def main():
    parser = argparse.ArgumentParser()
    for name in ("build", "examples", "plc", "compiler", "flags", "toolchain", "emulator"):
        parser.add_argument(f"--{name}", required=True)
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == "__main__":
    main()
