#!/usr/bin/env python3
"""Black-box tests of formula files: each case writes its files into a fresh
directory, runs vexa there and compares standard output byte for byte.
Usage: test_formula.py <path-to-vexa>"""
import os
import sys
import tempfile

import blackbox

VEXA = os.path.abspath(sys.argv[1])
GREETING = b"Type 'help' for help.\n\n"
PYTHAGORAS = b"prompt a\nprompt b\nc = sqrt(a^2+b^2)\nshow c\n"
NAMES = b"a b c d f g h".split()  # "e" is taken
PROMPTS = b"".join(b"prompt %s\n" % n for n in NAMES) + b"show " + b"\nshow ".join(NAMES) + b"\n"


def report(line, message, name=b"f.frm"):
    return b"%s, line %d: %s\n" % (name, line, message)


def unexpected(line, pos, ch):
    return report(line, b"Unexpected character at position %d: '%s'\n" % (pos, ch))


def boundary_file(newline_at):
    """A comment line whose line feed is byte `newline_at` of the file, then an
    assignment and a failing line, so that both the value read across the
    4096-byte block boundary and the line count after it are visible."""
    return b"#" + b"c" * (newline_at - 1) + b"\n" + b"x = 12345678\nprint &x\n2 3\n"


# (name, files, command line or None, standard input, expected output).
# `files` is the content of "f.frm" or a dict of file names to contents. With a
# command line, vexa runs it as its one argument; without one, vexa reads the
# standard input as a session and the expected output follows the greeting.
CASES = [
    # Reading lines: numbers count every line; a line is trimmed before it is read.
    ("comments and blank lines counted", b"# a\n\n   \n\t \t\n  # note\n   2 3\nx = 1 # note\n",
     "f.frm", b"", unexpected(6, 2, b"3") + report(7, b"Illegal character at position 6: '#'\n")),
    ("CRLF line ends", b"x = 2\r\n\r\nshow x\r\nprint v=&x\r\n2 3\r\n", "f.frm", b"",
     b"x = 2\nv=2\n" + unexpected(5, 2, b"3")),
    ("last line without line feed", b"x = 3\nshow x\n2 3", "f.frm", b"",
     b"x = 3\n" + unexpected(3, 2, b"3")),
    ("100 KB line", b"x = " + b"1+" * 51200 + b"1\nprint &x\n", "f.frm", b"", b"51201\n"),
    ("empty file", b"", "f.frm", b"", b""),
    ("one full block without line feed", b"#" * 4089 + b"\nshow 7", "f.frm", b"", b"7 = 7\n"),
    ("file name as typed", {"Data.FRM": b"prompt a\nprompt b\nshow a+b\n2 3\n"},
     "./Data.FRM 1 2", b"", b"a+b = 3\n" + report(4, b"Unexpected character at position 2: '3'\n",
                                                b"./Data.FRM")),
    ("show", b"x = 2\n#\n\nshow\nshow  x\n  show x  \nshow 1 # 2\n", "f.frm", b"",
     report(4, b"Expression does not evaluate to a single value.") + b" x = 2\n" + b"x = 2\n"
     + report(7, b"Illegal character at position 2: '#'\n")),
    ("not special lines", b"show\tx\nprompt\ta\nPrompt a\n", "f.frm", b"",
     unexpected(1, 5, b"x") + unexpected(2, 7, b"a") + unexpected(3, 7, b"a")),
    # print: a reference runs to the next blank; one that fails stays as written.
    ("print whole values in full",
     b"x = 2\nprint x = &x\nx = 2.5\nprint x = &x\nx = 1234567\nprint x = &x\nshow x\n",
     "f.frm", b"", b"x = 2\nx = 2.5\nx = 1234567\nx = 1.23457e+06\n"),
    ("print references",
     b"x = 2\nprint total: &x.\nprint (&x)\nprint total: &x .\nprint\nprint   \nprint 50&\n"
     b"print a & b\nprint &x&x\nprint &x*3 &y=5 &y\nprint  a  b\n", "f.frm", b"",
     b"total: &x.\n(&x)\ntotal: 2 .\n\n\n50&\na & b\n&x2\n6 5 5\n a  b\n"),
    # Arguments bind to the prompts in order; each is evaluated, or else read as a number.
    ("pythagoras", {"pythagoras.frm": PYTHAGORAS}, "pythagoras.frm 3 4", b"", b"c = 5\n"),
    ("expression argument", {"p.frm": PYTHAGORAS}, "p.frm 2*3 8", b"", b"c = 10\n"),
    ("extra blanks and arguments", {"p.frm": PYTHAGORAS}, "p.frm  3  4  5 q", b"", b"c = 5\n"),
    ("assigning argument without prompt", b"print &y\n", "f.frm y=7", b"", b"7\n"),
    ("argument values", PROMPTS, "f.frm pi -2.5 abc 1e3 0x10 5abc inf", b"",
     b"a = 3.14159\nb = -2.5\nc = 0\nd = 1000\nf = 16\ng = 5\nh = inf\n"),
    # Missing arguments are prompted for: the answer is read as a number, never evaluated.
    ("prompt reads input; tabs do not part arguments", {"p.frm": PYTHAGORAS}, "p.frm 3\t4",
     b"4\n", b"b = ? c = 5\n"),
    ("prompt answers are numbers",
     b"x = 5\nprompt a\nprompt b\nprompt c\nprompt\nshow a\nshow b\nshow c\n", "f.frm",
     b"2*3\nx\n1e3\r\n4\n", b"a = ? b = ? c = ?  = ? a = 2\nb = 0\nc = 1000\n"),
    ("prompt at end of input", b"prompt a\nshow a\n", None, b"f.frm", b"> a = ? a = 0\n"),
    # The session and its files share variables, standard input and the debug setting.
    ("session context", b"prompt a\nprompt c\nb = 2\nshow k*a\n", None,
     b"k = 4\nf.frm 3\n5\na + b + c\n", b"> ans = 4\n> c = ? k*a = 12\n> ans = 10\n> "),
    ("debug traces file lines", b"prompt a\nshow 1\n", None, b"debug on\nf.frm 2\n",
     b"> > [0][0](2) = 2\n[2][8]( ) = 5\n(2.000000,'',\0)\n"
     b"[0][0](1) = 2\n[2][8]( ) = 5\n(1.000000,'',\0)\n1 = 1\n> "),
]
# The value crosses the first block boundary; then the line feed ends the block.
CASES += [("block boundary %d" % n, boundary_file(n), "f.frm", b"",
           b"12345678\n" + unexpected(4, 2, b"3")) for n in (4088, 4095)]


def run_case(files, line, stdin):
    if isinstance(files, bytes):
        files = {"f.frm": files}
    with tempfile.TemporaryDirectory() as cwd:
        for name, content in files.items():
            with open(os.path.join(cwd, name), "wb") as f:
                f.write(content)
        argv = [VEXA] if line is None else [VEXA, line]
        status, out, err = blackbox.run(argv, stdin, cwd)
    if line is None:
        out = out[len(GREETING):] if out.startswith(GREETING) else b"<no greeting>" + out
    return status, out, err


def main():
    return blackbox.report("formula", (
        (name, lambda f=files, l=line, s=stdin: run_case(f, l, s), expected)
        for name, files, line, stdin, expected in CASES))


if __name__ == "__main__":
    sys.exit(main())
