"""Fails each allocation vexa makes in turn, one per run, through a preloaded
allocator, over every case of scenario.py. Every run must exit with status 0,
write nothing to stderr, end in time, and print what the run without failure
prints, or the same up to a line that says "Out of memory". After it, a session
must read every line as one and go on to its end, and a formula file that
reports the line that ran out of memory must go on to its end; and every line of
the formula that evaluates must be so reported by some run.

usage: allocations.py VEXA ALLOCATOR"""

import os
import re
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

import scenario


def main():
    vexa, allocator = (os.path.abspath(path) for path in sys.argv[1:3])
    with tempfile.TemporaryDirectory(prefix='vexa-allocations-') as folder:
        scenario.make_folder(folder)
        count_file = os.path.join(folder, 'count')
        faults, runs = [], 0
        for name, args, stdin in scenario.CASES:
            env = scenario.environment(folder, LD_PRELOAD=allocator, VEXA_COUNT_ALLOCATIONS=count_file)
            status, expected, errors = scenario.run([vexa] + args, folder, stdin, env)
            if status != 0 or errors:
                faults.append('%s without failure: status %d, stderr %r' % (name, status, errors))
                continue
            try:
                with open(count_file) as f:
                    made = int(f.read())
            except OSError:
                made = 0
            if made == 0:
                print('skipped: the allocator counted nothing; it cannot be preloaded here')
                return 77

            def fail(n):
                env = scenario.environment(folder, LD_PRELOAD=allocator, VEXA_FAIL_ALLOCATION=str(n))
                return n, scenario.run([vexa] + args, folder, stdin, env)

            reported = set()
            with ThreadPoolExecutor(os.cpu_count() or 2) as pool:
                for n, result in pool.map(fail, range(1, made + 1)):
                    problem = judge(result, expected, session=stdin is not None)
                    if problem:
                        faults.append('%s, allocation %d of %d: %s' % (name, n, made, problem))
                    elif result[1] != expected:
                        reported |= formula_lines_out_of_memory(result[1])
            if b'end of f.frm' in expected and not scenario.EVALUATING_LINES <= reported:
                faults.append('%s: no run reports running out of memory on f.frm lines %s' % (
                    name, sorted(scenario.EVALUATING_LINES - reported)))
            runs += made
            print('%s: %d allocations, each failed once' % (name, made))
        for fault in faults[:40]:
            print('FAIL', fault)
        print('%d runs, %d faults' % (runs, len(faults)))
        return 1 if faults else 0


def judge(result, expected, session):
    """What is wrong with one run, or None."""
    if result is None:
        return 'no end within the time limit'
    status, out, errors = result
    if status != 0 or errors:
        return 'status %d, stderr %r' % (status, errors[-300:])
    if out == expected:
        return None
    if not scenario.says_out_of_memory(out, expected):
        return 'output changed without "Out of memory": %r' % out[-300:]
    if out.count(b'Out of memory') != 1:
        return 'one failure reported %d times' % out.count(b'Out of memory')
    if session and (not out.endswith(expected.splitlines(True)[-1]) or
                    scenario.prompts(out) != scenario.prompts(expected)):
        return 'the session did not go on line by line to its end: %r' % out[-300:]
    if formula_lines_out_of_memory(out) and b'end of f.frm' not in out:
        return 'the formula file did not go on to its end: %r' % out[-300:]
    return None


def formula_lines_out_of_memory(out):
    return {int(n) for n in re.findall(rb'f\.frm, line (\d+): Out of memory', out)}


if __name__ == '__main__':
    sys.exit(main())
