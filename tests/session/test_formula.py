#!/usr/bin/env python3
"""Black-box tests of formula files: each case writes its files into a fresh
directory, runs vexa there and compares standard output byte for byte.
Usage: test_formula.py <path-to-vexa>"""
import os
import subprocess
import sys
import tempfile

VEXA = os.path.abspath(sys.argv[1])
GREETING = b"Type 'help' for help.\n\n"
PYTHAGORAS = b"prompt a\nprompt b\nc = sqrt(a^2+b^2)\nshow c\n"
SHOW_A = b"prompt a\nshow a\n"


def report(line, message, name=b"f.frm"):
    return b"%s, line %d: %s\n" % (name, line, message)


def boundary_file(newline_at):
    """A comment line whose line feed is byte `newline_at` of the file, then an
    assignment and a failing line, so that both the value read across the
    4096-byte block boundary and the line count after it are visible."""
    return (b"#" + b"c" * (newline_at - 1) + b"\n"
            + b"x = 12345678\nprint &x\n2 3\n")


BOUNDARY_OUT = b"12345678\n" + report(4, b"Unexpected character at position 2: '3'\n")

# (name, files, command line or None, standard input, expected output).
# `files` is the content of "f.frm" or a dict of file names to contents. With a
# command line, vexa runs it as its one argument; without one, vexa reads the
# standard input as a session and the expected output follows the greeting.
CASES = [
    # Reading lines
    ("comments counted", b"# a\n# b\n2 3\n", "f.frm", b"",
     report(3, b"Unexpected character at position 2: '3'\n")),
    ("blank lines counted", b"\n   \n\t \t\n  # note\nx = 1 # note\n", "f.frm", b"",
     report(5, b"Illegal character at position 6: '#'\n")),
    ("comment after expression", b"# c\nx = 1 # note\n", "f.frm", b"",
     report(2, b"Illegal character at position 6: '#'\n")),
    ("CRLF line ends", b"x = 2\r\n\r\nshow x\r\nprint v=&x\r\n2 3\r\n", "f.frm", b"",
     b"x = 2\nv=2\n" + report(5, b"Unexpected character at position 2: '3'\n")),
    ("carriage return inside a line", b"x = 1\r+1\nshow x\n", "f.frm", b"", b"x = 2\n"),
    ("last line without line feed", b"x = 3\nshow x", "f.frm", b"", b"x = 3\n"),
    ("last line error without line feed", b"\n\n2 3", "f.frm", b"",
     report(3, b"Unexpected character at position 2: '3'\n")),
    ("100 KB line", b"x = " + b"1+" * 51200 + b"1\nprint &x\n", "f.frm", b"", b"51201\n"),
    ("empty file", b"", "f.frm", b"", b""),
    ("only comments", b"#\n\n# x\n", "f.frm", b"", b""),
    ("tabs trimmed", b"\tx = 4\t\n  show x  \n", "f.frm", b"", b"x = 4\n"),
    ("errors do not stop the run", b"q\nshow 1\n", "f.frm", b"",
     report(1, b"Unknown identifier: q") + b"1 = 1\n"),
    ("positions count from trimmed line", b"   2 3\n", "f.frm", b"",
     report(1, b"Unexpected character at position 2: '3'\n")),
    ("file name as typed", {"f.frm": b"2 3\n"}, "./f.frm", b"",
     report(1, b"Unexpected character at position 2: '3'\n", b"./f.frm")),
    ("upper case name", {"Data.FRM": b"prompt a\nprompt b\nshow a+b\n"}, "Data.FRM 1 2", b"",
     b"a+b = 3\n"),
    # show
    ("show expression", b"a = 1\nb = 2\nshow a+b\n", "f.frm", b"", b"a+b = 3\n"),
    ("show two blanks", b"x = 2\nshow  x\n", "f.frm", b"", b" x = 2\n"),
    ("show uses %g", b"x = 1234567\nshow x\n", "f.frm", b"", b"x = 1.23457e+06\n"),
    ("show alone", b"x = 1\n#\n\nshow\n", "f.frm", b"",
     report(4, b"Expression does not evaluate to a single value.")),
    ("show error position", b"show 1 # 2\n", "f.frm", b"",
     report(1, b"Illegal character at position 2: '#'\n")),
    ("show with tab", b"show\tx\n", "f.frm", b"",
     report(1, b"Unexpected character at position 5: 'x'\n")),
    # print
    ("print reference", b"x = 2\nprint x = &x\n", "f.frm", b"", b"x = 2\n"),
    ("print fraction", b"x = 2.5\nprint x = &x\n", "f.frm", b"", b"x = 2.5\n"),
    ("print full digits", b"x = 1234567\nprint x = &x\nshow x\n", "f.frm", b"",
     b"x = 1234567\nx = 1.23457e+06\n"),
    ("print reference ends at blank", b"x = 2\nprint total: &x.\n", "f.frm", b"",
     b"total: &x.\n"),
    ("print reference in parentheses", b"x = 2\nprint (&x)\n", "f.frm", b"", b"(&x)\n"),
    ("print blank after reference", b"x = 2\nprint total: &x .\n", "f.frm", b"",
     b"total: 2 .\n"),
    ("print alone", b"print\nprint   \n", "f.frm", b"", b"\n\n"),
    ("print empty reference at end", b"print 50&\n", "f.frm", b"", b"50&\n"),
    ("print empty reference", b"print a & b\n", "f.frm", b"", b"a & b\n"),
    ("print failed then good reference", b"x = 2\nprint &x&x\n", "f.frm", b"", b"&x2\n"),
    ("print expression reference", b"x = 2\nprint &x*3 &y=5 &y\n", "f.frm", b"", b"6 5 5\n"),
    ("print keeps inner blanks", b"print  a  b\n", "f.frm", b"", b" a  b\n"),
    # Lines that are not special
    ("prompt with tab", b"prompt\ta\n", "f.frm", b"",
     report(1, b"Unexpected character at position 7: 'a'\n")),
    ("prompt capitalised", b"Prompt a\n", "f.frm", b"",
     report(1, b"Unexpected character at position 7: 'a'\n")),
    # Arguments
    ("pythagoras", {"pythagoras.frm": PYTHAGORAS}, "pythagoras.frm 3 4", b"", b"c = 5\n"),
    ("expression argument", {"p.frm": PYTHAGORAS}, "p.frm 2*3 8", b"", b"c = 10\n"),
    ("two blanks between args", {"p.frm": PYTHAGORAS}, "p.frm  3  4 ", b"", b"c = 5\n"),
    ("extra args ignored", {"p.frm": PYTHAGORAS}, "p.frm 3 4 5 q", b"", b"c = 5\n"),
    ("assigning argument", b"print &y\n", "f.frm y=7", b"", b"7\n"),
    ("assigning argument after prompt", b"prompt a\nprint &a &y\n", "f.frm 1 y=7", b"",
     b"1 7\n"),
    ("argument reads variable", SHOW_A, "f.frm pi", b"", b"a = 3.14159\n"),
    ("argument negative", SHOW_A, "f.frm -2.5", b"", b"a = -2.5\n"),
    ("argument unknown name", SHOW_A, "f.frm abc", b"", b"a = 0\n"),
    ("argument exponent", SHOW_A, "f.frm 1e3", b"", b"a = 1000\n"),
    ("argument hexadecimal", SHOW_A, "f.frm 0x10", b"", b"a = 16\n"),
    ("argument numeric prefix", SHOW_A, "f.frm 5abc", b"", b"a = 5\n"),
    ("argument infinity", SHOW_A, "f.frm inf", b"", b"a = inf\n"),
    ("tab does not cut arguments", b"prompt a\nprompt b\nshow a\nshow b\n", "f.frm 1\t2", b"",
     b"b = ? a = 1\nb = 0\n"),
    # Prompts answered from standard input
    ("prompt reads input", {"p.frm": PYTHAGORAS}, "p.frm 3", b"4\n", b"b = ? c = 5\n"),
    ("prompts read input", {"p.frm": PYTHAGORAS}, "p.frm", b"3\n4\n", b"a = ? b = ? c = 5\n"),
    ("prompt at end of input", {"p.frm": PYTHAGORAS}, "p.frm 3", b"", b"b = ? c = 3\n"),
    ("prompt answer not evaluated", SHOW_A, "f.frm", b"2*3\n", b"a = ? a = 2\n"),
    ("prompt answer exponent", SHOW_A, "f.frm", b"1e3\n", b"a = ? a = 1000\n"),
    ("prompt answer name", b"x = 5\nprompt a\nshow a\n", "f.frm", b"x\n", b"a = ? a = 0\n"),
    ("prompt answer carriage return", SHOW_A, "f.frm", b"7\r\n", b"a = ? a = 7\n"),
    ("prompt without name", b"prompt\nshow 1\n", "f.frm", b"4\n", b" = ? 1 = 1\n"),
    ("prompt replaces function", b"prompt sin\nshow sin\nshow sin(1)\n", "f.frm 4", b"",
     b"sin = 4\n" + report(3, b"Identifier is not a function: sin")),
    ("prompt in session", SHOW_A, None, b"f.frm\n5\na\n", b"> a = ? a = 5\n> ans = 5\n> "),
    ("prompt after end of input", SHOW_A, None, b"f.frm", b"> a = ? a = 0\n"),
    # The session's context
    ("variables stay after the file", b"prompt a\nb = 2\n", None, b"f.frm 3\na + b\n",
     b"> > ans = 5\n> "),
    ("file sees session variables", b"show k*2\n", None, b"k = 4\nf.frm\n",
     b"> ans = 4\n> k*2 = 8\n> "),
    ("debug traces file lines", b"prompt a\nshow 1\n", None, b"debug on\nf.frm 2\n",
     b"> > [0][0](2) = 2\n[2][8]( ) = 5\n(2.000000,'',\0)\n"
     b"[0][0](1) = 2\n[2][8]( ) = 5\n(1.000000,'',\0)\n1 = 1\n> "),
]
CASES += [("block boundary %d" % n, boundary_file(n), "f.frm", b"", BOUNDARY_OUT)
          for n in (4088, 4094, 4095, 4096, 8191)]
# Files of exactly one block: the second read returns nothing.
CASES += [("one full block" + name, b"#" * (4089 - len(tail)) + b"\nshow 7" + tail, "f.frm",
           b"", b"7 = 7\n") for name, tail in (("", b""), (" ending in a line feed", b"\n"))]


def run_case(files, line, stdin):
    if isinstance(files, bytes):
        files = {"f.frm": files}
    with tempfile.TemporaryDirectory() as cwd:
        for name, content in files.items():
            with open(os.path.join(cwd, name), "wb") as f:
                f.write(content)
        argv = [VEXA] if line is None else [VEXA, line]
        try:  # the timeout only guards against a hang
            proc = subprocess.run(argv, input=stdin, stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE, cwd=cwd, timeout=30)
        except subprocess.TimeoutExpired as hung:
            return -1, (hung.stdout or b"")[:4000] + b"<hung>", b""
    out = proc.stdout
    if line is None:
        out = out[len(GREETING):] if out.startswith(GREETING) else b"<no greeting>" + out
    return proc.returncode, out, proc.stderr


def main():
    names = [c[0] for c in CASES]
    assert len(names) == len(set(names)), "duplicate case names"
    failures = 0
    for name, files, line, stdin, expected in CASES:
        status, actual, errors = run_case(files, line, stdin)
        if actual != expected or status != 0 or errors:
            failures += 1
            print("FAIL %s (exit status %d, standard error %r)\n  expected: %r\n  actual:   %r"
                  % (name, status, errors[:400], expected[:4000], actual[:4000]))
        if actual.endswith(b"<hung>"):
            print("vexa hung: the remaining cases were not run")
            return 1
    print("%d of %d formula cases failed" % (failures, len(CASES)))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
