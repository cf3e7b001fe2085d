#!/usr/bin/env python3
"""Black-box tests of the utility commands and verify, one table per command family.
Usage: test_commands.py <path-to-vexa>"""
import hashlib
import os
import re
import subprocess
import sys
import tempfile
import time

VEXA = os.path.abspath(sys.argv[1])
UTC2, CET = "UTC-2", "CET-1CEST,M3.5.0,M10.5.0/3"  # no daylight saving; summer time
WARN = b"Warning: input string length not multiple of 4.\n"
INVALID = b"Invalid benchmark string.\n"
FILES = {"data.bin": bytes(range(256)) * 4 + b"tail", "my notes.txt": b"notes\n",
         "allbytes": bytes(range(256)), "example": b'A"\n\x00\xc8', "hello": b"\x00\xffhi\n"}


def utc(t):
    """The time text of second t in UTC; the 12-hour clock runs from 00 to 12."""
    g = time.gmtime(t)
    hour = "%02d" % (g.tm_hour - 12 if g.tm_hour > 12 else g.tm_hour)
    return time.strftime("%Y-%m-%d " + hour + ":%M:%S %p %a\n", g).encode()


def c_escape(data):
    table = {34: b'\\"', 92: b"\\\\", 8: b"\\b", 12: b"\\f", 10: b"\\n", 13: b"\\r",
             9: b"\\t", 0: b"\\0"}
    return b"".join(table.get(c, bytes([c]) if 32 <= c <= 126 else b"\\x%02x" % c)
                    for c in data)


class Like:
    """An expectation given by a rule rather than by fixed bytes; `text` describes it."""
    def __init__(self, text, rule):
        self.text, self.rule = text, rule

    def __repr__(self):
        return self.text


def found(count):
    grouped = "{:,}".format(count)

    def rule(out):
        m = re.match(rb"Found after %s hashes in ~(\d+) seconds\.\n~([\d,]+) hashes per "
                     rb"second\n\Z" % grouped.encode(), out)
        secs = m and int(m.group(1))
        return bool(m) and m.group(2) == "{:,}".format(count // secs if secs else count).encode()
    return Like("b'Found after %s hashes in ~S seconds.\\n~<%s/S, grouped> hashes per "
                "second\\n'" % (grouped, grouped), rule)


def chain(steps):
    links = [b"abcdefghijkmnpqrstuvwxyzABCDEFGHJKLMNPQRTUVWXY346789abcdefghijkm"]
    for _ in range(steps):
        links.append(hashlib.sha256(links[-1]).hexdigest().encode())
    return links[0], links[-1]


S, END = chain(1000)
# (line, expected) or (line, expected, options for run()); one-shot runs in TZ=UTC0.
NUMBERS = [(b"hex 255", b"ff\n"), (b"hex -1", b"ffffffff\n"), (b"hex", b"0\n"),
           (b"hex 12abc", b"c\n"), (b"hex 99999999999", b"7fffffff\n"),
           (b"unhex ff", b"255\n"), (b"unhex 0x10", b"16\n"), (b"unhex -a", b"-10\n"),
           (b"unhex ffffffff", b"2147483647\n"), (b"unhex xyz", b"0\n")]
# A missing file, a directory, a FIFO and no argument all digest empty input.
DIGESTS = [(("%s %s" % (cmd, arg)).strip().encode(),
            fn(FILES.get(arg, b"")).hexdigest().encode() + b"\n")
           for cmd, fn in [("md5", hashlib.md5), ("sha1", hashlib.sha1),
                           ("sha256", hashlib.sha256)]
           for arg in ["data.bin", "my notes.txt", "missing", "somedir", "pipe", ""]]
CODING = [(b"escape allbytes", c_escape(bytes(range(256))) + b"\n"),
          (b"escape example", b'A\\"\\n\\0\\xc8\n'),
          (b"base64 hello", b"AP9oaQo=\n"), (b"base64 hello", b"aGVsbG8=\n", {"cwd": "bare"}),
          (b"base64 pipe", b"\n"), (b"url_encode pipe", b"\n"),
          (b"unbase64 aGVsbG8=", b"hello\n"), (b"unbase64 QQBC", b"A\n"),
          (b"unbase64 Zm9vY", WARN + b"foo\n"),
          (b"url_encode a b/c", b"a%20b/c\n"), (b"url_decode a+b%21", b"a+b!\n")]
COMMA = [(b"comma 1234567", b"1,234,567\n"), (b"comma pi", b"3.14159\n"),
         (b"comma sin", b"0\n"), (b"comma  1000", b"1,000\n"),
         (None, b"> ans = 1234567\n> 1,234,567\n> ", {"stdin": b"1234567\ncomma\n"})]
TIMES = [(b"gmtime 0", b"1970-01-01 00:00:00 AM Thu\n"), (b"gmtime abc", utc(0)),
         (b"gmtime 1000000000", b"2001-09-09 01:46:40 AM Sun\n"),
         (b"gmtime inf", b"inf\n"), (b"gmtime -inf", b"-inf\n"), (b"gmtime nan", b"nan\n"),
         # Doubles this large step by 8 seconds; the years end at 32 bits.
         (b"gmtime 67767976233532792", b"2147483647-12-31 11:59:52 PM Tue\n"),
         (b"gmtime 67767976233532800", b"out of range\n"),
         (b"gmtime -67768100567971200", b"-2147483648-01-01 00:00:00 AM Tue\n"),
         (b"gmtime -67768100567971208", b"out of range\n"),
         (b"localtime 0", b"1970-01-01 02:00:00 AM Thu\n", {"tz": UTC2}),
         (b"gmtime 7200", b"1970-01-01 02:00:00 AM Thu\n", {"tz": UTC2}),
         (b"localtime 1234567890", utc(1234567890 + 3600), {"tz": CET}),    # winter
         (b"localtime 1000040000", utc(1000040000 + 7200), {"tz": CET}),    # summer
         (None, b"> ans = 1000000000\n> " + utc(1000007200) + b"> ",
          {"tz": UTC2, "stdin": b"1000000000\nlocaltime ans\n"})]
OTHERS = [(b"uuid x", b"Unexpected character at position 5: 'x'\n\n"),
          (b"bench now", b"Unexpected character at position 6: 'n'\n\n"),
          (b"verify " + S + b":" + END, found(1000)), (b"verify " + S + b":" + S, found(0)),
          (b"verify", INVALID), (b"verify " + S + b":" + END[:-1], INVALID),
          (b"verify " + S + b":" + END + b"0", INVALID), (b"verify " + S + b";" + END, INVALID),
          (b"verify " + S + b":" + END.upper(), INVALID),
          (b"verify " + S + b":" + END[:-1] + b"g", INVALID)]


def run(line, stdin=None, tz="UTC0", cwd="files"):
    """One-shot run of `line`, or a piped session on `stdin` (its greeting cut off).
    The timeout only guards against a hang."""
    try:
        proc = subprocess.run([VEXA] + ([line] if line else []), input=stdin or b"",
                              capture_output=True, cwd=cwd, env=dict(os.environ, TZ=tz),
                              timeout=60)
    except subprocess.TimeoutExpired as hung:
        return (hung.stdout or b"") + b"<hung>"
    out = proc.stdout
    if stdin is not None and out.startswith(b"Type 'help' for help.\n\n"):
        out = out[23:]
    if proc.returncode or proc.stderr:
        out += b"<exit status %d, standard error %r>" % (proc.returncode, proc.stderr)
    return out


def main():
    failures = 0

    def check(name, expected, actual):
        nonlocal failures
        if not (expected.rule(actual) if isinstance(expected, Like) else actual == expected):
            failures += 1
            print("FAIL %s\n  expected: %r\n  actual:   %r" % (name, expected, actual[:2000]))

    with tempfile.TemporaryDirectory() as top:
        os.chdir(top)
        os.mkdir("bare")
        os.mkdir("files")
        for name, data in FILES.items():
            with open(os.path.join("files", name), "wb") as f:
                f.write(data)
        os.mkdir("files/somedir")
        os.mkfifo("files/pipe")
        for table in [NUMBERS, DIGESTS, CODING, COMMA, TIMES, OTHERS]:
            for line, expected, *options in table:
                opts = options[0] if options else {}
                name = " ".join(repr(v) for v in [line, opts.get("stdin")] if v)
                check(name + " in " + opts.get("tz", "UTC0"), expected, run(line, **opts))

        before = int(time.time())
        now = run(b"gmtime")
        texts = [utc(t) for t in range(before, int(time.time()) + 1)]
        check("b'gmtime' now", Like(" or ".join(map(repr, texts)), texts.__contains__), now)
        uuids = [run(b"uuid") for _ in range(8)]
        shape = re.compile(rb"[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}\n\Z")
        check("uuid runs", Like("eight different 8-4-4-4-12 lowercase hex texts",
              lambda us: all(map(shape.match, us)) and len(set(us)) == 8), uuids)
        # No version or variant bits: digits 14 and 19 are as random as the rest.
        check("uuid digits all random", Like("digit 14 not always 4, digit 19 not always 8-b",
              lambda us: any(u[14:15] != b"4" for u in us)
              and any(u[19:20] not in b"89ab" for u in us)), uuids)
    print("%d failed case(s)" % failures if failures else "all command cases passed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
