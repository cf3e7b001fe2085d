#!/usr/bin/env python3
"""Black-box tests of the vexa session: how arguments and piped lines are run,
the order in which a line is tested against the commands, and the lines that
reach the expression parser. Usage: test_session.py <path-to-vexa>"""
import os
import subprocess
import sys
import tempfile

VEXA = os.path.abspath(sys.argv[1])
GREETING = b"Type 'help' for help.\n\n"

HELP_HEAD = (
    b"\nCOMMANDS: these must be typed exactly with no leading or trailing characters\n\n"
    b"\thelp       - shows this message\n"
    b"\tdebug on   - turns debug on\n"
    b"\tdebug off  - turns debug off\n"
    b"\texit       - exits the program\n"
    b"\tquit       - exits the program\n"
    b"\tclear      - clears the screen\n"
    b"\treset      - reset all variables\n"
    b"\t*.frm      - run a formula file\n"
    b"\tformula    - view help text about formula files\n"
    b"\thex [n]    - convert n to hex\n"
    b"\tunhex [n]  - convert n to decimal\n"
    b"\tmd5|sha1|sha256 [file] - compute the hex digest for a file\n"
    b"\tescape [file] - C-string escape a file\n"
    b"\tbase64|unbase64 [file|string] - base64 encode/decode a file or string\n"
    b"\turl_encode|url_decode [file|string] -url encode/decode a file or string\n"
    b"\tcomma [n]  - add commas to a number\n"
    b"\ttime       - get seconds since unix epoch\n"
    b"\tlocaltime [t] -format time to local time string\n"
    b"\tgmtime [t] -format time to UTC time string\n"
    b"\tuuid       - generate a UUID\n"
    b"\tbench      - run a simple benchmark\n"
    b"\nFUNCTIONS: these all take a single parameter\n\n")
HELP_TAIL = (
    b"\nOPERATORS: in order of precedence\n\n\t!\n\t^\n\t* / %\n\t+ -\n\t=\n\n"
    b"The factorial operator (!) takes two operands and a!b is equivalent to a!/b! "
    b"in traditional notation.\n"
    b"Also, the variables 'pi', 'e', and 'ans' are pre-defined.\n"
    b"The variable 'ans' always corresponds to the last answer.\n\n")


def help_text(*rows):
    return HELP_HEAD + b"".join(b"".join(b"\t%s()" % n.encode() for n in row) + b"\n"
                                for row in rows) + HELP_TAIL


ALL_FUNCTIONS = (("abs", "acos", "asin"), ("atan", "cos", "exp"),
                 ("ln", "log", "sin"), ("sqrt", "tan"))
HELP = help_text(*ALL_FUNCTIONS)

FORMULA_HELP = b"""
Formula files are files with the extension ".frm" and are in the same directory
in which you are running vexa. They generally consist of several lines of 
mathematical expressions, except they can contain several special lines, based
on what the line begins with:

    #                 - Comments. The line is ignored.

    prompt [variable] - The evaluation of the formula stops to receive
                        a number from standard input, which is then
                        stored in [variable].

    show [variable]   - Prints a line like "[variable] = [value]".

    print [text]      - Prints [text]. Variables may be included within
                        [text] by escaping them with the an ampersand ('&').
                        For example:

                            print x = &x 

                        is equivalent to: 

                            show x 

Formula files can be run by simply specifying the filename.
For example:

    pythagoras.frm

will look for a file called pythagoras.frm in the same directory, and run it.

Formula files can also take arguments which bind to "prompt" statements
within the file itself. This allows you to run a formula and fill in the
prompts in a concise way.
For example, assuming that "pythagoras.frm" looks like:

    prompt a
    prompt b
    c = sqrt(a^2+b^2)
    show c

Running this:

    pythagoras.frm 1 2

will allow you to skip the prompts and assign 1 to a and 2 to b.
Any missing arguments are still prompted. Any extra arguments are ignored.

"""


def unexpected(pos, ch):
    return b"Unexpected character at position %d: '%s'\n\n" % (pos, ch)


def unknown(name):
    return b"Unknown identifier: %s\n" % name


DEBUG_1 = b"[0][0](1) = 2\n[2][8]( ) = 5\n(1.000000,'',\0)\nans = 1\n"
DEBUG_GROUP = (b"[0][6](() = 10\n[10][0](1) = 2\n[2][3](+) = 6\n[6][5](x) = 8\n"
               b"[8][7]()) = 12\n(1.000000,'',+)->(0.000000,'x',\0)\n"
               b"Unknown identifier: x\nUnable to resolve right-hand value.\n"
               b"Failed to evaluate parenthetical expression.\n")
LONG_LINE = b"1+" * 524287 + b"1"  # 1 MB less one byte

# One-shot mode: (name, arguments, expected output). Nothing is read from the
# piped standard input "1+1\n" unless a formula prompt asks for it.
ARGV_CASES = [
    ("args joined", ["2", "+", "3"], b"ans = 5\n"),
    ("args quit", ["quit"], b"Bye!\n"),
    ("args empty piece", ["a", "", "b"], unexpected(3, b"b")),
    ("args one empty", [""], b""),
    ("args help", ["help"], HELP),
    ("args formula", ["formula"], FORMULA_HELP),
    ("args missing file", ["x.frm"], b"File not found: x.frm\n"),
]

# Piped mode: (name, standard input, output after the greeting).
PIPED_CASES = [
    ("piped two lines", b"1+1\n2+2\n", b"> ans = 2\n> ans = 4\n> "),
    ("piped no final line feed", b"1+1\n2+2", b"> ans = 2\n> ans = 4\n"),
    ("piped empty input", b"", b"> "),
    ("carriage returns dropped", b"1+1\r\n2\r+2\r\n\r", b"> ans = 2\n> ans = 4\n> "),
    ("empty lines print nothing", b"\n\n3\n", b"> > > ans = 3\n> "),
    ("quit stops reading", b"quit\n1+1\n", b"> Bye!\n"),
    ("exit stops reading", b"1\nexit\n2\n", b"> ans = 1\n> Bye!\n"),
    ("help trailing blank", b"help \n", b"> " + unknown(b"help") + b"> "),
    ("help leading blank", b" help\n", b"> " + unknown(b"help") + b"> "),
    ("help capitalised", b"Help\n", b"> " + unknown(b"Help") + b"> "),
    ("exit with word", b"exit now\n", b"> " + unexpected(5, b"n") + b"> "),
    ("quit trailing blank", b"quit \n1\n", b"> " + unknown(b"quit") + b"> ans = 1\n> "),
    ("uuid with word", b"uuid x\n", b"> " + unexpected(5, b"x") + b"> "),
    ("bench with word", b"bench x\n", b"> " + unexpected(6, b"x") + b"> "),
    ("formula with word", b"formula x\n", b"> " + unexpected(8, b"x") + b"> "),
    ("frm word with suffix", b"a.frm.txt\n", b"> " + unexpected(1, b".") + b"> "),
    ("frm without point", b"frm\n", b"> " + unknown(b"frm") + b"> "),
    ("missing formula", b"x.frm\n", b"> File not found: x.frm\n> "),
    ("upper case pattern", b"X.FRM\n", b"> File not found: X.FRM\n> "),
    ("bare pattern", b".frm\n", b"> File not found: .frm\n> "),
    ("directory is no file", b"d.frm\n", b"> File not found: d.frm\n> "),
    ("debug on trace", b"debug on\n1\n", b"> > " + DEBUG_1 + b"> "),
    ("debug long message", b"debug on\n(1+x)\n", b"> > " + DEBUG_GROUP + b"> "),
    ("debug off short message", b"debug on\ndebug off\n(1+x)\n",
     b"> > > " + unknown(b"x") + b"> "),
    ("reset forgets variables", b"x = 5\nreset\nx\n",
     b"> ans = 5\n> > " + unknown(b"x") + b"> "),
    ("reset keeps built-ins", b"pi = 1\nans = 7\nreset\nans\npi\ne\ntime/time\n",
     b"> ans = 1\n> ans = 7\n> > ans = 0\n> ans = 3.14159\n> ans = 2.71828\n> ans = 1\n> "),
    ("reset restores functions", b"sin = 2\nsin(0)\nreset\nsin(0)\n",
     b"> ans = 2\n> Identifier is not a function: sin\n> > ans = 0\n> "),
    ("reset keeps debug", b"debug on\nreset\n1\n", b"> > > " + DEBUG_1 + b"> "),
    ("help", b"help\n", b"> " + HELP + b"> "),
    ("help without sin", b"sin = 2\nhelp\nreset\nhelp\n",
     b"> ans = 2\n> " + help_text(("abs", "acos", "asin"), ("atan", "cos", "exp"),
                                   ("ln", "log", "sqrt"), ("tan",))
     + b"> > " + HELP + b"> "),
    ("formula help", b"formula\n", b"> " + FORMULA_HELP + b"> "),
    ("position message empty line", b"2 # 3\n",
     b"> Illegal character at position 2: '#'\n\n> "),
    ("unmatched parenthesis", b"2)\n", b"> Unmatched right-parenthesis at: 1\n\n> "),
    ("message without line feed", b"(2\n",
     b"> Input does not evaluate to a single expression.\n> "),
    ("NUL byte in line", b"1+\x002\n", b"> Illegal character at position 2: '\n> "),
    ("high byte in line", b"1+\xc8\n", b"> Illegal character at position 2: '\xc8'\n\n> "),
    ("long line", LONG_LINE + b"\n", b"> ans = 524288\n> "),
    ("variables persist", b"x = 3\ny = x * 2\ny + x\nans * 2\n",
     b"> ans = 3\n> ans = 6\n> ans = 9\n> ans = 18\n> "),
    ("failed line keeps assignments", b"(y = 4) 1\ny\n",
     b"> " + unexpected(8, b"1") + b"> ans = 4\n> "),
    # Standard input that cannot be read ends the session like the end of input.
    ("unreadable input", None, b"> "),
]


def run(argv, stdin, cwd):
    """Exit status and output; the timeout only guards against a hang."""
    source = {"input": stdin} if stdin is not None else {"stdin": os.open(cwd, os.O_RDONLY)}
    try:
        proc = subprocess.run([VEXA] + argv, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              cwd=cwd, timeout=30, **source)
    except subprocess.TimeoutExpired as hung:
        return -1, (hung.stdout or b"")[:4000] + b"<hung>", b""
    finally:
        if stdin is None:
            os.close(source["stdin"])
    return proc.returncode, proc.stdout, proc.stderr


def main():
    names = [c[0] for c in ARGV_CASES + PIPED_CASES]
    assert len(names) == len(set(names)), "duplicate case names"
    failures = 0
    with tempfile.TemporaryDirectory() as cwd:
        os.mkdir(os.path.join(cwd, "d.frm"))
        cases = [(n, a, b"1+1\n", e) for n, a, e in ARGV_CASES]
        cases += [(n, [], s, GREETING + e) for n, s, e in PIPED_CASES]
        for name, argv, stdin, expected in cases:
            status, actual, errors = run(argv, stdin, cwd)
            if actual != expected or status != 0 or errors:
                failures += 1
                print("FAIL %s (exit status %d, standard error %r)\n  expected: %r\n  actual:   %r"
                      % (name, status, errors[:400], expected[:4000], actual[:4000]))
            if actual.endswith(b"<hung>"):
                print("vexa hung: the remaining cases were not run")
                return 1
    print("%d of %d session cases failed" % (failures, len(cases)))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
