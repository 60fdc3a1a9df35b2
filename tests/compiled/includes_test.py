#!/usr/bin/env python3
"""The includes of the project pass scripts/check-includes, which finds and names each of those that must not be."""

import subprocess
import sys
import tempfile
from pathlib import Path

# Sources by their names, and the lines that are to be said of them.
WRONG = {
    "src/address/notation.h": '#include "data/image.h"\n',
    "src/data/image.h": '#include "omron_fins_ethernet.h"\n#  include  <fins/frame.h> // and why\n',
    "src/fins/frame.h": '#include "poll/none.h"\n',
    "src/omron_fins_ethernet.h": "#include <string>\n",
    "runtime/include/fins_runtime/config.h": "",
    "runtime/include/fins_runtime/plc.h": '#include "config.h"\n#include "base/clock.h"\n',
    "runtime/base/clock.h": "",
    "runtime/driver/library.h": '#include "omron_fins_ethernet.h"\n#include "link/tcp.h"\n',
    "runtime/link/tcp.h": '#include "base/clock.h"\n#include "common/reader.h"\n#include "omron_fins_ethernet.h"\n',
    "runtime/session/loop.h": '#include <fins_runtime/plc.h>\n\n#include "fins_runtime/none.h"\n#include <fins_runtime/no.h>\n',
    "runtime/fins_codes.cpp": "",
    "tools/common/reader.h": '#include "base/clock.h"\n',
    "tools/panel/cli/main.cpp": '#include "session/loop.h"\n#include "main.h"\n',
    "tools/plc/fins/frame.h": '#include "fins/frame.h"\n#include "cpu/memory.h"\n#include <server/server.h>\n',
    "tools/plc/cpu/memory.h": '#include "base/clock.h"\n',
    "tools/plc/server/server.h": '#include "common/reader.h"\n',
}
SAID = [
    "runtime/driver/library.h:2: runtime/driver must not include runtime/link/tcp.h",
    "runtime/fins_codes.cpp:1: is in no room; give it a row in scripts/check-includes",
    "runtime/include/fins_runtime/plc.h:2: runtime/include/fins_runtime must not include runtime/base/clock.h",
    "runtime/link/tcp.h:3: runtime/link must not include src/omron_fins_ethernet.h",
    "runtime/session/loop.h:3: there is no file fins_runtime/none.h; write ROOM/FILE",
    "runtime/session/loop.h:4: there is no file fins_runtime/no.h; write ROOM/FILE",
    "src/address/notation.h:1: src/address must not include src/data/image.h",
    "src/data/image.h:2: src/data must not include src/fins/frame.h",
    "src/fins/frame.h:1: there is no file poll/none.h; write ROOM/FILE",
    "tools/common/reader.h:1: tools/common must not include runtime/base/clock.h",
    "tools/panel/cli/main.cpp:2: there is no file main.h; write ROOM/FILE",
    "tools/plc/cpu/memory.h:1: tools/plc/cpu must not include runtime/base/clock.h",
    "tools/plc/fins/frame.h:3: tools/plc/fins must not include tools/plc/server/server.h",
]


def judge(script, *folder):
    return subprocess.run([sys.executable, "-B", script, *folder], capture_output=True, text=True)


def judge_wrong(script):
    with tempfile.TemporaryDirectory() as folder:
        for name, content in WRONG.items():
            source = Path(folder, name)
            source.parent.mkdir(parents=True, exist_ok=True)
            source.write_text(content)
        return judge(script, folder)


def main():
    script = sys.argv[1]
    tree = judge(script)
    print(tree.stdout + tree.stderr, end="")
    wrong = judge_wrong(script)
    is_found = wrong.returncode == 1 and wrong.stdout.splitlines() == SAID
    print("includes that must not be are named" if is_found else f"said of wrong includes:\n{wrong.stdout}{wrong.stderr}")
    return 0 if tree.returncode == 0 and is_found else 1


sys.exit(main())
