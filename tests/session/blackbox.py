"""Runs vexa as a black box and reports tables of cases, for the test_*.py scripts here."""
import subprocess


def run(argv, stdin=b"", cwd=None, timeout=120):
    """Exit status, output and standard error. `stdin` is bytes to pipe in or an open
    descriptor. The timeout only guards against a hang, reported as output ending in
    <hung>."""
    source = {"input": stdin} if isinstance(stdin, bytes) else {"stdin": stdin}
    try:
        proc = subprocess.run(argv, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              cwd=cwd, timeout=timeout, **source)
    except subprocess.TimeoutExpired as hung:
        return -1, (hung.stdout or b"")[:4000] + b"<hung>", b""
    return proc.returncode, proc.stdout, proc.stderr


def report(kind, cases):
    """Checks (name, outcome, expected) rows, where outcome() gives run()'s triple and
    expected is the exact output or a (description, predicate) pair. Every case must
    also exit 0 with nothing on standard error. Returns the script's exit status."""
    cases = list(cases)
    assert len({c[0] for c in cases}) == len(cases), "duplicate case names"
    failures = 0
    for name, outcome, expected in cases:
        status, out, err = outcome()
        want, good = ((repr(expected[:4000]), out == expected) if isinstance(expected, bytes)
                      else (expected[0], expected[1](out)))
        if not good or status != 0 or err:
            failures += 1
            print("FAIL %s (exit status %d, standard error %r)\n  expected: %s\n  actual:   %r"
                  % (name, status, err[:400], want, out[:4000]))
        if out.endswith(b"<hung>"):
            print("vexa hung: the remaining cases were not run")
            return 1
    print("%d of %d %s cases failed" % (failures, len(cases), kind))
    return 1 if failures else 0
