#!/usr/bin/env python3
"""Black-box test of the ten-second hash benchmark: one bench run, whose start
and end strings verify must then find on the chain. Kept apart from the other
command tests because it takes about twenty seconds.
Usage: test_bench.py <path-to-vexa>"""
import os
import re
import subprocess
import sys
import tempfile

VEXA = os.path.abspath(sys.argv[1])
GROUPED = rb"(0|[1-9]\d{0,2}(?:,\d{3})*)"
BENCH = re.compile(rb"([abcdefghijkmnpqrstuvwxyzABCDEFGHJKLMNPQRTUVWXY346789]{64})\n"
                   rb"([0-9a-f]{64})\n" + GROUPED + rb" hashes per second\n\Z")
VERIFY = re.compile(rb"Found after " + GROUPED + rb" hashes in ~(\d+) seconds\.\n~"
                    + GROUPED + rb" hashes per second\n\Z")


def run(line, cwd):
    """One-shot run; the timeout only guards against a hang."""
    try:
        proc = subprocess.run([VEXA, line], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              cwd=cwd, timeout=300)
    except subprocess.TimeoutExpired as hung:
        return (hung.stdout or b"") + b"<hung>"
    if proc.returncode or proc.stderr:
        return proc.stdout + b"<exit status %d, standard error %r>" % (proc.returncode,
                                                                        proc.stderr)
    return proc.stdout


def main():
    with tempfile.TemporaryDirectory() as cwd:
        out = run(b"bench", cwd)
        m = BENCH.match(out)
        if not m:
            print("FAIL bench\n  expected: 64 alphabet characters, 64 lowercase hex digits "
                  "and b'N hashes per second' with N grouped by commas, one a line\n"
                  "  actual:   %r" % out)
            return 1
        line = b"verify " + m.group(1) + b":" + m.group(2)
        out = run(line, cwd)
        v = VERIFY.match(out)
        count = v and int(v.group(1).replace(b",", b""))
        secs = v and int(v.group(2))
        rate = v and int(v.group(3).replace(b",", b""))
        if not v or count < 1 or rate != (count // secs if secs else count):
            print("FAIL %r\n  expected: b'Found after N hashes in ~S seconds.\\n~N/S hashes per "
                  "second\\n' with N at least 1 and grouped by commas\n"
                  "  actual:   %r" % (line, out))
            return 1
    print("bench and verify passed")
    return 0


if __name__ == "__main__":
    sys.exit(main())
