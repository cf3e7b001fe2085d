#!/usr/bin/env python3
"""Black-box tests of the utility commands and of verify: number bases, digests,
escaping, Base64 and URL coding of files and texts, grouping, time texts in
several zones, UUIDs and hash chains. Usage: test_commands.py <path-to-vexa>"""
import hashlib
import os
import random
import re
import subprocess
import sys
import tempfile
import time

VEXA = os.path.abspath(sys.argv[1])
GREETING = b"Type 'help' for help.\n\n"
ALPHABET = "abcdefghijkmnpqrstuvwxyzABCDEFGHJKLMNPQRTUVWXY346789"
UTC2 = "UTC-2"                        # two hours east, no daylight saving
CET = "CET-1CEST,M3.5.0,M10.5.0/3"    # one hour east, summer time from March to October
INVALID = b"Invalid benchmark string.\n"
WEEKDAYS = [b"Sun", b"Mon", b"Tue", b"Wed", b"Thu", b"Fri", b"Sat"]


def utc_text(t):
    """The time text of t seconds (proleptic Gregorian, any year) plus a line feed."""
    days, secs = divmod(t, 86400)
    z = days + 719468
    era, doe = divmod(z, 146097)
    yoe = (doe - doe // 1460 + doe // 36524 - doe // 146096) // 365
    doy = doe - (365 * yoe + yoe // 4 - yoe // 100)
    mp = (5 * doy + 2) // 153
    day, month = doy - (153 * mp + 2) // 5 + 1, mp + 3 if mp < 10 else mp - 9
    year = yoe + era * 400 + (month <= 2)
    hour = secs // 3600
    return b"%d-%02d-%02d %02d:%02d:%02d %s %s\n" % (
        year, month, day, hour if hour <= 12 else hour - 12, secs // 60 % 60, secs % 60,
        b"AM" if hour < 12 else b"PM", WEEKDAYS[(days + 4) % 7])


def seconds_to_year(year):
    """Seconds from the epoch to 1 January of `year`, 00:00:00 (proleptic Gregorian)."""
    y = year - 1
    era, yoe = divmod(y, 400)
    doe = yoe * 365 + yoe // 4 - yoe // 100 + 306
    return (era * 146097 + doe - 719468) * 86400


def c_escape(data):
    table = {34: b'\\"', 92: b"\\\\", 8: b"\\b", 12: b"\\f", 10: b"\\n", 13: b"\\r",
             9: b"\\t", 0: b"\\0"}
    return b"".join(table.get(c, bytes([c]) if 32 <= c <= 126 else b"\\x%02x" % c)
                    for c in data)


def chain(s, steps):
    """The strings of the benchmark chain from s: s itself and `steps` steps on."""
    out = [s.encode()]
    for _ in range(steps):
        out.append(hashlib.sha256(out[-1]).hexdigest().encode())
    return out


FILES = {
    "hello": b"\x00\xffhi\n",
    "data.bin": bytes(range(256)) * 4 + b"tail",
    "my notes.txt": b"notes\n",
    " lead": b"a name with a leading blank",
    "example": b'A"\n\x00\xc8',
    "allbytes": bytes(range(256)),
    "empty": b"",
    "qbc": b"QUJD\x00Zm9v",             # decoding stops at the zero byte
    "b64nl": b"aGk=\n",                  # the line feed leaves an incomplete group
    "url": b"%41%42+c%00d",
}
DIGESTS = [("md5", hashlib.md5), ("sha1", hashlib.sha1), ("sha256", hashlib.sha256)]
# Argument texts for the digest commands; anything that is no readable file
# ("lead" is missing, "somedir" a directory, "pipe" a FIFO) digests empty input.
DIGEST_ARGS = ["data.bin", "my notes.txt", " lead", "lead", "empty",
               "somedir", "pipe", ""]

# One-shot lines, run with TZ=UTC0: (line, expected output).
CASES = [
    (b"hex 255", b"ff\n"), (b"hex -1", b"ffffffff\n"), (b"hex", b"0\n"),
    (b"hex 12abc", b"c\n"), (b"hex 99999999999", b"7fffffff\n"),
    (b"hex -99999999999", b"80000000\n"), (b"hex  \t42", b"2a\n"), (b"hex 0x10", b"0\n"),
    (b"unhex ff", b"255\n"), (b"unhex 0x10", b"16\n"), (b"unhex -a", b"-10\n"),
    (b"unhex ffffffff", b"2147483647\n"), (b"unhex xyz", b"0\n"), (b"unhex", b"0\n"),
    (b"unhex -80000000", b"-2147483648\n"), (b"unhex -ffffffff", b"-2147483648\n"),
    (b"unhex 7FfFfFfF", b"2147483647\n"), (b"unhex 1g", b"1\n"),
    (b"escape example", b'A\\"\\n\\0\\xc8\n'),
    (b"escape allbytes", c_escape(bytes(range(256))) + b"\n"),
    (b"escape lead", b"\n"), (b"escape", b"\n"), (b"escape somedir", b"\n"),
    (b"escape pipe", b"\n"), (b"escape  lead", c_escape(FILES[" lead"]) + b"\n"),
    (b"base64 hello", b"AP9oaQo=\n"), (b"base64 world", b"d29ybGQ=\n"),
    (b"base64 f", b"Zg==\n"), (b"base64 foobar", b"Zm9vYmFy\n"),
    (b"base64 \xff\xff\xff", b"////\n"), (b"base64 a  b", b"YSAgYg==\n"),
    (b"base64", b"\n"), (b"base64 empty", b"\n"), (b"base64 my notes.txt", b"bm90ZXMK\n"),
    (b"base64 pipe", b"cGlwZQ==\n"), (b"base64 somedir", b"c29tZWRpcg==\n"),
    (b"unbase64 aGVsbG8=", b"hello\n"), (b"unbase64 QQBC", b"A\n"),
    (b"unbase64 Zg==Zm8=", b"ffo\n"), (b"unbase64", b"\n"), (b"unbase64 qbc", b"ABC\n"),
    (b"unbase64 Zm9vY", b"Warning: input string length not multiple of 4.\nfoo\n"),
    (b"unbase64 b64nl", b"Warning: input string length not multiple of 4.\nhi\n"),
    (b"url_encode a b/c", b"a%20b/c\n"), (b"url_encode 100%", b"100%25\n"),
    (b"url_encode ~user;,/?:@&=+$#-_.!*'()", b"~user;,/?:@&=+$#-_.!*'()\n"),
    (b"url_encode \xc3\xbc\x7f\"<>", b"%C3%BC%7F%22%3C%3E\n"),
    (b"url_encode hello", b"%00%FFhi%0A\n"), (b"url_encode pipe", b"pipe\n"),
    (b"url_decode a+b%21", b"a+b!\n"), (b"url_decode %4a%zz%4", b"JS%4\n"),
    (b"url_decode %", b"%\n"), (b"url_decode a%00b", b"a\n"), (b"url_decode url", b"AB+c\n"),
    (b"comma 1234567", b"1,234,567\n"), (b"comma", b"0\n"), (b"comma pi", b"3.14159\n"),
    (b"comma sin", b"0\n"), (b"comma  1000", b"1,000\n"), (b"comma pi ", b"pi\n"),
    (b"comma 1234.5678", b"1,234.5678\n"), (b"comma -1234", b"-1,234\n"),
    (b"comma abcdef", b"abc,def\n"),
    (b"gmtime 0", b"1970-01-01 00:00:00 AM Thu\n"), (b"gmtime abc", utc_text(0)),
    (b"gmtime 1000000000", b"2001-09-09 01:46:40 AM Sun\n"),
    (b"gmtime 43200", b"1970-01-01 12:00:00 PM Thu\n"), (b"gmtime -0.5", utc_text(-1)),
    (b"gmtime 1e3", utc_text(1000)), (b"gmtime 0x10", utc_text(16)),
    (b"gmtime 12abc", utc_text(12)), (b"gmtime pi", utc_text(3)),
    (b"gmtime 2147483647", b"2038-01-19 03:14:07 AM Tue\n"),
    (b"gmtime -2147483648", utc_text(-2147483648)),
    (b"gmtime 2147483648", utc_text(2147483648)),
    (b"gmtime -62135596801", b"0-12-31 11:59:59 PM Sun\n"),
    (b"gmtime inf", b"inf\n"), (b"gmtime -inf", b"-inf\n"), (b"gmtime nan", b"nan\n"),
    (b"gmtime infinity", b"inf\n"),
    (b"gmtime 1e308", b"out of range\n"), (b"gmtime -1e308", b"out of range\n"),
    (b"uuid x", b"Unexpected character at position 5: 'x'\n\n"),
    (b"uuid ", b"Unknown identifier: uuid\n"),
    (b"bench now", b"Unexpected character at position 6: 'n'\n\n"),
    (b"verify", INVALID), (b"verify ", INVALID),
]
# The last representable times on either side of the 32-bit years.
for year, inside, outside in [(2 ** 31, -8, 0), (-2 ** 31, 0, -8)]:
    t = seconds_to_year(year)
    CASES += [(b"gmtime %d" % (t + inside), utc_text(t + inside)),
              (b"gmtime %d" % (t + outside), b"out of range\n")]
for cmd, fn in DIGESTS:
    for arg in DIGEST_ARGS:
        line = (cmd + " " + arg if arg else cmd).encode()
        CASES.append((line, fn(FILES.get(arg, b"")).hexdigest().encode() + b"\n"))
    CASES.append(((cmd + " ").encode(), fn(b"").hexdigest().encode() + b"\n"))

# One-shot lines in a zone: (TZ, line, expected output).
ZONE_CASES = [
    (UTC2, b"localtime 0", b"1970-01-01 02:00:00 AM Thu\n"),
    (UTC2, b"gmtime 7200", b"1970-01-01 02:00:00 AM Thu\n"),
    (UTC2, b"localtime -7200", utc_text(0)), (UTC2, b"localtime nope", utc_text(7200)),
    (UTC2, b"localtime 1000000000.75", utc_text(1000007200)),
    (UTC2, b"localtime inf", b"inf\n"), (UTC2, b"localtime -inf", b"-inf\n"),
    (UTC2, b"localtime nan", b"nan\n"), (UTC2, b"localtime -1e308", b"out of range\n"),
    (CET, b"localtime 0", utc_text(3600)), (CET, b"gmtime 0", utc_text(0)),
    (CET, b"localtime 1000000000", b"2001-09-09 03:46:40 AM Sun\n"),     # summer
    (CET, b"localtime 1234567890", b"2009-02-14 00:31:30 AM Sat\n"),     # winter
    (CET, b"localtime 1616893199", b"2021-03-28 01:59:59 AM Sun\n"),     # summer time
    (CET, b"localtime 1616893200", b"2021-03-28 03:00:00 AM Sun\n"),     # begins
    (CET, b"localtime 1635642000", b"2021-10-31 02:00:00 AM Sun\n"),     # and ends
    # The daylight-saving test reads t limited to 32 bits: 2100 in June sees 2038 in January.
    (CET, b"localtime 4118000000", utc_text(4118003600)),
]

# Piped sessions: (TZ, standard input, output after the greeting).
SESSIONS = [
    ("UTC0", b"1234567\ncomma\n", b"> ans = 1234567\n> 1,234,567\n> "),
    ("UTC0", b"x = 9876543210\ncomma x\n", b"> ans = 9876543210\n> 9,876,543,210\n> "),
    ("UTC0", b"0.5\ncomma ans\n", b"> ans = 0.5\n> 0.5\n> "),
    ("UTC0", b"5\nhex 255\ncomma 1234\ngmtime 9\nbase64 x\nans\n",
     b"> ans = 5\n> ff\n> 1,234\n> " + utc_text(9) + b"> eA==\n> ans = 5\n> "),
    ("UTC0", b"-1\ngmtime ans\n", b"> ans = -1\n> 1969-12-31 11:59:59 PM Wed\n> "),
    (UTC2, b"1000000000\nlocaltime ans\n",
     b"> ans = 1000000000\n> " + utc_text(1000007200) + b"> "),
    (CET, b"t = 1000000000\nlocaltime t\n",
     b"> ans = 1000000000\n> " + utc_text(1000007200) + b"> "),
]

VERIFY_LINE = re.compile(rb"Found after (0|[1-9]\d{0,2}(?:,\d{3})*) hashes in ~(\d+) seconds\.\n"
                         rb"~(0|[1-9]\d{0,2}(?:,\d{3})*) hashes per second\n\Z")
UUID = re.compile(rb"[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}\n\Z")


class Like:
    """An expectation that is a rule rather than fixed bytes; `text` shows it."""
    def __init__(self, text, rule):
        self.text, self.rule = text, rule

    def __repr__(self):
        return self.text


def run(line, cwd, tz="UTC0", stdin=None):
    """One-shot run of `line`, or a piped session when `stdin` is given. The
    timeout only guards against a hang."""
    argv = [VEXA] if stdin is not None else [VEXA, line]
    env = dict(os.environ, TZ=tz)
    try:
        proc = subprocess.run(argv, input=stdin or b"", stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, cwd=cwd, env=env, timeout=60)
    except subprocess.TimeoutExpired as hung:
        return (hung.stdout or b"")[:4000] + b"<hung>"
    if proc.returncode or proc.stderr:
        return proc.stdout + b"<exit status %d, standard error %r>" % (proc.returncode,
                                                                        proc.stderr)
    return proc.stdout


def verify_cases():
    """(name, line, check) where check is the expected bytes or a predicate."""
    start = "".join(random.choice(ALPHABET) for _ in range(64))
    links = chain(start, 3000)
    s, end = links[0], links[-1]

    def found(count):
        def rule(out):
            m = VERIFY_LINE.match(out)
            if not m or int(m.group(1).replace(b",", b"")) != count:
                return False
            secs, rate = int(m.group(2)), int(m.group(3).replace(b",", b""))
            return rate == (count // secs if secs else count)
        grouped = "{:,}".format(count)
        return Like("b'Found after %s hashes in ~S seconds.\\n~%s/S (or %s when S is 0) hashes "
                    "per second\\n'" % (grouped, grouped, grouped), rule)
    return [
        ("verify 3000 steps", b"verify " + s + b":" + end, found(3000)),
        ("verify one step", b"verify " + s + b":" + links[1], found(1)),
        ("verify from a hex start", b"verify " + links[7] + b":" + links[12], found(5)),
        ("verify start equals end", b"verify " + s + b":" + s, found(0)),
        ("verify 128 characters", b"verify " + s + b":" + end[:-1], INVALID),
        ("verify 130 characters", b"verify " + s + b":" + end + b"0", INVALID),
        ("verify leading blank", b"verify  " + s + b":" + end, INVALID),
        ("verify wrong separator", b"verify " + s + b";" + end, INVALID),
        ("verify colon moved", b"verify " + s[:-1] + b":" + end + b"0", INVALID),
        ("verify upper-case end", b"verify " + s + b":" + end.upper(), INVALID),
        ("verify end not hex", b"verify " + s + b":" + end[:-1] + b"g", INVALID),
    ]


def main():
    failures = []

    def check(name, expected, actual):
        if not (expected.rule(actual) if isinstance(expected, Like) else actual == expected):
            failures.append(name)
            print("FAIL %s\n  expected: %r\n  actual:   %r" % (name, expected, actual[:4000]))

    with tempfile.TemporaryDirectory() as cwd:
        for name, data in FILES.items():
            with open(os.path.join(cwd, name), "wb") as f:
                f.write(data)
        os.mkdir(os.path.join(cwd, "somedir"))
        os.mkfifo(os.path.join(cwd, "pipe"))
        cases = [(repr(line), "UTC0", line, None, out) for line, out in CASES]
        cases += [("%s %r" % (tz, line), tz, line, None, out) for tz, line, out in ZONE_CASES]
        cases += [("session %s %r" % (tz, stdin), tz, b"", stdin, GREETING + out)
                  for tz, stdin, out in SESSIONS]
        cases += [(name, "UTC0", line, None, out) for name, line, out in verify_cases()]
        names = [c[0] for c in cases]
        assert len(names) == len(set(names)), "duplicate cases"
        for name, tz, line, stdin, expected in cases:
            check(name, expected, run(line, cwd, tz, stdin))

        # The current time: the text of some second between before and after the run.
        for tz, line, shift in [("UTC0", b"gmtime", 0), (UTC2, b"localtime", 7200),
                                (UTC2, b"gmtime ", 0)]:
            before = int(time.time())
            out = run(line, cwd, tz)
            texts = [utc_text(t + shift) for t in range(before, int(time.time()) + 1)]
            check("%s %r now" % (tz, line),
                  Like(" or ".join(map(repr, texts)), texts.__contains__), out)

        uuids = [run(b"uuid", cwd) for _ in range(8)]
        for u in uuids:
            check("uuid shape", Like("8-4-4-4-12 lowercase hex digits, a line feed", UUID.match), u)
        check("uuids differ", Like("eight different texts", lambda us: len(set(us)) == 8), uuids)
        # No version or variant bits: the 15th and 20th digits are random too.
        check("uuid digits all random", Like("digit 14 not always 4, digit 19 not always 8-b",
              lambda us: any(u[14:15] != b"4" for u in us)
              and any(u[19:20] not in b"89ab" for u in us)), uuids)
    print("%d failed case(s)" % len(failures) if failures else "all command cases passed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
