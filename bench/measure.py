#!/usr/bin/env python3
"""Runs one command and prints its exit status, wall seconds and peak memory (kB) on one line.

The peak is the largest resident set of the command and of every process it waited for (for
quarnel that includes the DSSP it starts through the shell), as GNU time reports it. Without
/usr/bin/time it comes from this process's children, whose figure never falls below the size of
this Python process (about 14 MB), since a child's count starts before it replaces itself with
the command. A command still running after --timeout seconds is killed and reported with status
124, as coreutils' timeout does.
"""
import argparse
import os
import resource
import signal
import subprocess
import sys
import tempfile
import time

TIMEOUT_STATUS = 124
GNU_TIME = "/usr/bin/time"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--cwd", required=True, help="working directory of the command")
    parser.add_argument("--stdout", required=True, help="file receiving its standard output")
    parser.add_argument("--stderr", required=True, help="file receiving its standard error")
    parser.add_argument("--timeout", type=float, default=600.0, help="seconds before it is killed")
    parser.add_argument("command", nargs=argparse.REMAINDER, help="-- command [arguments...]")
    args = parser.parse_args()
    command = args.command[1:] if args.command[:1] == ["--"] else args.command
    if not command:
        parser.error("no command given")

    gnu_time = os.access(GNU_TIME, os.X_OK)
    with tempfile.NamedTemporaryFile(mode="r", suffix=".time") as peak_file:
        if gnu_time:
            command = [GNU_TIME, "-f", "%M", "-o", peak_file.name, "--"] + command
        status, seconds = run(command, args)
        if gnu_time:
            lines = peak_file.read().split()
            peak_kb = int(lines[-1]) if lines and lines[-1].isdigit() else 0
        else:
            peak_kb = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss  # kB on Linux
    print("%d\t%.3f\t%d" % (status, seconds, peak_kb))


def run(command, args):
    with open(args.stdout, "wb") as out, open(args.stderr, "wb") as err:
        start = time.monotonic()
        # A session of its own, so that a timeout also ends the DSSP the tool started.
        process = subprocess.Popen(command, cwd=args.cwd, stdout=out, stderr=err,
                                   start_new_session=True)
        try:
            status = process.wait(timeout=args.timeout)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            status = TIMEOUT_STATUS
            err.write(b"timed out after %g s\n" % args.timeout)
        seconds = time.monotonic() - start
    if status < 0:  # killed by a signal: report it the way a shell does
        status = 128 - status
    return status, seconds


if __name__ == "__main__":
    sys.exit(main())
