#!/usr/bin/env python3
"""Black-box tests of vexa under hostile input: huge lines, deep nesting, every byte value
where text is read, and directories, devices, FIFOs and sockets where files are expected.
Each must end with exit status 0, nothing on standard error and no hang.
Usage: test_hostile.py <path-to-vexa>"""
import base64
import hashlib
import os
import socket
import sys
import tempfile

import blackbox

VEXA = os.path.abspath(sys.argv[1])
BIG = b"1+" * 5242880 + b"1"  # 10 MB, sums to 5242881
BYTES = [bytes([c]) for c in range(256)]
NAMES = {"low": bytes(c for c in range(1, 128) if c not in b" /"), "high": bytes(range(128, 256))}
FILES = {b"big.frm": b"x = " + BIG + b"\nshow x\nprint &x\n", b"gone": b"", b"c2VhbGVk": b"",
         b"bytes.frm": b"".join(c + b"\nshow 1" + c + b"1\n" for c in BYTES),
         **{n: n for n in NAMES.values()}, **{n + b".frm": b"show 1+1\n" for n in NAMES.values()}}
FILE_WORDS = b"md5 sha1 sha256 escape base64 unbase64 url_encode url_decode".split()


def digest(word, data=b""):
    return hashlib.new(word.decode(), data).hexdigest().encode() + b"\n"


def prompts(stdin, spot=b"", times=1):
    """Every line read gets its prompt, and `spot` shows up `times` times."""
    n = stdin.count(b"\n") + 1
    return ("%d prompts, %r %d time(s)" % (n, spot, times),
            lambda out: out.count(b"> ") == n and (not spot or out.count(spot) == times))


def rising(out):
    numbers = [int(r.split(b":")[0]) for r in out.split(b"bytes.frm, line ")[1:]]
    return numbers != [] and numbers == sorted(set(numbers))


def cases():
    """(name, one-shot line or None, standard input, expected output or (description, rule))."""
    s0 = b"0" * 64
    nul = s0[:10] + b"\0" + s0[11:]  # a NUL is a byte like any other: found after one hash
    verify = b"".join(b"verify " + s0 + c + digest(b"sha256", s0) for c in BYTES)
    verify += b"verify " + nul + b":" + digest(b"sha256", nul) + b"verify " + b"\xff" * 129 + b"\n"
    rows = [
        ("10 MB line", None, BIG + b"\n", b"> ans = 5242881\n> "),
        ("10 MB formula line", b"big.frm", b"", b"x = 5.24288e+06\n5242881\n"),
        ("100,000 parentheses or operators", None, b"(" * 100000 + b"7" + b")" * 100000 + b"\n"
         + b"(" * 100000 + b"\n" + b"+" * 100000 + b"\n", b"> ans = 7\n> Input does not evaluate "
         b"to a single expression.\n> Unexpected character at position 0: '+'\n\n> "),
        ("falling products", None, b"5!-3000000000\n-1!-9999999999\n",
         b"> ans = 0\n> ans = inf\n> "),
        ("every byte in a formula file", b"bytes.frm", b"", ("rising line numbers", rising)),
        ("deleted file digest", b"md5 gone", b"", digest(b"md5")),
        ("symlinks to devices run nothing", None, b"null.frm\nzero.frm\n1\n", b"> > > ans = 1\n> "),
        ("FIFO and socket formulas", None, b"p.frm 1 2\ns.frm\n",
         b"> > File not found: s.frm\n> "),
        ("FIFO as input", None, None, b"> ans = 2\n> "),
        ("verify odd strings", None, verify, prompts(verify, b"Found after 1 hashes", 2)),
    ]
    for kind, name in NAMES.items():
        rows += [("md5 of %s byte name" % kind, b"md5 " + name, b"", digest(b"md5", name)),
                 ("formula of %s byte name" % kind, name + b".frm", b"", b"1+1 = 2\n")]
    spots = {b"": b"> Illegal character at position 1: '\xc8'\n\n> ", b"url_encode": b"> %FF\n> "}
    for word in b" hex unhex comma base64 url_encode escape md5 gmtime".split(b" "):
        stdin = b"".join(b"%s %s\n" % (word, c) if word else b"%s\n1%s1\n" % (c, c) for c in BYTES)
        rows.append(("every byte in %s" % (word.decode() or "expressions"), None, stdin,
                     prompts(stdin, spots.get(word, b""))))
    empty = [digest(w) for w in FILE_WORDS[:3]] + [b"\n"]  # the digests and escape see no data
    text = lambda n: empty + [base64.b64encode(n) + b"\n", base64.b64decode(n) + b"\n",  # noqa
                              n + b"\n", n + b"\n"]  # the coders take the name as their text
    targets = {b"Zm9v": text(b"Zm9v"), b"/dev/null": empty + [b"\n"] * 4, b"p.frm":
               empty + [b"\n"], **({b"c2VhbGVk": text(b"c2VhbGVk")} if os.geteuid() else {})}
    return rows + [("%s %s" % (w.decode(), name.decode()), w + b" " + name, b"", out)
                   for name, outs in targets.items() for w, out in zip(FILE_WORDS, outs)]


def run(line, stdin, cwd):
    """Exit status, output (a session's without its greeting) and errors; with stdin None,
    standard input is the FIFO "input", fed "1+1\\n". The timeout only guards against a hang."""
    argv = [VEXA] + ([line] if line else [])
    if stdin is None:
        argv = ["sh", "-c", 'printf "1+1\\n" > input & exec "$0" < input', VEXA]
    status, out, err = blackbox.run(argv, stdin, cwd)
    out = out if line else out.replace(b"Type 'help' for help.\n\n", b"", 1)
    return status, out, err


def main():
    rows = cases()
    with tempfile.TemporaryDirectory() as top:
        cwd = os.fsencode(top)
        for name, data in FILES.items():
            with open(os.path.join(cwd, name), "wb") as f:
                f.write(data)
        os.remove(os.path.join(cwd, b"gone"))
        os.chmod(os.path.join(cwd, b"c2VhbGVk"), 0)  # root reads it whatever its permissions
        os.mkdir(os.path.join(cwd, b"Zm9v"))
        for device in (b"null", b"zero"):
            os.symlink(b"/dev/" + device, os.path.join(cwd, device + b".frm"))
        for fifo in (b"p.frm", b"input"):
            os.mkfifo(os.path.join(cwd, fifo))
        socket.socket(socket.AF_UNIX).bind(os.path.join(cwd, b"s.frm"))
        return blackbox.report("hostile", (
            (name, lambda l=line, s=stdin: run(l, s, cwd), expected)
            for name, line, stdin, expected in rows))


if __name__ == "__main__":
    sys.exit(main())
