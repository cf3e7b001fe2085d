#!/usr/bin/env python3
"""Black-box test of the ten-second benchmark: one bench run, whose first and last
strings verify must then find on the chain. Apart from the other command tests for
its length. Usage: test_bench.py <path-to-vexa>"""
import os
import re
import subprocess
import sys
import tempfile

GROUPED = rb"(0|[1-9]\d{0,2}(?:,\d{3})*)"
CASES = [  # (what the output must be, its pattern)
    ("64 alphabet characters, 64 lowercase hex digits, b'N hashes per second' with N "
     "grouped, one a line", rb"([abcdefghijkmnpqrstuvwxyzABCDEFGHJKLMNPQRTUVWXY346789]{64})\n"
     rb"([0-9a-f]{64})\n" + GROUPED + rb" hashes per second\n\Z"),
    ("b'Found after N hashes in ~S seconds.\\n~R hashes per second\\n', N > 0, R grouped",
     rb"Found after ([1-9]\d{0,2}(?:,\d{3})*) hashes in ~\d+ seconds\.\n~" + GROUPED
     + rb" hashes per second\n\Z")]


def main():
    line = b"bench"
    with tempfile.TemporaryDirectory() as cwd:
        for expected, pattern in CASES:
            # The timeout only guards against a hang.
            proc = subprocess.run([os.path.abspath(sys.argv[1]), line], capture_output=True,
                                  cwd=cwd, timeout=300)
            out = proc.stdout + (b"<exit status %d, standard error %r>" % (
                proc.returncode, proc.stderr) if proc.returncode or proc.stderr else b"")
            m = re.match(pattern, out)
            if not m:
                print("FAIL %r\n  expected: %s\n  actual:   %r" % (line, expected, out))
                return 1
            line = b"verify " + b":".join(m.groups()[:2])
    print("bench and verify passed")
    return 0


if __name__ == "__main__":
    sys.exit(main())
