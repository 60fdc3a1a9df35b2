"""A running fins_plc for the tests written in Python."""

import re
import subprocess
import threading

DEADLINE_S = 30


class Simulator:
    """A running fins_plc on a free port."""

    def __init__(self, program, *options):
        self.process = subprocess.Popen([program, "--port", "0", *options], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True)
        line = self.read_line()
        port = re.fullmatch(r"listening on 127\.0\.0\.1:(\d+)", line)
        if not port:
            raise RuntimeError(f"fins_plc said '{line}' instead of its port")
        self.port = int(port[1])

    def read_line(self):
        watchdog = threading.Timer(DEADLINE_S, self.process.kill)
        watchdog.start()
        line = self.process.stdout.readline().rstrip("\n")
        watchdog.cancel()
        return line

    def tell(self, command):
        """Gives the simulator a command and returns its answer, which begins with 'ok'."""
        print(command, file=self.process.stdin, flush=True)
        answer = self.read_line()
        if answer.split(" ")[0] != "ok":
            raise RuntimeError(f"fins_plc answered '{command}' with '{answer}'")
        return answer

    def close(self):
        self.process.stdin.close()
        self.process.terminate()
        self.process.wait(DEADLINE_S)
        self.process.stdout.close()
