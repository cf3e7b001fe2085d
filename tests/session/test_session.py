#!/usr/bin/env python3
"""Black-box tests of the vexa session: how arguments and piped lines are run,
the order in which a line is tested against the commands, and the lines that
reach the expression parser. Usage: test_session.py <path-to-vexa>"""
import hashlib
import os
import re
import sys
import tempfile

import blackbox

VEXA = os.path.abspath(sys.argv[1])
GREETING = b"Type 'help' for help.\n\n"
# The help texts are pinned by digest; to see a diff, run `vexa help` or `vexa formula`.
HELP_SHA256 = "faeb67da8c75c17d8ffae6229f0f40359b6f131ce76b8979627b8b808dbcf996"
FORMULA_SHA256 = "495f1ba91374478f568c5c26df42795cef51e00b42637890fe32f262664c9c53"
HELP = re.compile(rb"(\nCOMMANDS: .*?FUNCTIONS: these all take a single parameter\n\n)(.*?)"
                  rb"(\nOPERATORS: .*?last answer\.\n\n)", re.S)
FORMULA_HELP = re.compile(rb"\nFormula files are .*?Any extra arguments are ignored\.\n\n", re.S)
ALL = b"\tabs()\tacos()\tasin()\n\tatan()\tcos()\texp()\n\tln()\tlog()\tsin()\n\tsqrt()\ttan()\n"
NO_SIN = b"\tabs()\tacos()\tasin()\n\tatan()\tcos()\texp()\n\tln()\tlog()\tsqrt()\n\ttan()\n"


def pin(out):
    """A help text whose fixed part matches the digest becomes "<help" + its function
    list + ">", the formula help "<formula help>"; any other text is left as is."""
    sha = lambda text: hashlib.sha256(text).hexdigest()  # noqa: E731
    out = HELP.sub(lambda m: b"<help" + m[2] + b">"
                   if sha(m[1] + ALL + m[3]) == HELP_SHA256 else m[0], out)
    return FORMULA_HELP.sub(lambda m: b"<formula help>" if sha(m[0]) == FORMULA_SHA256
                            else m[0], out)


def unexpected(pos, ch):
    return b"Unexpected character at position %d: '%s'\n\n" % (pos, ch)


def unknown(name):
    return b"Unknown identifier: %s\n" % name


def piped(*pairs):
    """Standard input and output of a session answering (line, answer) pairs."""
    return ([], b"".join(line + b"\n" for line, _ in pairs),
            GREETING + b"".join(b"> " + answer for _, answer in pairs) + b"> ")


DEBUG_1 = b"[0][0](1) = 2\n[2][8]( ) = 5\n(1.000000,'',\0)\nans = 1\n"
DEBUG_GROUP = (b"[0][6](() = 10\n[10][0](1) = 2\n[2][3](+) = 6\n[6][5](x) = 8\n"
               b"[8][7]()) = 12\n(1.000000,'',+)->(0.000000,'x',\0)\n"
               b"Unknown identifier: x\nUnable to resolve right-hand value.\n"
               b"Failed to evaluate parenthetical expression.\n")

# (name, arguments, standard input or None for an unreadable one, output). With
# arguments, nothing is read from standard input.
CASES = [
    ("arguments joined", ["2", "+", "3"], b"1+1\n", b"ans = 5\n"),
    ("argument quit", ["quit"], b"1+1\n", b"Bye!\n"),
    ("empty argument keeps its blanks", ["a", "", "b"], b"1+1\n", unexpected(3, b"b")),
    ("piped two lines", [], b"1+1\n2+2\n", GREETING + b"> ans = 2\n> ans = 4\n> "),
    ("no final line feed", [], b"1+1\n2+2", GREETING + b"> ans = 2\n> ans = 4\n"),
    ("carriage returns and empty lines", [], b"1+1\r\n\n2\r+2\r\n\r",
     GREETING + b"> ans = 2\n> > ans = 4\n> "),
    ("quit stops reading", [], b"quit\n1+1\n", GREETING + b"> Bye!\n"),
    ("exit stops reading", [], b"1\nexit\n2\n", GREETING + b"> ans = 1\n> Bye!\n"),
    ("unreadable input ends the session", [], None, GREETING + b"> "),
    ("1 MB line", [], b"1+" * 524287 + b"1\n", GREETING + b"> ans = 524288\n> "),
    ("commands must be the whole line",) + piped(
        (b"help ", unknown(b"help")), (b" help", unknown(b"help")), (b"Help", unknown(b"Help")),
        (b"exit now", unexpected(5, b"n")), (b"quit ", unknown(b"quit")),
        (b"uuid x", unexpected(5, b"x")), (b"bench x", unexpected(6, b"x")),
        (b"formula x", unexpected(8, b"x")), (b"formula", b"<formula help>")),
    ("formula file names",) + piped(
        (b"a.frm.txt", unexpected(1, b".")), (b"frm", unknown(b"frm")),
        (b"x.frm", b"File not found: x.frm\n"), (b"X.FRM", b"File not found: X.FRM\n"),
        (b".frm", b"File not found: .frm\n"), (b"d.frm", b"File not found: d.frm\n")),
    ("debug survives reset",) + piped(
        (b"debug on", b""), (b"1", DEBUG_1), (b"(1+x)", DEBUG_GROUP), (b"reset", b""),
        (b"1", DEBUG_1), (b"debug off", b""), (b"(1+x)", unknown(b"x"))),
    ("reset",) + piped(
        (b"x = 5", b"ans = 5\n"), (b"pi = 1", b"ans = 1\n"), (b"sin = 2", b"ans = 2\n"),
        (b"sin(0)", b"Identifier is not a function: sin\n"), (b"help", b"<help" + NO_SIN + b">"),
        (b"reset", b""), (b"ans", b"ans = 0\n"), (b"x", unknown(b"x")),
        (b"pi", b"ans = 3.14159\n"), (b"e", b"ans = 2.71828\n"), (b"sin(0)", b"ans = 0\n"),
        (b"help", b"<help" + ALL + b">")),
    ("messages",) + piped(
        (b"2 # 3", b"Illegal character at position 2: '#'\n\n"),
        (b"(2", b"Input does not evaluate to a single expression.\n")),
    ("variables persist",) + piped(
        (b"x = 3", b"ans = 3\n"), (b"y = x * 2", b"ans = 6\n"), (b"y + x", b"ans = 9\n"),
        (b"ans * 2", b"ans = 18\n"), (b"(y = 4) 1", unexpected(8, b"1")), (b"y", b"ans = 4\n")),
]


def run(argv, stdin, cwd):
    """A run whose stdin None is a directory, which cannot be read."""
    if stdin is not None:
        status, out, err = blackbox.run([VEXA] + argv, stdin, cwd)
    else:
        fd = os.open(cwd, os.O_RDONLY)
        status, out, err = blackbox.run([VEXA] + argv, fd, cwd)
        os.close(fd)
    return status, pin(out), err


def main():
    with tempfile.TemporaryDirectory() as cwd:
        os.mkdir(os.path.join(cwd, "d.frm"))
        return blackbox.report("session", (
            (name, lambda a=argv, s=stdin: run(a, s, cwd), expected)
            for name, argv, stdin, expected in CASES))


if __name__ == "__main__":
    sys.exit(main())
