#!/usr/bin/env python3
"""Black-box tests of vexa under hostile input: huge lines, deep nesting, every
byte value in expressions, command arguments, file names and formula files,
directories, devices, FIFOs and sockets where files are expected, and malformed
benchmark strings. Each must end with exit status 0, nothing on standard error
and the expected output. Usage: test_hostile.py <path-to-vexa>"""
import base64
import hashlib
import os
import re
import socket
import subprocess
import sys
import tempfile

VEXA = os.path.abspath(sys.argv[1])
GREETING = b"Type 'help' for help.\n\n"
ENV = dict(os.environ, TZ="CET-1CEST,M3.5.0,M10.5.0/3")  # localtime: one hour east in winter
EMPTY = {d: hashlib.new(d, b"").hexdigest().encode() + b"\n" for d in ("md5", "sha1", "sha256")}
BIG = b"1+" * 5242880 + b"1"  # 10 MB, sums to 5242881
# Parts of an output that depend on the clock or the machine, and what they become.
NORMAL = [(re.compile(rb"in ~\d+ seconds\.\n~\d+ hashes"), b"in ~S seconds.\n~R hashes"),
          (re.compile(rb"ans = -nan"), b"ans = nan")]


def md5(data):
    return hashlib.md5(data).hexdigest().encode() + b"\n"


def unexpected(pos, ch):
    return b"Unexpected character at position %d: '%s'\n\n" % (pos, ch)


def illegal(pos, ch):  # puts stops at a zero byte
    return b"Illegal character at position %d: '" % pos + (ch + b"'\n\n" if ch != b"\0" else b"\n")


SPACES = b"\t\n\r "
VALUES = {b".": b"1.1", b"-": b"0", b"!": b"1", b"%": b"0", b"*": b"1", b"+": b"2", b"/": b"1",
          b"^": b"1"}


def expr(t):
    """What the session prints for the line t: digits, one byte, or "1", a byte, "1"."""
    if t.isdigit():
        return b"ans = %d\n" % int(t)
    if len(t) == 3:
        c = t[1:2]
        if c in VALUES:
            return b"ans = " + VALUES[c] + b"\n"
        if c in SPACES or c.isalpha() or c in b"_=(":
            return unexpected(2, b"1") if c in SPACES else unexpected(1, c)
        return b"Unmatched right-parenthesis at: 1\n\n" if c == b")" else illegal(1, c)
    if t == b"e" or t.isalpha() or t == b"_":
        return b"ans = 2.71828\n" if t == b"e" else b"Unknown identifier: " + t + b"\n"
    if t == b"(" or t in SPACES:
        return (b"Input does not evaluate to a single expression.\n" if t == b"(" else
                b"Expression does not evaluate to a single value.\n")
    return unexpected(1, b" ") if t in b"-." else unexpected(0, t) if t in b")!%*+/^=" \
        else illegal(0, t)


def formula(name, text):
    """What running the formula file `name` holding `text` prints."""
    out = []
    for number, line in enumerate(text.split(b"\n"), 1):
        t = line.strip(b" \t\r\n")
        operand = t[5:] if t.startswith(b"show ") else None
        answer = expr(t if operand is None else operand) if t and t[:1] != b"#" else b"ans = "
        if not answer.startswith(b"ans = "):
            out.append(b"%s, line %d: %s" % (name, number, answer))
        elif operand is not None:
            out.append(operand + b" = " + answer[6:])
    return b"".join(out)


def session(stdin, answer):
    """The output of a piped session, its input cut into lines as the reader does."""
    lines = stdin.replace(b"\r", b"").split(b"\n")
    return GREETING + b"".join(b"> " + (answer(line) if line else b"") for line in lines)


URL_KEPT = b"-_.!~*'();,/?:@&=+$#"
# Answers to "word arg" for a one-byte arg ("7" and a byte for gmtime) in a
# directory without one-byte names, before any expression (ans is 0).
ARG_COMMANDS = {
    b"hex": lambda a: b"%x\n" % (int(a) if a.isdigit() else 0),
    b"unhex": lambda a: b"%d\n" % (int(a, 16) if a and a in b"0123456789abcdefABCDEF" else 0),
    b"comma": lambda a: b"0\n" if not a else b"2.71828\n" if a == b"e"
    else a.strip(b" \t\r\n\0") + b"\n",
    b"base64": lambda a: base64.b64encode(a) + b"\n",  # "." and "/" are directories: text
    b"url_encode": lambda a: b"".join(bytes([c]) if bytes([c]).isalnum() or c in URL_KEPT
                                      else b"%%%02X" % c for c in a) + b"\n",
    b"escape": lambda a: b"\n",
    b"md5": lambda a: EMPTY["md5"],
    b"gmtime": lambda a: b"1970-01-01 00:%02d:%02d AM Thu\n" % divmod(
        int(a) if a.isdigit() else 7, 60),
}


def verify_session():
    """Every byte at the separator, and odd strings of the right length."""
    step = lambda s: hashlib.sha256(s).hexdigest().encode()  # noqa: E731
    # A start whose next link begins with a letter: cut at the separator, that
    # link is left as a line of its own, an unknown identifier.
    s0 = next(b"%064x" % i for i in range(99) if step(b"%064x" % i)[:1].isalpha())
    nul = s0[:10] + b"\0" + s0[11:]
    found = {s0 + b":" + step(s0): 1, nul + b":" + step(nul): 1,
             b"\xc8" * 64 + b":" + b"\xc8" * 64: 0}  # the start is the end: nothing to check
    odd = list(found) + [s0 + b":" + step(s0)[:9] + b"\0" + step(s0)[10:], b"\xff" * 129,
                         b"\xff" * 64 + b":" + b"\xfe" * 64]
    stdin = b"".join(b"verify " + s0 + bytes([c]) + step(s0) + b"\n" for c in range(256))
    stdin += b"".join(b"verify " + s + b"\n" for s in odd)
    return stdin, session(stdin, lambda line: b"Unknown identifier: " + line + b"\n"
                          if not line.startswith(b"verify ") else b"Invalid benchmark string.\n"
                          if line[7:] not in found else
                          b"Found after %d hashes in ~S seconds.\n~R hashes per second\n"
                          % found[line[7:]])


N_LO = bytes(c for c in range(1, 128) if c != 47)  # no NUL, no '/'
N_HI = bytes(range(128, 256))
F_LO, F_HI = N_LO.replace(b" ", b"") + b".frm", N_HI + b".frm"  # a blank would end the word
BYTE_LINES = b"".join(bytes([c]) + b"\n1" + bytes([c]) + b"1\n" for c in range(256))
BYTES_FRM = b"".join(bytes([c]) + b"\nshow 1" + bytes([c]) + b"1\n" for c in range(256))
FRM = b"show 1+1\n1 1\n"
LONG = b"a" * 4999
FILES = {b"big.frm": b"x = " + BIG + b"\nshow x\nprint &x\n", b"bytes.frm": BYTES_FRM,
         N_LO: N_LO, N_HI: N_HI, F_LO: FRM, F_HI: FRM, b"gone": b"x", b"unreadable": b"x"}
FILE_WORDS = [b"md5", b"sha1", b"sha256", b"escape", b"base64", b"unbase64", b"url_encode",
              b"url_decode"]


def cases():
    """(name, one-shot line or None, standard input or None for a FIFO, expected output)."""
    piped = lambda stdin, out: (None, stdin, GREETING + out)  # noqa: E731
    rows = [
        ("10 MB line piped",) + piped(BIG + b"\n", b"> ans = 5242881\n> "),
        ("10 MB formula line", b"big.frm", b"", b"x = 5.24288e+06\n5242881\n"),
        ("deep parentheses",) + piped(b"(" * 100000 + b"7" + b")" * 100000 + b"\n",
                                      b"> ans = 7\n> "),
        ("unclosed parentheses",) + piped(b"(" * 100000 + b"\n", b"> " + expr(b"(") + b"> "),
        ("operator run",) + piped(b"+" * 100000 + b"\n", b"> " + unexpected(0, b"+") + b"> "),
        ("falling product to zero", b"5!-3000000000", b"", b"ans = 0\n"),
        ("falling product to infinity", b"-1!-9999999999", b"", b"ans = inf\n"),
        ("falling product at counter bottom", b"-1!-2147483648", b"", b"ans = -inf\n"),
        ("overflow", b"1" + b"0" * 308 + b"*10", b"", b"ans = inf\n"),
        ("every byte in expressions", None, BYTE_LINES, session(BYTE_LINES, expr)),
        ("every byte in a formula file", b"bytes.frm", b"", formula(b"bytes.frm", BYTES_FRM)),
        ("md5 of low byte name", b"md5 " + N_LO, b"", md5(N_LO)),
        ("md5 of high byte name", b"md5 " + N_HI, b"", md5(N_HI)),
        ("base64 of high byte name", b"base64 " + N_HI, b"", base64.b64encode(N_HI) + b"\n"),
        ("formula of low byte name", F_LO, b"", formula(F_LO, FRM)),
        ("formula of high byte name", F_HI, b"", formula(F_HI, FRM)),
        ("missing formula of high byte name", F_HI[::-1] + b".frm", b"",
         b"File not found: " + F_HI[::-1] + b".frm\n"),
        ("long name digest", b"md5 a" + LONG, b"", EMPTY["md5"]),
        ("long name formula", b"a" + LONG + b".frm", b"", b"File not found: a%s.frm\n" % LONG),
        ("deleted file digest", b"md5 gone", b"", EMPTY["md5"]),
        ("deleted file is text", b"base64 gone", b"", b"Z29uZQ==\n"),
        ("dev null is no formula", b"/dev/null", b"", unexpected(0, b"/")),
        ("symlink to dev null runs nothing",) + piped(b"null.frm\n1\n", b"> > ans = 1\n> "),
        ("symlink to an endless device runs nothing",) + piped(b"zero.frm\n1\n", b"> > ans = 1\n> "),
        ("FIFO formula", b"p.frm 1 2", b"", b"File not found: p.frm\n"),
        ("FIFO is text", b"base64 p.frm", b"", b"cC5mcm0=\n"),
        ("FIFO digest", b"md5 p.frm", b"", EMPTY["md5"]),
        ("FIFO escape", b"escape p.frm", b"", b"\n"),
        ("FIFO as input", None, None, GREETING + b"> ans = 2\n> "),
        ("socket formula", b"s.frm", b"", b"File not found: s.frm\n"),
        ("socket is text", b"base64 s.frm", b"", b"cy5mcm0=\n"),
        ("proc file loads as empty", b"base64 /proc/self/status", b"", b"\n"),
        ("zero device loads as empty", b"md5 /dev/zero", b"", EMPTY["md5"]),
        ("gmtime below 32 bits", b"gmtime -2147483649", b"", b"1901-12-13 08:45:51 PM Fri\n"),
        ("gmtime overflowing text", b"gmtime 1e309", b"", b"inf\n"),
        ("gmtime negative nan", b"gmtime -nan", b"", b"nan\n"),
        ("localtime out of range", b"localtime 1e308", b"", b"out of range\n"),
        ("non-finite variables",) + piped(b"i = 1/0\nj = 0-i\nn = 0/0\ngmtime i\nlocaltime j\n"
                                          b"gmtime n\nlocaltime n\n", b"> ans = inf\n> ans = -inf\n"
                                          b"> ans = nan\n> inf\n> -inf\n> nan\n> nan\n> "),
        ("verify", None) + verify_session(),
    ]
    for t, text in [(2147483647, b"2038-01-19 04:14:07 AM Tue"),
                    (2147483648, b"2038-01-19 04:14:08 AM Tue"),
                    (-2147483648, b"1901-12-13 09:45:52 PM Fri"),
                    (-2147483649, b"1901-12-13 09:45:51 PM Fri")]:
        rows.append(("localtime %d" % t, b"localtime %d" % t, b"", text + b"\n"))
    for word in ARG_COMMANDS:
        stdin = b"".join(b"%s %s%s\n" % (word, b"7" * (word == b"gmtime"), bytes([c]))
                         for c in range(256))
        rows.append(("every byte as %s argument" % word.decode(), None, stdin, session(
            stdin, lambda line: ARG_COMMANDS[line.split(b" ")[0]](line.partition(b" ")[2]))))
    files = {b"Zm9v": [b"\n", b"Wm05dg==\n", b"foo\n", b"Zm9v\n", b"Zm9v\n"],  # a directory
             b"/dev/null": [b"\n"] * 5}
    if os.geteuid() != 0:  # root reads a file whatever its permissions
        files[b"unreadable"] = [b"\n", b"dW5yZWFkYWJsZQ==\n", b"Warning: input string length not "
                                b"multiple of 4.\n" + base64.b64decode(b"unreadab") + b"\n",
                                b"unreadable\n", b"unreadable\n"]
    for name, outs in files.items():
        for word, out in zip(FILE_WORDS, [EMPTY["md5"], EMPTY["sha1"], EMPTY["sha256"]] + outs):
            rows.append(("%s %s" % (word.decode(), name.decode()), word + b" " + name, b"", out))
    # A single argument may be refused by the system; then the longest one allowed is used.
    try:
        subprocess.run(["true", BIG])
        return rows + [("10 MB argument", BIG, b"", b"ans = 5242881\n")]
    except OSError:
        return rows + [("longest argument", b"1+" * 65535 + b"1", b"", b"ans = 65536\n")]


def run(line, stdin, cwd):
    """Exit status, output and errors; with stdin None vexa reads a FIFO whose
    writer sends "1+1" and a line feed and closes. The timeout guards against a hang."""
    if stdin is None:
        path = os.path.join(cwd, "input")
        os.mkfifo(path)
        source = os.open(path, os.O_RDONLY | os.O_NONBLOCK)
        writer = os.open(path, os.O_WRONLY)
        os.set_blocking(source, True)
    proc = subprocess.Popen([VEXA] + ([line] if line else []), cwd=cwd, env=ENV,
                            stdin=subprocess.PIPE if stdin is not None else source,
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    if stdin is None:
        os.close(source)
        try:
            os.write(writer, b"1+1\n")
        except BrokenPipeError:  # vexa left without reading; its output shows it
            pass
        os.close(writer)
    try:
        out, err = proc.communicate(stdin, timeout=120)
    except subprocess.TimeoutExpired:
        proc.kill()
        return -1, proc.communicate()[0][:4000] + b"<hung>", b""
    for pattern, text in NORMAL:
        out = pattern.sub(text, out)
    return proc.returncode, out, err


def prepare(cwd):
    for name, data in FILES.items():
        fd = os.open(os.path.join(os.fsencode(cwd), name), os.O_WRONLY | os.O_CREAT, 0o600)
        os.write(fd, data)
        os.close(fd)
    os.remove(os.path.join(cwd, "gone"))
    os.chmod(os.path.join(cwd, "unreadable"), 0)
    os.mkdir(os.path.join(cwd, "Zm9v"))
    os.symlink("/dev/null", os.path.join(cwd, "null.frm"))
    os.symlink("/dev/zero", os.path.join(cwd, "zero.frm"))
    os.mkfifo(os.path.join(cwd, "p.frm"))
    with socket.socket(socket.AF_UNIX) as sock:
        sock.bind(os.path.join(cwd, "s.frm"))


def main():
    rows = cases()
    assert len({r[0] for r in rows}) == len(rows), "duplicate case names"
    failures = 0
    with tempfile.TemporaryDirectory() as cwd:
        prepare(cwd)
        for name, line, stdin, expected in rows:
            status, out, err = run(line, stdin, cwd)
            if out != expected or status != 0 or err:
                failures += 1
                print("FAIL %s (exit status %d, standard error %r)\n  expected: %r\n  actual:   %r"
                      % (name, status, err[:400], expected[:2000], out[:2000]))
            if out.endswith(b"<hung>"):
                print("vexa hung: the remaining cases were not run")
                return 1
    print("%d of %d hostile cases failed" % (failures, len(rows)))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
