#!/usr/bin/env python3
"""The library's bytes depend on its source alone: a copy of the source, built in another folder, gives the same file."""

import hashlib
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path


def build_elsewhere(cmake, project, folder, settings):
    """Copies what the library is made of into the folder, builds it and returns the library's path."""
    copy = folder / "a copy of the source"
    copy.mkdir()
    for part in ("src", "cmake"):
        shutil.copytree(project / part, copy / part)
    shutil.copy(project / "CMakeLists.txt", copy)
    binary = folder / "another" / "build"
    configuration = ["-G", "Ninja", "-DOMRON_FINS_TOOLS=OFF", "-DOMRON_FINS_TESTS=OFF", *settings]
    for step in (["-S", copy, "-B", binary, *configuration],
                 ["--build", binary, "--parallel", "2", "--target", "omron_fins_ethernet"]):
        subprocess.run([cmake, *step], check=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return next(binary.rglob("libomron_fins_ethernet.so"))


def main():
    cmake, project, library, settings = sys.argv[1], Path(sys.argv[2]), Path(sys.argv[3]), sys.argv[4:]
    with tempfile.TemporaryDirectory() as folder:
        try:
            other = build_elsewhere(cmake, project, Path(folder), settings)
        except subprocess.CalledProcessError as error:
            print(error.stdout.decode(errors="replace"))
            return 1
        digests = [hashlib.sha256(path.read_bytes()).hexdigest() for path in (library, other)]
    print(f"here: {digests[0]}\nthere: {digests[1]}")
    return 0 if digests[0] == digests[1] else 1


sys.exit(main())
