#!/usr/bin/env python3
"""Kills commands of opane at random moments on a paced simulated module, and asks for its status at once each time.

What a killed command leaves behind, half a frame in the module or half an answer on the line, must not fail the next one.
usage: bench/killed_commands.py [KILLS [SEED]]    with the programs of build/release; status 1 when a status failed
"""
import pathlib
import random
import subprocess
import sys
import tempfile
import time

PROGRAMS = pathlib.Path(__file__).parent.parent / "build/release"
COMMANDS = ["text Hello,world --line 3", "line AA --line 2", "square FF --line 1", "clear", "info", "readings", "key",
            "set-status --inverted on", "backlight read red", "eeprom dump", "eeprom write --address 0 " + "5A" * 300]


def main():
    kills = int(sys.argv[1]) if len(sys.argv) > 1 else 200
    drawn = random.Random(int(sys.argv[2]) if len(sys.argv) > 2 else 1)
    failed, slowest = 0, 0.0
    with tempfile.TemporaryDirectory() as folder:
        device = folder + "/module"
        module = subprocess.Popen([PROGRAMS / "opane-sim", "--pace", "--link", device], stdout=subprocess.PIPE)
        module.stdout.readline()
        opane = [PROGRAMS / "opane", "--device", device]
        killed = 0
        while killed < kills:
            command = drawn.choice(COMMANDS)
            running = subprocess.Popen(opane + command.split(), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            time.sleep(drawn.uniform(0.005, 0.3))
            killed += running.poll() is None
            running.kill()
            running.wait()
            start = time.monotonic()
            status = subprocess.run(opane + ["status"], capture_output=True, text=True, check=False)
            slowest = max(slowest, time.monotonic() - start)
            if status.returncode != 0:
                failed += 1
                print(f"after {command[:40]}: {status.stderr.strip()}")
        module.terminate()
        module.wait()
    print(f"{killed} commands were killed in their middle; the status failed {failed} times; the slowest took {slowest:.2f} s")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
