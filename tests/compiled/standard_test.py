#!/usr/bin/env python3
"""Every source of the library is compiled as the given C++ standard and no other, without the compiler's extensions,
and -Wpedantic reports what the standard does not have."""

import json
import sys
from pathlib import Path


def options_of(commands, source):
    """The options of each compilation of the source: a fuzzer or a benchmark may compile it anew."""
    return [command["command"].split() for command in commands if Path(command["file"]) == source]


def problems(commands, source, standard):
    compilations = options_of(commands, source)
    if not compilations:
        yield "is not compiled"
    for options in compilations:
        standards = [option for option in options if option.startswith("-std=")]
        if standards != [f"-std={standard}"]:
            yield f"is compiled with {standards or 'the default standard'}, not -std={standard}"
        if "-Wpedantic" not in options:
            yield "is compiled without -Wpedantic"


def main():
    commands = json.loads(Path(sys.argv[1]).read_text())
    folder, standard = Path(sys.argv[2]), sys.argv[3]
    sources = sorted(folder.rglob("*.cpp"))
    found = [f"{source}: {problem}" for source in sources for problem in problems(commands, source, standard)]
    print("\n".join(found) or f"{len(sources)} sources are compiled as {standard}")
    return 1 if found or not sources else 0


sys.exit(main())
